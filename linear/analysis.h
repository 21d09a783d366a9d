#pragma once

#include "control/services.h"
#include "linear/lpengine.h"

namespace tarnwick {

// Reads duals and reduced costs from the final tableau of a linear run and stores them with the point.
// rowvalue is in real units on entry.
void finishlinear(LpEngine& lp) noexcept;
// Reads the ranges from the same tableau, once, any time after finishlinear.
SensitivityRecord readlinearranges(LpEngine& lp) noexcept;

// Stores the point without an analysis. With `diagnose`, the columns and rows that do not fit the
// linear model in the tableau are marked in the arrays of the reduced costs and duals.
void finishplain(LpEngine& lp, bool diagnose) noexcept;

// Stores the point, the rows and these results, all in scaled units, without ranges.
void storeresults(LpEngine& lp, Vec<double> reduced, Vec<double> duals) noexcept;

}  // namespace tarnwick
