#include "linear/kernels.h"

// The processor's widest vectors are used through clones that the loader chooses from. The order of
// operations for each element is the same in all of them, and none of them fuses a multiplication
// with a subtraction, so that every clone gives the same numbers.

namespace tarnwick {

namespace {

template <int ROWS>
[[gnu::always_inline]] inline void subtract(double* __restrict y, const double* f,
                                            const double* const* p, int count)
{
    const double* __restrict row[ROWS];
    double factor[ROWS];
    for (int k = 0; k < ROWS; ++k) {
        row[k] = p[k];
        factor[k] = f[k];
    }
    for (int j = 0; j < count; ++j) {
        double value = y[j];
        for (int k = 0; k < ROWS; ++k) value -= factor[k] * row[k][j];
        y[j] = value;
    }
}

}  // namespace

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void subtract_row(double* __restrict y, double f, const double* __restrict p, int count) noexcept
{
    for (int j = 0; j < count; ++j) y[j] -= f * p[j];
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void subtract_rows(double* y, const double* f, const double* const* p, int rows, int count) noexcept
{
    for (; rows >= 8; rows -= 8, f += 8, p += 8) subtract<8>(y, f, p, count);
    if (rows & 4) {
        subtract<4>(y, f, p, count);
        f += 4;
        p += 4;
    }
    if (rows & 2) {
        subtract<2>(y, f, p, count);
        f += 2;
        p += 2;
    }
    if (rows & 1) subtract<1>(y, f, p, count);
}

}  // namespace tarnwick
