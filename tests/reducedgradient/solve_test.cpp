#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/reducedgradient/smoothmodel.h"
#include "tests/support/memory.h"
#include "tests/support/messages.h"

namespace tarnwick {
namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double PLENTY = std::numeric_limits<double>::infinity();

bool is_good(std::int32_t status)
{
    return status == STAT_OPTIMAL || status == STAT_CONVERGED || status == STAT_MIP_OPTIMAL;
}

// Units that differ by six orders. The first row binds: with a = x - 300 and b = y - 0.02, a^2 + 1e6 b^2
// is least on a + 5000 b = -50 where b = -50 * 5000 / (1e6 + 5000^2).
Smooth unequal_units(std::int32_t objsen)
{
    const double sign = objsen;
    return {
        .name = "unequal units",
        .variables = 3,
        .functions =
            [sign](const Reals& x, double& f, Reals& g) {
                f = sign * (std::pow(x[0] - 300, 2) + 1e6 * std::pow(x[1] - 0.02, 2) + 4 * x[2]);
                g = {x[0] + 5000 * x[1], x[0] * x[0] + x[2]};
                return true;
                                                         },
        .senses = "LG",
        .rhs = {350, 100},
        .start = {100, 0.01, 5  },
        .lb = {0, 0, 2    },
        .ub = {1000, 1, 9},
        .objsen = objsen,
        .derivatives =
            [sign](const Reals& x, Reals& c, Reals& a) {
                c = {sign * 2 * (x[0] - 300), sign * 2e6 * (x[1] - 0.02), sign * 4};
                a = {1, 2 * x[0], 5000, 0, 0, 1};
                return true;
                                                         }
    };
}

TEST(SmoothSolve, gives_multipliers_in_the_units_and_the_sense_of_the_host)
{
    const double b = -50.0 * 5000 / (1e6 + 25e6), a = -50 - 5000 * b;
    const double optimum = a * a + 1e6 * b * b + 8;
    for (const std::int32_t objsen : {1, -1})
        for (const std::int32_t scaling : {-1, 0})
            for (const std::int32_t derivmode : {0, 1, 2, 3}) {
                SCOPED_TRACE(testing::Message() << "sense " << objsen << ", scaling " << scaling
                                                << ", derivatives " << derivmode);
                SmoothHost host(unequal_units(objsen));
                setintparam(host.lp, PARAM_SCALING, scaling);
                setintparam(host.lp, PARAM_NLPDERIVMODE, derivmode);
                setdblparam(host.lp, PARAM_NLPCONVTOL, 0.0);
                const Answer answer = host.solve();
                EXPECT_EQ(host.jacobians > 0, derivmode >= 2);
                EXPECT_NEAR(answer.objval, objsen * optimum, 2e-4 * optimum);
                EXPECT_TRUE(is_good(answer.status)) << answer.status;
                if (answer.status != STAT_OPTIMAL && derivmode == 0) continue;
                expect_stationary(host, answer, derivmode == 0 ? 1e-2 : 5e-3);
                EXPECT_NEAR(answer.piout[0], objsen * 2 * a, 0.02 * std::fabs(a));
                EXPECT_NEAR(answer.dj[2], objsen * 4, 1e-3);
            }
}

// ---- endings

bool square(const Reals& x, double& f, Reals&)
{
    f = x[0] * x[0];
    return true;
}

bool falling(const Reals& x, double& f, Reals&)
{
    f = -x[0];
    return true;
}

bool steep(const Reals& x, double& f, Reals&)
{
    f = -std::exp(x[0]);
    return true;
}

// The row is lowest at 1.
bool valley(const Reals& x, double& f, Reals& g)
{
    f = x[0];
    g[0] = std::pow(x[0] - 1, 2);
    return true;
}

bool wave(const Reals& x, double& f, Reals& g)
{
    f = x[0];
    g[0] = std::cos(x[0]);
    return true;
}

bool circle(const Reals& x, double& f, Reals& g)
{
    f = x[0] + 2 * x[1];
    g[0] = x[0] * x[0] + x[1] * x[1];
    return true;
}

// In the second start, of a variable at 0 between 0 and 10, it is at 5.
// clang-format off
const struct Ending {
    Smooth model;
    std::int32_t status;
    double objval;
} ENDINGS[] = {
    {{.name = "optimal", .variables = 2, .functions = circle, .senses = "L", .rhs = {5}, .start = {0.5, 0.25}},
     STAT_OPTIMAL, -5},
    {{.name = "stationary at once", .functions = square}, STAT_OPTIMAL, 0},
    {{.name = "crossed bounds", .functions = square, .lb = {1}, .ub = {0}}, STAT_INFEASIBLE, 0},
    {{.name = "no limit", .functions = falling}, STAT_UNBOUNDED, 0},
    {{.name = "no limit up to infinity", .functions = steep}, STAT_UNBOUNDED, 0},
    {{.name = "a second start", .functions = valley, .senses = "G", .rhs = {2}, .lb = {0}, .ub = {10}},
     STAT_OPTIMAL, 1 + std::sqrt(2.0)},
    {{.name = "no start helps", .functions = wave, .senses = "G", .rhs = {2}}, STAT_INFEASIBLE, 0},
    {{.name = "an equality row out of reach", .functions = wave, .senses = "E", .rhs = {-2}, .start = {1}}, STAT_INFEASIBLE, 0},
    {{.name = "a start that is no number", .functions = square, .start = {NOT_A_NUMBER}}, STAT_BADMODEL, 0},
    {{.name = "a bound that is no number", .functions = square, .lb = {NOT_A_NUMBER}}, STAT_INFEASIBLE, 0},
    {{.name = "a limit that is no number", .functions = valley, .senses = "G", .rhs = {NOT_A_NUMBER}}, STAT_INFEASIBLE, 0},
};
// clang-format on

TEST(SmoothSolve, ends_with_the_status_of_its_end)
{
    for (const Ending& c : ENDINGS)
        for (const std::int32_t scaling : {-1, 0}) {
            SCOPED_TRACE(testing::Message() << c.model.name << ", scaling " << scaling);
            SmoothHost host(c.model);
            setintparam(host.lp, PARAM_SCALING, scaling);
            setintparam(host.lp, PARAM_NLPDERIVMODE, 1);
            const Answer answer = host.solve();
            EXPECT_EQ(answer.status, c.status);
            EXPECT_NEAR(c.status == STAT_OPTIMAL ? answer.objval : c.objval, c.objval, 1e-5);
        }
}

// ---- stops and failures at every turn

// HS 43 (Rosen and Suzuki), from its own start.
bool rosen_suzuki(const Reals& x, double& f, Reals& g)
{
    const double a = x[0], b = x[1], c = x[2], d = x[3];
    f = a * a + b * b + 2 * c * c + d * d - 5 * a - 5 * b - 21 * c + 7 * d;
    g = {a * a + b * b + c * c + d * d + a - b + c - d,
         a * a + 2 * b * b + c * c + 2 * d * d - a - d, 2 * a * a + b * b + c * c + 2 * a - b - d};
    return true;
}
constexpr double ROSEN_SUZUKI = -44;
const Smooth HS43{
    .name = "HS 43", .variables = 4, .functions = rosen_suzuki, .senses = "LLL", .rhs = {8, 10, 5}
};

int calls, laststop;
std::int32_t TARNWICK_CALL stop_at_last(Problem*, std::int32_t) { return ++calls == laststop; }

TEST(SmoothSolve, may_be_stopped_at_any_report)
{
    SmoothHost host(HS43);
    setlpcallbackfunc(host.lp, stop_at_last);
    std::int32_t status = STAT_NONE;
    for (laststop = 1; !is_good(status) && laststop < 1000; ++laststop) {
        SCOPED_TRACE(laststop);
        calls = 0;
        const Answer answer = host.solve();
        status = answer.status;
        if (is_good(status)) break;
        EXPECT_EQ(status, STAT_USERSTOP_FEAS);
        EXPECT_EQ(calls, laststop);
        double f;
        Reals g(3);
        rosen_suzuki(answer.x, f, g);
        EXPECT_EQ(answer.objval, f);
        EXPECT_EQ(answer.slack[0], 8 - g[0]);
    }
    EXPECT_GT(laststop, 5);
    setlpcallbackfunc(host.lp, nullptr);
    EXPECT_NEAR(host.solve().objval, ROSEN_SUZUKI, 1e-3);
}

// The call numbered `bad` answers with a failure, or with what is no value.
TEST(SmoothSolve, never_takes_a_failed_call_for_an_answer)
{
    const struct {
        const char* name;
        bool succeeds;
        double objective, row;
    } FAILURES[] = {
        {"a failure",                      false, 0.0,          0.0         },
        {"an objective that is no number", true,  NOT_A_NUMBER, 0.0         },
        {"a row that is no number",        true,  0.0,          NOT_A_NUMBER},
        {"an infinite row",                true,  0.0,          PLENTY      }
    };
    for (const auto& c : FAILURES)
        for (const std::int32_t derivmode : {0, 1})
            for (long bad = 1, last = 2; bad <= last; ++bad) {
                SCOPED_TRACE(testing::Message() << c.name << " in call " << bad);
                Smooth model = HS43;
                long call = 0;
                model.functions = [&](const Reals& x, double& f, Reals& g) {
                    rosen_suzuki(x, f, g);
                    if (++call != bad) return true;
                    f += c.objective;
                    g[1] += c.row;
                    return c.succeeds;
                };
                SmoothHost host(model);
                setintparam(host.lp, PARAM_NLPDERIVMODE, derivmode);
                const Answer answer = host.solve();
                last = std::min(host.evaluations - 1, 400L);  // the final one repeats another
                EXPECT_TRUE(c.succeeds || answer.status == STAT_EVALERROR) << answer.status;
                EXPECT_TRUE(!is_good(answer.status) ||
                            std::fabs(answer.objval - ROSEN_SUZUKI) < 1e-2)
                    << answer.objval;
                if (HasFailure()) return;
            }
}

TEST(SmoothSolve, survives_the_failure_of_every_allocation)
{
    for (const std::int32_t elastic : {0, 1}) {
        SmoothHost host(HS43);
        const long before = blocks_alive();
        long n = 0;
        for (bool failed = true; failed && n < 100; ++n) {
            allow_allocations(n);
            std::int32_t rows, columns;
            if (elastic)
                findiis(host.lp, &rows, &columns);
            else
                optimize(host.lp);
            failed = allocation_failed();
            allow_all_allocations();
        }
        EXPECT_GT(n, 3);
        EXPECT_LE(blocks_alive(), before + 8);  // what the Problem keeps for good
    }
    SmoothHost host(HS43);
    allow_allocations(4);  // all but the factor
    const Answer answer = host.solve();
    allow_all_allocations();
    EXPECT_NEAR(answer.objval, ROSEN_SUZUKI, 1e-2);
}

// ---- with the strategies

// The first problem of M. A. Duran and I. E. Grossmann, Mathematical Programming 36, 1986.
TEST(SmoothSolve, solves_integer_models_under_branch_and_bound)
{
    for (const std::int32_t scaling : {-1, 0}) {
        SmoothHost host({
            .name = "synthesis",
            .variables = 6,
            .functions =
                [](const Reals& x, double& f, Reals& g) {
                    const double u = std::log(x[1] + 1), v = std::log(x[0] - x[1] + 1);
                    f = 5 * x[3] + 6 * x[4] + 8 * x[5] + 10 * x[0] - 7 * x[2] - 18 * u - 19.2 * v +
                        10;
                    g = {0.8 * u + 0.96 * v - 0.8 * x[2],
                         u + 1.2 * v - x[2] - 2 * x[5],
                         x[1] - x[0],
                         x[1] - 2 * x[3],
                         x[0] - x[1] - 2 * x[4],
                         x[3] + x[4]};
                    return true;
                                                         },
            .senses = "GGLLLL",
            .rhs = {                                                              0, -2, 0, 0, 0, 1},
            .lb = { 0, 0,  0, 0, 0, 0},
            .ub = { 2, 2,  1, 1, 1, 1},
            .ctype = "CCCBBB"
        });
        setintparam(host.lp, PARAM_SCALING, scaling);
        const Answer answer = host.solve();
        EXPECT_TRUE(is_good(answer.status)) << answer.status;
        EXPECT_NEAR(answer.objval, 6.00976, 1e-3);
        EXPECT_EQ(answer.x[3], 0);
        EXPECT_EQ(answer.x[4], 1);
        EXPECT_EQ(answer.x[5], 0);
    }
}

// No point of the unit disc reaches the half-plane of the second row; the third row is spared.
TEST(SmoothSolve, finds_infeasible_subsets)
{
    SmoothHost host({
        .name = "disc",
        .variables = 2,
        .functions =
            [](const Reals& x, double& f, Reals& g) {
                f = x[0];
                g = {x[0] * x[0] + x[1] * x[1], x[0] + x[1], x[0] - x[1]};
                return true;
                                                     },
        .senses = "LGL",
        .rhs = {                                                            1,  3, 4},
        .start = { 0.5, 1}
    });
    std::int32_t rows = -1, columns = -1, status = -1, rowind[3] = {-1, -1, -1};
    EXPECT_EQ(findiis(host.lp, &rows, &columns), 0);
    EXPECT_EQ(rows, 2);
    EXPECT_EQ(columns, 0);
    EXPECT_EQ(getiis(host.lp, &status, rowind, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(rowind[0], 0);
    EXPECT_EQ(rowind[1], 1);
}

}  // namespace
}  // namespace tarnwick
