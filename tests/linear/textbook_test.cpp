#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <random>
#include <set>
#include <string>
#include <utility>

#include "control/services.h"
#include "interface/problem.h"
#include "linear/pivot.h"
#include "linear/scaling.h"
#include "linear/simplex.h"
#include "tests/support/enginerun.h"
#include "tests/support/referencesimplex.h"
#include "tests/support/verifier.h"

namespace tarnwick {
namespace {

// Column zero is kept apart during a run, and most pivots wait before they are applied; none of this
// may move a bit of any number, or the path of the method.

LpEngine* watched = nullptr;
std::vector<std::uint64_t> trace;

std::int32_t TARNWICK_CALL record_step(Problem*, std::int32_t)
{
    const LpEngine& lp = *watched;
    trace.push_back(
        fingerprint(lp.n, lp.m, lp.collabel, lp.rowlabel, lp.colstate, lp.basicvalue[0]));
    return 0;
}

void expect_same_basis(const LpEngine& lp, const ReferenceSimplex& reference)
{
    int differing = 0;
    for (int i = 0; i <= lp.m + 1; ++i)
        for (int j = 0; j <= lp.n; ++j)
            differing += is_same(lp.tableau[i][j], reference.T[i][j]) ? 0 : 1;
    for (int j = 1; j <= lp.n; ++j) differing += is_same(lp.x[j], reference.x[j]) ? 0 : 1;
    EXPECT_EQ(differing, 0) << "numbers of the tableau and the point";

    for (int j = 1; j <= lp.n; ++j) {
        ASSERT_EQ(lp.collabel[j], reference.collabel[j]) << "column " << j;
        ASSERT_EQ(lp.colstate[j], reference.colstate[j]) << "column " << j;
    }
    for (int i = 1; i <= lp.m; ++i) {
        ASSERT_EQ(lp.rowlabel[i], reference.rowlabel[i]) << "row " << i;
        ASSERT_EQ(lp.senses[i].sense, reference.sense[i]) << "row " << i;
        ASSERT_EQ(lp.senses[i].flips, reference.flips[i]) << "row " << i;
    }
    EXPECT_EQ(lp.activecols, reference.activecols);
    EXPECT_EQ(lp.iterations, reference.iterations);
}

using Spoil = void (*)(LpEngine&, unsigned seed);

// Gives the number of iterations.
int expect_the_textbook(const LinearModel& model, std::int32_t iterlimit, MatrixLayout layout,
                        Spoil spoil = nullptr, unsigned seed = 0)
{
    const LoadedModel loaded(model, layout);
    EngineRun engine(loaded.lp);
    EXPECT_EQ(engine.ready, 1);
    LpEngine& lp = engine.record();
    scalecolumns(lp, {lp.x, lp.lower, lp.upper});
    if (spoil) {
        // Behind a division by an infinity there are no numbers to agree on.
        spoil(lp, seed);
        ReferenceSimplex scout(lp, iterlimit);
        scout.solve();
        if (scout.infinitepivot == 1) return 0;
        iterlimit = std::min(scout.infinitepivot - 2, iterlimit);
    }

    ReferenceSimplex reference(lp, iterlimit);
    loaded.lp->control.iterlimit = iterlimit;
    loaded.lp->control.lpcallback = record_step;
    watched = &lp;
    trace.clear();

    const EngineResult got = solvesimplex(lp), want = reference.solve();
    engine.run.result = ENGINE_STALLED;  // nothing to analyse
    // An infeasibility that the overflow itself has made is not believed.
    if (spoil && want == ENGINE_INFEASIBLE && got != want) return 0;
    EXPECT_EQ(got, want);
    EXPECT_TRUE(trace.size() <= reference.trace.size() &&
                std::equal(trace.begin(), trace.end(), reference.trace.begin()))
        << "another path";
    EXPECT_GE(trace.size() + 1, reference.trace.size()) << "a limit stops before the callback";
    expect_same_basis(lp, reference);
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
    {"just not waiting",             {.rows = 63, .cols = 63},                                       4,  INT_MAX, 150},
    {"just waiting",                 {.rows = 64, .cols = 64, .free = 0.1},                          4,  INT_MAX, 150},
    {"ties",                         {.rows = 40, .cols = 50, .density = 0.3, .degenerate = true},   10, INT_MAX, 100},
    {"more",                         {.rows = 256, .cols = 300, .boxed = 0.5, .free = 0.05},         1,  INT_MAX, 200},
    {"5% full",                      {.rows = 300, .cols = 300, .density = 0.05, .free = 0.05},      1,  INT_MAX, 200},
    {"1% full",                      {.rows = 300, .cols = 300, .density = 0.01, .equal = 0.3},      2,  INT_MAX, 200},
    {"many ties",                    {.rows = 300, .cols = 300, .density = 0.05, .degenerate = true}, 1, INT_MAX, 200},
    {"many equations",               {.rows = 120, .cols = 600, .density = 0.5, .equal = 0.8},       1,  INT_MAX, 200},
    {"wide, 3% full",                {.rows = 100, .cols = 900, .density = 0.03, .equal = 0.4},      1,  INT_MAX, 100},
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

// Numbers that overflow when they meet, and infinities of both signs.
void put_huge_entries(LpEngine& lp, unsigned seed)
{
    std::mt19937 bits(seed);
    const auto below = [&bits](int limit) {
        return static_cast<int>(bits() % static_cast<unsigned>(limit));
    };
    const double huge[] = {1e300, -1e300, 1e308, HUGE_VAL, -HUGE_VAL};
    for (int k = 0; k < (lp.m + lp.n) / 8; ++k)
        lp.tableau[below(lp.m + 1)][1 + below(lp.n)] = huge[below(seed % 2 ? 3 : 5)];
}

TEST(Pivots, give_the_textbook_where_numbers_overflow)
{
    const std::pair<RandomShape, unsigned> CASES[] = {
        {{.rows = 20, .cols = 20},                                       60},
        {{.rows = 100, .cols = 90, .density = 0.1},                      15},
        {{.rows = 280, .cols = 260, .density = 0.05, .greater = 0.0},    5 },
        {{.rows = 80, .cols = 900, .density = 0.02, .degenerate = true}, 5 },
    };
    int iterations = 0;
    for (const auto& [shape, models] : CASES)
        for (unsigned seed = 1; seed <= models && !HasFailure(); ++seed) {
            SCOPED_TRACE(std::to_string(shape.rows) + " rows, seed " + std::to_string(seed));
            iterations += expect_the_textbook(solvable_model(seed, shape), 400,
                                              MatrixLayout::sparse, put_huge_entries, seed);
        }
    EXPECT_GE(iterations, 1000);
}

}  // namespace
}  // namespace tarnwick
