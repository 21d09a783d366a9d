#pragma once

#include "nonsmooth/nspengine.h"

namespace tarnwick {

// One search, from a new population to the choice of the point that is reported. Everything is in
// scaled units; the reported point goes to nsp.point, its objective, in the sense of the model, to
// `objective`.
EngineResult nsp_search(NspEngine& nsp, double& objective) noexcept;

}  // namespace tarnwick
