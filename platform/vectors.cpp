#include "platform/vectors.h"

namespace tarnwick {

#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
void add_multiple(double* __restrict y, double a, const double* __restrict x, int n) noexcept
{
    for (int i = 0; i < n; ++i) y[i] += a * x[i];
}

}  // namespace tarnwick
