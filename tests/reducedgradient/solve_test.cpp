#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "interface/problem.h"
#include "tests/reducedgradient/smoothmodel.h"
#include "tests/support/memory.h"

namespace tarnwick {
namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

// Units that differ by six orders. The first row binds: with a = x - 300 and b = y - 0.02, a^2 + 1e6 b^2
// is least on a + 5000 b = -50 where b = -50 * 5000 / (1e6 + 5000^2).
Smooth unequal_units(std::int32_t objsen)
{
    const double sign = objsen;
    Smooth model{.variables = 3, .senses = "LG", .objsen = objsen};
    model.functions = [sign](const Reals& x, double& f, Reals& g) {
        f = sign * (std::pow(x[0] - 300, 2) + 1e6 * std::pow(x[1] - 0.02, 2) + 4 * x[2]);
        g = {x[0] + 5000 * x[1], x[0] * x[0] + x[2]};
        return true;
    };
    model.derivatives = [sign](const Reals& x, Reals& c, Reals& a) {
        c = {sign * 2 * (x[0] - 300), sign * 2e6 * (x[1] - 0.02), sign * 4};
        a = {1, 2 * x[0], 5000, 0, 0, 1};
        return true;
    };
    model.rhs = {350, 100};
    model.start = {100, 0.01, 5};
    model.lb = {0, 0, 2};
    model.ub = {1000, 1, 9};
    return model;
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
                set(host.lp, PARAM_SCALING, scaling, PARAM_NLPDERIVMODE, derivmode,
                    PARAM_NLPCONVTOL, 0.0);
                const Answer answer = host.solve();
                EXPECT_EQ(host.jacobians > 0, derivmode >= 2);
                EXPECT_NEAR(answer.objval, objsen * optimum, 2e-4 * optimum);
                EXPECT_TRUE(is_good(answer.status)) << answer.status;
                if (answer.status != STAT_OPTIMAL && derivmode == 0) continue;
                const double pi[] = {objsen * 2 * a, 0}, dj[] = {0, 0, objsen * 4.0};
                for (std::size_t i = 0; i < 2; ++i) EXPECT_NEAR(answer.piout[i], pi[i], 0.038) << i;
                for (std::size_t j = 0; j < 3; ++j) EXPECT_NEAR(answer.dj[j], dj[j], 1e-3) << j;
            }
}

// ---- endings

// Functions of one or two variables; g is the row.
template <class F>
HostFunctions by(F formula)
{
    return [formula](const Reals& x, double& f, Reals& g) {
        double row = 0.0;
        f = formula(x[0], x.back(), row);
        for (double& value : g) value = row;
        return true;
    };
}

TEST(SmoothSolve, ends_with_the_status_of_its_end)
{
    const auto square = by([](double x, double, double&) { return x * x; });
    const auto falling = by([](double x, double, double&) { return -x; });
    const auto steep = by([](double x, double, double&) { return -std::exp(x); });
    // The row is lowest at 1; the second start, of a variable at 0 between 0 and 10, is at 5.
    const auto valley = by([](double x, double, double& g) {
        g = std::pow(x - 1, 2);
        return x;
    });
    const auto wave = by([](double x, double, double& g) {
        g = std::cos(x);
        return x;
    });
    const auto cubic = by([](double x, double y, double& g) {
        g = x - y * y * y;
        return -x;
    });
    // clang-format off
    const struct {
        Smooth model;
        std::int32_t status;
        double objval = 0.0;
    } CASES[] = {
        {{.name = "stationary at once", .functions = square}, STAT_OPTIMAL, 0},
        {{.name = "crossed bounds", .functions = square, .lb = {1}, .ub = {0}}, STAT_INFEASIBLE},
        {{.name = "no limit up to infinity", .functions = steep}, STAT_UNBOUNDED},
        {{.name = "no limit for an integer", .functions = falling, .start = {0.5}, .ctype = "I"}, STAT_UNBOUNDED},
        {{.name = "no limit, but curves", .variables = 2, .functions = cubic, .senses = "L", .start = {0.5, 0.5}}, STAT_STALLED},
        {{.name = "a second start", .functions = valley, .senses = "G", .rhs = {2}, .lb = {0}, .ub = {10}}, STAT_OPTIMAL, 1 + std::sqrt(2.0)},
        {{.name = "no start helps", .functions = wave, .senses = "G", .rhs = {2}}, STAT_INFEASIBLE},
        {{.name = "NaN for a start", .functions = square, .start = {NaN}}, STAT_BADMODEL},
        {{.name = "NaN for a bound", .functions = square, .lb = {NaN}}, STAT_INFEASIBLE},
        {{.name = "NaN for a limit", .functions = valley, .senses = "G", .rhs = {NaN}}, STAT_INFEASIBLE},
    };
    // clang-format on
    for (const auto& c : CASES)
        for (const std::int32_t scaling : {-1, 0}) {
            SCOPED_TRACE(testing::Message() << c.model.name << ", scaling " << scaling);
            SmoothHost host(c.model);
            set(host.lp, PARAM_SCALING, scaling, PARAM_NLPDERIVMODE, 1);
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
    .variables = 4, .functions = rosen_suzuki, .senses = "LLL", .rhs = {8, 10, 5}
};

bool rosenbrock(const Reals& x, double& f, Reals&)
{
    f = 100 * std::pow(x[1] - x[0] * x[0], 2) + std::pow(1 - x[0], 2);
    return true;
}

int calls, laststop, stopanswer;
std::int32_t TARNWICK_CALL stop_at_last(Problem*, std::int32_t)
{
    return ++calls == laststop ? stopanswer : 0;
}

// The run stands where the derivatives were last taken, each by moving one variable.
void expect_stop(const SmoothHost& host, const Answer& answer)
{
    double f;
    Reals g(host.model.senses.size());
    host.model.functions(answer.x, f, g);
    EXPECT_EQ(answer.status, STAT_USERSTOP_FEAS);
    EXPECT_EQ(calls, laststop);
    EXPECT_EQ(answer.objval, f);
    for (std::size_t i = 0; i < g.size(); ++i) EXPECT_EQ(answer.slack[i], host.model.rhs[i] - g[i]);

    for (const auto& [column, point] : host.beside)
        for (std::size_t j = 0; j < point.size(); ++j)
            EXPECT_NEAR(point[j], answer.x[j],
                        static_cast<std::int32_t>(j) == column ? 1e-2 : 1e-12);
}

TEST(SmoothSolve, may_be_stopped_at_any_report)
{
    Smooth elsewhere = HS43, banana{.variables = 2, .functions = rosenbrock};
    elsewhere.start = {0.5, -2, 3, 0.25};
    banana.start = {-1.2, 1};
    stopanswer = 1;
    for (const Smooth* model : {&elsewhere, &banana})
        for (const std::int32_t scaling : {-1, 0})
            for (const std::int32_t derivmode : {0, 1}) {
                SmoothHost host(*model);
                set(host.lp, PARAM_SCALING, scaling, PARAM_NLPDERIVMODE, derivmode);
                setlpcallbackfunc(host.lp, stop_at_last);
                Answer answer;
                for (laststop = 1; laststop < 1000; ++laststop) {
                    SCOPED_TRACE(testing::Message() << "report " << laststop);
                    calls = 0;
                    answer = host.solve();
                    if (is_good(answer.status)) break;
                    expect_stop(host, answer);
                }
                EXPECT_GT(laststop, 5);
                EXPECT_NEAR(answer.objval, model == &elsewhere ? ROSEN_SUZUKI : 0.0, 1e-3);
            }
}

// The call numbered `bad` answers with what is no value.
TEST(SmoothSolve, never_takes_a_failed_call_for_an_answer)
{
    const struct {
        double objective, row;
    } FAILURES[] = {
        {NaN, 0       },
        {0,   NaN     },
        {0,   HUGE_VAL}
    };
    for (const auto& c : FAILURES)
        for (const std::int32_t derivmode : {0, 1})
            for (long bad = 1, call = 1; bad <= std::min(call, 400L) && !HasFailure(); ++bad) {
                SCOPED_TRACE(testing::Message()
                             << c.objective << " and " << c.row << " in call " << bad);
                Smooth model = HS43;
                call = 0;
                model.functions = [&](const Reals& x, double& f, Reals& g) {
                    rosen_suzuki(x, f, g);
                    if (++call == bad) {
                        f += c.objective;
                        g[1] += c.row;
                    }
                    return true;
                };
                SmoothHost host(model);
                setintparam(host.lp, PARAM_NLPDERIVMODE, derivmode);
                const Answer answer = host.solve();
                if (call == bad) break;  // the final one, which repeats another
                const bool is_true = std::fabs(answer.objval - ROSEN_SUZUKI) < 1e-2;
                EXPECT_TRUE(is_true || !is_good(answer.status)) << answer.objval;
            }
}

TEST(SmoothSolve, survives_the_failure_of_every_allocation)
{
    for (const bool elastic : {false, true}) {
        SmoothHost host(HS43);
        const long before = blocks_alive();
        long n = 0;
        for (bool failed = true; failed && n < 100; ++n) {
            allow_allocations(n);
            std::int32_t rows, columns;
            elastic ? findiis(host.lp, &rows, &columns) : optimize(host.lp);
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
bool synthesis(const Reals& x, double& f, Reals& g)
{
    const double u = std::log(x[1] + 1), v = std::log(x[0] - x[1] + 1);
    f = 5 * x[3] + 6 * x[4] + 8 * x[5] + 10 * x[0] - 7 * x[2] - 18 * u - 19.2 * v + 10;
    g = {0.8 * u + 0.96 * v - 0.8 * x[2],
         u + 1.2 * v - x[2] - 2 * x[5],
         x[1] - x[0],
         x[1] - 2 * x[3],
         x[0] - x[1] - 2 * x[4],
         x[3] + x[4]};
    return true;
}

// clang-format off
const Smooth SYNTHESIS{.variables = 6, .functions = synthesis, .senses = "GGLLLL",
                       .rhs = {0, -2, 0, 0, 0, 1}, .lb = {0, 0, 0, 0, 0, 0},
                       .ub = {2, 2, 1, 1, 1, 1}, .ctype = "CCCBBB"};
// clang-format on

// The callback's answer is the status, with an integer solution at hand and without. The last run of
// each loop is not stopped and comes to the published optimum.
TEST(SmoothSolve, solves_integer_models_and_may_be_stopped_inside_any_node)
{
    const struct {
        std::int32_t answer, with, without;
    } STOPS[] = {
        {1,   STAT_USERSTOP_FEAS,    STAT_USERSTOP_INFEAS   },
        {5,   STAT_ITERLIM_FEAS,     STAT_ITERLIM_INFEAS    },
        {107, STAT_MIP_TIMELIM_FEAS, STAT_MIP_TIMELIM_INFEAS},
        {105, STAT_MIP_NODELIM_FEAS, STAT_MIP_NODELIM_INFEAS},
        {104, STAT_MIP_INTLIMIT,     STAT_MIP_INTLIMIT      },
    };
    int found = 0;
    for (const auto& c : STOPS)
        for (const std::int32_t scaling : {-1, 0}) {
            SmoothHost host(SYNTHESIS);
            setintparam(host.lp, PARAM_SCALING, scaling);
            setlpcallbackfunc(host.lp, stop_at_last);
            stopanswer = c.answer;
            for (laststop = 1;; ++laststop) {
                SCOPED_TRACE(testing::Message()
                             << c.answer << " at report " << laststop << ", scaling " << scaling);
                calls = 0;
                const Answer answer = host.solve();
                if (calls < laststop) {
                    EXPECT_EQ(answer.status, STAT_MIP_OPTIMAL);
                    EXPECT_NEAR(answer.objval, 6.00976, 1e-3);
                    EXPECT_EQ(Reals(answer.x.begin() + 3, answer.x.end()), (Reals{0, 1, 0}));
                    break;
                }
                const bool has_solution = host.lp->intsolutions > 0;
                EXPECT_EQ(answer.status, has_solution ? c.with : c.without);
                EXPECT_EQ(calls, laststop);
                for (std::size_t j = 3; j < 6 && has_solution; ++j)
                    EXPECT_EQ(answer.x[j], std::round(answer.x[j]));
                found += has_solution;
            }
        }
    EXPECT_GT(found, 10);
}

}  // namespace
}  // namespace tarnwick
