#pragma once

#include "reducedgradient/nlpengine.h"

namespace tarnwick {

// Goes along the direction to a better point. stepfound, interior, superatbound, nowfeasible and
// unbounded tell how it went; a failure or a stop goes to the status.
void nlp_line_search(NlpEngine& nlp) noexcept;

}  // namespace tarnwick
