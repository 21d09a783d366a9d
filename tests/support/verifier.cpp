#include "tests/support/verifier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "interface/problem.h"

namespace tarnwick {

Answer answer_of(Problem* lp)
{
    Answer answer;
    EXPECT_EQ(solution(lp, &answer.status, &answer.objval, nullptr, nullptr, nullptr, nullptr), 0);
    const auto n = static_cast<std::size_t>(lp->numcols), m = static_cast<std::size_t>(lp->numrows);
    for (Reals* column : {&answer.x, &answer.dj, &answer.objlower, &answer.objupper})
        column->resize(n);
    for (Reals* row : {&answer.piout, &answer.slack, &answer.rhslower, &answer.rhsupper})
        row->resize(m);
    EXPECT_EQ(solution(lp, nullptr, nullptr, answer.x.data(), answer.piout.data(),
                       answer.slack.data(), answer.dj.data()),
              0);
    if (lp->problemtype != PROB_LP) return answer;
    EXPECT_EQ(objsa(lp, 0, lp->numcols - 1, answer.objlower.data(), answer.objupper.data()), 0);
    EXPECT_EQ(rhssa(lp, 0, lp->numrows - 1, answer.rhslower.data(), answer.rhsupper.data()), 0);
    return answer;
}

Answer solve(Problem* lp)
{
    EXPECT_EQ(optimize(lp), 0);
    return answer_of(lp);
}

Answer solve(const LinearModel& model, MatrixLayout layout)
{
    const LoadedModel loaded(model, layout);
    return loaded.lp ? solve(loaded.lp) : Answer{};
}

namespace {

constexpr double PRIMAL_TOL = 1e-7;
constexpr double DUAL_TOL = 1e-5;  // pricing lets smaller costs pass
constexpr double ANY = std::numeric_limits<double>::infinity();

// A sum and the size of its terms.
struct Sum {
    double value = 0.0, size = 1.0;

    void add(double term)
    {
        value += term;
        size += std::fabs(term);
    }
};

Sum activity(const Row& row, const Reals& x)
{
    Sum sum;
    for (std::size_t j = 0; j < x.size(); ++j) sum.add(row.a[j] * x[j]);
    sum.size += std::fabs(row.rhs);
    return sum;
}

void expect_rows_explained(const LinearModel& model, const Answer& answer)
{
    for (std::size_t i = 0; i < model.numrows(); ++i) {
        SCOPED_TRACE("row " + std::to_string(i));
        const Row& row = model.rows[i];
        const Sum sum = activity(row, answer.x);
        EXPECT_NEAR(answer.slack[i], row.rhs - sum.value, PRIMAL_TOL * sum.size);

        const double pi = answer.piout[i] * model.objsen;
        EXPECT_LE(pi, row.sense == 'L' ? DUAL_TOL : ANY);
        EXPECT_GE(pi, row.sense == 'G' ? -DUAL_TOL : -ANY);
        EXPECT_LE(std::fabs(answer.slack[i]) * std::min(std::fabs(pi), 1.0), DUAL_TOL * sum.size);
    }
}

Sum slope(const LinearModel& model, std::size_t j, const Reals& x)
{
    Sum sum;
    sum.add(model.obj[j]);
    for (std::size_t i = 0; i < model.q.size(); ++i)
        sum.add((model.q[i][j] + model.q[j][i]) * x[i]);
    return sum;
}

void expect_columns_explained(const LinearModel& model, const Answer& answer)
{
    for (std::size_t j = 0; j < model.numcols(); ++j) {
        SCOPED_TRACE("column " + std::to_string(j));
        Sum reduced = slope(model, j, answer.x);
        for (std::size_t i = 0; i < model.numrows(); ++i)
            reduced.add(-answer.piout[i] * model.rows[i].a[j]);
        EXPECT_NEAR(answer.dj[j], reduced.value, DUAL_TOL * reduced.size);

        const double x = answer.x[j], d = answer.dj[j] * model.objsen;
        const double tol = PRIMAL_TOL * (1.0 + std::fabs(x));
        EXPECT_LE(x, d > DUAL_TOL * reduced.size ? model.lower(j) + tol : ANY);
        EXPECT_GE(x, d < -DUAL_TOL * reduced.size ? model.upper(j) - tol : -ANY);
    }
}

}  // namespace

void expect_feasible(const LinearModel& model, const Reals& x)
{
    for (std::size_t j = 0; j < model.numcols(); ++j) {
        SCOPED_TRACE("column " + std::to_string(j));
        const double tol = PRIMAL_TOL * (1.0 + std::fabs(x[j]));
        EXPECT_TRUE(std::isfinite(x[j]));
        EXPECT_GE(x[j], model.lower(j) > -INF ? model.lower(j) - tol : -ANY);
        EXPECT_LE(x[j], model.upper(j) < INF ? model.upper(j) + tol : ANY);
    }
    for (std::size_t i = 0; i < model.numrows(); ++i) {
        SCOPED_TRACE("row " + std::to_string(i));
        const Row& row = model.rows[i];
        const Sum sum = activity(row, x);
        const double tol = PRIMAL_TOL * sum.size;
        EXPECT_LE(sum.value, row.sense != 'G' ? row.rhs + tol : ANY);
        EXPECT_GE(sum.value, row.sense != 'L' ? row.rhs - tol : -ANY);
    }
}

void expect_optimal(const LinearModel& model, const Answer& answer)
{
    ASSERT_EQ(answer.status, STAT_OPTIMAL);
    expect_feasible(model, answer.x);
    expect_rows_explained(model, answer);
    expect_columns_explained(model, answer);

    Sum objective;
    for (std::size_t j = 0; j < model.numcols(); ++j) objective.add(model.obj[j] * answer.x[j]);
    for (std::size_t i = 0; i < model.q.size(); ++i)
        for (std::size_t j = 0; j < model.q.size(); ++j)
            objective.add(answer.x[i] * model.q[i][j] * answer.x[j]);
    EXPECT_NEAR(answer.objval, objective.value, PRIMAL_TOL * objective.size);
}

// ---- every vertex

namespace {

// a'x = b, the edge of a half-space or a hyperplane.
struct Face {
    Reals a;
    double b;
};

// The one point on all the faces, by elimination with the largest pivot; none if they are parallel.
std::optional<Reals> intersection(std::vector<Face> faces)
{
    const std::size_t n = faces.size();
    for (std::size_t k = 0; k < n; ++k) {
        const auto begin = faces.begin() + static_cast<std::ptrdiff_t>(k);
        const auto largest =
            std::max_element(begin, faces.end(), [k](const Face& f, const Face& g) {
                return std::fabs(f.a[k]) < std::fabs(g.a[k]);
            });
        if (std::fabs(largest->a[k]) < 1e-9) return std::nullopt;
        std::iter_swap(begin, largest);
        for (std::size_t i = 0; i < n; ++i) {
            if (i == k) continue;
            const double factor = faces[i].a[k] / faces[k].a[k];
            for (std::size_t j = 0; j < n; ++j) faces[i].a[j] -= factor * faces[k].a[j];
            faces[i].b -= factor * faces[k].b;
        }
    }
    Reals x;
    for (std::size_t k = 0; k < n; ++k) x.push_back(faces[k].b / faces[k].a[k]);
    return x;
}

bool is_inside(const LinearModel& model, const Reals& x)
{
    constexpr double TOL = 1e-6;
    for (std::size_t j = 0; j < x.size(); ++j)
        if (x[j] < model.lower(j) - TOL || x[j] > model.upper(j) + TOL) return false;
    return std::all_of(model.rows.begin(), model.rows.end(), [&x](const Row& row) {
        const double gap = activity(row, x).value - row.rhs;
        return (row.sense == 'G' || gap <= TOL) && (row.sense == 'L' || gap >= -TOL);
    });
}

// The best vertex of a model whose bounds are all finite, as a minimisation; none: it is infeasible.
std::optional<double> best_vertex(const LinearModel& model)
{
    std::vector<Face> faces;
    for (const Row& row : model.rows) faces.push_back({row.a, row.rhs});
    for (std::size_t j = 0; j < model.numcols(); ++j) {
        Face face{Reals(model.numcols()), model.lower(j)};
        face.a[j] = 1.0;
        faces.push_back(face);
        face.b = model.upper(j);
        faces.push_back(face);
    }
    std::optional<double> best;
    std::vector<bool> chosen(faces.size());
    std::fill_n(chosen.begin(), model.numcols(), true);
    do {
        std::vector<Face> some;
        for (std::size_t k = 0; k < faces.size(); ++k)
            if (chosen[k]) some.push_back(faces[k]);
        const auto x = intersection(some);
        if (!x || !is_inside(model, *x)) continue;
        double value = 0.0;
        for (std::size_t j = 0; j < x->size(); ++j) value += model.obj[j] * (*x)[j];
        best = std::min(best.value_or(INF), value * model.objsen);
    } while (std::prev_permutation(chosen.begin(), chosen.end()));
    return best;
}

std::optional<double> best_in_box(LinearModel model, double box)
{
    for (double& bound : model.lb) bound = std::max(bound, -box);
    for (double& bound : model.ub) bound = std::min(bound, box);
    return best_vertex(model);
}

}  // namespace

// The corners of such a model lie far inside both boxes: the objective moves with the box only when
// nothing else holds it.
Truth truth_of(const LinearModel& model)
{
    constexpr double BOX = 1e5;
    const auto small = best_in_box(model, BOX), large = best_in_box(model, 2.0 * BOX);
    if (!small) return {STAT_INFEASIBLE, 0.0};
    if (*large < *small - 1.0) return {STAT_UNBOUNDED, 0.0};
    return {STAT_OPTIMAL, *small * model.objsen};
}

}  // namespace tarnwick
