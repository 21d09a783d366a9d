#pragma once

#include <string>

#include "tests/support/verifier.h"

namespace tarnwick {

// A linear model with a type letter for each column. Integer columns have finite bounds.
struct IntegerModel : LinearModel {
    std::string ctype;

    bool is_integer(std::size_t j) const { return ctype[j] != 'C'; }
};

// Loaded with its letters, which must be accepted.
struct LoadedIntegers : LoadedModel {
    explicit LoadedIntegers(const IntegerModel& model);
    std::string ctype;
};

// A model of a few small whole numbers, mostly of 0-1 variables; it may be infeasible or unbounded.
IntegerModel tiny_integer_model(unsigned seed);

// The best of all values that the integer columns can take, each with the vertices of what is left.
// An unbounded relaxation makes it STAT_UNBOUNDED, as the search does not look behind it; else the
// status is STAT_MIP_OPTIMAL or STAT_MIP_INFEASIBLE.
Truth truth_of(const IntegerModel& model);

// Bounds and rows, whole numbers, and an objective that belongs to the point.
void expect_integer_solution(const IntegerModel& model, const Answer& answer);

// Runs optimize, which must return 0. There are no duals and no ranges to read.
Answer solve_integers(Problem* lp);

// The answer is the truth, with a point to show for it.
void expect_true(const IntegerModel& model, const Answer& answer);

}  // namespace tarnwick
