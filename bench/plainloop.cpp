#include "bench/plainloop.h"

namespace bench {

void plain_update(double* const* rows, const double* factors, const double* p, int m, int width)
{
    const double* __restrict x = p;
    for (int i = 1; i <= m; ++i) {
        double* __restrict y = rows[i];
        const double a = factors[i];
        for (int j = 0; j < width; ++j) y[j] -= a * x[j];
    }
}

}  // namespace bench
