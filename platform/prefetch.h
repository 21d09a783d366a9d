#pragma once

#include <cstddef>

namespace tarnwick {

// Asks the memory for the first bytes of an array that is about to be read, so that several arrays
// are on their way at once. Any address will do; nothing is read.
inline void prefetch([[maybe_unused]] const void* array,
                     [[maybe_unused]] std::size_t bytes) noexcept
{
#if defined(__GNUC__)
    constexpr std::size_t LINE_BYTES = 64;
    constexpr std::size_t MOST_BYTES = 1024;  // the processor sees by itself how a long one goes on
    const char* const first = static_cast<const char*>(array);
    for (std::size_t byte = 0; byte < bytes && byte < MOST_BYTES; byte += LINE_BYTES)
        __builtin_prefetch(first + byte);
#endif
}

}  // namespace tarnwick
