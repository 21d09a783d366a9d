#pragma once

#include "nonsmooth/nspengine.h"

namespace tarnwick {

// The three moves. Each makes one candidate, and a member of it, which then is pending, if it is
// good enough. CANDIDATE_STANDS, CANDIDATE_REFUSED, or a result that ends the search. After a
// mutation or a resampling that stands there is a member; a crossover that goes on may have made
// none, which only nsp.pending tells.
EngineResult nsp_mutate(NspEngine& nsp) noexcept;
EngineResult nsp_crossover(NspEngine& nsp) noexcept;
EngineResult nsp_resample(NspEngine& nsp) noexcept;

}  // namespace tarnwick
