#pragma once

#include "linear/lpengine.h"

namespace tarnwick {

enum class Step {
    none,   // nothing limits the entering variable
    flip,   // it moves to its own other bound
    pivot,  // the basic variable of a row leaves
};

struct StepChoice {
    Step step = Step::none;
    int row = 0;  // of the variable that leaves
};

// Chooses what limits the entering variable of column c, which lp.column holds; it was priced in
// row s. Sets lp.leavebound. Rows may be brought up to date on the way.
StepChoice ratiotest(LpEngine& lp, int c, int s) noexcept;

}  // namespace tarnwick
