#pragma once

#include <algorithm>
#include <limits>
#include <span>
#include <string>

#include "tests/support/models.h"

namespace tarnwick {

// A point as the books count it, from 1.
struct Point {
    const double* first;
    double operator[](int j) const { return first[j - 1]; }
};

inline constexpr double FAILS = std::numeric_limits<double>::quiet_NaN();

// A published model that is known through a function, with its optimum. Arrays that are left out
// hold -INF, INF, 0 and continuous types; an array of one element stands for that value throughout,
// and the collections have it as long as the model is.
struct FunctionProblem {
    const char* name = nullptr;
    Reals start{};
    Reals lower{-INF}, upper{INF};
    std::string sense{};  // a letter for each row
    Reals rhs{0.0}, range{0.0};
    double optimum = 0.0;
    Reals local{};  // other stationary points to which a descent from the start may lead
    std::int32_t objsen = 1;
    std::int32_t status = STAT_NONE;  // where the outcome is another than the optimum
    std::string ctype{};
    Reals best{};                            // a published best point
    double (*objective)(Point x) = nullptr;  // FAILS where the function has no value
    Reals (*rows)(Point x) = [](Point) { return Reals{}; };

    // Fills the rows and returns the objective.
    double value(Point x, double* g) const
    {
        std::ranges::copy(rows(x), g);
        return objective(x);
    }
    int numcols() const { return static_cast<int>(start.size()); }
    int numrows() const { return static_cast<int>(sense.size()); }
};

std::span<const FunctionProblem> smooth_problems();
std::span<const FunctionProblem> nonsmooth_problems();

// A problem of either collection; ends the program if there is none of that name.
const FunctionProblem& problem_named(const std::string& name);

}  // namespace tarnwick
