#pragma once

#include "control/engine.h"

namespace tarnwick {

// The strategy of an elastic run: finds rows and bounds that are infeasible together. In mode 1 none
// of them can be spared, in mode 2 that holds for the rows alone. ENGINE_OPTIMAL is left in the run
// when they were found; elastic variables whose upper bound is 0 then name the rows, and the finite
// bounds of the columns are those of the subset. Exported by number.
extern "C" std::int32_t TARNWICK_CALL iissolve(EngineEntry engine_solve, SolveRun& run) noexcept;

}  // namespace tarnwick
