#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "tests/nonsmooth/hostmodel.h"
#include "tests/support/clock.h"
#include "tests/support/memory.h"

namespace tarnwick {
namespace {

const double NaN = std::nan("");

// The clock of most tests: one millisecond for each reading.
struct Ticking {
    explicit Ticking(std::uint32_t start = 1000, std::uint32_t step = 1) { set_clock(start, step); }
    ~Ticking() { release_clock(); }
};

// The point keeps its bounds exactly, its rows but for the tolerance of a relative 1e-3, which is
// what equations may be off; integers are whole, and objective and slacks belong to the point.
void expect_answer(const HostModel& host, const Outcome& outcome)
{
    const NonSmooth& model = host.model;
    for (std::size_t i = 0; i < outcome.x.size(); ++i) {
        EXPECT_LE(model.lb[i], outcome.x[i]);
        EXPECT_LE(outcome.x[i], model.ub[i]);
        if (!model.ctype.empty() && model.ctype[i] != 'C') {
            EXPECT_EQ(outcome.x[i], std::floor(outcome.x[i]));
        }
    }
    double objective = 0.0;
    Reals rows(model.senses.size());
    ASSERT_TRUE(model.functions(outcome.x, objective, rows));
    EXPECT_EQ(outcome.objval, objective);
    for (std::size_t j = 0; j < rows.size(); ++j) {
        const double slack = model.rhs[j] - rows[j];
        EXPECT_EQ(outcome.slack[j], slack);
        const double tol = 1.1e-3 * (std::fabs(rows[j]) + 1.0);
        if (model.senses[j] != 'G') {
            EXPECT_GE(slack, -tol) << j;
        }
        if (model.senses[j] == 'G' || model.senses[j] == 'E') {
            EXPECT_LE(slack, tol) << j;
        }
    }
}

bool sum_of_distances(const Reals& x, double& objective, Reals& rows)
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

bool steps(const Reals& x, double& objective, Reals& rows)
{
    objective = 0.0;
    for (const double v : x) objective += std::floor(std::fabs(v) * 4.0);
    for (double& row : rows) row = x[0] * x[0];
    return true;
}

// Two products from a machine with a set-up cost for each.
bool set_up_costs(const Reals& x, double& objective, Reals& rows)
{
    objective = 0.0;
    for (const double v : x) objective += v > 0.5 ? 5.0 * v - 12.0 : 0.0;
    rows[0] = x[0] + 2.0 * x[1];
    return true;
}

TEST(NonSmoothSolve, comes_to_the_known_optimum)
{
    // clang-format off
    const struct {
        const char* name;
        NonSmooth model;
        double optimum, tolerance;
    } CASES[] = {
        {"a kink inside the box", {.variables = 3, .functions = sum_of_distances}, 1.0, 0.05},
        {"a kink outside", {.functions = sum_of_distances, .ub = {2.5}}, 1.5, 0.0},
        {"maximised: a corner",
         {.variables = 2, .functions = sum_of_distances, .objsen = -1}, 27.0, 1e-6},
        {"flat steps", {.variables = 2, .functions = steps, .start = {5, 5}}, 0.0, 0.0},
        {"a row cuts the optimum off",
         {.variables = 2, .functions = sum_of_distances, .senses = {'L'}, .rhs = {4.0}}, 3.0, 0.02},
        {"a greater-row",
         {.variables = 2, .functions = sum_of_distances, .senses = {'G'}, .rhs = {8.0}}, 3.0, 0.02},
        {"an equation",
         {.variables = 2,
          .functions =
              [](const Reals& x, double& objective, Reals& rows) {
                  rows[0] = x[0];
                  objective = std::fabs(x[0] + x[1]);
                  return true;
              },
          .senses = {'E'}, .rhs = {2.0}, .ctype = {'I', 'C'}},
         0.0, 0.01},
        {"a range",
         {.variables = 2, .functions = sum_of_distances, .senses = {'R'}, .rhs = {9.0}, .lb = {0, 0},
          .ranges = {-7.0}},
         1.0, 0.05},
        {"integers",
         {.variables = 2, .functions = set_up_costs, .senses = {'L'}, .rhs = {7.0}, .lb = {0, 0},
          .ub = {9, 9}, .start = {0.7, 0.3}, .ctype = {'I', 'I'}, .objsen = -1},
         23.0, 0.0},
        {"switches",
         {.variables = 3,
          .functions =
              [](const Reals& x, double& objective, Reals&) {
                  objective = std::fabs(3 * x[0] + 5 * x[1] + 6 * x[2] - 9.2);
                  return true;
              },
          .ctype = {'B', 'B', 'B'}},
         0.2, 1e-12},
        {"a variable that can't move",
         {.variables = 2, .functions = sum_of_distances, .lb = {7, -10}, .ub = {7, 10}}, 5.0, 0.05},
    };
    // clang-format on
    for (const auto& c : CASES)
        for (const std::int32_t scaling : {0, -1}) {
            SCOPED_TRACE(std::string(c.name) + (scaling ? ", unscaled" : ""));
            const Ticking clock;
            const HostModel host(c.model);
            setintparam(host.lp, PARAM_SCALING, scaling);
            const Outcome outcome = solve(host);
            EXPECT_TRUE(outcome.status == STAT_CONVERGED || outcome.status == STAT_STALLED)
                << outcome.status;
            EXPECT_NEAR(outcome.objval, c.optimum, c.tolerance + 1e-12);
            expect_answer(host, outcome);
        }
}

TEST(NonSmoothSolve, evaluates_nothing_outside_the_box_and_integers_at_whole_numbers)
{
    for (int k = 0; k < 30; ++k) {
        const Ticking clock(1000 + 977U * static_cast<std::uint32_t>(k));
        NonSmooth model{.variables = 3, .functions = sum_of_distances};
        model.senses = {'L'};
        model.rhs = {4.0};
        model.lb = {-0.1 * k, 0.3, -7};
        model.ub = {0.1 + 0.7 * k, 1.1, 7};
        model.start = {0.1 + 0.03 * k, 0.7, 0.7 + 0.1 * k};
        model.ctype = {'C', 'C', 'I'};
        HostModel host(model);
        host.keeps_points = true;
        setintparam(host.lp, PARAM_NSPSTALLTIME, 0);
        expect_answer(host, solve(host));
        for (std::size_t p = 2; p < host.points.size(); ++p) {  // the first two are the start point
            const Reals& x = host.points[p];
            for (std::size_t i = 0; i < 3; ++i)
                ASSERT_TRUE(model.lb[i] <= x[i] && x[i] <= model.ub[i]) << x[i];
            ASSERT_EQ(x[2], std::floor(x[2]));
        }
    }
}

// ---- endings

struct Settings {
    std::int32_t iterlimit = INT32_MAX, nodelimit = INT32_MAX, intsollimit = INT32_MAX;
    std::int32_t popsize = 0, stalltime = 30, reqbounds = 1, scaling = 0;
    double timelimit = 1e9, convtol = 1e-4, mutation = 0.075;
};

void set(const HostModel& host, const Settings& s)
{
    setintparam(host.lp, PARAM_ITERLIMIT, s.iterlimit);
    setintparam(host.lp, PARAM_NODELIMIT, s.nodelimit);
    setintparam(host.lp, PARAM_INTSOLLIMIT, s.intsollimit);
    setintparam(host.lp, PARAM_NSPPOPSIZE, s.popsize);
    setintparam(host.lp, PARAM_NSPSTALLTIME, s.stalltime);
    setintparam(host.lp, PARAM_NSPREQBOUNDS, s.reqbounds);
    setintparam(host.lp, PARAM_SCALING, s.scaling);
    setdblparam(host.lp, PARAM_TIMELIMIT, s.timelimit);
    setdblparam(host.lp, PARAM_NLPCONVTOL, s.convtol);
    setdblparam(host.lp, PARAM_NSPMUTATION, s.mutation);
}

bool fails(const Reals&, double&, Reals&) { return false; }
Functions always(double objective)
{
    return [=](const Reals&, double& f, Reals& rows) {
        f = objective;
        std::fill(rows.begin(), rows.end(), 0.0);
        return true;
    };
}

TEST(NonSmoothEndings, have_their_status)
{
    // clang-format off
    const NonSmooth kink{.variables = 2, .functions = sum_of_distances};
    const NonSmooth whole{.variables = 2, .functions = sum_of_distances, .ctype = {'I', 'C'}};
    const NonSmooth cut{.functions = sum_of_distances, .senses = {'G'}, .rhs = {11.0}};
    const NonSmooth wholecut{
        .functions = sum_of_distances, .senses = {'G'}, .rhs = {11.0}, .ctype = {'I'}};
    const struct {
        const char* name;
        NonSmooth model;
        Settings settings;
        std::int32_t status;
    } CASES[] = {
        {"converges", kink, {}, 65},
        {"the smallest population", kink, {.popsize = 10}, 65},
        {"a large one", kink, {.iterlimit = 500, .popsize = 1500}, 5},
        {"only crossovers", kink, {.mutation = 0.0}, 65},
        {"never converges", kink, {.stalltime = 0, .convtol = 0.0}, 66},
        {"no iteration", kink, {.iterlimit = 0}, 5},
        {"one iteration", kink, {.iterlimit = 1}, 5},
        {"one iteration, integer", whole, {.iterlimit = 1}, 5},
        {"no crossover", kink, {.nodelimit = 0}, 105},
        {"one crossover", kink, {.nodelimit = 1, .mutation = 0.0}, 105},
        {"no feasible member", kink, {.intsollimit = 0}, 104},
        {"no time", kink, {.timelimit = 0.0}, 7},
        {"no time, integer", whole, {.timelimit = 0.0}, 107},
        {"no time, no feasible point, integer", wholecut, {.timelimit = 0.0}, 108},
        {"no feasible point", cut, {.stalltime = 0}, 2},
        {"no feasible point, integer", wholecut, {.stalltime = 0}, 103},
        {"fails at the start", {.functions = fails}, {}, 67},
        {"fails always", {.functions = fails}, {.scaling = -1}, 67},
        {"NaN for an objective", {.functions = always(NaN)}, {.scaling = -1}, 67},
        {"infinite objective", {.functions = always(-HUGE_VAL)}, {.scaling = -1}, 67},
        {"NaN at the start", {.functions = always(NaN)}, {}, 67},
        {"constant objective: nothing is ever better", {.functions = always(5.0)}, {.stalltime = 0}, 66},
        {"huge objective", {.functions = always(1e308)}, {.stalltime = 0}, 66},
        {"huge objective, unscaled", {.functions = always(1e308)}, {.stalltime = 0, .scaling = -1}, 2},
        {"lower bound missing", {.functions = sum_of_distances, .lb = {-1e30}}, {}, 3},
        {"upper bound missing", {.functions = sum_of_distances, .ub = {1e30}}, {}, 3},
        {"an infinity for a bound", {.functions = sum_of_distances, .ub = {HUGE_VAL}}, {}, 3},
        {"bounds beyond 1e30", {.functions = sum_of_distances, .lb = {-2e30}, .ub = {3e30}}, {}, 3},
        {"bounds crossed", {.functions = sum_of_distances, .lb = {2}, .ub = {1}}, {}, 2},
        {"bounds crossed, integer",
         {.functions = sum_of_distances, .lb = {2}, .ub = {1}, .ctype = {'I'}}, {}, 103},
        {"NaN for a bound", {.functions = sum_of_distances, .lb = {NaN}}, {}, 2},
        {"NaN for a right-hand side",
         {.functions = sum_of_distances, .senses = {'L'}, .rhs = {NaN}}, {}, 2},
        {"no whole number in range",
         {.functions = sum_of_distances, .lb = {2.2}, .ub = {2.8}, .ctype = {'I'}},
         {.stalltime = 0}, 65},
    };
    // clang-format on
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        const Ticking clock;
        const HostModel host(c.model);
        set(host, c.settings);
        const Outcome outcome = solve(host);
        EXPECT_EQ(outcome.status, c.status);
        const bool is_point = c.status != 67 && c.status != 2 && c.status != 3 && c.status != 103;
        if (is_point && c.model.senses.empty() && std::string("no whole number in range") != c.name)
            expect_answer(host, outcome);
    }
}

TEST(NonSmoothEndings, infinite_bounds_are_sampled_when_they_are_allowed)
{
    for (const double bound : {1e30, 2e30, HUGE_VAL}) {
        const Ticking clock;
        HostModel host({
            .variables = 2,
            .functions =
                [](const Reals& x, double& objective, Reals&) {
                    objective = std::fabs(x[0]) + std::fabs(x[1]);
                    return true;
                                                               },
            .lb = {                                                                        -bound,     1},
            .ub = { bound, bound},
            .start = { 3,     4}
        });
        set(host, {.stalltime = 1, .reqbounds = 0});
        host.keeps_points = true;
        const Outcome outcome = solve(host);
        EXPECT_TRUE(outcome.status == 65 || outcome.status == 66) << outcome.status;
        EXPECT_LE(outcome.objval, 7.0) << "the start is one of the candidates";
        for (const Reals& x : host.points)
            ASSERT_TRUE(std::fabs(x[0]) <= 4e30 && std::fabs(x[1]) <= 5e30);
    }
}

TEST(NonSmoothEndings, a_function_that_fails_now_and_then_does_no_harm)
{
    for (const int scaling : {0, -1}) {
        const Ticking clock;
        HostModel host({.variables = 2, .functions = nullptr});
        long calls = 0;
        host.model.functions = [&](const Reals& x, double& objective, Reals& rows) {
            sum_of_distances(x, objective, rows);
            if (++calls % 7 == 3) objective = NaN;
            return calls % 5 != 2;
        };
        set(host, {.stalltime = 0, .scaling = scaling});
        const Outcome outcome = solve(host);
        EXPECT_TRUE(outcome.status == 65 || outcome.status == 66) << outcome.status;
        EXPECT_LT(outcome.objval, 3.0);
    }
}

TEST(NonSmoothEndings, failures_end_after_a_hundred_for_each_member)
{
    const HostModel host({.variables = 3, .functions = fails});
    set(host, {.scaling = -1});
    EXPECT_EQ(solve(host).status, STAT_EVALERROR);
    EXPECT_EQ(host.evaluations, 100 * 30 + 2) << "one too many, and the final one";
}

TEST(NonSmoothEndings, limits_have_their_turn_while_the_first_population_fills)
{
    const Ticking clock;
    const HostModel host({.variables = 3, .functions = fails});
    set(host, {.popsize = 1000000, .scaling = -1, .timelimit = 0.0});
    EXPECT_EQ(solve(host).status, STAT_TIMELIM_FEAS);
    EXPECT_LT(host.evaluations, 1100);
}

// ---- callbacks

struct Stop {
    long calls = 0, last = 0;
    std::int32_t answer = 0, event = 0;
};
Stop stop;
std::int32_t TARNWICK_CALL stop_at(Problem*, std::int32_t event)
{
    EXPECT_EQ(event, stop.event);
    return ++stop.calls == stop.last ? stop.answer : 0;
}

TEST(NonSmoothCallbacks, may_stop_at_any_event)
{
    const struct {
        std::int32_t answer, status;
    } ANSWERS[] = {
        {1,   12 },
        {5,   5  },
        {7,   7  },
        {105, 105},
        {104, 104}
    };
    for (const std::int32_t event : {1, 101})
        for (const auto& a : ANSWERS)
            for (const long last : {1, 2, 3, 10, 57}) {
                SCOPED_TRACE(std::to_string(event) + ": " + std::to_string(last));
                const Ticking clock;
                const HostModel host({
                    .variables = 2, .functions = sum_of_distances, .start = {1, 1}
                });
                const auto set_callback = event == 1 ? setlpcallbackfunc : setmipcallbackfunc;
                set(host, {.convtol = 0.0});
                set_callback(host.lp, stop_at);
                stop = {.last = last, .answer = a.answer, .event = event};
                const Outcome outcome = solve(host);
                EXPECT_EQ(outcome.status, a.status);
                EXPECT_EQ(stop.calls, last);
                expect_answer(host, outcome);
                EXPECT_LE(outcome.objval, 5.0) << "no worse than the start";
            }
}

const HostModel* inner = nullptr;
std::int32_t TARNWICK_CALL solve_inner(Problem* lp, std::int32_t)
{
    EXPECT_EQ(optimize(lp), 1);
    EXPECT_EQ(solve(*inner).status, STAT_CONVERGED);
    return ++stop.calls < 5 ? 0 : 1;
}

TEST(NonSmoothCallbacks, may_solve_another_model)
{
    const Ticking clock;
    const HostModel outer({.variables = 2, .functions = sum_of_distances});
    const HostModel other({.variables = 2, .functions = sum_of_distances});
    inner = &other;
    stop = {};
    setmipcallbackfunc(outer.lp, solve_inner);
    const Outcome outcome = solve(outer);
    EXPECT_EQ(outcome.status, STAT_USERSTOP_FEAS);
    expect_answer(outer, outcome);
}

// ---- what remains

TEST(NonSmoothSolve, is_repeated_to_the_last_bit_under_the_same_clock)
{
    std::vector<std::vector<Reals>> paths;
    for (const std::uint32_t start : {7000U, 7000U, 7001U}) {
        set_clock(start);
        NonSmooth model{.variables = 3, .functions = sum_of_distances};
        model.senses = {'L'};
        model.rhs = {5.0};
        model.start = {0.3, 2, 1};
        HostModel host(model);
        host.keeps_points = true;
        setintparam(host.lp, PARAM_NODELIMIT, 3000);
        solve(host);
        solve(host);  // the second of a model is as the first
        paths.push_back(host.points);
        release_clock();
    }
    EXPECT_EQ(paths[0], paths[1]);
    EXPECT_NE(paths[0], paths[2]);
    const std::size_t half = paths[0].size() / 2;
    EXPECT_TRUE(std::equal(paths[0].begin(), paths[0].begin() + static_cast<long>(half),
                           paths[0].begin() + static_cast<long>(half)));
}

TEST(NonSmoothSolve, survives_every_lack_of_memory)
{
    const Ticking clock;
    const long alive = blocks_alive();
    std::int32_t status = STAT_NONE;
    for (long allowed = 0; allowed < 1000; ++allowed) {
        const HostModel host({.functions = sum_of_distances, .senses = {'L'}, .rhs = {5.0}});
        set(host, {.nodelimit = 20});
        allow_allocations(allowed);
        EXPECT_EQ(optimize(host.lp), 0);
        const bool failed = allocation_failed();
        allow_all_allocations();
        solution(host.lp, &status, nullptr, nullptr, nullptr, nullptr, nullptr);
        if (!failed) break;
        // Without memory for the statistics alone the run ends as it does otherwise.
        EXPECT_TRUE(status == 68 || status == 201 || status == 105) << allowed << ": " << status;
        EXPECT_EQ(blocks_alive() > alive, true);
    }
    EXPECT_EQ(status, 105);
    EXPECT_EQ(blocks_alive(), alive);
}

// The members are evaluated for the statistics just before the reported point.
TEST(NonSmoothStatistics, are_those_of_the_final_population)
{
    for (const bool stopped : {false, true}) {
        const Ticking clock;
        NonSmooth model{.variables = 2,
                        .functions = [](const Reals& x, double& objective, Reals& rows) {
                            objective = std::fabs(x[0] - 2.0) + std::fabs(x[1]);
                            rows[0] = x[0] + x[1];
                            return true;
                        }};
        model.senses = {'L'};
        model.rhs = {1000.0};
        model.start = {0.3, 7.0};
        HostModel host(model);
        set(host, {.iterlimit = stopped ? 20 : INT32_MAX, .popsize = 25});
        host.keeps_points = true;
        const Outcome outcome = solve(host);
        EXPECT_EQ(outcome.status, stopped ? STAT_ITERLIM_FEAS : STAT_CONVERGED);
        ASSERT_EQ(host.points.back(), outcome.x);
        std::vector<Reals> members(host.points.end() - 26, host.points.end() - 1);
        for (Reals& x : members) x.push_back(x[0] + x[1]);

        double mid[3], disp[3], lower[3], upper[3];
        ASSERT_EQ(varstat(host.lp, 0, 1, mid, disp, lower, upper), 0);
        ASSERT_EQ(constat(host.lp, 0, 0, mid + 2, disp + 2, lower + 2, upper + 2), 0);
        for (std::size_t i = 0; i < 3; ++i) {
            double sum = 0.0, squares = 0.0, least = 1e30, most = -1e30;
            for (const Reals& x : members) {
                sum += x[i] / 25.0;
                least = std::min(least, x[i]);
                most = std::max(most, x[i]);
            }
            for (const Reals& x : members) squares += (x[i] - sum) * (x[i] - sum);
            EXPECT_NEAR(mid[i], sum, 1e-12);
            EXPECT_NEAR(disp[i], std::sqrt(squares / 24.0), 1e-12);
            EXPECT_EQ(lower[i], least);
            EXPECT_EQ(upper[i], most);
        }
        const double best = outcome.x[0];
        EXPECT_TRUE(lower[0] <= best && best <= upper[0]);
        EXPECT_EQ(varstat(host.lp, 1, 1, mid, disp, lower, upper), 0);
        EXPECT_EQ(constat(host.lp, 0, 1, mid, disp, lower, upper), 2) << "there is one row";
    }
}

TEST(NonSmoothStatistics, of_no_member_and_of_infeasible_ones)
{
    NonSmooth model{.functions = sum_of_distances, .senses = {'G'}, .rhs = {11.0}};
    double mid, disp, lower, upper;
    {
        const Ticking clock;
        const HostModel host(model);
        set(host, {.iterlimit = 0, .stalltime = 0});
        solve(host);
        varstat(host.lp, 0, 0, &mid, &disp, &lower, &upper);
        EXPECT_EQ((Reals{mid, disp, lower, upper}), (Reals{0.0, 0.0, 1e30, -1e30}));
    }
    const Ticking clock;
    const HostModel host(model);
    set(host, {.stalltime = 0});
    EXPECT_EQ(solve(host).status, STAT_INFEASIBLE);
    varstat(host.lp, 0, 0, &mid, &disp, &lower, &upper);
    EXPECT_TRUE(-10.0 <= lower && lower <= mid && mid <= upper && upper <= 10.0);
}

// ---- the frame

TEST(NonSmoothFrame, limits_the_size_but_not_with_elastic_variables)
{
    const struct {
        const char* name;
        std::uint16_t elastic;
        std::uint32_t flags;
        std::int32_t reqbounds;
        EngineResult result;
    } CASES[] = {
        {"the widest",               0, RUN_DIRECT,  1, ENGINE_CONVERGED},
        {"one too many",             1, RUN_DIRECT,  0, ENGINE_BADMODEL },
        {"elastic",                  1, RUN_ELASTIC, 0, ENGINE_CONVERGED},
        {"elastic ones have no end", 1, RUN_ELASTIC, 1, ENGINE_UNBOUNDED},
    };
    for (const auto& c : CASES) {
        const HostModel host({.variables = 400, .functions = always(1.0)});
        setintparam(host.lp, PARAM_NSPREQBOUNDS, c.reqbounds);
        const NspRun run(host, c.flags, c.elastic);
        EXPECT_EQ(run.run.result, c.result) << c.name;
        EXPECT_EQ(run.ready != 0, c.result == ENGINE_CONVERGED) << c.name;
    }
}

TEST(NonSmoothFrame, chooses_the_population_by_the_number_of_variables)
{
    const struct {
        int variables;
        std::int32_t request;
        int popsize;
    } CASES[] = {
        {1,  0,    10  },
        {3,  0,    30  },
        {20, 0,    200 },
        {21, 0,    200 },
        {3,  9,    30  },
        {3,  10,   10  },
        {3,  1000, 1000}
    };
    for (const auto& c : CASES) {
        const HostModel host({.variables = c.variables, .functions = always(1.0)});
        setintparam(host.lp, PARAM_NSPPOPSIZE, c.request);
        NspRun run(host);
        EXPECT_EQ(run.record().popsize, c.popsize);
    }
}

// Scales are magnitudes at the start, where they are as large as the convergence tolerance of 1e-4.
TEST(NonSmoothFrame, scales_by_the_magnitudes_at_the_start)
{
    NonSmooth model{.variables = 5, .functions = [](const Reals&, double& objective, Reals& rows) {
                        objective = -50.0;
                        rows[0] = 1e-5;
                        rows[1] = 20.0;
                        return true;
                    }};
    model.senses = {'L', 'G'};
    model.rhs = {4.0, 10.0};
    model.lb = {-8, -8, -8, -8, -8};
    model.start = {-4.0, 0.0, 0.9e-4, 1e-4, 7.0};
    const HostModel host(model);
    NspRun run(host);
    setintparam(host.lp, PARAM_ITERLIMIT, 0);
    NspEngine& nsp = run.record();
    nspsolve(run.run);
    const Reals SCALES{4.0, 1.0, 1.0, 1e-4, 7.0}, ROWSCALES{1.0, 20.0, 50.0};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(nsp.varscale[i], SCALES[static_cast<std::size_t>(i)]);
        EXPECT_EQ(nsp.lower[i], -8.0) << "real again";
        EXPECT_EQ(nsp.upper[i], 10.0);
    }
    for (int j = 0; j < 3; ++j) EXPECT_EQ(nsp.rowscale[j], ROWSCALES[static_cast<std::size_t>(j)]);
    EXPECT_EQ(nsp.rowlower[0], -1e30);
    EXPECT_EQ(nsp.rowupper[0], 4.0);
    EXPECT_EQ(run.run.objective, -1.0) << "in scaled units";
}

}  // namespace
}  // namespace tarnwick
