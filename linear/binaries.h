#pragma once

#include "linear/lpengine.h"

namespace tarnwick {

// Finds the 0-1 variables and lists the integer ones in the order of branching, if a switch asks for
// it. The tableau is scaled; lower and upper are in real units. False: no memory.
bool setupbinaries(LpEngine& lp, SolveRun& run) noexcept;

// Before a solve, with the tableau as read and the bounds in scaled units: fixes 0-1 variables and
// tightens other bounds, as the switches say, without losing every optimum. False: nothing lies
// within the bounds.
bool preprocessbinaries(LpEngine& lp, SolveRun& run) noexcept;

void releasebinaries(LpEngine& lp, SolveRun& run) noexcept;

}  // namespace tarnwick
