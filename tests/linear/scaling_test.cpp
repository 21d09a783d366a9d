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

TEST(Exponents, are_those_of_the_binary_form)
{
    const struct {
        double value;
        int exponent;
    } CASES[] = {
        {0.0,       0    },
        {-0.0,      0    },
        {1.0,       0    },
        {0.75,      -1   },
        {-8.0,      3    },
        {1024.5,    10   },
        {DBL_MAX,   1023 },
        {DBL_MIN,   -1022},
        {5e-324,    -1023},
        {-INFINITE, 1024 },
        {NONE,      1024 },
    };
    for (const auto& c : CASES) EXPECT_EQ(exponentof(c.value), c.exponent) << c.value;
}

TEST(Exponents, shift_exactly_and_leave_the_normal_numbers_gently)
{
    const struct {
        double value;
        int power;
        double want;
    } CASES[] = {
        {1.0,       3,     8.0          },
        {-3.0,      -1,    -1.5         },
        {0.1,       0,     0.1          },
        {0.0,       900,   0.0          },
        {DBL_MIN,   2045,  0x1p1023     },
        {DBL_MAX,   1,     INFINITE     },
        {-DBL_MAX,  1,     -INFINITE    },
        {1.0,       5000,  INFINITE     },
        {DBL_MIN,   -1,    DBL_MIN / 2.0},
        {5e-324,    1,     1e-323       },
        {5e-324,    -1,    0.0          },
        {1.0,       -5000, 0.0          },
        {INFINITE,  -9,    INFINITE     },
        {-INFINITE, 9,     -INFINITE    },
    };
    for (const auto& c : CASES)
        EXPECT_EQ(shiftexponent(c.value, c.power), c.want) << c.value << " by " << c.power;
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
