#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "tests/nonsmooth/hostmodel.h"
#include "tests/support/clock.h"
#include "tests/support/memory.h"

namespace tarnwick {
namespace {

const double NaN = std::nan("");

// The clock of most tests: one millisecond for each reading.
struct Ticking {
    explicit Ticking(std::uint32_t start = 1000) { set_clock(start, 1); }
    ~Ticking() { release_clock(); }
};

bool has_converged(const Answer& answer)
{
    return answer.status == STAT_CONVERGED || answer.status == STAT_STALLED;
}

void expect_inside(const FunctionCase& model, const Reals& x)
{
    for (std::size_t i = 0; i < x.size(); ++i) {
        ASSERT_TRUE(model.lb[i] <= x[i] && x[i] <= model.ub[i]) << x[i];
        const bool is_integer = !model.ctype.empty() && model.ctype[i] != 'C';
        ASSERT_TRUE(!is_integer || x[i] == std::floor(x[i])) << x[i];
    }
}

// The point keeps its bounds exactly, its rows but for the tolerance of a relative 1e-3, which is
// what equations may be off; integers are whole, and objective and slacks belong to the point.
void expect_answer(const HostModel& host, const Answer& answer)
{
    const FunctionCase& model = host.model;
    expect_inside(model, answer.x);
    double objective = 0.0;
    Reals rows(model.senses.size());
    ASSERT_TRUE(model.functions(answer.x, objective, rows));
    EXPECT_EQ(answer.objval, objective);
    for (std::size_t j = 0; j < rows.size(); ++j) {
        const double slack = model.rhs[j] - rows[j], tol = 1.1e-3 * (std::fabs(rows[j]) + 1.0);
        EXPECT_EQ(answer.slack[j], slack);
        EXPECT_TRUE(model.senses[j] == 'G' || slack >= -tol) << j;
        EXPECT_TRUE(model.senses[j] == 'L' || model.senses[j] == 'R' || slack <= tol) << j;
    }
}

// |v - 3| over all variables and 1; each row is their sum.
bool distances(const Reals& x, double& objective, Reals& rows)
{
    objective = 1.0;
    double sum = 0.0;
    for (const double v : x) {
        objective += std::fabs(v - 3.0);
        sum += v;
    }
    for (double& row : rows) row = sum;
    return true;
}

// clang-format off
const struct {
    FunctionCase model;
    double optimum, tolerance;
} OPTIMA[] = {
    {{.name = "a kink inside the box", .variables = 3, .functions = distances}, 1.0, 0.05},
    {{.name = "maximised: a corner", .variables = 2, .functions = distances, .objsen = -1}, 27, 1e-6},
    {{.name = "a range", .variables = 2, .functions = distances,
      .senses = "R", .rhs = {9}, .lb = {0, 0}, .ranges = {-7}}, 1.0, 0.05},
    {{.name = "scales that round", .variables = 3, .functions = distances,
      .senses = "L", .rhs = {4}, .start = {0.13, 0.7, 1.7}, .lb = {-0.1, 0.3, -7},
      .ub = {0.8, 1.1, 7}, .ctype = "CCI"}, 6.0, 0.05},
};
// clang-format on

TEST(NonSmoothSolve, comes_to_the_known_optimum_inside_the_box)
{
    for (const auto& c : OPTIMA)
        for (const std::int32_t scaling : {0, -1}) {
            SCOPED_TRACE(std::string(c.model.name) + (scaling ? ", unscaled" : ""));
            const Ticking clock;
            HostModel host(c.model);
            setintparam(host.lp, PARAM_SCALING, scaling);
            host.keeps_points = true;
            const Answer answer = host.solve();
            EXPECT_TRUE(has_converged(answer)) << answer.status;
            EXPECT_NEAR(answer.objval, c.optimum, c.tolerance + 1e-12);
            expect_answer(host, answer);
            for (std::size_t p = 2; p < host.points.size(); ++p)  // the first two are the start
                expect_inside(host.model, host.points[p]);
        }
}

// ---- endings

bool fails(const Reals&, double&, Reals&) { return false; }
// clang-format off
const FunctionCase KINK{.variables = 2, .functions = distances},
    WHOLE{.variables = 2, .functions = distances, .ctype = "IC"},
    CUT{.functions = distances, .senses = "G", .rhs = {11}},
    WHOLE_CUT{.functions = distances, .senses = "G", .rhs = {11}, .ctype = "I"};
const struct {
    const char* name;
    FunctionCase model;
    Settings settings;
    std::int32_t status;
} ENDINGS[] = {
    {"only crossovers",              KINK,      {{PARAM_NSPMUTATION, 0}}, 65},
    {"never converges",              KINK,      {{PARAM_NSPSTALLTIME, 0}, {PARAM_NLPCONVTOL, 0}}, 66},
    {"no iteration",                 KINK,      {{PARAM_ITERLIMIT, 0}}, 5},
    {"no crossover",                 KINK,      {{PARAM_NODELIMIT, 0}}, 105},
    {"no feasible member",           KINK,      {{PARAM_INTSOLLIMIT, 0}}, 104},
    {"no time",                      KINK,      {{PARAM_TIMELIMIT, 0}}, 7},
    {"no time, nor a point",         WHOLE_CUT, {{PARAM_TIMELIMIT, 0}}, 108},
    {"infeasible",                   CUT,       {{PARAM_NSPSTALLTIME, 0}}, 2},
    {"infeasible, integer",          WHOLE_CUT, {{PARAM_NSPSTALLTIME, 0}}, 103},
    {"fails at the start",       {.functions = fails},             {},                67},
    {"NaN for an objective",     {.functions = always(NaN)},       {{PARAM_SCALING, -1}},   67},
    {"huge objective",           {.functions = always(1e308)},     {{PARAM_NSPSTALLTIME, 0}},  66},
    {"the same, unscaled", {.functions = always(1e308)}, {{PARAM_NSPSTALLTIME, 0}, {PARAM_SCALING, -1}}, 2},
    {"NaN for a start",          {.functions = always(5.0), .start = {NaN}},  {},     201},
    {"upper bound missing",      {.functions = distances, .ub = {1e30}},      {},     3},
    {"bounds crossed",           {.functions = distances, .lb = {2}, .ub = {1}}, {},  2},
    {"NaN for a bound",          {.functions = distances, .lb = {NaN}},       {},     2},
};
// clang-format on

TEST(NonSmoothEndings, have_their_status)
{
    for (const auto& c : ENDINGS) {
        SCOPED_TRACE(c.name);
        const Ticking clock;
        HostModel host(c.model);
        set(host.lp, c.settings);
        const Answer answer = host.solve();
        EXPECT_EQ(answer.status, c.status);
        // KINK and WHOLE have feasible points wherever they end.
        if (c.model.variables == 2) expect_answer(host, answer);
    }
}

TEST(NonSmoothEndings, infinite_bounds_are_sampled_when_they_are_allowed)
{
    for (const double bound : {1e30, HUGE_VAL}) {
        const Ticking clock;
        FunctionCase model = KINK;
        model.start = {6, 5};
        model.lb = {-bound, 1};
        model.ub = {bound, bound};
        HostModel host(model);
        set(host.lp, PARAM_NSPSTALLTIME, 1, PARAM_NSPREQBOUNDS, 0);
        host.keeps_points = true;
        const Answer answer = host.solve();
        EXPECT_TRUE(has_converged(answer)) << answer.status;
        EXPECT_LE(answer.objval, 6.0) << "the start is one of the candidates";
        for (const Reals& x : host.points)
            ASSERT_TRUE(std::fabs(x[0]) <= 7e30 && std::fabs(x[1]) <= 6e30);
    }
}

TEST(NonSmoothEndings, a_function_that_fails_now_and_then_does_no_harm)
{
    const Ticking clock;
    long calls = 0;
    HostModel host({.variables = 2, .functions = [&](const Reals& x, double& f, Reals& rows) {
                        distances(x, f, rows);
                        return ++calls % 5 != 2;
                    }});
    setintparam(host.lp, PARAM_NSPSTALLTIME, 0);
    const Answer answer = host.solve();
    EXPECT_TRUE(has_converged(answer)) << answer.status;
    EXPECT_LT(answer.objval, 3.0);
}

TEST(NonSmoothEndings, failures_end_after_a_hundred_for_each_member)
{
    HostModel host({.variables = 3, .functions = fails});
    set(host.lp, PARAM_SCALING, -1);
    EXPECT_EQ(host.solve().status, STAT_EVALERROR);
    EXPECT_EQ(host.evaluations, 100 * 30 + 2) << "one too many, and the final one";
}

// There is a look at the time after a thousand failures, and after evaluations that took seconds.
TEST(NonSmoothEndings, limits_have_their_turn_while_the_first_population_fills)
{
    for (const bool is_slow : {false, true}) {
        std::uint32_t now = 1000;
        set_clock(now);
        HostModel host({.variables = 3, .functions = [&](const Reals&, double& f, Reals&) {
                            f = 0.0;
                            if (is_slow) set_clock(now += 2000);
                            return is_slow;
                        }});
        set(host.lp, PARAM_NSPPOPSIZE, 200000, PARAM_SCALING, -1, PARAM_TIMELIMIT,
            is_slow ? 20.0 : 0.0);
        EXPECT_EQ(host.solve().status, STAT_TIMELIM_FEAS);
        EXPECT_LT(host.evaluations, is_slow ? 30 : 1100);
        release_clock();
    }
}

// ---- callbacks

struct Stop {
    long calls = 0, last = 0;
    std::int32_t answer = 0, event = 0;
} stop;

std::int32_t TARNWICK_CALL stop_at(Problem*, std::int32_t event)
{
    EXPECT_EQ(event, stop.event);
    return ++stop.calls == stop.last ? stop.answer : 0;
}

TEST(NonSmoothCallbacks, may_stop_at_any_event)
{
    for (const std::int32_t event : {1, 101})
        for (const std::int32_t code : {1, 5, 7, 105, 104})
            for (const long last : {1, 2, 3, 10, 57}) {
                SCOPED_TRACE(testing::Message() << event << ": " << code << " at " << last);
                const Ticking clock;
                HostModel host(KINK);
                set(host.lp, PARAM_NLPCONVTOL, 0.0);
                (event == 1 ? setlpcallbackfunc : setmipcallbackfunc)(host.lp, stop_at);
                stop = {.last = last, .answer = code, .event = event};
                const Answer answer = host.solve();
                EXPECT_EQ(answer.status, code == 1 ? STAT_USERSTOP_FEAS : code);
                EXPECT_EQ(stop.calls, last);
                expect_answer(host, answer);
                EXPECT_LE(answer.objval, 7.0) << "no worse than the start";
            }
}

// ---- what remains

TEST(NonSmoothSolve, is_repeated_to_the_last_bit_under_the_same_clock)
{
    HostModel host(KINK);
    setintparam(host.lp, PARAM_NODELIMIT, 3000);
    host.keeps_points = true;
    std::vector<std::vector<Reals>> paths;
    for (const std::uint32_t start : {7000U, 7000U, 7001U}) {
        set_clock(start);
        host.points.clear();
        host.solve();
        paths.push_back(host.points);
    }
    release_clock();
    EXPECT_EQ(paths[0], paths[1]);
    EXPECT_NE(paths[0], paths[2]);
}

TEST(NonSmoothSolve, survives_every_lack_of_memory)
{
    const Ticking clock;
    const long alive = blocks_alive();
    std::int32_t status = STAT_NONE;
    bool failed = true;
    for (long allowed = 0; failed; ++allowed) {
        ASSERT_LT(allowed, 1000);
        HostModel host({.functions = distances, .senses = "L", .rhs = {5.0}});
        set(host.lp, PARAM_NODELIMIT, 20);
        allow_allocations(allowed);
        EXPECT_EQ(optimize(host.lp), 0);
        failed = allocation_failed();
        allow_all_allocations();
        solution(host.lp, &status, nullptr, nullptr, nullptr, nullptr, nullptr);
        // Without memory for the statistics alone the run ends as it does otherwise.
        EXPECT_TRUE(status == STAT_NOMEMORY || status == STAT_BADMODEL ||
                    status == STAT_MIP_NODELIM_FEAS)
            << allowed << ": " << status;
    }
    EXPECT_EQ(status, STAT_MIP_NODELIM_FEAS);
    EXPECT_EQ(blocks_alive(), alive);
}

// The members are evaluated for the statistics just before the reported point. A row's values are
// looked at like those of a variable.
TEST(NonSmoothStatistics, are_those_of_the_final_population)
{
    for (const bool stopped : {false, true}) {
        const Ticking clock;
        FunctionCase model = KINK;
        model.senses += 'L';
        model.rhs = {1000.0};
        model.start = {0.3, 7.0};
        HostModel host(model);
        set(host.lp, PARAM_ITERLIMIT, stopped ? 20 : 9999, PARAM_NSPPOPSIZE, 25);
        host.keeps_points = true;
        const Answer answer = host.solve();
        EXPECT_EQ(answer.status, stopped ? STAT_ITERLIM_FEAS : STAT_CONVERGED);
        ASSERT_EQ(host.points.back(), answer.x);
        std::vector<Reals> members(host.points.end() - 26, host.points.end() - 1);
        for (Reals& x : members) x.push_back(x[0] + x[1]);

        double mid[3], disp[3], lower[3], upper[3];
        ASSERT_EQ(varstat(host.lp, 0, 1, mid, disp, lower, upper), 0);
        ASSERT_EQ(constat(host.lp, 0, 0, mid + 2, disp + 2, lower + 2, upper + 2), 0);
        for (std::size_t i = 0; i < 3; ++i) {
            double mean = 0.0, squares = 0.0;
            for (const Reals& x : members) mean += x[i] / 25.0;
            for (const Reals& x : members) squares += (x[i] - mean) * (x[i] - mean);
            const auto by_value = [i](const Reals& x, const Reals& y) { return x[i] < y[i]; };
            EXPECT_NEAR(mid[i], mean, 1e-12);
            EXPECT_NEAR(disp[i], std::sqrt(squares / 24.0), 1e-12);
            EXPECT_EQ(lower[i], std::ranges::min(members, by_value)[i]);
            EXPECT_EQ(upper[i], std::ranges::max(members, by_value)[i]);
        }
        EXPECT_EQ(varstat(host.lp, 1, 1, mid, disp, lower, upper), 0);
        EXPECT_EQ(constat(host.lp, 0, 1, mid, disp, lower, upper), 2) << "there is one row";
    }
}

// ---- the frame

TEST(NonSmoothFrame, chooses_the_population_by_the_number_of_variables)
{
    const auto size = [](int variables, int request) {
        const HostModel host({.variables = variables, .functions = always(1.0)});
        setintparam(host.lp, PARAM_NSPPOPSIZE, request);
        return NspRun(host).record().popsize;
    };
    EXPECT_EQ(size(1, 0), 10);
    EXPECT_EQ(size(21, 0), 200);
    EXPECT_EQ(size(3, 9), 30);
    EXPECT_EQ(size(3, 10), 10);
}

// Scales are magnitudes at the start, where they are as large as the convergence tolerance of 1e-4.
TEST(NonSmoothFrame, scales_by_the_magnitudes_at_the_start)
{
    FunctionCase model{.variables = 5, .functions = [](const Reals&, double& f, Reals& rows) {
                           f = -50.0;
                           rows = {1e-5, 20.0};
                           return true;
                       }};
    model.senses = {'L', 'G'};
    model.rhs = {4.0, 10.0};
    model.start = {-4.0, 0.0, 0.9e-4, 1e-4, 7.0};
    const HostModel host(model);
    NspRun run(host);
    setintparam(host.lp, PARAM_ITERLIMIT, 0);
    const NspEngine& nsp = run.record();
    nspsolve(run.run);
    const auto items = [](const auto& array, int n) {
        return Reals(array.data(), array.data() + n);
    };
    EXPECT_EQ(items(nsp.varscale, 5), (Reals{4.0, 1.0, 1.0, 1e-4, 7.0}));
    EXPECT_EQ(items(nsp.rowscale, 3), (Reals{1.0, 20.0, 50.0}));
    EXPECT_EQ(items(nsp.lower, 5), Reals(5, -10.0)) << "real again";
    EXPECT_EQ(nsp.rowupper[0], 4.0);
    EXPECT_EQ(run.run.objective, -1.0) << "in scaled units";
}

}  // namespace
}  // namespace tarnwick
