#include <gtest/gtest.h>

#include <string>

#include "control/driver.h"
#include "tests/control/servedmodel.h"
#include "tests/support/memory.h"
#include "tests/support/messages.h"
#include "tests/support/verifier.h"

namespace tarnwick {
namespace {

// ---- results and statuses

// clang-format off
constexpr struct {
    std::int32_t result, feasible, infeasible, mip_feasible, mip_infeasible;
} STATUS_CASES[] = {
    {ENGINE_OPTIMAL,      1,   1, 101, 101}, {ENGINE_CONVERGED,   65,  65,  65,  65},
    {ENGINE_STALLED,     66,  66,  66,  66}, {ENGINE_ITERLIMIT,    5,   6,   5,   6},
    {ENGINE_UNBOUNDED,    3,   3,   3,   3}, {ENGINE_INFEASIBLE,   2,   2, 103, 103},
    {ENGINE_USERSTOP,    12,  13,  12,  13}, {ENGINE_MODELCHECK, 200, 200, 200, 200},
    {ENGINE_BADMODEL,   201, 201, 201, 201}, {ENGINE_EVALERROR,   67,  67,  67,  67},
    {ENGINE_TIMELIMIT,    7,   8, 107, 108}, {ENGINE_NOMEMORY,    68,  68,  68,  68},
    {ENGINE_RESERVED12,  69,  69,  69,  69}, {ENGINE_INTERNAL,   202, 202, 202, 202},
    {ENGINE_GAPREACHED, 102, 102, 102, 102}, {ENGINE_NODELIMIT,  105, 106, 105, 106},
    {ENGINE_INTLIMIT,   104, 104, 104, 104}, {17,                203, 203, 203, 203},
    {-2,                203, 203, 203, 203},
};
// clang-format on

TEST(Driver, gives_each_result_its_status)
{
    const LoadedModel loaded(FEASIBLE_AT_ONCE);
    Problem& problem = *loaded.lp;
    for (const auto& c : STATUS_CASES) {
        SCOPED_TRACE(c.result);
        problem.control.mipgap = 0.05, problem.control.qstate = Q_NONE;
        problem.infeasibility = 1e-8, problem.intsolutions = 0;
        EXPECT_EQ(external_status(problem, c.result, false), c.feasible);
        EXPECT_EQ(external_status(problem, c.result, true), c.mip_infeasible);
        problem.infeasibility = 1.1e-8, problem.intsolutions = 1;
        EXPECT_EQ(external_status(problem, c.result, false), c.infeasible);
        EXPECT_EQ(external_status(problem, c.result, true), c.mip_feasible);

        problem.control.mipgap = 0.0, problem.control.qstate = Q_INDEFINITE;
        const bool at_gap = c.result == ENGINE_GAPREACHED, is_optimal = c.result == ENGINE_OPTIMAL;
        EXPECT_EQ(external_status(problem, c.result, true), at_gap ? 101 : c.mip_feasible);
        const std::int32_t indefinite = is_optimal ? 65 : c.infeasible;
        EXPECT_EQ(external_status(problem, c.result, false), at_gap ? 101 : indefinite);
    }
}

// An engine that does as it is told and keeps a record of its calls.
struct Script {
    bool ready = true;
    EngineResult result = ENGINE_OPTIMAL;
    StopCode stop = STOP_NONE;
    std::string calls{};
} script;

std::int32_t TARNWICK_CALL scripted_init(SolveRun& run) noexcept
{
    script.calls += run.flags == RUN_DIRECT ? "i" : "?";
    run.result = script.result;
    return script.ready;
}

std::int32_t TARNWICK_CALL scripted_solve(SolveRun& run) noexcept
{
    script.calls += "s";
    run.control->stopcode = script.stop;
    return 1;
}

std::int32_t TARNWICK_CALL scripted_finish(SolveRun&) noexcept
{
    script.calls += "f";
    return 1;
}

TEST(Driver, runs_an_engine_from_set_up_to_finish)
{
    const LoadedModel loaded(FEASIBLE_AT_ONCE);
    SolveControl& control = loaded.lp->control;
    EngineTable engines{&control, scripted_init, scripted_solve, scripted_finish};
    const struct {
        const char* name;
        Script script;
        EngineResult want;
        const char* calls;
    } CASES[] = {
        {"the engine's own result", {.result = ENGINE_STALLED},                    ENGINE_STALLED,    "isf"},
        {"set-up fails",            {.ready = false, .result = ENGINE_MODELCHECK}, ENGINE_MODELCHECK, "if" },
        {"iteration limit",         {.stop = STOP_ITERLIMIT},                      ENGINE_ITERLIMIT,  "isf"},
        {"time limit",              {.stop = STOP_TIMELIMIT},                      ENGINE_TIMELIMIT,  "isf"},
        {"node limit",              {.stop = STOP_NODELIMIT},                      ENGINE_NODELIMIT,  "isf"},
        {"solution limit",          {.stop = STOP_INTLIMIT},                       ENGINE_INTLIMIT,   "isf"},
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        control.stopcode = STOP_NONE;
        script = c.script;
        EXPECT_EQ(solveproblem(engines), c.want);
        EXPECT_EQ(script.calls, c.calls);
    }
    engines.control = nullptr;
    EXPECT_EQ(solveproblem(engines), ENGINE_BADMODEL);
    control.stopcode = STOP_NONE;
}

TEST(Driver, tells_integer_models_by_what_restricts_them)
{
    const LoadedModel loaded(FEASIBLE_AT_ONCE);
    char ctype[] = "CC";
    EXPECT_EQ(loadctype(loaded.lp, ctype), 0);
    EXPECT_EQ(mipoptimize(loaded.lp), 0);
    EXPECT_EQ(loaded.lp->status, STAT_OPTIMAL) << "no variable is integer";
    EXPECT_EQ(loaded.lp->dj[0], 0.0) << "integer models have no duals";
    EXPECT_EQ(loaded.lp->piout[0], 0.0);

    ctype[1] = 'I';
    setintparam(loaded.lp, PARAM_RELAXINT, 1);
    EXPECT_EQ(mipoptimize(loaded.lp), 0);
    EXPECT_EQ(loaded.lp->status, STAT_OPTIMAL) << "the restriction is ignored";
}

TEST(Driver, starts_each_run_afresh)
{
    LoadedModel loaded(TWO_PHASES);
    loaded.lp->control.elasticmode = 2;
    EXPECT_EQ(optimize(loaded.lp), 0);
    EXPECT_EQ(loaded.lp->control.elasticmode, 0) << "elastic mode ends with the run";
    EXPECT_FALSE(loaded.lp->control.elasticrows);
    expect_optimal(TWO_PHASES, solve(loaded.lp));

    setintparam(loaded.lp, PARAM_ITERLIMIT, 0);
    EXPECT_EQ(solve(loaded.lp).status, STAT_ITERLIM_INFEAS);
    EXPECT_EQ(loaded.lp->iterations, 1);
    loaded.lb[0] = 1e9, loaded.ub[0] = 0.0;
    EXPECT_EQ(solve(loaded.lp).status, STAT_INFEASIBLE);
    EXPECT_EQ(loaded.lp->iterations, 0);
    EXPECT_EQ(loaded.lp->currentobj, 0.0);
    EXPECT_EQ(loaded.lp->infeasibility, 0.0);
}

TEST(Driver, refuses_in_order_and_changes_nothing)
{
    const MessageLog log;
    const LoadedModel loaded(FEASIBLE_AT_ONCE);
    ASSERT_EQ(optimize(loaded.lp), 0);
    Problem& problem = *loaded.lp;
    static constexpr const char large[] = "numcols or numrows is too large",
                                solved[] = "the problem is being solved",
                                no_ctype[] = "loadctype has not been called";
    const struct {
        const char* name;
        std::int32_t type, numrows;
        bool running;
        const char *text, *mip_text;  // null: it runs
    } CASES[] = {
        {"LP",                 PROB_LP,   3,    false, nullptr, no_ctype},
        {"LP, too large",      PROB_LP,   8193, false, large,   no_ctype},
        {"MILP, too large",    PROB_MILP, 8193, false, large,   large   },
        {"NLP, too large",     PROB_NLP,  201,  false, large,   no_ctype},
        {"LP, being solved",   PROB_LP,   3,    true,  solved,  solved  },
        {"MILP, being solved", PROB_MILP, 3,    true,  solved,  solved  },
    };
    const auto expect_call = [&problem](std::int32_t code, const char* text, const char* title) {
        EXPECT_EQ(code, text ? 1 : 0);
        const auto messages = MessageLog::take();
        ASSERT_EQ(messages.size(), text ? 1U : 0U);
        if (!text) return;
        EXPECT_EQ(messages[0].text, text);
        EXPECT_EQ(messages[0].title, title);
        EXPECT_EQ(problem.status, STAT_OPTIMAL);
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        problem.problemtype = c.type, problem.numrows = c.numrows, problem.running = c.running;
        expect_call(optimize(&problem), c.text, "optimize");
        expect_call(mipoptimize(&problem), c.mip_text, "mipoptimize");
    }
    problem.problemtype = PROB_LP, problem.numrows = 3, problem.running = false;
}

// ---- memory

TEST(Memory, may_end_anywhere)
{
    const long alive = blocks_alive();
    bool complete = false;
    for (long allowed = 0; !complete && allowed < 100; ++allowed) {
        SCOPED_TRACE(allowed);
        allow_allocations(allowed);
        {
            const LoadedModel loaded(TWO_PHASES);
            EXPECT_EQ(loaded.lp == nullptr, blocks_alive() == alive);
            if (loaded.lp) {
                const Answer answer = solve(loaded.lp);
                complete = !allocation_failed();
                EXPECT_TRUE(complete || answer.status == STAT_NOMEMORY ||
                            answer.status == STAT_BADMODEL);
                EXPECT_TRUE(complete || answer.x == Reals(3, 0.0));
                allow_all_allocations();
                expect_optimal(TWO_PHASES, complete ? answer : solve(loaded.lp));

                allow_allocations(allowed % 3);  // now it ends before anything is stored
                EXPECT_EQ(solve(loaded.lp).x, Reals(3, 0.0));
                EXPECT_NE(loaded.lp->status, STAT_OPTIMAL);
            }
        }
        allow_all_allocations();
        EXPECT_EQ(blocks_alive(), alive);
    }
    EXPECT_TRUE(complete);
}

}  // namespace
}  // namespace tarnwick
