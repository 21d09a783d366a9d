#include "linear/kernels.h"

#include <cmath>
#include <limits>

// The processor's widest vectors are used through clones that the loader chooses from.

namespace tarnwick {

namespace {

constexpr int LINE = 8;  // cells of a cache line

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
    for (int j = 0; j < width; ++j) {
        double value = y[j];
        for (int k = 0; k < ROWS; ++k) value -= factor[k] * row[k][j];
        y[j] = value;
    }
}

}  // namespace

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
        row[c] = 0.0;
        for (int line = 0; line < width; line += LINE)
            for (int k = line; k < line + LINE; ++k) row[k] -= factor * p[k];
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
double copy_entries(double* __restrict target, const double* __restrict source, int count,
                    double floor) noexcept
{
    double largest[LINE] = {};
    int j = 1;
    for (; j + LINE <= count + 1; j += LINE) {
        for (int k = 0; k < LINE; ++k) {
            const double size = std::fabs(source[j + k]);
            target[j + k] = size > floor ? source[j + k] : 0.0;
            largest[k] = size > largest[k] ? size : largest[k];
        }
    }
    for (; j <= count; ++j) {
        const double size = std::fabs(source[j]);
        target[j] = size > floor ? source[j] : 0.0;
        largest[0] = size > largest[0] ? size : largest[0];
    }
    for (int k = 1; k < LINE; ++k) largest[0] = largest[k] > largest[0] ? largest[k] : largest[0];
    return largest[0];
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
int count_entries(const double* values, int count) noexcept
{
    int number = 0;
    for (int j = 1; j <= count; ++j) number += values[j] != 0.0 ? 1 : 0;
    return number;
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
Magnitudes magnitudes(const double* values, int count, double floor) noexcept
{
    constexpr double NONE = std::numeric_limits<double>::infinity();
    double smallest[LINE], largest[LINE];
    for (int k = 0; k < LINE; ++k) {
        smallest[k] = NONE;
        largest[k] = 0.0;
    }
    int j = 1;
    for (; j + LINE <= count + 1; j += LINE) {
        for (int k = 0; k < LINE; ++k) {
            const double size = std::fabs(values[j + k]);
            largest[k] = size > floor && size > largest[k] ? size : largest[k];
            smallest[k] = size > floor && size < smallest[k] ? size : smallest[k];
        }
    }
    Magnitudes all{smallest[0], largest[0]};
    for (int k = 1; k < LINE; ++k) {
        all.largest = largest[k] > all.largest ? largest[k] : all.largest;
        all.smallest = smallest[k] < all.smallest ? smallest[k] : all.smallest;
    }
    for (; j <= count; ++j) {
        const double size = std::fabs(values[j]);
        if (!(size > floor)) continue;
        all.largest = size > all.largest ? size : all.largest;
        all.smallest = size < all.smallest ? size : all.smallest;
    }
    return all;
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void widen_ranges(double* __restrict smallest, double* __restrict largest,
                  const double* __restrict values, double factor, int count, double floor) noexcept
{
    for (int j = 1; j <= count; ++j) {
        const double size = std::fabs(values[j]);
        const double scaled = size * factor;
        const double high = scaled > largest[j] ? scaled : largest[j];
        const double low = scaled < smallest[j] ? scaled : smallest[j];
        largest[j] = size > floor ? high : largest[j];
        smallest[j] = size > floor ? low : smallest[j];
    }
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void scale_entries(double* __restrict values, double factor, const double* __restrict factors,
                   int count, double floor) noexcept
{
    for (int j = 1; j <= count; ++j) {
        const double value = std::fabs(values[j]) < floor ? 0.0 : values[j];
        values[j] = value * factor * factors[j];
    }
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
double ratio_steps(double* __restrict steps, const double* __restrict column,
                   const double* __restrict value, const double* __restrict positive,
                   const double* __restrict negative, int m, double tol, double infinite) noexcept
{
    constexpr double NONE = std::numeric_limits<double>::quiet_NaN();
    for (int i = 1; i <= m; ++i) {
        const double a = column[i];
        const double bound = a > 0.0 ? positive[i] : negative[i];
        const double step = std::fabs((value[i] - bound) / a);
        const double limited = std::fabs(bound) < infinite ? step : NONE;
        steps[i] = std::fabs(a) > tol ? limited : NONE;
    }
    double least[LINE];
    for (double& step : least) step = std::numeric_limits<double>::infinity();
    int i = 1;
    for (; i + LINE <= m + 1; i += LINE)
        for (int k = 0; k < LINE; ++k) least[k] = steps[i + k] < least[k] ? steps[i + k] : least[k];
    for (; i <= m; ++i) least[0] = steps[i] < least[0] ? steps[i] : least[0];
    for (int k = 1; k < LINE; ++k) least[0] = least[k] < least[0] ? least[k] : least[0];
    return least[0];
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
Room room_of_cost(const double* __restrict row, const double* __restrict sign,
                  const double* __restrict costs, int n, double floor, double limit) noexcept
{
    double up[LINE], down[LINE];
    for (int k = 0; k < LINE; ++k) up[k] = down[k] = limit;
    const auto narrow = [&](int j, int k) {
        const double a = row[j] * sign[j];
        const double room = std::fabs(costs[j] / a);
        const double rising = a > floor ? room : limit;
        const double falling = a < -floor ? room : limit;
        up[k] = rising < up[k] ? rising : up[k];
        down[k] = falling < down[k] ? falling : down[k];
    };
    int j = 1;
    for (; j + LINE <= n + 1; j += LINE)
        for (int k = 0; k < LINE; ++k) narrow(j + k, k);
    for (; j <= n; ++j) narrow(j, 0);
    for (int k = 1; k < LINE; ++k) {
        up[0] = up[k] < up[0] ? up[k] : up[0];
        down[0] = down[k] < down[0] ? down[k] : down[0];
    }
    return {up[0], down[0]};
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void shrink_room(double* __restrict rise, double* __restrict fall, const double* __restrict row,
                 double to_lower, double to_upper, int n, double floor) noexcept
{
    for (int j = 1; j <= n; ++j) {
        const double a = row[j], size = std::fabs(a);
        const double up = (a > 0.0 ? to_lower : to_upper) / size;
        const double down = (a > 0.0 ? to_upper : to_lower) / size;
        const double risen = up < rise[j] ? up : rise[j];
        const double fallen = down < fall[j] ? down : fall[j];
        rise[j] = size >= floor ? risen : rise[j];
        fall[j] = size >= floor ? fallen : fall[j];
    }
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void add_entries(double* __restrict target, double factor, const double* __restrict column,
                 int last, double floor) noexcept
{
    for (int i = 0; i <= last; ++i) {
        const double sum = target[i] + factor * column[i];
        target[i] = std::fabs(column[i]) > floor ? sum : target[i];
    }
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void multiply_entries(double* values, double factor, int count, double floor) noexcept
{
    for (int j = 1; j <= count; ++j) {
        const double product = values[j] * factor;
        values[j] = std::fabs(values[j]) > floor ? product : values[j];
    }
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
int find_value(const double* values, double value, int first, int last) noexcept
{
    int i = first;
    for (; i + LINE <= last + 1; i += LINE) {
        bool found = false;
        for (int k = 0; k < LINE; ++k) found |= values[i + k] == value;
        if (found) break;
    }
    for (; i <= last; ++i)
        if (values[i] == value) return i;
    return 0;
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void scale_values(double* __restrict values, double factor, const double* __restrict factors,
                  int count, double infinite) noexcept
{
    for (int line = 0; line < count; line += LINE) {
        for (int k = line; k < line + LINE; ++k) {
            const double value = values[k];
            const double once = std::fabs(value) >= infinite ? value : value * factor;
            values[k] = std::fabs(once) >= infinite ? once : once * factors[k];
        }
    }
}

}  // namespace tarnwick
