#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "control/services.h"
#include "interface/problem.h"
#include "linear/simplex.h"
#include "tests/support/enginerun.h"
#include "tests/support/verifier.h"

namespace tarnwick {
namespace {

// ---- whole solves

constexpr std::int32_t MOST_ITERATIONS = 30;

// clang-format off
const struct {
    const char* name;
    LinearModel model;
    std::int32_t status;
    double objective;
    std::int32_t iterations = -1;  // -1: any number up to MOST
} SOLVE_CASES[] = {
    {"from bound to bound",         {{{{1}, 'L', 10}}, {-1}, {0}, {3}},                               STAT_OPTIMAL, -3.0, 1},
    {"only an upper bound",         {{{{1, 1}, 'G', -8}}, {-1, 1}, {-INF, -INF}, {5, 0}},             STAT_OPTIMAL, -18.0},
    {"free variables, held",        {{{{1, 1}, 'G', 2}, {{1, -1}, 'G', 6}}, {3, 1}, {-INF, -INF}, {INF, INF}}, STAT_OPTIMAL, 10.0},
    {"a negative right-hand side",  {{{{-1, -1}, 'L', -2}, {{-1, 0}, 'G', -1}}, {1, 2}},              STAT_OPTIMAL, 3.0},
    {"a redundant equation",        {{{{1, 1}, 'E', 2}, {{2, 2}, 'E', 4}}, {1, 3}},                   STAT_OPTIMAL, 2.0},
    {"equations at zero",           {{{{1, -1}, 'E', 0}, {{1, 1}, 'L', 8}}, {-1, -2}},                STAT_OPTIMAL, -12.0},
    {"Beale's cycle",               {{{{0.25, -60, -0.04, 9}, 'L', 0}, {{0.5, -90, -0.02, 3}, 'L', 0}, {{0, 0, 1, 0}, 'L', 1}}, {-0.75, 150, -0.02, 6}}, STAT_OPTIMAL, -0.05},
    {"Kuhn's cycle",                {{{{-2, -9, 1, 9}, 'L', 0}, {{1.0 / 3, 1, -1.0 / 3, -2}, 'L', 0}, {{2, 3, -1, -12}, 'L', 2}}, {-2, -3, 1, 12}}, STAT_OPTIMAL, -2.0},
    {"Marshall and Suurballe's",    {{{{0.5, -5.5, -2.5, 9}, 'L', 0}, {{0.5, -1.5, -0.5, 1}, 'L', 0}, {{1, 0, 0, 0}, 'L', 1}}, {-10, 57, 9, 24}}, STAT_OPTIMAL, -1.0},
    {"Kuhn's cycle, open",          {{{{-2, -9, 1, 9}, 'L', 0}, {{1.0 / 3, 1, -1.0 / 3, -2}, 'L', 0}}, {-2, -3, 1, 12}}, STAT_UNBOUNDED, 0.0},
    {"unbounded at once",           {{{{1, -1}, 'L', 1}}, {0, -1}},                                   STAT_UNBOUNDED, 0.0, 0},
    {"rows against each other",     {{{{1}, 'G', 2}, {{1}, 'L', 1}}, {1}},                            STAT_INFEASIBLE, 0.0},
    {"an empty row that is false",  {{{{0}, 'G', 1}}, {1}},                                           STAT_INFEASIBLE, 0.0, 0},
    {"bounds out of order",         {{{{1, 1}, 'L', 9}}, {-1, -1}, {0, 2}, {4, 1}},                   STAT_INFEASIBLE, 0.0, 0},
    {"infeasible by little",        {{{{1}, 'G', 1}, {{1}, 'L', 1 - 5e-8}}, {1}},                     STAT_INFEASIBLE, 0.0},
    {"infeasible by less than tol", {{{{1}, 'G', 1}, {{1}, 'L', 1 - 1e-9}}, {1}},                     STAT_OPTIMAL, 1.0},
};
// clang-format on

TEST(Simplex, ends_with_the_truth_and_its_proof)
{
    for (const auto& c : SOLVE_CASES)
        for (const auto layout : {MatrixLayout::sparse, MatrixLayout::dense}) {
            SCOPED_TRACE(c.name);
            const LoadedModel loaded(c.model, layout);
            setintparam(loaded.lp, PARAM_ITERLIMIT, MOST_ITERATIONS);
            const Answer answer = solve(loaded.lp);
            EXPECT_EQ(answer.status, c.status);
            if (c.status == STAT_OPTIMAL) {
                expect_optimal(c.model, answer);
                EXPECT_NEAR(answer.objval, c.objective, 1e-8);
            }
            EXPECT_TRUE(c.iterations < 0 || c.iterations == loaded.lp->iterations);
        }
}

TEST(Simplex, agrees_with_a_look_at_every_vertex)
{
    int seen[4] = {};
    for (unsigned seed = 1; seed <= 600; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const LinearModel model = tiny_model(seed);
        const Truth truth = truth_of(model);
        const Answer answer = solve(model, seed % 2 ? MatrixLayout::sparse : MatrixLayout::dense);
        ASSERT_EQ(answer.status, truth.status);
        ++seen[truth.status];
        if (truth.status != STAT_OPTIMAL) continue;
        expect_optimal(model, answer);
        EXPECT_NEAR(answer.objval, truth.objective, 1e-6);
        if (HasFailure()) return;
    }
    for (const int status : {STAT_OPTIMAL, STAT_INFEASIBLE, STAT_UNBOUNDED})
        EXPECT_GE(seen[status], 60) << "models with status " << status;
}

// ---- single steps

// clang-format off
const struct {
    const char* name;
    LinearModel model;
    int enters;  // the variable that moves first
    int leaves;  // the logical variable that leaves, by its row; 0: the variable flips
    double x;    // where it comes to rest
} STEP_CASES[] = {
    {"the largest cost enters",                {{{{1, 1}, 'L', 4}}, {-1, -2}},                                          2, 1, 4},
    {"a free variable enters before all",      {{{{1, 1}, 'L', 4}}, {-2, -0.1}, {0, -INF}, {INF, INF}},                 2, 1, 4},
    {"a fixed variable never enters",          {{{{1, 1}, 'L', 4}}, {-9, -1}, {1, 0}, {1, INF}},                        2, 1, 3},
    {"the nearer bound is left",               {{{{1, 1}, 'L', 4}}, {-1, 3}, {0, -9}, {INF, 2}},                        2, 0, -9},
    {"the shortest step leaves",               {{{{1, 0}, 'L', 4}, {{2, 0}, 'L', 6}}, {-1, 0}},                         1, 2, 3},
    {"its own range is shorter",               {{{{1, 0}, 'L', 4}}, {-1, 0}, {0, 0}, {3, 9}},                           1, 0, 3},
    {"its own range is as short",              {{{{1, 0}, 'L', 3}}, {-1, 0}, {0, 0}, {3, 9}},                           1, 0, 3},
    {"as short, and another row at its bound", {{{{1, 0}, 'L', 3}, {{0, 1}, 'L', 0}}, {-1, 0}, {0, 0}, {3, 9}},         1, 1, 3},
    {"equal rows: the last",                   {{{{1, 1}, 'L', 4}, {{1, 1}, 'L', 4}}, {-1, 0}},                         1, 2, 4},
    {"equal steps: the smaller row, first",    {{{{1, 1}, 'L', 4}, {{1, 2}, 'L', 4}}, {-1, 0}},                         1, 1, 4},
    {"equal steps: the smaller row, second",   {{{{1, 2}, 'L', 4}, {{1, 1}, 'L', 4}}, {-1, 0}},                         1, 2, 4},
    {"rows are compared over their pivots",    {{{{1, 2}, 'L', 4}, {{2, 3}, 'L', 8}}, {-1, 0}},                         1, 2, 4},
    {"falling: the larger row, first",         {{{{-1, -2}, 'L', 4}, {{-1, -1}, 'L', 4}}, {1, 0}, {-INF, 0}, {0, INF}}, 1, 1, -4},
    {"falling: the larger row, second",        {{{{-1, -1}, 'L', 4}, {{-1, -2}, 'L', 4}}, {1, 0}, {-INF, 0}, {0, INF}}, 1, 2, -4},
};
// clang-format on

TEST(Steps, follow_the_rules_of_the_method)
{
    for (const auto& c : STEP_CASES) {
        SCOPED_TRACE(c.name);
        const LoadedModel loaded(c.model);
        setintparam(loaded.lp, PARAM_SCALING, -1);
        setintparam(loaded.lp, PARAM_ITERLIMIT, 0);
        EngineRun engine(loaded.lp);
        engine.solve();

        const LpEngine& lp = engine.record();
        EXPECT_EQ(lp.iterations, 1);
        EXPECT_EQ(lp.collabel[c.enters], c.leaves != 0 ? lp.n + c.leaves : c.enters);
        EXPECT_EQ(engine.run.x[c.enters - 1], c.x);
        EXPECT_EQ(loaded.lp->x[c.enters - 1], c.x) << "a stop leaves its point in the model";
    }
}

// ---- several solves

TEST(RepeatedSolves, start_afresh_from_the_bounds_they_find)
{
    const RandomShape shape{.rows = 15, .cols = 20, .boxed = 1.0, .equal = 0.1};
    for (unsigned seed = 1; seed <= 20 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        LinearModel model = solvable_model(seed, shape);
        const LoadedModel loaded(model);
        EngineRun engine(loaded.lp, RUN_REPEATED);
        SolveRun& run = engine.run;
        ASSERT_EQ(engine.solve(), ENGINE_OPTIMAL);
        const double first = run.objective;

        const std::size_t j = seed % 20;
        std::swap(run.lb[j], run.ub[j]);
        EXPECT_EQ(engine.solve(), ENGINE_INFEASIBLE);
        EXPECT_EQ(engine.solved, 1);

        // As an integer search would: the variable is fixed at the middle of its range.
        model.lb[j] = model.ub[j] = run.lb[j] = run.ub[j] = 0.5 * (run.lb[j] + run.ub[j]);
        const Answer fresh = solve(model);
        ASSERT_EQ(engine.solve(),
                  fresh.status == STAT_OPTIMAL ? ENGINE_OPTIMAL : ENGINE_INFEASIBLE);
        if (run.result == ENGINE_OPTIMAL) {
            expect_feasible(model, Reals(run.x, run.x + 20));
            EXPECT_NEAR(run.objective * model.objsen, fresh.objval, 1e-6);
        }
        run.lb[j] = loaded.lb[j], run.ub[j] = loaded.ub[j];
        EXPECT_EQ(engine.solve(), ENGINE_OPTIMAL);
        EXPECT_NEAR(run.objective, first, 1e-7);
    }
}

}  // namespace
}  // namespace tarnwick
