#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "interface/problem.h"
#include "tests/support/memory.h"
#include "tests/support/messages.h"
#include "tests/support/models.h"

namespace tarnwick {
namespace {

// A model of n columns and one empty row, on which the Q under test is loaded.
struct Columns : LoadedModel {
    Reals values, start;

    explicit Columns(std::size_t n, std::int32_t objsen = 1)
        : LoadedModel({{{Reals(n), 'L', 0}}, Reals(n), {}, {}, objsen}), start(n)
    {
    }
    // loadquad's answer to a dense Q: n columns of n values.
    std::int32_t load(Reals q)
    {
        values = std::move(q);
        return loadquad(lp, nullptr, nullptr, nullptr, values.data(),
                        static_cast<std::int32_t>(values.size()), start.data());
    }
};

TEST(Definiteness, is_decided_for_the_sense_of_the_objective)
{
    const double nan = std::nan("");
    // clang-format off
    const struct {
        const char* what;
        std::int32_t objsen;
        Reals q;  // n columns of n values; the objective is x'Qx
        bool is_semidefinite;
    } CASES[] = {
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
        {"NaN on the diagonal",                1, {1, 0, 0, nan},                   false},
        {"NaN alone in a row of zeros",        1, {0, 0, 0, 0, 0, nan, 0, 0, 0},    false},
        {"infinite product",                   1, {1, HUGE_VAL, 0, 1},              false},
    };
    // clang-format on
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.what);
        Columns model(c.q.size() == 1 ? 1 : c.q.size() == 4 ? 2 : 3, c.objsen);
        EXPECT_EQ(model.load(c.q), c.is_semidefinite ? 0 : 5);
        EXPECT_EQ(model.lp->control.qstate, c.is_semidefinite ? Q_ACCEPTED : Q_INDEFINITE);
    }
}

TEST(Definiteness, of_a_sparse_q_adds_the_entries_of_one_place)
{
    struct {
        const char* what;
        std::int32_t counts[2], rows[3];
        double values[3];
        bool is_semidefinite;
    } CASES[] = {
        {"sum positive",             {2, 0}, {0, 0},    {3.0, -1.0},     true },
        {"sum negative",             {2, 0}, {0, 0},    {-3.0, 2.0},     false},
        {"a row that names nothing", {2, 0}, {0, 2},    {1.0, -9.0},     true },
        {"one triangle",             {1, 2}, {0, 0, 1}, {1.0, 2.5, 1.0}, false},
    };
    for (auto& c : CASES) {
        SCOPED_TRACE(c.what);
        Columns model(2);
        std::int32_t begins[] = {0, c.counts[0]};
        EXPECT_EQ(loadquad(model.lp, begins, c.counts, c.rows, c.values, 3, model.start.data()),
                  c.is_semidefinite ? 0 : 5);
    }
}

// L D L' of small whole numbers is exact, and its curvature has the signs of D.
TEST(Definiteness, agrees_with_the_signs_of_a_factorisation)
{
    constexpr std::size_t N = 3;
    for (int code = 0; code < 27 * 27; ++code) {
        int digits = code;
        const auto next = [&digits] {
            const double digit = digits % 3 - 1;
            digits /= 3;
            return digit;
        };
        const double d[N] = {next(), next(), next()};
        const double a = next(), b = next(), c = next();
        const double l[N][N] = {
            {1, 0, 0},
            {a, 1, 0},
            {b, c, 1}
        };

        Reals q(N * N, 0.0);
        for (std::size_t i = 0; i < N; ++i)
            for (std::size_t k = 0; k < N; ++k)
                for (std::size_t p = 0; p < N; ++p) q[i * N + k] += l[i][p] * d[p] * l[k][p];

        Columns model(N);
        const bool is_convex = *std::min_element(d, d + N) >= 0.0;
        EXPECT_EQ(model.load(q), is_convex ? 0 : 5) << "factorisation " << code;
    }
}

TEST(Definiteness, without_memory_the_test_fails_and_the_model_stays)
{
    const MessageLog log;
    Columns model(2);
    const long alive = blocks_alive();
    for (long allowed = 0;; ++allowed) {
        allow_allocations(allowed);
        const std::int32_t code = model.load({1.0, 0.0, 0.0, 1.0});
        const bool failed = allocation_failed();
        allow_all_allocations();
        EXPECT_EQ(blocks_alive(), alive);
        EXPECT_EQ(code, failed ? 5 : 0);
        if (!failed) break;
        EXPECT_EQ(MessageLog::take().at(0).text, "Q matrix is indefinite");
        EXPECT_EQ(model.lp->problemtype, PROB_QP);
    }
}

}  // namespace
}  // namespace tarnwick
