#pragma once

namespace tarnwick {

// The value of the longest decimal number that starts at `first`: a sign, digits with an optional
// point, an optional exponent. 0 if none starts there; the names of infinity and of what is no
// number, and hexadecimal digits, are none. The locale plays no part. Numbers beyond the range of
// double give infinity, those too small for it 0. The text has fewer than 300 characters.
double leading_number(const char* first, const char* last) noexcept;

}  // namespace tarnwick
