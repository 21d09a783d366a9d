#pragma once

#include "control/engine.h"
#include "include/tarnwick.h"

namespace tarnwick {

// One run: engine_init, a strategy, engine_finish. Returns the final result code.
EngineResult solveproblem(EngineTable& engines) noexcept;

// The strategy of a continuous model: one engine_solve.
std::int32_t directsolve(EngineEntry engine_solve, SolveRun& run) noexcept;

// The status that the interface gives for a result of the model's last run.
std::int32_t external_status(const Problem& problem, std::int32_t result) noexcept;

}  // namespace tarnwick
