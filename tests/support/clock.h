#pragma once

#include <cstdint>

namespace tarnwick {

// The tests link this clock in place of platform/clock. It runs like the real one until a test
// takes it over.

// From now on the clock shows `now` milliseconds, and `step` more after each reading.
void set_clock(std::uint32_t now, std::uint32_t step = 0) noexcept;
// Back to the real clock.
void release_clock() noexcept;

}  // namespace tarnwick
