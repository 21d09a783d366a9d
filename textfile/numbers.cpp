#include "textfile/numbers.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace tarnwick {

namespace {

bool is_digit(char c) noexcept { return '0' <= c && c <= '9'; }

// True if an unsigned decimal number starts here. What else the conversion takes would do so with
// a letter.
bool starts_decimal(const char* first, const char* last) noexcept
{
    if (first != last && *first == '.') ++first;
    return first != last && is_digit(*first);
}

// The digits alone stay far inside the range, so it is the exponent that leaves it, and its sign
// tells at which end.
double out_of_range(const char* first, const char* last) noexcept
{
    const char* const e = std::find_if(first, last, [](char c) { return c == 'e' || c == 'E'; });
    const bool is_tiny = last - e > 1 && e[1] == '-';
    return is_tiny ? 0.0 : std::numeric_limits<double>::infinity();
}

}  // namespace

double leading_number(const char* first, const char* last) noexcept
{
    const bool is_negative = first != last && *first == '-';
    if (is_negative || (first != last && *first == '+')) ++first;
    if (!starts_decimal(first, last)) return 0.0;

    double magnitude = 0.0;
    const auto [end, error] = std::from_chars(first, last, magnitude);
    if (error == std::errc::result_out_of_range) magnitude = out_of_range(first, end);
    return is_negative ? -magnitude : magnitude;
}

}  // namespace tarnwick
