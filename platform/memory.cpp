#include "platform/memory.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace tarnwick {

namespace {

// From 2 kB on a C library may clear by an instruction that is slow to start. As long as the block stays
// in the nearest cache, a few short pieces are faster.
void clear(void* block, std::size_t bytes) noexcept
{
    constexpr std::size_t PIECE = 1984, MOST_IN_PIECES = 32768;
    const std::size_t piece = bytes <= MOST_IN_PIECES ? PIECE : bytes;
    for (std::size_t done = 0; done < bytes; done += piece)
        std::memset(static_cast<std::byte*>(block) + done, 0, std::min(piece, bytes - done));
}

}  // namespace

// The build keeps the compiler from making calloc of these two calls: calloc passes by the lists of
// recycled blocks that make the small models of a busy host cheap.
void* allocate_block(std::size_t bytes) noexcept
{
    if (bytes == 0) return nullptr;
    void* const block = std::malloc(bytes);
    if (block) clear(block, bytes);
    return block;
}

void* allocate_record(std::size_t bytes) noexcept { return std::malloc(bytes); }

// Most records own arrays that a small model never creates: the test is cheaper than the call.
void release_block(void* block) noexcept
{
    if (block) std::free(block);
}

}  // namespace tarnwick
