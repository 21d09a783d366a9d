#pragma once

#include "linear/lpengine.h"

namespace tarnwick {

// Stores the point of a quadratic run with multipliers and reduced costs computed afresh. x and
// rowvalue are in real units on entry. The engine's lists and arrays are used up.
void finishquadratic(LpEngine& lp) noexcept;

}  // namespace tarnwick
