#include "tests/support/integers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "interface/problem.h"

namespace tarnwick {

LoadedIntegers::LoadedIntegers(const IntegerModel& model) : LoadedModel(model), ctype(model.ctype)
{
    EXPECT_EQ(loadctype(lp, ctype.data()), 0);
}

IntegerModel tiny_integer_model(unsigned seed)
{
    Draw draw(seed);
    const auto whole = [&draw](int low, int high) { return draw.whole(low, high); };
    IntegerModel model;
    model.objsen = whole(0, 1) ? 1 : -1;
    const int rows = whole(1, 4), cols = whole(2, 6);
    for (int j = 0; j < cols; ++j) {
        const int kind = whole(0, 7), low = whole(-2, 1);
        model.obj.push_back(whole(-5, 5));
        model.ctype.push_back(kind > 1 && j > 3 ? 'B' : "CCIIIBBB"[j == 0 ? kind | 2 : kind]);
        const bool binary = model.ctype.back() == 'B';
        const bool open = model.ctype.back() == 'C' && whole(0, 3) == 0;
        model.lb.push_back(binary ? 0.0 : open ? -INF : low);
        model.ub.push_back(binary ? 1.0 : open ? INF : low + whole(0, 3));
    }
    for (int i = 0; i < rows; ++i) {
        Row row{{}, "LLGGE"[whole(0, 4)], static_cast<double>(whole(-3, 7))};
        for (int j = 0; j < cols; ++j) row.a.push_back(whole(0, 3) ? whole(-4, 6) : 0);
        model.rows.push_back(row);
    }
    return model;
}

namespace {

// The model that is left when the integer columns have the given values, and what they cost.
LinearModel without_integers(const IntegerModel& model, const Reals& values, double& cost)
{
    LinearModel rest;
    rest.objsen = model.objsen;
    for (const Row& row : model.rows) rest.rows.push_back({{}, row.sense, row.rhs});
    cost = 0.0;
    for (std::size_t j = 0; j < model.numcols(); ++j) {
        if (model.is_integer(j)) {
            cost += model.obj[j] * values[j];
            for (std::size_t i = 0; i < model.numrows(); ++i)
                rest.rows[i].rhs -= model.rows[i].a[j] * values[j];
            continue;
        }
        rest.obj.push_back(model.obj[j]);
        rest.lb.push_back(model.lower(j));
        rest.ub.push_back(model.upper(j));
        for (std::size_t i = 0; i < model.numrows(); ++i)
            rest.rows[i].a.push_back(model.rows[i].a[j]);
    }
    return rest;
}

// Counts through all values of the integer columns. False after the last.
bool next_values(const IntegerModel& model, Reals& values)
{
    for (std::size_t j = 0; j < model.numcols(); ++j) {
        if (!model.is_integer(j)) continue;
        values[j] += 1.0;
        if (values[j] <= model.upper(j)) return true;
        values[j] = model.lower(j);
    }
    return false;
}

}  // namespace

Truth truth_of(const IntegerModel& model)
{
    const auto is_infinite = [](double bound) { return std::fabs(bound) >= INF; };
    if (std::any_of(model.lb.begin(), model.lb.end(), is_infinite) ||
        std::any_of(model.ub.begin(), model.ub.end(), is_infinite)) {
        const Truth relaxed = truth_of(static_cast<const LinearModel&>(model));
        if (relaxed.status == STAT_UNBOUNDED) return relaxed;
    }

    Truth best{STAT_MIP_INFEASIBLE, 0.0};
    Reals values = model.lb;
    do {
        double cost = 0.0;
        const Truth rest = truth_of(without_integers(model, values, cost));
        if (rest.status != STAT_OPTIMAL) continue;
        const Truth found{STAT_MIP_OPTIMAL, rest.objective + cost};
        const bool is_better = (found.objective - best.objective) * model.objsen < 0.0;
        if (is_better || best.status == STAT_MIP_INFEASIBLE) best = found;
    } while (next_values(model, values));
    return best;
}

void expect_integer_solution(const IntegerModel& model, const Answer& answer)
{
    expect_feasible(model, answer.x);
    double objective = 0.0;
    for (std::size_t j = 0; j < model.numcols(); ++j) {
        objective += model.obj[j] * answer.x[j];
        if (!model.is_integer(j)) continue;
        EXPECT_EQ(answer.x[j], std::round(answer.x[j])) << j;
    }
    EXPECT_NEAR(answer.objval, objective, 1e-9 * (1.0 + std::fabs(objective)));
}

Answer solve_integers(Problem* lp)
{
    Answer answer;
    answer.x.resize(static_cast<std::size_t>(lp->numcols));
    EXPECT_EQ(optimize(lp), 0);
    EXPECT_EQ(
        solution(lp, &answer.status, &answer.objval, answer.x.data(), nullptr, nullptr, nullptr),
        0);
    return answer;
}

void expect_true(const IntegerModel& model, const Answer& answer)
{
    const Truth truth = truth_of(model);
    ASSERT_EQ(answer.status, truth.status);
    if (truth.status != STAT_MIP_OPTIMAL) return;
    expect_integer_solution(model, answer);
    EXPECT_NEAR(answer.objval, truth.objective, 1e-6);
}

}  // namespace tarnwick
