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

// The rows repeat with the period m: three flat loops, whatever the length of a column.
#if defined(TARNWICK_CLONES)
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]]
#endif
bool lists_all(const std::int32_t* beg, const std::int32_t* cnt, const std::int32_t* ind,
               std::int32_t length, std::int32_t m, std::int32_t n) noexcept
{
    const std::int64_t entries = std::int64_t{m} * n;
    if (entries > length) return false;

    std::int32_t differences = 0;
    for (std::int32_t j = 0; j < n; ++j) differences |= (cnt[j] ^ m) | (beg[j] ^ (m * j));
    if (differences != 0) return false;
    for (std::int32_t i = 0; i < m; ++i) differences |= ind[i] ^ i;
    for (std::int64_t k = m; k < entries; ++k) differences |= ind[k] ^ ind[k - m];
    return differences == 0;
}

}  // namespace tarnwick
