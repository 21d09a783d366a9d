#include "tests/support/clock.h"

#include <atomic>
#include <chrono>

#include "platform/clock.h"

namespace tarnwick {

namespace {

std::atomic<bool> is_set{false};
std::atomic<std::uint32_t> shown{0};
std::atomic<std::uint32_t> step_per_reading{0};

}  // namespace

std::uint32_t tick_count() noexcept
{
    if (is_set) return shown.fetch_add(step_per_reading);
    using namespace std::chrono;
    const auto elapsed = steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(duration_cast<milliseconds>(elapsed).count());
}

void set_clock(std::uint32_t now, std::uint32_t step) noexcept
{
    shown = now;
    step_per_reading = step;
    is_set = true;
}

void release_clock() noexcept { is_set = false; }

}  // namespace tarnwick
