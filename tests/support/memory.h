#pragma once

namespace tarnwick {

// The tests link this memory in place of platform/memory. Blocks come zero-filled, their size is
// exact for the address sanitizer, and a released block is filled with RELEASED_BYTE first, so that
// a late reader finds no plausible numbers. Releasing what is no live block ends the program.

constexpr unsigned char RELEASED_BYTE = 0xA5;

long blocks_alive() noexcept;

// The next n requests are granted and all later ones fail, until allow_all_allocations.
void allow_allocations(long n) noexcept;
void allow_all_allocations() noexcept;
// True if a request has failed since the last call of one of these two.
bool allocation_failed() noexcept;

}  // namespace tarnwick
