#pragma once

#include <vector>

#include "bench/problems/problems.h"
#include "tests/support/verifier.h"

namespace tarnwick {

enum class Family { smooth, nonsmooth };

// A problem of the collections as a host loads it, with the arrays behind it and a count of its
// evaluations. The derivatives are there for PARAM_NLPDERIVMODE; they are central differences.
class LoadedProblem {
  public:
    LoadedProblem(const FunctionProblem& problem, Family family);
    ~LoadedProblem();
    LoadedProblem(const LoadedProblem&) = delete;
    LoadedProblem& operator=(const LoadedProblem&) = delete;

    // Status -1: a function of the library has refused. Duals and reduced costs are those of a smooth
    // optimum.
    Answer solve();

    Problem* lp = nullptr;
    FunctionProblem problem;
    long evaluations = 0;

  private:
    const bool has_duals_;
    Reals obj_, matval_;
};

// Where a row or a column, counted from 0, is to be kept.
struct Limits {
    double lower = -INF, upper = INF;
};
Limits limits_of_row(const FunctionProblem& problem, int i);
Limits limits_of_column(const FunctionProblem& problem, int j);

// Gradient of the objective and rows' derivatives, column by column, by central differences.
struct Derivatives {
    Reals obj, matval;
};
Derivatives derivatives_at(const FunctionProblem& problem, Reals x);

// The largest violation of a bound or a row, relative to 1 + the size of the limit, and for a row also
// that of its value at the start, which the engines take for the row's unit. The problem's function
// is all that it knows.
double violation(const FunctionProblem& problem, const Reals& x);
double objective(const FunctionProblem& problem, const Reals& x);

// The conditions of first order for a minimisation, by numeric derivatives:
//
//     grad f = J' pi + dj,   pi and dj of the right signs,   zero where nothing binds
//
// Fixed variables are passed over: by differences their derivatives are zero. Returns the largest
// error, relative to 1 + the size of the terms of the sum.
double stationarity_error(const FunctionProblem& problem, const Answer& answer, double bindingtol);

}  // namespace tarnwick
