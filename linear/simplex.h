#pragma once

#include "linear/lpengine.h"

namespace tarnwick {

// Solves the linear program in the tableau with the bounds now in lower and upper, in scaled units.
// x decides on entry the starting side of each boxed variable, and holds the point on return;
// tableau entry (0, 0) is the objective in minimisation form.
EngineResult solvesimplex(LpEngine& lp) noexcept;

// Goes on from the basis that the last solve left, with other costs: cost[0] is the objective at
// the present point, cost[j] the cost of variable j, to be minimised. Null: the costs stay.
EngineResult resolvesimplex(LpEngine& lp, Vec<const double> cost) noexcept;

// After a report that asked to stop: evaluates lp.iterate, so that the Problem holds it, and gives the
// code of the stop.
EngineResult stopatiterate(LpEngine& lp) noexcept;

}  // namespace tarnwick
