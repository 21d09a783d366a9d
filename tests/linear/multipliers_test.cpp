#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "linear/ldl.h"
#include "linear/svd.h"
#include "tests/support/enginerun.h"
#include "tests/support/verifier.h"

namespace tarnwick {
namespace {

struct MultiplierCase {
    const char* name;
    LinearModel model;
    Reals duals, reduced;
};

// The distance of a point from the region, squared, but for a constant: duals by hand.
// clang-format off
const MultiplierCase CASES[] = {
    {"inside: nothing is active",              {{{{1, 1}, 'L', 9}}, {-2, -4}, {0, 0}, {3, 3}, 1, {{1, 0}, {0, 1}}}, {0}, {0, 0}},
    {"at a vertex of bounds: the gradient",    {{{{1, 1}, 'L', 9}}, {1, 2}, {1, 0}, {3, 3}, 1, {{1, 0}, {0, 1}}}, {0}, {3, 2}},
    {"one row, from (2, 2) to x + y <= 2",     {{{{1, 1}, 'L', 2}}, {-4, -4}, {0, 0}, {3, 3}, 1, {{1, 0}, {0, 1}}}, {-2}, {0, 0}},
    {"the same, maximised",                    {{{{1, 1}, 'L', 2}}, {4, 4}, {0, 0}, {3, 3}, -1, {{-1, 0}, {0, -1}}}, {2}, {0, 0}},
    {"a row >= of the other sign",             {{{{1, 1}, 'G', 4}}, {-2, -2}, {0, 0}, {3, 3}, 1, {{1, 0}, {0, 1}}}, {2}, {0, 0}},
    {"two equal rows share their multiplier",  {{{{1, 1}, 'L', 2}, {{1, 1}, 'L', 2}}, {-4, -4}, {0, 0}, {3, 3}, 1, {{1, 0}, {0, 1}}}, {-1, -1}, {0, 0}},
    {"more active rows than free columns",     {{{{1}, 'L', 1}, {{1}, 'L', 1}}, {-12}, {0}, {3}, 1, {{1}}}, {-5, -5}, {0}},
    {"a row and a bound",                      {{{{1, 1}, 'E', 2}}, {-9, -1}, {0, 0}, {1, 3}, 1, {{1, 0}, {0, 1}}}, {1}, {-8, 0}},
};
// clang-format on

TEST(Multipliers, are_those_of_the_first_order_conditions)
{
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        const Answer answer = solve(c.model);
        expect_optimal(c.model, answer);
        for (std::size_t i = 0; i < c.duals.size(); ++i)
            EXPECT_NEAR(answer.piout[i], c.duals[i], 1e-7);
        for (std::size_t j = 0; j < c.reduced.size(); ++j)
            EXPECT_NEAR(answer.dj[j], c.reduced[j], 1e-7);
    }
}

// ---- the factorisations

struct Square {
    Matrix u, v;
    Vec<double> w, scratch;
    ArrayBlock memory;
    Square(int m, int n)
    {
        EXPECT_TRUE(memory.create([&](auto& layout) {
            layout(u, m, n);
            layout(v, n, n);
            layout(w, n);
            layout(scratch, n);
        }));
    }
};

TEST(Decomposition, gives_orthogonal_factors_whose_product_is_the_matrix)
{
    // clang-format off
    const struct {
        const char* name;
        std::vector<Reals> rows;
        double largest;  // singular value
    } MATRICES[] = {
        {"a diagonal",         {{3, 0}, {0, -4}},                      4},
        {"zeros",              {{0, 0}, {0, 0}, {0, 0}},               0},
        {"rank one",           {{1, 2}, {2, 4}, {2, 4}},               std::sqrt(45.0)},
        {"a zero in the diagonal of the bidiagonal", {{0, 1, 0}, {0, 0, 1}, {0, 0, 0}}, 1},
        {"one column",         {{2}, {3}, {6}},                        7},
        {"the Hilbert matrix", {{1, 1.0 / 2, 1.0 / 3}, {1.0 / 2, 1.0 / 3, 1.0 / 4}, {1.0 / 3, 1.0 / 4, 1.0 / 5}}, 1.4083189271236543},
    };
    // clang-format on
    const LoadedModel loaded(CASES[0].model);
    EngineRun engine(loaded.lp);
    ASSERT_EQ(engine.solve(), ENGINE_OPTIMAL);
    for (const auto& c : MATRICES) {
        SCOPED_TRACE(c.name);
        const int m = static_cast<int>(c.rows.size()), n = static_cast<int>(c.rows[0].size());
        const Square s(m, n);
        for (int i = 1; i <= m; ++i)
            std::copy_n(c.rows[static_cast<std::size_t>(i - 1)].data(), n, s.u[i] + 1);
        ASSERT_TRUE(decompose(engine.record(), s.u, m, n, s.w, s.v, s.scratch));
        const double tol = 1e-14 * (1.0 + c.largest);
        EXPECT_NEAR(*std::max_element(s.w.first(), s.w.first() + n), c.largest, tol);
        for (int k = 1; k <= n; ++k) {
            EXPECT_GE(s.w[k], 0.0);
            for (int l = 1; l <= n; ++l) {
                double product = 0.0;
                for (int j = 1; j <= n; ++j) product += s.v[j][k] * s.v[j][l];
                EXPECT_NEAR(product, k == l ? 1.0 : 0.0, 1e-14);
            }
        }
        for (int i = 1; i <= m; ++i)
            for (int j = 1; j <= n; ++j) {
                double rest =
                    c.rows[static_cast<std::size_t>(i - 1)][static_cast<std::size_t>(j - 1)];
                for (int k = 1; k <= n; ++k) rest -= s.u[i][k] * s.w[k] * s.v[j][k];
                EXPECT_NEAR(rest, 0.0, tol);
            }
    }
    const Square wide(2, 2);
    EXPECT_FALSE(decompose(engine.record(), wide.u, 1, 2, wide.w, wide.v, wide.scratch));
}

TEST(Factors, solve_a_definite_system_and_refuse_others)
{
    // 4x + 2y = 8, 2x + 3y = 8 has the solution (1, 2).
    Square s(2, 2);
    const auto factor = [&s](double a, double b, double d) {
        s.u[1][1] = a;
        s.u[1][2] = s.u[2][1] = b;
        s.u[2][2] = d;
        return factorldl(s.u, 2);
    };
    ASSERT_TRUE(factor(4, 2, 3));
    s.w[1] = s.w[2] = 8.0;
    solveldl(s.u, s.w);
    EXPECT_NEAR(s.w[1], 1.0, 1e-15);
    EXPECT_NEAR(s.w[2], 2.0, 1e-15);
    EXPECT_FALSE(factor(1, 1, 1));
    EXPECT_FALSE(factor(std::nan(""), 1, 1));
}

}  // namespace
}  // namespace tarnwick
