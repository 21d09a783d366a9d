#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "interface/problem.h"
#include "tests/support/models.h"

namespace tarnwick {
namespace {

// A model of n columns and one empty row, on which the Q under test is loaded.
struct Columns : LoadedModel {
    Reals values, zeros;

    explicit Columns(std::size_t n, std::int32_t sign = 1)
        : LoadedModel({{{Reals(n), 'L', 0}}, Reals(n), {}, {}, sign}), zeros(n)
    {
    }
    // loadquad's answer to a dense Q: n columns of n values.
    std::int32_t load(Reals q)
    {
        values = std::move(q);
        const auto count = static_cast<std::int32_t>(values.size());
        return loadquad(lp, nullptr, nullptr, nullptr, values.data(), count, zeros.data());
    }
};

// The objective is x'Qx, Q has n columns of n values.
TEST(Definiteness, is_decided_for_the_sense_of_the_objective)
{
    const double nan = std::nan("");
    // clang-format off
    const std::tuple<const char*, std::int32_t, Reals, bool> CASES[] = {
        {"concave, minimised",                 1, {-1},                             false},
        {"concave, maximised",                -1, {-1},                             true },
        {"one triangle of a perfect square",   1, {1, 0, 4, 4},                     true },
        {"just not a square",                  1, {1, 2, 2, 3.999},                 false},
        {"the product, cancelled",             1, {0, 1, -1, 0},                    true },
        {"zero diagonal in front",             1, {0, 0, 0, 0, 1, 1, 0, 1, 2},      true },
        {"zero pivot after the exchange",      1, {0, 1, 1, -2},                    false},
        {"negative below what counts",         1, {-1e-16},                         true },
        {"negative beyond what counts",        1, {-1e-14},                         false},
        {"positive curvature at the end",      1, {2, 1, 1, 1, 2, 1, 1, 1, 0.7},    true },
        {"negative curvature at the end",      1, {2, 1, 1, 1, 2, 1, 1, 1, 0.6},    false},
        {"NaN on the diagonal",                1, {1, 0, 0, nan},                   false},
        {"NaN alone in a row of zeros",        1, {0, 0, 0, 0, 0, nan, 0, 0, 0},    false},
        {"infinite product",                   1, {1, HUGE_VAL, 0, 1},              false},
    };
    // clang-format on
    for (const auto& [what, objsen, q, is_semidefinite] : CASES) {
        SCOPED_TRACE(what);
        Columns model(q.size() == 1 ? 1 : q.size() == 4 ? 2 : 3, objsen);
        EXPECT_EQ(model.load(q), is_semidefinite ? 0 : 5);
        EXPECT_EQ(model.lp->control.qstate, is_semidefinite ? Q_ACCEPTED : Q_INDEFINITE);
    }
}

TEST(Definiteness, of_a_sparse_q_adds_the_entries_of_one_place)
{
    using Ints = std::vector<std::int32_t>;
    const auto code_of = [](Ints counts, Ints rows, Reals values) {
        Columns m(2);
        Ints begins{0, counts[0]};
        return loadquad(m.lp, begins.data(), counts.data(), rows.data(), values.data(), 3,
                        m.zeros.data());
    };
    EXPECT_EQ(code_of({2, 0}, {0, 0, 0}, {3.0, -1.0, 0.0}), 0) << "the sum is positive";
    EXPECT_EQ(code_of({2, 0}, {0, 0, 0}, {-3.0, 2.0, 0.0}), 5) << "the sum is negative";
    EXPECT_EQ(code_of({2, 0}, {0, 2, 0}, {1.0, -9.0, 0.0}), 0) << "a row that names nothing";
    EXPECT_EQ(code_of({1, 2}, {0, 0, 1}, {1.0, 2.5, 1.0}), 5) << "one triangle";
}

}  // namespace
}  // namespace tarnwick
