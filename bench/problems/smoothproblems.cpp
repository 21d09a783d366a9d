// The smooth collection: the problems of the book, classics without rows of J. J. More, B. S. Garbow
// and K. E. Hillstrom, Testing Unconstrained Optimization Software, 1981 (MGH), and models of our
// own whose outcome is told beside them.

#include <algorithm>
#include <vector>

#include "bench/problems/formulas.h"

namespace tarnwick {

namespace {

using std::exp, std::sqrt;

double helical_valley(Point x)
{
    double theta = std::atan(x[2] / x[1]) / (2 * M_PI);
    if (x[1] < 0) theta += 0.5;
    const double radius = sqrt(square(x[1]) + square(x[2]));
    return 100 * (square(x[3] - 10 * theta) + square(radius - 1)) + square(x[3]);
}

double box_three_dimensional(Point x)
{
    return sum(1, 10, [x](int i) {
        const double t = 0.1 * i;
        return square(exp(-t * x[1]) - exp(-t * x[2]) - x[3] * (exp(-t) - exp(-10 * t)));
    });
}

Reals alternating(std::size_t n, double odd, double even)
{
    Reals values(n, odd);
    for (std::size_t j = 1; j < n; j += 2) values[j] = even;
    return values;
}

// Sums of two neighbours stay at 3 or above, each pair in its own row: the growth of exp makes both
// 3/2, and the optimum n exp(3/2).
Reals pairs_of_400_rows(Point x)
{
    Reals g;
    for (int j = 1; j < 400; j += 2) g.push_back(x[j] + x[j + 1]);
    return g;
}

// clang-format off
const FunctionProblem OTHERS[] = {
{.name = "MGH 1: Rosenbrock", .start = {-1.2, 1}, .optimum = 0, .objective = rosenbrock},
{.name = "MGH 2: Freudenstein and Roth, to its local optimum", .start = {0.5, -2}, .optimum = 48.9842536,
    .objective = [](Point x) {
        return square(-13 + x[1] + ((5 - x[2]) * x[2] - 2) * x[2]) + square(-29 + x[1] + ((x[2] + 1) * x[2] - 14) * x[2]);
    }},
{.name = "MGH 5: Beale", .start = {1, 1}, .optimum = 0,
    .objective = [](Point x) {
        return square(1.5 - x[1] * (1 - x[2])) + square(2.25 - x[1] * (1 - square(x[2]))) +
               square(2.625 - x[1] * (1 - cube(x[2])));
    }},
{.name = "MGH 7: helical valley", .start = {-1, 0, 0}, .optimum = 0, .objective = helical_valley},
{.name = "MGH 12: Box, three-dimensional", .start = {0, 10, 20}, .optimum = 0, .objective = box_three_dimensional},
{.name = "MGH 13: Powell's singular function", .start = {3, -1, 0, 1}, .optimum = 0,
    .objective = [](Point x) {
        return square(x[1] + 10 * x[2]) + 5 * square(x[3] - x[4]) + fourth(x[2] - 2 * x[3]) + 10 * fourth(x[1] - x[4]);
    }},
{.name = "MGH 21: Rosenbrock in 30 variables", .start = alternating(30, -1.2, 1), .optimum = 0,
    .objective = [](Point x) { return sum(0, 14, [x](int k) { return rosenbrock({x.first + 2 * k}); }); }},
// The point of the half-plane nearest to 0 is (1/2, 1/2).
{.name = "a row at infinity and a fixed variable", .start = {3, 3, 3}, .lower = {-INF, -INF, 7}, .upper = {INF, INF, 7},
    .sense = "GLG", .rhs = {1, INF, -INF}, .optimum = 7.5,
    .objective = [](Point x) { return square(x[1]) + square(x[2]) + x[3]; },
    .rows = [](Point x) { return Reals{x[1] + x[2], x[1] * x[2] * x[3], x[1] - cube(x[2])}; }},
{.name = "all variables fixed", .start = {2, 0}, .lower = {2, 3}, .upper = {2, 3}, .sense = "L", .rhs = {6}, .optimum = 13,
    .objective = [](Point x) { return square(x[1]) + square(x[2]); },
    .rows = [](Point x) { return Reals{x[1] * x[2]}; }},
// On the unit circle x1 + x2 is at most the root of 2.
{.name = "infeasible", .start = {1, 2}, .sense = "LG", .rhs = {1, 3}, .status = STAT_INFEASIBLE,
    .objective = [](Point x) { return x[1]; },
    .rows = [](Point x) { return Reals{square(x[1]) + square(x[2]), x[1] + x[2]}; }},
{.name = "infeasible by two equalities", .start = {1, 1, 1}, .sense = "EE", .rhs = {1, 2}, .status = STAT_INFEASIBLE,
    .objective = [](Point x) { return sum_of_squares(x, 1, 3); },
    .rows = [](Point x) { return Reals{sum_of(x, 1, 3), sum_of(x, 1, 3)}; }},
{.name = "unbounded along a row", .start = {1, 1}, .sense = "E", .status = STAT_UNBOUNDED,
    .objective = [](Point x) { return -x[1] - 2 * x[2]; },
    .rows = [](Point x) { return Reals{x[1] - x[2]}; }},
{.name = "unbounded without rows", .start = {1, 1}, .lower = {-INF, 0}, .status = STAT_UNBOUNDED,
    .objective = [](Point x) { return square(x[1] - 3) - x[2]; }},
// The first unit step from 0 leads beyond 3, where there are no values.
{.name = "fails on the way", .start = {0, 0}, .status = STAT_EVALERROR,
    .objective = [](Point x) { return x[1] > 3 ? FAILS : -10 * x[1] + square(x[2]); }},
{.name = "fails at the start", .start = {0, 0}, .status = STAT_EVALERROR, .objective = [](Point) { return FAILS; }},
{.name = "400 variables and 200 rows", .start = alternating(400, 0, 4), .sense = std::string(200, 'G'), .rhs = {3},
    .optimum = 400 * 4.4816890703380648,
    .objective = [](Point x) { return sum(1, 200, [x](int i) { return exp(x[2 * i - 1]) + exp(x[2 * i]); }); },
    .rows = pairs_of_400_rows},
};
// clang-format on

std::vector<FunctionProblem> all_problems()
{
    std::vector<FunctionProblem> all;
    for (const auto& part :
         {small_book_problems(), larger_book_problems(), std::span<const FunctionProblem>(OTHERS)})
        all.insert(all.end(), part.begin(), part.end());
    std::ranges::for_each(all, complete);
    return all;
}

}  // namespace

std::span<const FunctionProblem> smooth_problems()
{
    static const std::vector<FunctionProblem> problems = all_problems();
    return problems;
}

}  // namespace tarnwick
