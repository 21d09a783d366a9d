#include "platform/clock.h"

#include <chrono>

#if defined(__linux__)
#include <ctime>
#endif

namespace tarnwick {

std::uint32_t tick_count() noexcept
{
#if defined(__linux__)
    // steady_clock as of the last timer interrupt, a few milliseconds ago at most: a run reads it at
    // every iteration, and this reading costs a fifth.
    timespec now{};
    if (clock_gettime(CLOCK_MONOTONIC_COARSE, &now) == 0) {
        const auto seconds = static_cast<std::uint32_t>(now.tv_sec);
        return seconds * 1000U + static_cast<std::uint32_t>(now.tv_nsec / 1000000);
    }
#endif
    using namespace std::chrono;
    const auto elapsed = steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(duration_cast<milliseconds>(elapsed).count());
}

}  // namespace tarnwick
