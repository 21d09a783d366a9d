#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "control/services.h"
#include "interface/problem.h"
#include "tests/control/twomodels.h"
#include "tests/support/clock.h"
#include "tests/support/verifier.h"

namespace tarnwick {
namespace {

std::function<std::int32_t(Problem* lp, std::int32_t event)> on_event;
std::int32_t TARNWICK_CALL call_on_event(Problem* lp, std::int32_t event)
{
    return on_event(lp, event);
}

// ---- reports

// The value is 8.5; 30 iterations, 5 nodes of 6, 100 iterations before; limits: 40 iterations, 3
// solutions; a stop of the user's is pending.
TEST(Progress, counts_and_decides_by_the_event_word)
{
    using Counts = std::vector<std::int32_t>;
    const Reals none{0, 0, 0};
    const Counts same{30, 5, 100, 0};
    // clang-format off
    const struct {
        const char* name;
        std::int32_t event, count;
        std::int32_t want, remembered;  // the stop code that is returned and the one that stays
        std::int32_t callback;
        Reals objectives;  // as the report leaves them: current, infeasibility, best integer
        Counts counters;   // iterations, nodes, iterations of finished subproblems, solutions
        std::int32_t elasticmode = 0;
    } CASES[] = {
        {"reads the stop code",        0,   9,  2, 2, 0,   none,          same},
        {"set-up work",                2,   9,  0, 2, 0,   none,          same},
        {"poll",                       32,  9,  2, 2, 0,   none,          same},
        {"final evaluation",           64,  9,  0, 2, 0,   none,          same},
        {"final evaluation done",      128, 9,  2, 2, 0,   none,          same},
        {"unknown event",              1,   9,  0, 2, 0,   none,          same},
        {"iteration",                  36,  40, 0, 0, 1,   {8.5, 0, 0},   {40, 5, 100, 0}},
        {"iteration beyond the limit", 36,  41, 1, 1, 0,   {8.5, 0, 0},   {41, 5, 100, 0}},
        {"infeasible iteration",       292, 7,  0, 0, 1,   {8.5, 8.5, 0}, {7, 5, 100, 0}},
        {"reduced gradient",           21,  7,  0, 0, 1,   {8.5, 0, 0},   {7, 5, 100, 0}},
        {"node",                       8,   3,  0, 0, 101, none,          {0, 6, 130, 3}},
        {"node beyond the solutions",  168, 4,  5, 5, 0,   {0, 0, 8.5},   {0, 6, 130, 4}},
        {"node before iteration",      12,  3,  0, 0, 101, none,          {0, 6, 130, 3}},
        {"elastic mode",               512, 2,  0, 0, 0,   none,          same, 2},
        {"elastic step",               512, 3,  0, 0, 0,   none,          {0, 5, 130, 0}, 3},
    };
    // clang-format on
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        const LoadedModel model(FEASIBLE_AT_ONCE);
        SolveControl& control = model.lp->control;
        control.iterlimit = 40, control.nodelimit = 6, control.intsollimit = 3;
        control.lpcallback = control.mipcallback = call_on_event;
        std::int32_t answer = 0, called_with = 0;
        on_event = [&](Problem*, std::int32_t event) {
            called_with = event;
            return answer;
        };
        beginrun(&control, 0);
        model.lp->iterations = 30, model.lp->nodes = 5, model.lp->totaliterations = 100;
        control.stopcode = STOP_USER;
        const auto report = [&] { return reportprogress(&control, c.event, c.count, 8.5); };
        EXPECT_EQ(report(), c.want);
        EXPECT_EQ(control.stopcode, c.remembered);
        EXPECT_EQ(called_with, c.callback);
        const Problem& p = *model.lp;
        EXPECT_EQ((Reals{p.currentobj, p.infeasibility, p.bestinteger}), c.objectives);
        EXPECT_EQ((Counts{p.iterations, p.nodes, p.totaliterations, p.intsolutions}), c.counters);
        EXPECT_EQ(p.control.elasticmode, c.elasticmode);

        // A limit comes before the callback, and a report without a reason takes the stop back.
        if (c.callback == 0) continue;
        answer = 104;
        EXPECT_EQ(report(), c.callback == 1 ? STOP_INTLIMIT : STOP_NODELIMIT);
        answer = 0;
        control.nodelimit = 9;
        EXPECT_EQ(report(), STOP_NONE);
        EXPECT_EQ(control.stopcode, STOP_NONE);
    }
}

TEST(Progress, watches_the_clock)
{
    const LoadedModel model(FEASIBLE_AT_ONCE);
    Problem& problem = *model.lp;
    SolveControl& control = problem.control;
    problem.problemtype = PROB_NLP;
    set_clock(7999);
    control.timelimit = 2.9;
    beginrun(&control, 0);
    for (const std::uint32_t now : {7999U, 8999U, 9000U, 4294967295U, 6999U, 7000U}) {
        SCOPED_TRACE(now);
        set_clock(now);
        problem.objval = now;
        const bool is_left = now >= 7000 && now < 9000;  // a clock before its start has wrapped
        const std::int32_t want = is_left ? STOP_NONE : STOP_TIMELIMIT;
        EXPECT_EQ(reportprogress(&control, EVENT_ITERATION, 1, 0.0), want);
        EXPECT_EQ(problem.currentobj, now) << "what the caller's function gave";
        EXPECT_EQ(reportprogress(&control, EVENT_NODE, 0, 0.0), want);
        EXPECT_EQ(reportprogress(&control, EVENT_ELASTIC, 10, 0.0), want);
        EXPECT_EQ(reportprogress(&control, EVENT_ELASTIC, 0, 0.0), STOP_NONE);
    }
    release_clock();
}

// ---- settings and results

TEST(Services, store_the_smaller_slack_of_a_ranged_row)
{
    const LoadedModel model({
        {{{1}, 'L', 2},  {{1}, 'G', -1}, {{1}, 'E', 0}, {{1}, 'L', 4}},
        {1}
    });
    Problem& problem = *model.lp;
    problem.sense[3] = 'R';
    ASSERT_TRUE(create_results(problem));
    const Reals zero(4), lower{-INF, -1, 0, 1}, value{1.5, 2, 0, 2}, upper{2, INF, 0, 4};
    const SolutionRecord solution{1, nullptr,      zero.data(),  nullptr,      zero.data(),
                                  4, lower.data(), value.data(), upper.data(), zero.data()};
    storesolution(&problem.control, &solution, nullptr);
    EXPECT_EQ(Reals(problem.slack, problem.slack + 4), Reals({0.5, -3, 0, -1}));
}

// ---- callbacks

// In the first phase, before anything is feasible.
TEST(Callbacks, stop_a_run_by_their_answer)
{
    const LoadedModel loaded(TWO_PHASES);
    // clang-format off
    const std::pair<std::int32_t, std::int32_t> CASES[] = {
        {5, 6}, {7, 8}, {107, 8}, {105, 106}, {104, 104},
        {1, 13}, {-1, 13}, {6, 13}, {8, 13}, {106, 13}, {108, 13},
    };
    // clang-format on
    for (const auto& [answer, status] : CASES) {
        on_event = [result = answer](Problem*, std::int32_t) { return result; };
        setlpcallbackfunc(loaded.lp, call_on_event);
        EXPECT_EQ(solve(loaded.lp).status, status) << answer;
        EXPECT_EQ(loaded.lp->iterations, 1);
    }
    setlpcallbackfunc(loaded.lp, nullptr);
    expect_optimal(TWO_PHASES, solve(loaded.lp));
}

// In the first phase the objective is the infeasibility; each falls from report to report.
TEST(Callbacks, see_the_counters_and_may_stop_at_any_event)
{
    for (unsigned seed = 1; seed <= 5 && !HasFailure(); ++seed) {
        const LinearModel model = solvable_model(seed, {.rows = 12, .cols = 16, .free = 0.1});
        const LoadedModel loaded(model);
        std::int32_t status = STAT_NONE;
        for (std::int32_t last = 1; status != STAT_OPTIMAL && last < 100; ++last) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", event " << last);
            std::int32_t events = 0;
            double falls[] = {INF, INF};  // the objective, the infeasibility
            bool in_phase_one = true;
            on_event = [&](Problem* lp, std::int32_t event) {
                EXPECT_EQ(event, 1);
                EXPECT_EQ(lp->iterations, ++events);
                in_phase_one = in_phase_one && lp->currentobj == lp->infeasibility;
                const double now = in_phase_one ? lp->infeasibility : lp->currentobj * model.objsen;
                EXPECT_LE(now, std::exchange(falls[in_phase_one], now) + 1e-9);
                return events == last ? 1 : 0;
            };
            setlpcallbackfunc(loaded.lp, call_on_event);
            const Answer answer = solve(loaded.lp);
            status = answer.status;
            EXPECT_TRUE(status == STAT_OPTIMAL || events == last);
            if (status == STAT_OPTIMAL)
                expect_optimal(model, answer);
            else if (!in_phase_one)
                expect_feasible(model, answer.x);
            else
                EXPECT_EQ(status, STAT_USERSTOP_INFEAS);
        }
        EXPECT_EQ(status, STAT_OPTIMAL);
    }
}

TEST(Callbacks, may_solve_another_model_and_not_their_own)
{
    const LoadedModel outer(TWO_PHASES), inner(FEASIBLE_AT_ONCE);
    on_event = [&](Problem* lp, std::int32_t) {
        EXPECT_EQ(optimize(lp), 1);
        Problem* handle = lp;
        EXPECT_EQ(unloadprob(&handle), 1);
        expect_optimal(FEASIBLE_AT_ONCE, solve(inner.lp));
        return 0;
    };
    setlpcallbackfunc(outer.lp, call_on_event);
    expect_optimal(TWO_PHASES, solve(outer.lp));
}

}  // namespace
}  // namespace tarnwick
