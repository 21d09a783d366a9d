#pragma once

#include "reducedgradient/nlpengine.h"

namespace tarnwick {

// Goes `step` along the direction, perhaps less, and makes the point the best if it is. newtonfailed,
// hitposition, superatbound and nowfeasible tell what came of it; a failure or a stop goes to the
// status.
void nlp_try_step(NlpEngine& nlp) noexcept;
// Superbasics to step t along the direction.
void move_superbasics(NlpEngine& nlp, double t) noexcept;
// Moves what stands on bounds onto them, and the basic variables until the binding rows hold as
// exactly as rounding lets them. False: they don't, a basic variable has left its bounds, or the
// status is set.
bool nlp_restore_exactly(NlpEngine& nlp) noexcept;

}  // namespace tarnwick
