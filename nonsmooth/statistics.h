#pragma once

#include "nonsmooth/nspengine.h"

namespace tarnwick {

// Stores the reported point with the statistics of the final population. The scales must be out of
// force. Without memory for the statistics nothing is stored.
void nsp_hand_back(NspEngine& nsp) noexcept;

}  // namespace tarnwick
