#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/reducedgradient/smoothmodel.h"

namespace tarnwick {
namespace {

double product(const Reals& a, const Reals& x)
{
    double sum = 0.0;
    for (std::size_t j = 0; j < x.size(); ++j) sum += a[j] * x[j];
    return sum;
}

// Linear rows a'x, the costs first.
HostFunctions linear(std::vector<Reals> a)
{
    return [a](const Reals& x, double& objective, Reals& rows) {
        objective = product(a[0], x);
        for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = product(a[i + 1], x);
        return true;
    };
}

bool fixed_slope(const Reals& x, double& f, Reals&)
{
    f = -10 * x[0] + std::pow(x[1] - 1, 2);
    return true;
}

// Both rows bind along the whole line y - x = 3, on which the objective is 2 (y - 3)^2 - 12.
bool parallel_rows(const Reals& x, double& f, Reals& g)
{
    const double u = x[1] - x[0];
    f = 2 * x[1] * x[1] - 2 * x[0] - 10 * x[1];
    g = {-u, u - std::exp(u / 4)};
    return true;
}

// They meet at 1, and nowhere else.
bool touching_rows(const Reals& x, double& f, Reals& g)
{
    f = x[0];
    g = {x[0], std::pow(x[0] + 3, 2)};
    return true;
}

// The ellipse meets y = -3, the lower bound, at x = -3. Its multiplier there is 1, that of y is 4.
bool ellipse(const Reals& x, double& f, Reals& g)
{
    f = 2 * x[0] + 5 * x[1];
    g = {std::pow(x[0] + 2, 2) + 2 * std::pow(x[1] + 2, 2) + 3 * x[1]};
    return true;
}

// Models whose path touches a place where the bookkeeping of the basis, of phase 1 or of the search can
// go wrong; each would end with a good status at a wrong point. Optima by hand, two of them
// by the linear engine as well.
// clang-format off
const struct {
    Smooth model;
    double optimum;
} CASES[] = {
    {{.name = "an exchange moves superbasics down beside one on its bound", .variables = 3,
      .functions = linear({{-3, 5, -1}, {0, 2, -1}}), .senses = "E", .rhs = {2},
      .start = {0, 1, 0}, .lb = {0, 0, 0}, .ub = {2, 1, 1}}, -1},
    // All six rows bind at the start. They leave y = 0 and x >= 0.
    {{.name = "more binding rows than variables", .variables = 2,
      .functions = linear({{-1, 2}, {0, -1}, {2, -3}, {0, -2}, {-1, -2}, {1, -1}, {-2, -2}}), .senses = "LGGLGL",
      .lb = {-5, -5}, .ub = {5, 5}}, -5},
    {{.name = "phase 1 hits bounds on its way", .variables = 2,
      .functions = linear({{1, 4}, {-1, -2}, {1, -1}, {2, 1}}), .senses = "LLE", .rhs = {-1, -0.5, 0.5},
      .start = {0, 0.3}}, 2},
    {{.name = "equal bounds leave no way down", .variables = 2, .functions = fixed_slope,
      .start = {4, 3}, .lb = {4, -INF}, .ub = {4, INF}}, -40},
    {{.name = "a direction of rounding errors, and a row that needs none", .variables = 6,
      .functions = linear({{2, -1, 2, 1, -5, 1}, {3, 1, 0, -4, 0, 0}, {-1, 0, 0, 2, 0, 0}, {0, 0, 0, 0, 0, -3},
                           {3, -3, 0, -2, -4, 0}, {0, 3, 1, 0, 0, -3}}), .senses = "GGLEE", .rhs = {0, 5, 4, 0, 2},
      .start = {0, 3, -3, 3, 1, 0}, .lb = {-INF, -1, 2, -INF, 4, 3}, .ub = {INF, 2, 6, INF, 6, INF}}, 27.25},
    {{.name = "rows whose derivatives differ by rounding alone", .variables = 2, .functions = parallel_rows,
      .senses = "GG", .rhs = {-3, 3 - std::exp(0.75)}, .start = {-3, 0}, .lb = {-3, -INF}, .ub = {INF, 5}}, -12},
    {{.name = "rows that meet in a single point", .functions = touching_rows, .senses = "GL", .rhs = {1, 16}, .start = {0.5}}, 1},
    {{.name = "progress that lives on what a row leaves", .variables = 2, .functions = ellipse, .senses = "L", .rhs = {-6},
      .start = {2, 2}, .lb = {-INF, -3}, .ub = {INF, -2}}, -21},
};
// clang-format on

TEST(SmoothPaths, end_at_the_optimum)
{
    for (const auto& c : CASES)
        for (const std::int32_t scaling : {-1, 0})
            for (const std::int32_t derivmode : {0, 1}) {
                SCOPED_TRACE(testing::Message() << c.model.name << ", scaling " << scaling
                                                << ", derivatives " << derivmode);
                SmoothHost host(c.model);
                set(host.lp, PARAM_SCALING, scaling, PARAM_NLPDERIVMODE, derivmode);
                setdblparam(host.lp, PARAM_NLPCONVTOL, 1e-9);
                const Answer answer = host.solve();
                EXPECT_TRUE(is_good(answer.status)) << answer.status;
                EXPECT_NEAR(answer.objval, c.optimum, 1e-4);
            }
}

// ---- models with a proof: convex quadratics over linear rows, as the linear engine solves them

// The host's function for a model that is given by arrays.
Smooth by_functions(const LinearModel& model)
{
    Smooth smooth{.variables = static_cast<int>(model.numcols()),
                  .lb = model.lb,
                  .ub = model.ub,
                  .objsen = model.objsen};
    smooth.functions = [model](const Reals& x, double& f, Reals& g) {
        f = product(model.obj, x);
        for (std::size_t i = 0; i < model.q.size(); ++i) f += x[i] * product(model.q[i], x);
        for (std::size_t i = 0; i < g.size(); ++i) g[i] = product(model.rows[i].a, x);
        return true;
    };
    for (const auto& row : model.rows) {
        smooth.senses += row.sense;
        smooth.rhs.push_back(row.rhs);
    }
    return smooth;
}

// Adds v v' for vectors of small whole numbers, one for each column.
void make_quadratic(LinearModel& model, std::mt19937& draw)
{
    const auto n = model.numcols();
    model.q.assign(n, Reals(n, 0.0));
    model.objsen = 1;
    for (std::size_t k = 0; k < n; ++k) {
        Reals v(n);
        for (double& t : v) t = std::uniform_int_distribution<>(-2, 2)(draw);
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n; ++j) model.q[i][j] += v[i] * v[j];
    }
}

TEST(SmoothPaths, agree_with_the_linear_engine)
{
    for (unsigned seed = 1; seed <= 400; ++seed) {
        std::mt19937 draw(seed);
        LinearModel model = tiny_model(seed);
        if (seed % 2 == 0) make_quadratic(model, draw);
        const Answer given = solve(model);
        SmoothHost host(by_functions(model));
        const auto pick = [&](int most) { return std::uniform_int_distribution<>(0, most)(draw); };
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        set(host.lp, PARAM_NLPDERIVMODE, pick(1), PARAM_SCALING, pick(1) - 1, PARAM_NLPCGONLY,
            pick(1), PARAM_NLPQUADEXT, pick(1));
        const Answer answer = host.solve();
        if (!is_good(given.status)) {
            EXPECT_EQ(answer.status, given.status);
            continue;
        }
        EXPECT_TRUE(is_good(answer.status)) << answer.status;
        EXPECT_NEAR(answer.objval, given.objval, 2e-3 * (1 + std::fabs(given.objval)));
        for (std::size_t j = 0; j < answer.x.size(); ++j) {
            EXPECT_GE(answer.x[j], model.lower(j) - 1e-5);
            EXPECT_LE(answer.x[j], model.upper(j) + 1e-5);
        }
        for (const auto& row : model.rows) {
            const double excess = product(row.a, answer.x) - row.rhs;
            EXPECT_LE(row.sense == 'G' ? 0.0 : excess, 1e-5);
            EXPECT_GE(row.sense == 'L' ? 0.0 : excess, -1e-5);
        }
    }
}

}  // namespace
}  // namespace tarnwick
