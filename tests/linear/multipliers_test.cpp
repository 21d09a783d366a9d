#include <gtest/gtest.h>

#include <cmath>

#include "linear/ldl.h"
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

// ---- the factorisation

TEST(Factors, solve_a_definite_system_and_refuse_others)
{
    Matrix u;
    Vec<double> w;
    ArrayBlock memory;
    ASSERT_TRUE(memory.create([&](auto& layout) {
        layout(u, 2, 2);
        layout(w, 2);
    }));
    // 4x + 2y = 8, 2x + 3y = 8 has the solution (1, 2).
    const auto factor = [&u](double a, double b, double d) {
        u[1][1] = a;
        u[1][2] = u[2][1] = b;
        u[2][2] = d;
        return factorldl(u, 2);
    };
    ASSERT_TRUE(factor(4, 2, 3));
    w[1] = w[2] = 8.0;
    solveldl(u, w);
    EXPECT_NEAR(w[1], 1.0, 1e-15);
    EXPECT_NEAR(w[2], 2.0, 1e-15);
    EXPECT_FALSE(factor(1, 1, 1));
    EXPECT_FALSE(factor(std::nan(""), 1, 1));
}

}  // namespace
}  // namespace tarnwick
