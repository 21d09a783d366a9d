#include "control/driver.h"

#include <gtest/gtest.h>

#include "control/services.h"
#include "interface/problem.h"
#include "tests/control/twomodels.h"
#include "tests/support/integers.h"
#include "tests/support/memory.h"
#include "tests/support/messages.h"

namespace tarnwick {
namespace {

// ---- results and statuses

TEST(Driver, gives_each_result_its_status)
{
    // clang-format off
    const struct {
        std::int32_t result, feasible, infeasible, mip_feasible, mip_infeasible;
    } CASES[] = {
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
    const LoadedModel loaded(FEASIBLE_AT_ONCE);
    Problem& problem = *loaded.lp;
    for (const auto& c : CASES) {
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

TEST(Driver, starts_each_run_afresh)
{
    LoadedModel loaded(TWO_PHASES);
    EXPECT_EQ(solveproblem(loaded.lp->control.engines), ENGINE_BADMODEL) << "none before a run";
    loaded.lp->control.elasticmode = 2;
    EXPECT_EQ(optimize(loaded.lp), 0);
    EXPECT_EQ(loaded.lp->control.elasticmode, 0) << "elastic mode ends with the run";
    expect_optimal(TWO_PHASES, solve(loaded.lp));

    setintparam(loaded.lp, PARAM_ITERLIMIT, 0);
    EXPECT_EQ(solve(loaded.lp).status, STAT_ITERLIM_INFEAS);
    loaded.lb[0] = 1e9, loaded.ub[0] = 0.0;
    EXPECT_EQ(solve(loaded.lp).status, STAT_INFEASIBLE);
    EXPECT_EQ(loaded.lp->iterations, 0);
    EXPECT_EQ(loaded.lp->currentobj, 0.0);
    EXPECT_EQ(loaded.lp->infeasibility, 0.0);
}

TEST(Driver, refuses_in_order_and_changes_nothing)
{
    const char* const large = "numcols or numrows is too large";
    const char* const no_ctype = "loadctype has not been called";
    const char* const solved = "the problem is being solved";
    const MessageLog log;
    const LoadedModel loaded(FEASIBLE_AT_ONCE);
    Problem* const lp = loaded.lp;
    ASSERT_EQ(optimize(lp), 0);
    expect_told(mipoptimize(lp), 1, "mipoptimize", no_ctype);
    for (const std::int32_t type : {PROB_LP, PROB_MILP, PROB_QP, PROB_NLP, PROB_MINLP}) {
        SCOPED_TRACE(type);
        const bool is_integer = type == PROB_MILP || type == PROB_MINLP;
        lp->problemtype = type;
        lp->numrows = type < PROB_NLP ? 8193 : 201;
        expect_told(optimize(lp), 1, "optimize", large);
        expect_told(mipoptimize(lp), 1, "mipoptimize", is_integer ? large : no_ctype);
        lp->running = true;
        expect_told(optimize(lp), 1, "optimize", solved);
        expect_told(mipoptimize(lp), 1, "mipoptimize", solved);
        lp->running = false;
        EXPECT_EQ(lp->status, STAT_OPTIMAL);
    }
    lp->problemtype = PROB_LP, lp->numrows = 3;
}

// ---- memory

TEST(Memory, may_end_anywhere)
{
    const MessageLog log;
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
    EXPECT_TRUE(MessageLog::take().empty()) << "a lack of memory is not told";
}

TEST(Memory, may_end_anywhere_in_an_integer_run)
{
    // clang-format off
    const IntegerModel knapsack{{{{{5, 4, 3}, 'L', 7}}, {12, 9, 7}, {0, 0, 0}, {1, 1, 1}, -1},
                                "BBB"};
    // clang-format on
    const LoadedIntegers loaded(knapsack);
    for (const std::int32_t number : {PARAM_BINROWFIX, PARAM_BINORDER, PARAM_BINTIGHTEN})
        setintparam(loaded.lp, number, 1);
    const long alive = blocks_alive();
    bool failed = true;
    for (long allowed = 0; failed; ++allowed) {
        allow_allocations(allowed);
        const Answer answer = solve_integers(loaded.lp);
        failed = allocation_failed();
        allow_all_allocations();
        EXPECT_EQ(failed, answer.status == STAT_NOMEMORY || answer.status == STAT_BADMODEL);
        EXPECT_LE(blocks_alive(), alive + 1);  // the arrays of the results stay
        if (!failed) expect_true(knapsack, answer);
    }
}

}  // namespace
}  // namespace tarnwick
