#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "interface/problem.h"
#include "linear/probe.h"
#include "tests/support/enginerun.h"
#include "tests/support/verifier.h"

namespace tarnwick {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NONE = std::numeric_limits<double>::quiet_NaN();

// clang-format off
const LinearModel SMALL{{{{1, 2, 1}, 'L', 8}, {{2, -1, 1}, 'G', 1}, {{1, 1, 3}, 'E', 6}},
                        {-1, 2, 1}, {0, 1, -5}, {5, 6, 7}};
const LinearModel TINY_PIVOT{{{{1, 1e-7}, 'E', 1}}, {0, -1}, {0, 0}, {INF, 1e9}};  // less than PARAM_PIVOTTOL
const LinearModel TWO_ROWS{{{{1}, 'L', 3}, {{2}, 'L', 9}}, {1}, {}, {}, -1};
const LinearModel TWO_COLUMNS{{{{1, 1}, 'L', 5}}, {-1, -2}, {0, 0}, {9, 9}};
// clang-format on

// ---- what can't be a number

TEST(Probing, finds_no_optimum_where_a_number_is_none)
{
    const double values[] = {NONE, INFINITE, -INFINITE, 1e308, -1e308, 1e-308};
    LinearModel model = SMALL;
    std::vector<double*> numbers;
    const auto add = [&numbers](Reals& array) {
        for (double& number : array) numbers.push_back(&number);
    };
    for (Reals* array : {&model.obj, &model.lb, &model.ub}) add(*array);
    for (Row& row : model.rows) {
        numbers.push_back(&row.rhs);
        add(row.a);
    }
    for (std::size_t k = 0; k < numbers.size(); ++k)
        for (const double value : values)
            for (const auto layout : {MatrixLayout::sparse, MatrixLayout::dense}) {
                SCOPED_TRACE("number " + std::to_string(k) + " is " + std::to_string(value));
                const double old = std::exchange(*numbers[k], value);
                const LoadedModel loaded(model, layout);
                setintparam(loaded.lp, PARAM_ITERLIMIT, 1000);
                const Answer answer = solve(loaded.lp);
                EXPECT_NE(answer.status, STAT_NONE);
                EXPECT_FALSE(std::isnan(value) && answer.status == STAT_OPTIMAL);
                if (answer.status == STAT_OPTIMAL) expect_optimal(model, answer);
                *numbers[k] = old;
            }
}

// ---- the matrix

TEST(Reading, adds_what_comes_twice_and_passes_over_rows_that_do_not_exist)
{
    EXPECT_EQ(visitmatrix(nullptr, nullptr, 0, 0, 1.0, nullptr), 0) << "there is no tableau";
    const LoadedModel loaded(SMALL);
    loaded.lp->matind[1] = 0;  // column 1: 1 + 2 in the first row, nothing in the second
    loaded.lp->matind[5] = 3;  // column 2: its last entry names no row
    LinearModel meant = SMALL;
    meant.rows[0].a[0] = 3.0;
    meant.rows[1].a[0] = 0.0;
    meant.rows[2].a[1] = 0.0;
    expect_optimal(meant, solve(loaded.lp));

    EngineRun engine(loaded.lp);
    const LpEngine& lp = engine.record();
    for (int i = 1; i <= 3; ++i)
        for (int j = 1; j <= 3; ++j)
            EXPECT_EQ(
                std::ldexp(lp.tableau[i][j], lp.rowexp[i] - lp.colexp[j]),
                meant.rows[static_cast<std::size_t>(i - 1)].a[static_cast<std::size_t>(j - 1)]);
}

// Indices that list all entries in their order are passed over as superfluous. max x + y under
// x + 2y <= 4 and 3x + y <= 7 gives 3 at (2, 1); in each model an entry stands elsewhere.
TEST(Reading, goes_by_indices_that_are_nearly_those_of_a_dense_matrix)
{
    // clang-format off
    struct Indices {
        const char* name;
        std::int32_t beg[2], cnt[2], ind[5];
        double val[5];
        double optimum;
    } models[] = {
        {"a dense one",              {0, 2}, {2, 2}, {0, 1, 0, 1},    {1, 3, 2, 1},    3.0},
        {"a column upside down",     {0, 2}, {2, 2}, {0, 1, 1, 0},    {1, 3, 1, 2},    3.0},
        {"every column upside down", {0, 2}, {2, 2}, {1, 0, 1, 0},    {3, 1, 1, 2},    3.0},
        {"a gap before a column",    {0, 3}, {2, 2}, {0, 1, 0, 1, 0}, {1, 3, 9, 1, 2}, 3.0},
        {"the last column is short", {0, 2}, {2, 1}, {0, 1, 0, 1},    {1, 3, 2, 9},    3.0 + 1.0 / 6.0},
    };
    // clang-format on
    double obj[] = {1, 1}, rhs[] = {4, 7}, lb[] = {0, 0}, ub[] = {INF, INF};
    char sense[] = "LL";
    for (Indices& model : models) {
        SCOPED_TRACE(model.name);
        Problem* lp = loadlp("", 2, 2, -1, obj, rhs, sense, model.beg, model.cnt, model.ind,
                             model.val, lb, ub, nullptr, 0, 0, 5);
        ASSERT_NE(lp, nullptr);
        EXPECT_NEAR(solve(lp).objval, model.optimum, 1e-9);
        unloadprob(&lp);
    }
}

// ---- rows

TEST(Senses, of_rows_with_two_bounds_or_none_stop_the_set_up)
{
    // clang-format off
    const struct {
        char sense;
        double rhs, width;
        std::int32_t status;
    } CASES[] = {{'R', 5, 2, STAT_BADMODEL}, {'R', 5, -2, STAT_BADMODEL}, {'R', 5, 0, STAT_OPTIMAL},
                 {'L', 1e30, 0, STAT_BADMODEL}, {'L', 1e29, 0, STAT_OPTIMAL}, {'G', -1e30, 0, STAT_BADMODEL}};
    // clang-format on
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.sense + std::to_string(c.rhs) + ", " + std::to_string(c.width));
        LoadedModel loaded(TWO_COLUMNS);
        double width = c.width;
        loaded.lp->rowrange = &width;
        loaded.sense[0] = c.sense, loaded.rhs[0] = c.rhs;
        optimize(loaded.lp);
        EXPECT_EQ(loaded.lp->status, c.status);
    }
}

// ---- modes and sizes

TEST(Probing, sees_through_the_declared_type)
{
    const struct {
        const char* name;
        Reals q;
        LpMode mode;
    } CASES[] = {
        {"no entry",               {0, 0, 0, 0},     MODE_LINEAR   },
        {"a square",               {1, 0, 0, 0},     MODE_QUADRATIC},
        {"entries that cancel",    {1, -1, -1, 1},   MODE_QUADRATIC},
        {"a square of small size", {1e-12, 0, 0, 0}, MODE_QUADRATIC},
        {"beyond all numbers",     {1e307, 0, 0, 0}, MODE_NONE     },
        {"no number",              {NONE, 0, 0, 0},  MODE_NONE     },
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        const LoadedModel loaded(TWO_COLUMNS);
        Reals q = c.q, start{0, 0};
        loaded.lp->problemtype = PROB_QP;
        loaded.lp->qmatval = q.data();
        loaded.lp->var = start.data();
        EngineRun engine(loaded.lp);
        EXPECT_EQ(engine.record().mode, c.mode);
    }
}

// ---- the check of the answer

TEST(AnswerCheck, notices_a_model_that_is_not_what_was_read)
{
    const struct {
        const char* name;
        void (*change)(Problem&);
        EngineResult result;
    } CASES[] = {
        {"unchanged",             [](Problem&) {},                        ENGINE_OPTIMAL   },
        {"a binding row",         [](Problem& p) { p.matval[0] += 0.1; }, ENGINE_MODELCHECK},
        {"a row that is free",    [](Problem& p) { p.matval[1] += 0.1; }, ENGINE_MODELCHECK},
        {"a cost",                [](Problem& p) { p.obj[0] += 0.1; },    ENGINE_MODELCHECK},
        {"a number that is none", [](Problem& p) { p.matval[1] = NONE; }, ENGINE_MODELCHECK},
        {"within the tolerance",  [](Problem& p) { p.obj[0] += 1e-10; },  ENGINE_OPTIMAL   },
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        const LoadedModel loaded(TWO_ROWS);
        EngineRun engine(loaded.lp, RUN_REPEATED);
        c.change(*loaded.lp);
        EXPECT_EQ(engine.solve(), c.result);
        EXPECT_EQ(engine.solved, c.result == ENGINE_OPTIMAL ? 1 : 0);

        loaded.lp->obj[0] += 1.0;  // only the first optimum is checked
        EXPECT_EQ(engine.solve(), c.result);
    }
}

TEST(AnswerCheck, rejects_a_point_that_a_small_pivot_has_let_pass)
{
    const LoadedModel loaded(TINY_PIVOT);
    setintparam(loaded.lp, PARAM_SCALING, -1);
    EXPECT_EQ(solve(loaded.lp).status, STAT_MODELCHECK);
    expect_optimal(TINY_PIVOT, solve(TINY_PIVOT));
}

}  // namespace
}  // namespace tarnwick
