#pragma once

#include "linear/lpengine.h"

namespace tarnwick {

// Reads the quadratic objective and allocates what the method needs, outside the solve.
EngineResult setupquadratic(LpEngine& lp) noexcept;

// Solves the model with the tableau as read and the bounds now in lower and upper, in scaled units.
// x holds the point on return, objective the objective in the sense of the model; start goes on from
// solve to solve.
EngineResult solveboxed(LpEngine& lp, double& objective) noexcept;

}  // namespace tarnwick
