#pragma once

#include "nonsmooth/nspengine.h"

namespace tarnwick {

// Makes room for popsize members and the counters of their positions. False: no memory.
bool pop_create(NspEngine& nsp) noexcept;
// Releases all members, the pending one included.
void pop_release(NspEngine& nsp) noexcept;

// The members at the ends of a population that is not empty.
inline NspMember& pop_first(const NspEngine& nsp) noexcept { return *nsp.ranking[0]; }
inline NspMember& pop_last(const NspEngine& nsp) noexcept { return *nsp.ranking[nsp.count - 1]; }
// The member at a position, which counts from 1; null: there is none.
inline NspMember* pop_at(const NspEngine& nsp, int position) noexcept
{
    return 1 <= position && position <= nsp.count ? nsp.ranking[position - 1] : nullptr;
}

// Makes the pending member of the latest candidate; it becomes `current`. ENGINE_NOMEMORY, or 0.
EngineResult nsp_new_member(NspEngine& nsp) noexcept;

// Puts the pending member, which must be there, into its place. If the population is now beyond
// popsize, another member goes.
void pop_insert(NspEngine& nsp) noexcept;

}  // namespace tarnwick
