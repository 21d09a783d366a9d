#include "textfile/realtext.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace tarnwick {

namespace {

constexpr double INFINITE = 1e30;
constexpr double WHOLE_DIGITS_ALONE = 4294967296.0;  // from here on there is no fraction
constexpr int PLACES = 6;

char* put_word(const char* word, char* buffer) noexcept
{
    std::copy_n(word, std::strlen(word) + 1, buffer);
    return buffer;
}

// The digits of a whole number, all of them.
char* put_whole(double whole, char* place) noexcept
{
    return std::to_chars(place, place + REAL_TEXT_SIZE - PLACES, whole, std::chars_format::fixed, 0)
        .ptr;
}

// A point and the millionths, without the zeros at the end; one digit stays.
char* put_fraction(unsigned long millionths, char* place) noexcept
{
    *place++ = '.';
    for (int k = PLACES - 1; k >= 0; --k, millionths /= 10)
        place[k] = static_cast<char>('0' + millionths % 10);
    int digits = PLACES;
    while (digits > 1 && place[digits - 1] == '0') --digits;
    return place + digits;
}

char* put_magnitude(double value, char* place) noexcept
{
    constexpr unsigned long ONE = 1000000;
    double whole = std::trunc(value);
    unsigned long millionths = 0;
    if (value < WHOLE_DIGITS_ALONE) {
        millionths = static_cast<unsigned long>(std::trunc((value - whole) * 1000000.0 + 0.5));
        if (millionths >= ONE) {
            whole += 1.0;
            millionths -= ONE;
        }
    }
    return put_fraction(millionths, put_whole(whole, place));
}

}  // namespace

char* format_real(double value, char* buffer) noexcept
{
    if (std::isnan(value)) return put_word("nan", buffer);
    if (value <= -INFINITE) return put_word("-infinity", buffer);
    if (value >= INFINITE) return put_word("+infinity", buffer);

    char* place = buffer;
    if (value < 0.0) *place++ = '-';
    *put_magnitude(std::fabs(value), place) = '\0';
    return buffer;
}

}  // namespace tarnwick
