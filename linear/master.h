#pragma once

#include "linear/lpengine.h"

namespace tarnwick {

// The master's matrix is not positive definite. The number is not used by the engine otherwise, and
// never leaves the method.
inline constexpr EngineResult MASTER_INDEFINITE = ENGINE_STALLED;

// Takes a point into the hull and moves the current point, row 0 of the vertices, to the best one of
// the hull. ENGINE_OPTIMAL, MASTER_INDEFINITE with the current point as it was, ENGINE_EVALERROR or
// ENGINE_NOMEMORY.
EngineResult addvertex(LpEngine& lp, Vec<const double> point) noexcept;

// The sum of the magnitudes of what makes up the predicted objective.
double sizeofprediction(const LpEngine& lp) noexcept;

// The first vertex that x matches, or 0.
int atvertex(const LpEngine& lp, Vec<const double> x) noexcept;

}  // namespace tarnwick
