#pragma once

namespace tarnwick {

// A sign, the 31 digits of a whole part below 1e30, a point, the six of a fraction, and the end.
inline constexpr int REAL_TEXT_SIZE = 40;

// Writes the value as a decimal number without exponent into a buffer of REAL_TEXT_SIZE bytes and
// gives the buffer back. At most six places, rounded half up, and at least one; from 2^32 on whole
// digits alone. Infinite values, 1e30 and beyond in magnitude, become "+infinity" and "-infinity".
char* format_real(double value, char* buffer) noexcept;

}  // namespace tarnwick
