#pragma once

#include "linear/lpengine.h"

namespace tarnwick {

// Whether the rows as read bear out the infeasibility that phase one ends with. They are those of the
// kept tableau or, in the only solve of a run, come from another walk over the matrix. `iterate` is
// the point that phase one has reached; the arrays of the analysis are scratch.
bool isinfeasible(LpEngine& lp) noexcept;

}  // namespace tarnwick
