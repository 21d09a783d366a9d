#pragma once

#include "reducedgradient/nlpengine.h"

namespace tarnwick {

// Solves from startpoint with the bounds in varlower and varupper. The verdict is in finalcode; a
// failure or a stop in the status.
void nlp_run(NlpEngine& nlp) noexcept;

}  // namespace tarnwick
