#include <gtest/gtest.h>

#include <climits>
#include <set>
#include <string>

#include "linear/pivot.h"
#include "linear/scaling.h"
#include "linear/simplex.h"
#include "tests/linear/referencesimplex.h"
#include "tests/support/enginerun.h"
#include "tests/support/verifier.h"

namespace tarnwick {
namespace {

// Column zero is kept apart during a run, and most pivots wait before they are applied; none of this
// may move a bit of any number, or the path of the method.

// Rows 0..last: an infeasible model has its infeasibility row, the last one, summed anew at the end.
void expect_same_basis(const LpEngine& lp, const ReferenceSimplex& reference, int last)
{
    int numbers = 0, labels = 0;  // that differ
    for (int i = 0; i <= last; ++i)
        for (int j = 0; j <= lp.n; ++j) numbers += lp.tableau[i][j] != reference.T[i][j];
    for (int j = 1; j <= lp.n; ++j) {
        numbers += lp.x[j] != reference.x[j];
        labels +=
            lp.collabel[j] != reference.collabel[j] || lp.colstate[j] != reference.colstate[j];
    }
    for (int i = 1; i <= lp.m; ++i)
        labels += lp.rowlabel[i] != reference.rowlabel[i] ||
                  lp.senses[i].sense != reference.sense[i] ||
                  lp.senses[i].flips != reference.flips[i];
    EXPECT_EQ(numbers, 0) << "of the tableau and the point";
    EXPECT_EQ(labels, 0) << "and states";
    EXPECT_EQ(lp.activecols, reference.activecols);
    EXPECT_EQ(lp.iterations, reference.iterations);
}

// Gives the number of iterations.
int expect_the_textbook(const LinearModel& model, std::int32_t iterlimit, MatrixLayout layout)
{
    const LoadedModel loaded(model, layout);
    EngineRun engine(loaded.lp);
    EXPECT_EQ(engine.ready, 1);
    LpEngine& lp = engine.record();
    scalecolumns(lp, {lp.x, lp.lower, lp.upper});
    ReferenceSimplex reference(lp, iterlimit);
    setintparam(loaded.lp, PARAM_ITERLIMIT, iterlimit);
    const EngineResult got = solvesimplex(lp), want = reference.solve();
    engine.run.result = ENGINE_STALLED;  // nothing to analyse
    EXPECT_EQ(got, want);
    expect_same_basis(lp, reference, want == ENGINE_INFEASIBLE ? lp.m : lp.m + 1);
    return reference.iterations;
}

// clang-format off
const struct {
    const char* name;
    RandomShape shape;
    int models;
    std::int32_t iterlimit;
    int least;  // iterations of all models together: fewer would test nothing
} TEXTBOOK_CASES[] = {
    {"a few rows",                   {.rows = 5, .cols = 7},                                         40, INT_MAX, 150},
    {"all kinds of variables",       {.rows = 30, .cols = 40, .free = 0.2, .fixed = 0.1},            10, INT_MAX, 200},
    {"equations alone",              {.rows = 25, .cols = 60, .equal = 1.0, .greater = 0.0},         6,  INT_MAX, 150},
    {"just waiting",                 {.rows = 64, .cols = 64, .free = 0.1},                          4,  INT_MAX, 150},
    {"ties",                         {.rows = 40, .cols = 50, .density = 0.3, .degenerate = true},   10, INT_MAX, 100},
    {"1% full",                      {.rows = 300, .cols = 300, .density = 0.01, .equal = 0.3},      2,  INT_MAX, 200},
    {"many ties",                    {.rows = 300, .cols = 300, .density = 0.05, .degenerate = true}, 1, INT_MAX, 200},
    {"many equations",               {.rows = 120, .cols = 600, .density = 0.5, .equal = 0.8},       1,  INT_MAX, 200},
    {"cut short",                    {.rows = 300, .cols = 300},                                     1,  61,      62},
    {"the longest list, cut short",  {.rows = 1500, .cols = 1420},                                   1,  37,      38},
    {"the same, 1% full, with ties", {.rows = 1500, .cols = 1420, .density = 0.01, .degenerate = true}, 1, 70,    71},
};
// clang-format on

TEST(Pivots, give_the_numbers_and_the_path_of_the_textbook)
{
    std::set<int> capacities;
    for (const auto& c : TEXTBOOK_CASES) {
        capacities.insert(waitingcapacity(c.shape.rows, c.shape.cols));
        int iterations = 0;
        for (unsigned seed = 1; seed <= static_cast<unsigned>(c.models); ++seed) {
            SCOPED_TRACE(std::string(c.name) + ", seed " + std::to_string(seed));
            const auto layout = seed % 2 ? MatrixLayout::sparse : MatrixLayout::dense;
            const LinearModel model = solvable_model(seed, c.shape);
            iterations += expect_the_textbook(model, c.iterlimit, layout);
            if (c.iterlimit == INT_MAX) expect_optimal(model, solve(model, layout));
            if (HasFailure()) return;
        }
        EXPECT_GE(iterations, c.least) << c.name;
    }
    EXPECT_TRUE(capacities.count(0) == 1 && capacities.size() >= 2) << "another choice of sizes";
}

TEST(Pivots, give_the_textbook_on_models_without_an_optimum_too)
{
    for (unsigned seed = 1; seed <= 500 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        expect_the_textbook(tiny_model(seed), INT_MAX, MatrixLayout::sparse);
    }
}

}  // namespace
}  // namespace tarnwick
