#pragma once

#include "reducedgradient/nlpengine.h"

namespace tarnwick {

// At the point: which rows bind, the Jacobian, the basis with its inverse, and the superbasics. A stop
// or a failure goes to the status.
void nlp_refresh_basis(NlpEngine& nlp) noexcept;
// Exchanges the basic variable at hitposition for a superbasic one.
void nlp_exchange_basis(NlpEngine& nlp) noexcept;

}  // namespace tarnwick
