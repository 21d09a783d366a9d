#pragma once

#include <cmath>

#include "tests/problems/problems.h"

namespace tarnwick {

// What the formulas of the books are made of.

inline double square(double t) { return t * t; }
inline double cube(double t) { return t * t * t; }
inline double fourth(double t) { return square(square(t)); }
inline double sixth(double t) { return square(cube(t)); }

inline double sum_of(Point x, int first, int last)
{
    double sum = 0.0;
    for (int j = first; j <= last; ++j) sum += x[j];
    return sum;
}

inline double sum_of_squares(Point x, int first, int last)
{
    double sum = 0.0;
    for (int j = first; j <= last; ++j) sum += square(x[j]);
    return sum;
}

inline double rosenbrock(Point x) { return 100 * square(x[2] - square(x[1])) + square(1 - x[1]); }

inline const double ROOT2 = std::sqrt(2.0), ROOT3 = std::sqrt(3.0), ROOT7 = std::sqrt(7.0);

// The parts of the smooth collection.
std::span<const FunctionProblem> small_book_problems();
std::span<const FunctionProblem> larger_book_problems();

}  // namespace tarnwick
