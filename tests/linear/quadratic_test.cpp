#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "interface/problem.h"
#include "linear/objective.h"
#include "tests/support/enginerun.h"
#include "tests/support/memory.h"
#include "tests/support/verifier.h"

namespace tarnwick {
namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

// 5 ways to go wrong beside a wrong optimum: a hull that has collapsed, a box that hides the rows or
// the way down, a gap that is open, and a sense that is turned.
struct QuadraticCase {
    const char* name;
    LinearModel model;
    double objective;
    std::int32_t status = STAT_OPTIMAL;
};

// clang-format off
const LinearModel BEALE{{{{1, 1, 2}, 'L', 3}}, {-8, -6, -4}, {}, {}, 1,
                        {{2, 1, 1}, {1, 2, 0}, {1, 0, 1}}, {0.5, 0.5, 0.5}};
const LinearModel PARABOLA{{{{1}, 'L', 9}}, {-2}, {0}, {3}, 1, {{1}}};
const QuadraticCase CASES[] = {
    {"Beale's problem",                           BEALE, 1.0 / 9 - 9},
    {"parabola x^2 - 2x on 0..3, inside",         PARABOLA, -1},
    {"stationary start",                          {{{{1, 1}, 'L', 9}}, {-2, -4}, {0, 0}, {3, 3}, 1, {{1, 0}, {0, 1}}, {1, 2}}, -5},
    {"maximum of 4x - x^2 + y on x + y <= 3",     {{{{1, 1}, 'L', 3}}, {4, 1}, {0, 0}, {5, 5}, -1, {{-1, 0}, {0, 0}}}, 5.25},
    {"free variables, minimum far from the box",  {{{{1, 1}, 'L', 1e3}}, {-2, 4}, {-INF, -INF}, {INF, INF}, 1, {{1, 0}, {0, 1}}}, -5},
    {"free, minimum outside the first box",       {{{{1}, 'L', 1e7}}, {-4000}, {-INF}, {INF}, 1, {{1}}}, -4e6},
    {"Q as its lower triangle alone",             {{{{1, 1}, 'E', 2}}, {0, 0}, {-9, -9}, {9, 9}, 1, {{1, 0}, {1, 2}}}, 3.5},
    {"entries of Q that cancel along (1, 1)",     {{{{1, 1}, 'L', 99}}, {-1, 0}, {-INF, -INF}, {INF, 5}, 1, {{1, -1}, {-1, 1}}}, -5.25},
    {"one direction without curvature",           {{{{1, 1}, 'G', 1}}, {0, 1}, {0, 0}, {4, 4}, 1, {{1, 0}, {0, 0}}}, 0.75},
    {"small steps towards an open gap",           {{{{0, 1}, 'G', 0}}, {1, 1}, {-6, -6}, {INF, 1}, 1, {{8, 4}, {4, 2}}, {-3, 0}}, -0.03125},
    {"costs below the pricing tolerance",         {{{{1, 1}, 'L', 1e4}}, {1, -9e-6}, {0, 0}, {1, 1e4}, 1, {{1, 0}, {0, 1e-9}}}, -0.02025},
    {"rows that a box would hide",                 {{{{1}, 'G', 3}, {{1}, 'L', 1}}, {0}, {-INF}, {INF}, 1, {{1}}}, 0, STAT_INFEASIBLE},
    {"no curvature on the way down",               {{{{1, 1}, 'G', 0}}, {-1, -1}, {-INF, -INF}, {INF, INF}, 1, {{2, -1}, {-1, 0.5}}}, 0, STAT_UNBOUNDED},
    {"a concave form",                             {{{{1}, 'L', 2}}, {0}, {-1}, {3}, 1, {{-1}}}, 0, STAT_CONVERGED},
    {"NaN in Q",                                   {{{{1}, 'L', 2}}, {0}, {-1}, {3}, 1, {{NaN}}}, 0, STAT_MODELCHECK},
    {"values that overflow",                       {{{{1}, 'L', 2}}, {0}, {-1}, {3}, 1, {{1e307}}}, 0, STAT_MODELCHECK},
};
// clang-format on

TEST(Quadratic, optima_of_small_models_are_proved_and_what_has_none_gets_its_status)
{
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        const Answer answer = solve(c.model);
        EXPECT_EQ(answer.status, c.status);
        if (c.status != STAT_OPTIMAL) continue;
        expect_optimal(c.model, answer);
        EXPECT_NEAR(answer.objval, c.objective, 2e-6 * (1.0 + std::fabs(c.objective)));
    }
}

TEST(Quadratic, entries_of_one_place_add_and_an_index_beyond_the_columns_names_nothing)
{
    // clang-format off
    LinearModel model{{{{1, 1}, 'L', 9}}, {-2, 0}, {-3, -3}, {3, 3}};
    // clang-format on
    LoadedModel loaded(model);
    std::int32_t beg[] = {0, 2}, cnt[] = {2, 2}, ind[] = {0, 0, 1, 2};
    double val[] = {0.25, 0.75, 1, 1e3}, start[] = {2, 2};
    ASSERT_EQ(loadquad(loaded.lp, beg, cnt, ind, val, 4, start), 0);
    model.q = {
        {1, 0},
        {0, 1}
    };
    expect_optimal(model, solve(loaded.lp));
    EXPECT_EQ(visitquad(nullptr, nullptr, 0, 0, 1.0, nullptr), 0);
}

// ---- random models

// Q = B'B, singular for every second model; bounds and rows around a point, none of them degenerate.
LinearModel convex_model(unsigned seed)
{
    Draw random(seed);
    const auto draw = [&random](double low, double high) { return random.real(low, high); };
    const auto n = static_cast<std::size_t>(draw(1, 7)), m = static_cast<std::size_t>(draw(1, 5));
    LinearModel model{{}, Reals(n), Reals(n), Reals(n), seed % 3 == 0 ? -1 : 1};
    model.q.assign(n, Reals(n));
    const std::size_t rank = seed % 2 == 0 ? n : (n + 1) / 2;
    for (std::size_t k = 0; k < rank; ++k) {
        Reals b(n);
        for (double& value : b) value = draw(-2, 2);
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n; ++j) model.q[i][j] += model.objsen * b[i] * b[j];
    }
    Reals inside(n);
    for (std::size_t j = 0; j < n; ++j) {
        inside[j] = draw(-3, 3);
        model.obj[j] = draw(-9, 9);
        model.start.push_back(draw(-3, 3));
        model.lb[j] = inside[j] - draw(0.1, 4);
        model.ub[j] = inside[j] + draw(0.1, 4);
    }
    for (std::size_t i = 0; i < m; ++i) {
        Row row{Reals(n), "LGLGE"[i], 0.0};
        for (double& value : row.a) value = draw(-2, 3);
        for (std::size_t j = 0; j < n; ++j) row.rhs += row.a[j] * inside[j];
        if (row.sense != 'E') row.rhs += draw(0, 2) * (row.sense == 'L' ? 1 : -1);
        model.rows.push_back(row);
    }
    return model;
}

TEST(Quadratic, random_convex_models_are_solved_to_a_proved_optimum)
{
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        const LinearModel model = convex_model(seed);
        const LoadedModel loaded(model);
        // A singular Q may fail the definiteness test by rounding, and then there are no duals.
        loaded.lp->control.qstate = Q_ACCEPTED;
        expect_optimal(model, solve(loaded.lp));
    }
}

// ---- repeated solves, reports, memory

TEST(Quadratic, repeated_solves_with_other_bounds_start_from_the_last_point)
{
    const LoadedModel loaded(PARABOLA);
    EngineRun engine(loaded.lp, RUN_REPEATED);
    const double BOUNDS[][3] = {
        {0, 3,    1   },
        {2, 3,    2   },
        {0, 0.25, 0.25},
        {0, 3,    1   }
    };
    for (const auto& [lb, ub, x] : BOUNDS) {
        *engine.run.lb = lb;
        *engine.run.ub = ub;
        ASSERT_EQ(engine.solve(), ENGINE_OPTIMAL);
        EXPECT_NEAR(*engine.run.x, x, 1e-9);
        EXPECT_NEAR(engine.run.objective, x * x - 2.0 * x, 1e-9);
    }
    *engine.run.lb = 4.0;
    EXPECT_EQ(engine.solve(), ENGINE_INFEASIBLE);
    EXPECT_EQ(engine.solved, 1);
}

int reports_to_go;
std::int32_t TARNWICK_CALL stop_at_last(Problem*, std::int32_t) { return --reports_to_go < 0; }

// The best point so far is feasible, and no worse than the start.
TEST(Quadratic, a_callback_may_stop_at_each_report)
{
    const LoadedModel loaded(BEALE);
    setlpcallbackfunc(loaded.lp, stop_at_last);
    double last = 1e9;
    for (int allowed = 0;; ++allowed) {
        SCOPED_TRACE(allowed);
        ASSERT_LT(allowed, 100);
        reports_to_go = allowed;
        const Answer answer = solve(loaded.lp);
        expect_feasible(BEALE, answer.x);
        EXPECT_LE(answer.objval, last + 1e-9);
        last = answer.objval;
        if (answer.status == STAT_OPTIMAL) break;
        EXPECT_EQ(answer.status, STAT_USERSTOP_FEAS);
    }
}

// Without memory for the multipliers alone the run still ends well.
TEST(Quadratic, each_allocation_may_fail)
{
    for (long allowed = 0;; ++allowed) {
        SCOPED_TRACE(allowed);
        ASSERT_LT(allowed, 200);
        const LoadedModel loaded(BEALE);
        allow_allocations(allowed);
        EXPECT_EQ(optimize(loaded.lp), 0);
        const bool failed = allocation_failed();
        allow_all_allocations();
        const std::int32_t status = loaded.lp->status;
        EXPECT_TRUE(status == STAT_OPTIMAL || status == STAT_NOMEMORY || status == STAT_BADMODEL);
        if (!failed) break;
    }
}

}  // namespace
}  // namespace tarnwick
