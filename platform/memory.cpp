#include "platform/memory.h"

#include <cstdlib>
#include <cstring>

namespace tarnwick {

namespace {

// Below this size clearing a recycled block is cheaper than calloc's walk; above it calloc gets
// pages that the system has cleared already.
constexpr std::size_t RECYCLED_BYTES = 64 * 1024;

}  // namespace

void* allocate_block(std::size_t bytes) noexcept
{
    if (bytes == 0) return nullptr;
    if (bytes > RECYCLED_BYTES) return std::calloc(1, bytes);
    void* const block = std::malloc(bytes);
    return block ? std::memset(block, 0, bytes) : nullptr;
}

void release_block(void* block) noexcept { std::free(block); }

}  // namespace tarnwick
