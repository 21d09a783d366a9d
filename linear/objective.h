#pragma once

#include "linear/lpengine.h"

namespace tarnwick {

// Allocates and reads lp.quad: ENGINE_OPTIMAL, ENGINE_NOMEMORY, or ENGINE_BADMODEL for a quadratic
// part that can't be walked.
EngineResult readquad(LpEngine& lp) noexcept;

// The objective at a point in scaled units. Either target may be absent: the value, and the gradient
// with the value in entry 0, both in scaled units. False: there is no point or no objective.
bool objectiveat(const LpEngine& lp, double* value, Vec<double> gradient,
                 Vec<double> point) noexcept;

// Adds an entry to the quadratic objective: the visiting operation of walkquad, with the row pointers
// of the matrix as its data. Rows and columns count from 0, row -1 being the linear costs. 0: no
// matrix.
extern "C" std::int32_t TARNWICK_CALL visitquad(SolveControl* control, void* user, std::int32_t row,
                                                std::int32_t column, double value,
                                                void* data) noexcept;

}  // namespace tarnwick
