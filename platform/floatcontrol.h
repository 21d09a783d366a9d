#pragma once

namespace tarnwick {

// Sets the processor to what the numbers of the library assume: 53-bit significands, round to
// nearest, all exceptions masked, denormals neither flushed nor taken for zero. The setting stays.
void set_float_control() noexcept;

}  // namespace tarnwick
