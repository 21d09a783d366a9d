#pragma once

#include "reducedgradient/nlpengine.h"

namespace tarnwick {

// Brings the Jacobian to the point. A failure, or a stop, goes to the status.
void nlp_refresh_jacobian(NlpEngine& nlp) noexcept;
// False: a column that was taken for constant has another slope at the point. After unscaling.
bool nlp_check_linear(NlpEngine& nlp) noexcept;

}  // namespace tarnwick
