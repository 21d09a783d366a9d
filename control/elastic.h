#pragma once

#include "control/solvecontrol.h"

namespace tarnwick {

struct SolutionRecord;

// Builds the elastic variables of the run when elastic mode is on. False: no memory.
bool setupelastic(SolveControl& control) noexcept;

// Stores which rows and bounds an elastic search has left standing.
void storesubset(Problem& problem, const SolutionRecord& solution) noexcept;

}  // namespace tarnwick
