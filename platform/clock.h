#pragma once

#include <cstdint>

namespace tarnwick {

// Milliseconds of a clock that never goes back, modulo 2^32: it wraps after 49.7 days. Tests link a
// clock of their own in its place.
std::uint32_t tick_count() noexcept;

}  // namespace tarnwick
