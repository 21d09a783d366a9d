#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <string>

#include "interface/problem.h"
#include "linear/scaling.h"
#include "tests/support/enginerun.h"
#include "tests/support/verifier.h"

namespace tarnwick {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NONE = std::numeric_limits<double>::quiet_NaN();

TEST(Exponents, are_those_of_the_binary_form_and_shift_as_the_standard_library_does)
{
    for (const double value : {0.0, -0.0, 1.0, 0.75, -8.0, 0.1, 1024.5, DBL_MAX, -DBL_MAX, DBL_MIN,
                               DBL_MIN / 2.0, 5e-324, INFINITE, -INFINITE}) {
        const int exponent = value == 0.0 ? 0 : std::clamp(std::ilogb(value), -1023, 1024);
        EXPECT_EQ(exponentof(value), exponent) << value;
        for (const int power : {0, 1, -1, 9, -30, 900, 2045, 5000, -5000})
            EXPECT_EQ(shiftexponent(value, power), std::ldexp(value, power))
                << value << " by " << power;
    }
    EXPECT_EQ(exponentof(NONE), 1024);
    EXPECT_TRUE(std::isnan(shiftexponent(NONE, 1)));
}

// Exponents 0 and 10 make 5 for the first row; 3 alone makes 3 for the second. That leaves -5 and 0
// for the first column, which makes 2, and 5 for the second, which makes -5. The costs then have 2
// and -5, which makes -1: all are halved towards zero. What is below 1e-20 counts for nothing.
// clang-format off
const LinearModel BADLY_SCALED{{{{1, 1024}, 'L', 6}, {{8, 1e-21}, 'L', 16}},
                               {-1, -1}, {-INF, -1e29}, {1e29, INF}};
// clang-format on

TEST(Scaling, centres_rows_then_columns_then_the_costs)
{
    const LoadedModel loaded(BADLY_SCALED);
    EngineRun engine(loaded.lp);
    ASSERT_EQ(engine.ready, 1);
    LpEngine& lp = engine.record();

    const int rows[] = {-1, 5, 3, -1}, columns[] = {0, 2, -5};
    for (int i = 0; i <= 3; ++i) EXPECT_EQ(lp.rowexp[i], rows[i]) << "row " << i;
    for (int j = 0; j <= 2; ++j) EXPECT_EQ(lp.colexp[j], columns[j]) << "column " << j;

    const double scaled[3][3] = {
        {0.0,        8.0,   0.0625},
        {6.0 / 32.0, 0.125, 1.0   },
        {2.0,        4.0,   0.0   }
    };
    for (int i = 0; i <= 2; ++i)
        for (int j = 0; j <= 2; ++j)
            EXPECT_EQ(lp.tableau[i][j], scaled[i][j]) << "element " << i << ", " << j;

    scalecolumns(lp, {lp.lower});
    EXPECT_EQ(lp.lower[1], -INF) << "infinite in every unit";
    EXPECT_EQ(lp.lower[2], -1e29 * 32.0) << "large is not infinite";
    unscalecolumns(lp, {lp.lower});
    EXPECT_EQ(lp.lower[1], -INF);
}

TEST(Scaling, off_leaves_all_but_the_smallest_entries)
{
    const LoadedModel loaded(BADLY_SCALED);
    setintparam(loaded.lp, PARAM_SCALING, -1);
    EngineRun engine(loaded.lp);
    LpEngine& lp = engine.record();
    for (int i = 0; i <= 3; ++i) EXPECT_EQ(lp.rowexp[i], 0);
    EXPECT_EQ(lp.tableau[1][2], 1024.0);
    EXPECT_EQ(lp.tableau[2][2], 0.0);
}

TEST(Scaling, changes_units_and_not_the_optimum)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        LinearModel model = solvable_model(seed, {.rows = 8, .cols = 10, .free = 0.1});
        // Units of the caller's: rows and columns times powers of ten.
        for (std::size_t i = 0; i < model.numrows(); ++i)
            for (std::size_t j = 0; j < model.numcols(); ++j)
                model.rows[i].a[j] *= std::pow(10.0, static_cast<double>((i * 7 + j * 3) % 5) - 2);
        for (Row& row : model.rows) row.rhs = row.sense == 'G' ? -50.0 : 50.0;
        for (std::size_t j = 0; j < model.numcols(); ++j) {
            model.lb[j] = std::max(model.lb[j], -30.0);
            model.ub[j] = std::min(model.ub[j], 30.0);
        }

        const Answer scaled = solve(model);
        const LoadedModel loaded(model);
        setintparam(loaded.lp, PARAM_SCALING, -1);
        const Answer plain = solve(loaded.lp);
        ASSERT_EQ(scaled.status, plain.status);
        if (plain.status != STAT_OPTIMAL) continue;
        expect_optimal(model, scaled);
        expect_optimal(model, plain);
        EXPECT_NEAR(scaled.objval, plain.objval, 1e-3 * (1.0 + std::fabs(plain.objval)));
    }
}

}  // namespace
}  // namespace tarnwick
