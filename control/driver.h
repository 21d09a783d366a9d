#pragma once

#include "control/engine.h"
#include "include/tarnwick.h"

namespace tarnwick {

extern "C" {

// One run: engine_init, a strategy, engine_finish. Returns the final result code.
EngineResult TARNWICK_CALL solveproblem(EngineTable& engines) noexcept;

// The strategy of a continuous model: one engine_solve.
std::int32_t TARNWICK_CALL directsolve(EngineEntry engine_solve, SolveRun& run) noexcept;

}  // extern "C"

// The status that the interface gives for the result of a run. is_mip: the run was one with integer
// variables.
std::int32_t external_status(const Problem& problem, std::int32_t result, bool is_mip) noexcept;

}  // namespace tarnwick
