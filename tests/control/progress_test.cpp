#include <gtest/gtest.h>

#include <climits>

#include "tests/control/servedmodel.h"
#include "tests/support/clock.h"

namespace tarnwick {
namespace {

std::int32_t callback_answer = 0, callback_event = 0;
std::int32_t TARNWICK_CALL answer_callback(Problem*, std::int32_t event)
{
    callback_event = event;
    return callback_answer;
}

// The value is 8.5; 30 iterations, 5 nodes of 6, 100 iterations before; limits: 40 iterations, 3
// solutions; a stop of the user's is pending.
// clang-format off
constexpr struct {
    const char* name;
    std::int32_t event, count;
    std::int32_t want;        // the stop code that is returned
    std::int32_t remembered;  // and the one that stays
    double objective = 0.0, infeasibility = 0.0, bestinteger = 0.0;
    std::int32_t iterations = 30, nodes = 5, total = 100;
    std::int32_t callback = 0;
} REPORT_CASES[] = {
    {"reads the stop code",        0,   9,  2, 2},
    {"set-up work",                2,   9,  0, 2},
    {"poll",                       32,  9,  2, 2},
    {"final evaluation",           64,  9,  0, 2},
    {"final evaluation done",      128, 9,  2, 2},
    {"unknown event",              1,   9,  0, 2},
    {"iteration",                  36,  40, 0, 0, 8.5, 0.0, 0.0, 40, 5, 100, 1},
    {"iteration beyond the limit", 36,  41, 1, 1, 8.5, 0.0, 0.0, 41, 5, 100},
    {"infeasible iteration",       292, 7,  0, 0, 8.5, 8.5, 0.0, 7,  5, 100, 1},
    {"reduced gradient",           21,  7,  0, 0, 8.5, 0.0, 0.0, 7,  5, 100, 1},
    {"node",                       8,   3,  0, 0, 0.0, 0.0, 0.0, 0,  6, 130, 101},
    {"node beyond the solutions",  168, 4,  5, 5, 0.0, 0.0, 8.5, 0,  6, 130},
    {"node before iteration",      12,  3,  0, 0, 0.0, 0.0, 0.0, 0,  6, 130, 101},
    {"elastic mode",               512, 2,  0, 0},
    {"elastic step",               512, 3,  0, 0, 0.0, 0.0, 0.0, 0,  5, 130},
    {"elastic before all",         956, -1, 0, 0, 0.0, 0.0, 0.0, 0,  5, 130},
};
// clang-format on

TEST(Progress, counts_and_decides_by_the_event_word)
{
    for (const auto& c : REPORT_CASES) {
        SCOPED_TRACE(c.name);
        ServedModel model;
        Problem& problem = *model.lp;
        SolveControl& control = *model.control;
        control.iterlimit = 40, control.nodelimit = 6, control.intsollimit = 3;
        control.lpcallback = control.mipcallback = answer_callback;
        callback_answer = callback_event = 0;
        beginrun(&control, 0);
        problem.iterations = 30, problem.nodes = 5, problem.totaliterations = 100;
        control.stopcode = STOP_USER;

        EXPECT_EQ(reportprogress(&control, c.event, c.count, 8.5), c.want);
        EXPECT_EQ(control.stopcode, c.remembered);
        EXPECT_EQ(problem.currentobj, c.objective);
        EXPECT_EQ(problem.infeasibility, c.infeasibility);
        EXPECT_EQ(problem.bestinteger, c.bestinteger);
        EXPECT_EQ(problem.iterations, c.iterations);
        EXPECT_EQ(problem.nodes, c.nodes);
        EXPECT_EQ(problem.totaliterations, c.total);
        EXPECT_EQ(problem.intsolutions, (c.event & 520) == 8 ? c.count : 0);
        EXPECT_EQ(control.elasticmode, (c.event & 512) != 0 ? c.count & 0xFFFF : 0);
        EXPECT_EQ(callback_event, c.callback);

        // A limit comes before the callback, and a report without a reason takes the stop back.
        if (c.callback == 0) continue;
        callback_answer = 104;
        EXPECT_EQ(reportprogress(&control, c.event, c.count, 8.5),
                  c.callback == 1 ? STOP_INTLIMIT : STOP_NODELIMIT);
        callback_answer = 0;
        control.nodelimit = 9;
        EXPECT_EQ(reportprogress(&control, c.event, c.count, 8.5), STOP_NONE);
        EXPECT_EQ(control.stopcode, STOP_NONE);
    }
}

TEST(Progress, shows_the_objective_of_the_callers_function)
{
    ServedModel model(PROB_NLP);
    beginrun(model.control, 0);
    model.lp->objval = 4.5;
    reportprogress(model.control, EVENT_ITERATION, 1, 8.5);
    EXPECT_EQ(model.lp->currentobj, 4.5);
}

TEST(Progress, watches_the_clock)
{
    ServedModel model;
    SolveControl& control = *model.control;
    set_clock(7999);
    control.timelimit = 2.9;
    beginrun(&control, 0);
    for (const std::uint32_t now : {7999U, 8999U, 9000U, 4294967295U, 6999U, 7000U}) {
        SCOPED_TRACE(now);
        set_clock(now);
        const bool is_left = now >= 7000 && now < 9000;  // a clock before its start has wrapped
        const std::int32_t want = is_left ? STOP_NONE : STOP_TIMELIMIT;
        EXPECT_EQ(reportprogress(&control, EVENT_ITERATION, 1, 0.0), want);
        EXPECT_EQ(reportprogress(&control, EVENT_NODE, 0, 0.0), want);
        EXPECT_EQ(reportprogress(&control, EVENT_ELASTIC, 10, 0.0), want);
        EXPECT_EQ(reportprogress(&control, EVENT_ELASTIC, 0, 0.0), STOP_NONE);
    }
    release_clock();

    control.timelimit = INT_MAX;
    beginrun(&control, 0);
    model.lp->nodes = model.lp->totaliterations = INT_MAX - 1;
    model.lp->iterations = 7;
    control.nodelimit = INT_MAX;
    for (int k = 0; k < 3; ++k) EXPECT_EQ(reportprogress(&control, EVENT_NODE, 0, 0.0), STOP_NONE);
    EXPECT_EQ(model.lp->nodes, INT_MAX) << "counters stay where they can't go on";
    EXPECT_EQ(model.lp->totaliterations, INT_MAX);
}

}  // namespace
}  // namespace tarnwick
