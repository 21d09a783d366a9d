#pragma once

#include "nonsmooth/nspengine.h"

namespace tarnwick {

// The value v, brought into lower <= v <= upper; a NaN goes to lower.
inline double clipped(double v, double lower, double upper) noexcept
{
    if (!(v >= lower)) return lower;
    return v > upper ? upper : v;
}

// The real value of coordinate i: scaled * varscale[i]. What rounding alone keeps from being a whole
// number of an integer variable, or from its bounds, is put right.
double real_coordinate(const NspEngine& nsp, int i, double scaled) noexcept;

// Rows and objective at a point, in the units now in force. False: the caller's function failed, or
// a value is not finite.
bool nsp_evaluate_rows(NspEngine& nsp, Vec<double> rowvalue, const double* point) noexcept;
// The same for the search: false as well if a stop is pending.
bool nsp_evaluate(NspEngine& nsp, Vec<double> rowvalue, const double* point) noexcept;

// Evaluates a point into rowvalue and objective, and into fitness if it stands.
EngineResult nsp_fitness(NspEngine& nsp, const double* point) noexcept;

// Moves the integer variables of a point to whole numbers within their bounds, where there are any.
void nsp_round_integers(const NspEngine& nsp, Vec<double> point) noexcept;

// Rounds and evaluates the engine's point.
EngineResult nsp_try_point(NspEngine& nsp) noexcept;

// Draws the engine's point towards a feasible member until all rows are kept: `reference` if it is
// feasible, else the best feasible one. A point that stands carries its own objective and fitness.
EngineResult nsp_repair(NspEngine& nsp, const NspMember* reference) noexcept;

// What the search reports as its result: code and point, the objective in the sense of the model and
// in the units now in force.
struct BestResult {
    EngineResult code;
    double objective;
};
BestResult nsp_best_result(const NspEngine& nsp, EngineResult status, Vec<double> point) noexcept;

// Keeps the counts of iterations and failures and the stall clock, and reports an iteration. The
// status to go on with.
EngineResult nsp_account(NspEngine& nsp, EngineResult status, double objective) noexcept;

// Reports that ask whether to stop: 0, or the result that a stop gives.
EngineResult nsp_report_iteration(NspEngine& nsp, double objective) noexcept;
EngineResult nsp_report_generation(NspEngine& nsp, const BestResult& best) noexcept;

}  // namespace tarnwick
