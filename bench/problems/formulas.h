#pragma once

#include <cmath>

#include "bench/problems/problems.h"

namespace tarnwick {

// What the formulas of the books are made of.

inline double square(double t) { return t * t; }
inline double cube(double t) { return t * t * t; }
inline double fourth(double t) { return square(square(t)); }
inline double sixth(double t) { return square(cube(t)); }

template <class Term>
double sum(int first, int last, Term term, double total = 0.0)
{
    for (int j = first; j <= last; ++j) total += term(j);
    return total;
}

template <class Factor>
double product(int first, int last, Factor factor)
{
    double total = 1.0;
    for (int j = first; j <= last; ++j) total *= factor(j);
    return total;
}

inline double sum_of(Point x, int first, int last)
{
    return sum(first, last, [x](int j) { return x[j]; });
}

inline double sum_of_squares(Point x, int first, int last)
{
    return sum(first, last, [x](int j) { return square(x[j]); });
}

inline double product_of(Point x, int first, int last)
{
    return product(first, last, [x](int j) { return x[j]; });
}

inline double rosenbrock(Point x) { return 100 * square(x[2] - square(x[1])) + square(1 - x[1]); }

inline const double ROOT2 = std::sqrt(2.0), ROOT3 = std::sqrt(3.0), ROOT7 = std::sqrt(7.0);

// Arrays of one element as long as the model is.
inline void complete(FunctionProblem& problem)
{
    for (Reals* bounds : {&problem.lower, &problem.upper})
        bounds->resize(problem.start.size(), bounds->front());
    for (Reals* limits : {&problem.rhs, &problem.range})
        limits->resize(std::max(problem.sense.size(), std::size_t{1}), limits->front());
}

// The parts of the smooth collection.
std::span<const FunctionProblem> small_book_problems();
std::span<const FunctionProblem> larger_book_problems();

}  // namespace tarnwick
