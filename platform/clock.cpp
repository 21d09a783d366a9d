#include "platform/clock.h"

#include <chrono>

#if defined(__linux__)
#include <ctime>
#endif

namespace tarnwick {

#if defined(__linux__)

// The same clock as steady_clock, as of the last timer interrupt, a few milliseconds ago at most:
// a run reads it at every iteration, and this reading costs a fifth.
std::uint32_t tick_count() noexcept
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<std::uint32_t>(now.tv_sec * 1000 + now.tv_nsec / 1000000);
}

#else

std::uint32_t tick_count() noexcept
{
    using namespace std::chrono;
    const auto elapsed = steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(duration_cast<milliseconds>(elapsed).count());
}

#endif

}  // namespace tarnwick
