#include "platform/memory.h"

#include <cstring>
#include <new>

namespace tarnwick {

void* allocate_block(std::size_t bytes) noexcept
{
    if (bytes == 0) return nullptr;
    // Not malloc: a compiler makes calloc of malloc and memset, and calloc passes by the lists of
    // recycled blocks that make the small models of a busy host cheap.
    void* const block = ::operator new(bytes, std::nothrow);
    return block ? std::memset(block, 0, bytes) : nullptr;
}

void release_block(void* block) noexcept { ::operator delete(block); }

}  // namespace tarnwick
