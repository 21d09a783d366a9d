#pragma once

#include "tests/support/models.h"

namespace tarnwick {

// What the interface tells after a run.
struct Answer {
    std::int32_t status = -1;
    double objval = 0.0;
    Reals x, piout, slack, dj;
    Reals objlower, objupper, rhslower, rhsupper;
};

Answer answer_of(Problem* lp);
// Runs optimize, which must return 0.
Answer solve(Problem* lp);
Answer solve(const LinearModel& model, MatrixLayout layout = MatrixLayout::sparse);

// The checks know the caller's data alone. A point must keep its bounds and rows; an optimum is
// proved by its duals:
//
//     dj = g - A' pi, g = c + (Q + Q') x,   pi <= 0 for a binding <= row of a minimisation, >= 0 for a >= row,
//     dj >= 0 at a lower bound, <= 0 at an upper one,   pi * slack = 0
//
// with the signs turned for a maximisation. The tolerances are relative to the size of the terms.
void expect_feasible(const LinearModel& model, const Reals& x);
void expect_optimal(const LinearModel& model, const Answer& answer);

// What is true of a model of a few small whole numbers, found by looking at every vertex.
struct Truth {
    std::int32_t status;  // STAT_OPTIMAL, STAT_INFEASIBLE or STAT_UNBOUNDED
    double objective;
};
Truth truth_of(const LinearModel& model);

}  // namespace tarnwick
