#pragma once

#include <cstddef>

namespace tarnwick {

// The one pair through which the library gets and gives back memory. Blocks are zero-filled; a
// request for zero bytes gives null, as does one that can't be met. Releasing null does nothing.
void* allocate_block(std::size_t bytes) noexcept;
void release_block(void* block) noexcept;

}  // namespace tarnwick
