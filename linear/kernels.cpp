#include "linear/kernels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "platform/array.h"

// Plain loops that compilers turn into vector operations; the processor's widest vectors are used
// through clones that the loader chooses from.

namespace tarnwick {

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NONE = std::numeric_limits<double>::quiet_NaN();

// The magnitude of a number as an integer that grows with it. Integers have no order of evaluation,
// so that a compiler may keep partial results of a smallest or largest one in the lanes of a vector.
[[gnu::always_inline]] inline std::int64_t rank(double magnitude)
{
    return std::bit_cast<std::int64_t>(magnitude);
}
[[gnu::always_inline]] inline double of_rank(std::int64_t rank)
{
    return std::bit_cast<double>(rank);
}

// Tells the compiler that no elements are left over behind the last whole line.
[[gnu::always_inline]] inline int whole(int width) { return width & -LINE; }

template <int ROWS>
[[gnu::always_inline]] inline void subtract(double* __restrict y, const double* f,
                                            const double* const* p, int width)
{
    const double* __restrict row[ROWS];
    double factor[ROWS];
    for (int k = 0; k < ROWS; ++k) {
        row[k] = p[k];
        factor[k] = f[k];
    }
    for (int j = 0; j < whole(width); ++j) {
        double value = y[j];
        for (int k = 0; k < ROWS; ++k) value -= factor[k] * row[k][j];
        y[j] = value;
    }
}

[[gnu::always_inline]] inline std::int64_t divide(double* __restrict row, double* __restrict copy,
                                                  double inverse, int width, double floor)
{
    std::int64_t largest = 0;
    for (int j = 0; j < whole(width); ++j) {
        const double product = row[j] * inverse;
        const double value = std::fabs(row[j]) > floor ? product : row[j];
        const double entry = std::fabs(value) > floor ? value : 0.0;
        row[j] = value;
        copy[j] = entry;
        largest = std::max(largest, rank(std::fabs(entry)));
    }
    return largest;
}

[[gnu::always_inline]] inline std::int64_t copy_entries(double* __restrict copy,
                                                        const double* __restrict values, int width,
                                                        double floor)
{
    std::int64_t largest = 0;
    for (int j = 0; j < whole(width); ++j) {
        const double entry = std::fabs(values[j]) > floor ? values[j] : 0.0;
        copy[j] = entry;
        largest = std::max(largest, rank(std::fabs(entry)));
    }
    return largest;
}

[[gnu::always_inline]] inline void add(double* __restrict target, double factor,
                                       const double* __restrict column, int width, double floor)
{
    for (int i = 0; i < whole(width); ++i) {
        const double sum = target[i] + factor * column[i];
        target[i] = std::fabs(column[i]) > floor ? sum : target[i];
    }
}

}  // namespace

// ---- the update of a pivot

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void subtract_outer(double* const* rows, const double* factors, int first, int last,
                    const double* __restrict p, int width, int c) noexcept
{
    for (int i = first; i <= last; ++i) {
        const double factor = factors[i];
        if (factor == 0.0) continue;
        double* __restrict row = rows[i];
        for (int line = 0; line < width; line += LINE)
            for (int j = line; j < line + LINE; ++j) row[j] -= factor * p[j];
        row[c] = 0.0 - factor * p[c];
    }
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void subtract_rows(double* y, const double* f, const double* const* p, int rows, int width) noexcept
{
    for (; rows >= 8; rows -= 8, f += 8, p += 8) subtract<8>(y, f, p, width);
    if (rows & 4) {
        subtract<4>(y, f, p, width);
        f += 4;
        p += 4;
    }
    if (rows & 2) {
        subtract<2>(y, f, p, width);
        f += 2;
        p += 2;
    }
    if (rows & 1) subtract<1>(y, f, p, width);
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
double
prepare_update(const PivotArrays& arrays, double inverse, double step, double floor) noexcept
{
    const std::int64_t entry = divide(arrays.row, arrays.divided, inverse, arrays.width, floor);
    const std::int64_t factor = copy_entries(arrays.factors, arrays.column, arrays.height, floor);
    if (std::fabs(step) > floor) add(arrays.values, step, arrays.column, arrays.height, floor);
    return of_rank(std::max(entry, factor));
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void add_entries(double* target, double factor, const double* column, int width,
                 double floor) noexcept
{
    add(target, factor, column, width, floor);
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
int count_entries(const double* values, int width) noexcept
{
    int number = 0;
    for (int j = 0; j < whole(width); ++j) number += values[j] != 0.0 ? 1 : 0;
    return number;
}

// ---- the ratio test

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
LeastStep
ratio_steps(double* __restrict steps, const double* __restrict column,
            const double* __restrict value, const double* __restrict positive,
            const double* __restrict negative, int width, double tol, double infinite) noexcept
{
    std::int64_t least = rank(INFINITE);
    for (int i = 0; i < whole(width); ++i) {
        const double a = column[i];
        const double bound = a > 0.0 ? positive[i] : negative[i];
        const double step = std::fabs((value[i] - bound) / a);
        const double limited = std::fabs(bound) < infinite ? step : NONE;
        steps[i] = std::fabs(a) > tol ? limited : NONE;
        least = std::min(least, rank(std::fabs(steps[i])));
    }

    // One sum counts the rows in its upper half and adds up their numbers in the lower one.
    constexpr int HALF = 32;
    const double step = of_rank(least);
    std::int64_t hits = 0;
    for (std::int64_t i = 0; i < whole(width); ++i)
        hits += steps[i] == step ? (std::int64_t{1} << HALF) + i : 0;
    return {step, static_cast<std::int32_t>(hits), static_cast<std::int32_t>(hits >> HALF)};
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
int find_value(const double* values, double value, int first, int last) noexcept
{
    constexpr int BLOCK = 8 * LINE;
    for (int block = first; block <= last; block += BLOCK) {
        const int end = std::min(block + BLOCK, last + 1);
        int hits = 0;
        for (int i = block; i < end; ++i) hits += values[i] == value ? 1 : 0;
        if (hits == 0) continue;
        for (int i = block; i < end; ++i)
            if (values[i] == value) return i;
    }
    return 0;
}

// ---- the analysis

// The work on one row stands in a function of its own: there the compiler believes that arrays don't
// overlap.

namespace {

struct Rooms {
    double up, down;
};

[[gnu::always_inline]] inline Rooms rooms_of_cost(const double* __restrict row,
                                                  const double* __restrict sign,
                                                  const double* __restrict costs, int width,
                                                  double floor, double limit)
{
    std::int64_t up = rank(limit), down = rank(limit);
    for (int j = 0; j < whole(width); ++j) {
        const double a = row[j] * sign[j];
        const double room = std::fabs(costs[j] / a);
        up = std::min(up, rank(a > floor ? room : limit));
        down = std::min(down, rank(a < -floor ? room : limit));
    }
    return {of_rank(up), of_rank(down)};
}

// A variable meets the bound that is `distance` away by the one room where its element is positive, by
// the other elsewhere.
[[gnu::always_inline]] inline void shrink_by_row(double* __restrict positive,
                                                 double* __restrict other,
                                                 const double* __restrict row, double distance,
                                                 int width, double floor)
{
    for (int j = 0; j < whole(width); ++j) {
        const double a = row[j], size = std::fabs(a);
        const double room = size >= floor ? distance / size : INFINITE;
        const double positives = room < positive[j] ? room : positive[j];
        const double others = room < other[j] ? room : other[j];
        positive[j] = a > 0.0 ? positives : positive[j];
        other[j] = a > 0.0 ? other[j] : others;
    }
}

}  // namespace

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void rooms_of_costs(double* const* rows, const std::int32_t* labels, int last_label, int m,
                    const double* sign, const double* costs, double* up, double* down, int width,
                    double floor, double limit) noexcept
{
    for (int i = 1; i <= m; ++i) {
        if (labels[i] > last_label) continue;
        const Rooms rooms = rooms_of_cost(rows[i], sign, costs, width, floor, limit);
        up[i] = rooms.up;
        down[i] = rooms.down;
    }
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void shrink_rooms(double* rise, double* fall, double* const* rows, int m, const double* to_lower,
                  const double* to_upper, int width, double floor) noexcept
{
    for (int i = 1; i <= m; ++i) {
        if (to_lower[i] < INFINITE) shrink_by_row(rise, fall, rows[i], to_lower[i], width, floor);
        if (to_upper[i] < INFINITE) shrink_by_row(fall, rise, rows[i], to_upper[i], width, floor);
    }
}

// ---- scaling

namespace {

struct Magnitudes {
    double smallest, largest;
};

[[gnu::always_inline]] inline Magnitudes magnitudes(const double* __restrict values, int width,
                                                    double floor)
{
    std::int64_t smallest = rank(INFINITE), largest = 0;
    for (int j = 0; j < whole(width); ++j) {
        const double size = std::fabs(values[j]);
        const std::int64_t mask = -static_cast<std::int64_t>(size > floor);  // all bits, or none
        largest = std::max(largest, rank(size) & mask);
        smallest = std::min(smallest, (rank(size) & mask) | (rank(INFINITE) & ~mask));
    }
    return {of_rank(smallest), of_rank(largest)};
}

[[gnu::always_inline]] inline void widen_by_row(double* __restrict smallest,
                                                double* __restrict largest,
                                                const double* __restrict row, double factor,
                                                int width, double floor)
{
    for (int j = 0; j < whole(width); ++j) {
        const double size = std::fabs(row[j]), scaled = size * factor;
        const double high = scaled > largest[j] ? scaled : largest[j];
        const double low = scaled < smallest[j] ? scaled : smallest[j];
        largest[j] = size > floor ? high : largest[j];
        smallest[j] = size > floor ? low : smallest[j];
    }
}

[[gnu::always_inline]] inline void scale_row(double* __restrict row, double factor,
                                             const double* __restrict factors, int width,
                                             double floor)
{
    for (int j = 0; j < whole(width); ++j) {
        const double value = std::fabs(row[j]) < floor ? 0.0 : row[j];
        row[j] = value * factor * factors[j];
    }
}

[[gnu::always_inline]] inline double scaled(double value, double factor, double infinite)
{
    return std::fabs(value) >= infinite ? value : value * factor;
}

[[gnu::always_inline]] inline void scale_evenly(double* __restrict values, double factor, int width,
                                                double infinite)
{
    for (int k = 0; k < whole(width); ++k) values[k] = scaled(values[k], factor, infinite);
}

[[gnu::always_inline]] inline void scale_array(double* __restrict values,
                                               const double* __restrict factors, int width,
                                               double infinite)
{
    for (int k = 0; k < whole(width); ++k) values[k] = scaled(values[k], factors[k], infinite);
}

// Clamped to the normal numbers.
[[gnu::always_inline]] inline double power_of_two(int exponent)
{
    constexpr int FRACTION_BITS = 52, BIAS = 1023;
    const std::int64_t field = std::clamp(exponent, 1 - BIAS, BIAS) + BIAS;
    return std::bit_cast<double>(field << FRACTION_BITS);
}

}  // namespace

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void row_magnitudes(double* smallest, double* largest, double* const* rows, int m, int width,
                    double floor) noexcept
{
    for (int i = 1; i <= m; ++i) {
        const Magnitudes range = magnitudes(rows[i], width, floor);
        smallest[i] = range.smallest;
        largest[i] = range.largest;
    }
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void column_magnitudes(double* smallest, double* largest, double* const* rows, const double* factors,
                       int m, int width, double floor) noexcept
{
    for (int i = 1; i <= m; ++i) widen_by_row(smallest, largest, rows[i], factors[i], width, floor);
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void scale_entries(double* const* rows, const double* row_factors, const double* factors, int m,
                   int width, double floor) noexcept
{
    for (int i = 1; i <= m; ++i) scale_row(rows[i], row_factors[i], factors, width, floor);
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void scale_values(double* const* arrays, int count, double factor, const double* factors, int width,
                  double infinite) noexcept
{
    for (int a = 0; a < count; ++a) {
        if (factor != 1.0) scale_evenly(arrays[a], factor, width, infinite);
        scale_array(arrays[a], factors, width, infinite);
    }
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void powers_of_two(double* __restrict up, double* __restrict down,
                   const std::int32_t* __restrict exponents, int width) noexcept
{
    for (int k = 0; k < whole(width); ++k) {
        up[k] = power_of_two(exponents[k]);
        down[k] = power_of_two(-exponents[k]);
    }
}

}  // namespace tarnwick
