#include "platform/clock.h"

#include <chrono>

namespace tarnwick {

std::uint32_t tick_count() noexcept
{
    using namespace std::chrono;
    const auto elapsed = steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(duration_cast<milliseconds>(elapsed).count());
}

}  // namespace tarnwick
