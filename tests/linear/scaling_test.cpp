#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>

#include "linear/scaling.h"
#include "tests/support/enginerun.h"

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

    const auto items = [](const auto* first, int n) { return Reals(first, first + n); };
    EXPECT_EQ(items(lp.rowexp.data(), 4), (Reals{-1, 5, 3, -1}));
    EXPECT_EQ(items(lp.colexp.data(), 3), (Reals{0, 2, -5}));
    EXPECT_EQ(items(lp.tableau[0], 3), (Reals{0.0, 8.0, 0.0625}));
    EXPECT_EQ(items(lp.tableau[1], 3), (Reals{6.0 / 32.0, 0.125, 1.0}));
    EXPECT_EQ(items(lp.tableau[2], 3), (Reals{2.0, 4.0, 0.0}));

    scalecolumns(lp, {lp.lower});
    EXPECT_EQ(lp.lower[1], -INF) << "infinite in every unit";
    EXPECT_EQ(lp.lower[2], -1e29 * 32.0) << "large is not infinite";
    unscalecolumns(lp, {lp.lower});
    EXPECT_EQ(lp.lower[1], -INF);
}

}  // namespace
}  // namespace tarnwick
