#pragma once

#include "reducedgradient/nlpengine.h"

namespace tarnwick {

// The direction over the superbasics, which may change their set. Leaves nodirection set when there is
// none.
void nlp_direction(NlpEngine& nlp) noexcept;

}  // namespace tarnwick
