#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "tests/control/servedmodel.h"
#include "tests/support/clock.h"
#include "tests/support/verifier.h"

namespace tarnwick {
namespace {

// ---- limits and callbacks

std::function<std::int32_t(Problem*)> on_iteration;
std::int32_t TARNWICK_CALL call_on_iteration(Problem* lp, std::int32_t event)
{
    EXPECT_EQ(event, 1);
    return on_iteration(lp);
}

template <class Value>
Value counter(Problem* lp, std::int32_t which)
{
    Value value{};
    EXPECT_EQ(getcallbackinfo(lp, nullptr, which, &value), 0);
    return value;
}

TEST(Limits, end_a_run_with_their_status)
{
    const struct {
        const char* name;
        double timelimit;
        std::int32_t iterlimit;
        std::uint32_t clock, step;
        std::int32_t status, iterations;
    } CASES[] = {
        {"one iteration",               100.0, 1,   5000,       1,    STAT_ITERLIM_FEAS, 2},
        {"a second each",               2.9,   100, 5999,       1000, STAT_TIMELIM_FEAS, 2},
        {"seconds count when complete", 1.0,   100, 5000,       499,  STAT_OPTIMAL,      2},
        {"the clock wraps",             1e9,   100, 4294967000, 700,  STAT_TIMELIM_FEAS, 1},
        {"iterations come before time", 0.0,   0,   5000,       0,    STAT_ITERLIM_FEAS, 1},
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        const LoadedModel loaded(FEASIBLE_AT_ONCE);
        setdblparam(loaded.lp, PARAM_TIMELIMIT, c.timelimit);
        setintparam(loaded.lp, PARAM_ITERLIMIT, c.iterlimit);
        set_clock(c.clock, c.step);
        const Answer answer = solve(loaded.lp);
        release_clock();
        EXPECT_EQ(answer.status, c.status);
        EXPECT_EQ(counter<std::int32_t>(loaded.lp, CB_ITERATIONS), c.iterations);
        expect_feasible(FEASIBLE_AT_ONCE, answer.x);
    }
}

TEST(Callbacks, stop_a_run_by_their_answer)
{
    // clang-format off
    const struct {
        std::int32_t answer, feasible, infeasible;
    } CASES[] = {{5, 5, 6}, {7, 7, 8}, {107, 7, 8}, {105, 105, 106}, {104, 104, 104}, {1, 12, 13}, {-1, 12, 13},
                 {6, 12, 13}, {8, 12, 13}, {106, 12, 13}, {108, 12, 13}};
    // clang-format on
    for (const auto& c : CASES)
        for (const LinearModel* model : {&FEASIBLE_AT_ONCE, &TWO_PHASES}) {
            SCOPED_TRACE(c.answer);
            const LoadedModel loaded(*model);
            on_iteration = [&c](Problem*) { return c.answer; };
            setlpcallbackfunc(loaded.lp, call_on_iteration);
            const Answer answer = solve(loaded.lp);
            EXPECT_EQ(answer.status, model == &TWO_PHASES ? c.infeasible : c.feasible);
            EXPECT_EQ(counter<std::int32_t>(loaded.lp, CB_ITERATIONS), 1);

            setlpcallbackfunc(loaded.lp, nullptr);
            expect_optimal(*model, solve(loaded.lp));
        }
}

TEST(Callbacks, see_the_counters_and_may_stop_at_any_event)
{
    for (unsigned seed = 1; seed <= 5; ++seed) {
        const LinearModel model = solvable_model(seed, {.rows = 12, .cols = 16, .free = 0.1});
        const LoadedModel loaded(model);
        std::int32_t status = STAT_NONE;
        for (std::int32_t last = 1; status != STAT_OPTIMAL && last < 100; ++last) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", event " + std::to_string(last));
            std::int32_t events = 0;
            double falls[] = {INF, INF};  // the objective, the infeasibility
            bool in_phase_one = true;
            on_iteration = [&](Problem* lp) -> std::int32_t {
                EXPECT_EQ(counter<std::int32_t>(lp, CB_ITERATIONS), ++events);
                EXPECT_EQ(counter<std::int32_t>(lp, CB_NODES), 0);
                const double value = counter<double>(lp, CB_OBJECTIVE);
                const double left = counter<double>(lp, CB_INFEASIBILITY);
                EXPECT_EQ(counter<std::int32_t>(lp, CB_FEASIBLE), left <= 1e-8 ? 1 : 0);
                in_phase_one = in_phase_one && value == left;
                const double now = in_phase_one ? left : value * model.objsen;
                EXPECT_LE(now, std::exchange(falls[in_phase_one], now) + 1e-9);
                return events == last ? 1 : 0;
            };
            setlpcallbackfunc(loaded.lp, call_on_iteration);
            const Answer answer = solve(loaded.lp);
            status = answer.status;
            EXPECT_TRUE(status == STAT_OPTIMAL || events == last);
            if (status == STAT_OPTIMAL) {
                expect_optimal(model, answer);
            } else if (status == STAT_USERSTOP_FEAS || !in_phase_one) {
                expect_feasible(model, answer.x);
            } else {
                EXPECT_EQ(status, STAT_USERSTOP_INFEAS);
            }
            EXPECT_FALSE(loaded.lp->running);
        }
        EXPECT_EQ(status, STAT_OPTIMAL);
        if (HasFailure()) return;
    }
}

TEST(Callbacks, may_solve_another_model_and_not_their_own)
{
    const LoadedModel outer(TWO_PHASES), inner(FEASIBLE_AT_ONCE);
    on_iteration = [&](Problem* lp) -> std::int32_t {
        EXPECT_EQ(optimize(lp), 1);
        Problem* handle = lp;
        EXPECT_EQ(unloadprob(&handle), 1);
        expect_optimal(FEASIBLE_AT_ONCE, solve(inner.lp));
        return 0;
    };
    setlpcallbackfunc(outer.lp, call_on_iteration);
    expect_optimal(TWO_PHASES, solve(outer.lp));
}

}  // namespace
}  // namespace tarnwick
