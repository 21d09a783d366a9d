#include "platform/vectors.h"

namespace tarnwick {

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void add_multiple(double* __restrict y, double a, const double* __restrict x, int n) noexcept
{
    for (int i = 0; i < n; ++i) y[i] += a * x[i];
}

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void add_columns(double* __restrict y, const double* __restrict a, const double* x, int m,
                 int n) noexcept
{
    for (int j = 0; j < n; ++j, a += m) {
        const double xj = x[j];
        if (xj == 0.0) continue;
        for (int i = 0; i < m; ++i) y[i] += xj * a[i];
    }
}

}  // namespace tarnwick
