#pragma once

#include <cstddef>

namespace tarnwick {

// The one pair through which the library gets and gives back memory. Blocks are zero-filled; a
// request for zero bytes gives null, as does one that can't be met. Releasing null does nothing.
void* allocate_block(std::size_t bytes) noexcept;
// The same with the content left open: for a record whose constructor sets each field.
void* allocate_record(std::size_t bytes) noexcept;
void release_block(void* block) noexcept;

}  // namespace tarnwick
