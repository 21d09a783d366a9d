#include "platform/memory.h"

#include <cstdlib>
#include <cstring>

namespace tarnwick {

// The build keeps the compiler from making calloc of these two calls: calloc passes by the lists of
// recycled blocks that make the small models of a busy host cheap.
void* allocate_block(std::size_t bytes) noexcept
{
    if (bytes == 0) return nullptr;
    void* const block = std::malloc(bytes);
    return block ? std::memset(block, 0, bytes) : nullptr;
}

void* allocate_record(std::size_t bytes) noexcept { return std::malloc(bytes); }

void release_block(void* block) noexcept { std::free(block); }

}  // namespace tarnwick
