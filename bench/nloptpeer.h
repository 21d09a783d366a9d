#pragma once

#include "bench/problems/problems.h"

namespace bench {

// What another solver makes of a problem. A gradient by forward differences counts as one evaluation
// for each variable, as it does in the library.
struct PeerOutcome {
    tarnwick::Reals x;
    long evaluations = 0, gradients = 0;
    int code = 0;  // NLopt's own: positive for a success
};

// Sequential quadratic programming from the problem's start, with differences of the given relative
// step.
PeerOutcome solve_by_slsqp(const tarnwick::FunctionProblem& problem, double step);

// The evolution strategy ISRES for that many evaluations. Integer variables are rounded where the
// function is called.
PeerOutcome search_by_isres(const tarnwick::FunctionProblem& problem, long evaluations,
                            unsigned long seed);

}  // namespace bench
