// Symmetric factorisation without pivoting,
//
//     d[i]    = a[i][i] - sum over j below i of d[j] * L[i][j]^2
//     L[k][i] = (a[k][i] - sum over j below i of d[j] * L[k][j] * L[i][j]) / d[i]    for k above i,
//
// row by row of the upper triangle, where L[k][i] stands as element (i, k): multiples of the finished
// rows are taken from the next one.

#include "linear/ldl.h"

#include "platform/vectors.h"

namespace tarnwick {

bool factorldl(const Matrix& a, int n) noexcept
{
    constexpr double SMALLEST_PIVOT = 1e-15;
    for (int i = 1; i <= n; ++i) {
        double* const row = a[i];
        for (int j = 1; j < i; ++j) {
            const double factor = a[j][j] * a[j][i];
            if (factor != 0.0) add_multiple(row + i, -factor, a[j] + i, n - i + 1);
        }
        const double d = row[i];
        if (!(d >= SMALLEST_PIVOT)) return false;
        for (int k = i + 1; k <= n; ++k) a[k][i] = row[k] = row[k] / d;
    }
    return true;
}

void solveldl(const Matrix& a, Vec<double> b) noexcept
{
    const int n = b.size();
    for (int i = 1; i < n; ++i) add_multiple(b.data() + i + 1, -b[i], a[i] + i + 1, n - i);
    for (int i = 1; i <= n; ++i) b[i] /= a[i][i];
    for (int i = n - 1; i >= 1; --i) add_multiple(b.first(), -b[i + 1], a[i + 1] + 1, i);
}

}  // namespace tarnwick
