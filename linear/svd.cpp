// The singular value decomposition by the algorithm of Golub and Reinsch (Numerische Mathematik 14,
// 1970): Householder reflections bring the matrix to the upper bidiagonal form with the diagonal w and
// the superdiagonal e, both transformations are accumulated, and QR steps with implicit shifts chase
// the superdiagonal to zero.
//
// A number is negligible if the largest sum |w[i]| + |e[i]| does not change when it is added.

#include "linear/svd.h"

#include <algorithm>
#include <cmath>

#include "control/services.h"
#include "linear/simplex.h"

namespace tarnwick {

namespace {

// Shapes: u is m by n, v is n by n, w and e have n elements, e[1] is idle and zero.
struct Decomposition {
    Matrix u, v;
    Vec<double> w, e;
    int m, n;
    double norm = 0.0;  // the largest |w[i]| + |e[i]|

    bool is_negligible(double value) const noexcept { return std::fabs(value) + norm == norm; }
};

// The root of a*a + b*b without overflow.
double length(double a, double b) noexcept
{
    const double p = std::fabs(a), q = std::fabs(b);
    if (p > q) return p * std::sqrt(1.0 + (q / p) * (q / p));
    if (q == 0.0) return 0.0;
    return q * std::sqrt(1.0 + (p / q) * (p / q));
}

bool has_stopped(LpEngine& lp) noexcept
{
    if (reportprogress(lp.control, EVENT_POLL, 0, 0.0) == STOP_NONE) return false;
    stopatiterate(lp);
    return true;
}

// ---- the bidiagonal form

double column_product(const Matrix& u, int first, int last, int i, int j) noexcept
{
    double sum = 0.0;
    for (int k = first; k <= last; ++k) sum += u[k][i] * u[k][j];
    return sum;
}

void add_column(const Matrix& u, int first, int last, int to, double factor, int from) noexcept
{
    for (int k = first; k <= last; ++k) u[k][to] += factor * u[k][from];
}

// Of opposite sign to the first element, so that nothing cancels.
double reflected(double first, double squares) noexcept
{
    return first < 0.0 ? std::sqrt(squares) : -std::sqrt(squares);
}

// Clears column i below the diagonal; the reflection stays there. Gives the diagonal element.
double reflect_column(const Decomposition& s, int i) noexcept
{
    const double squares = column_product(s.u, i, s.m, i, i);
    if (squares == 0.0) return 0.0;
    const double f = s.u[i][i], g = reflected(f, squares), h = f * g - squares;
    s.u[i][i] = f - g;
    for (int j = i + 1; j <= s.n; ++j)
        add_column(s.u, i, s.m, j, column_product(s.u, i, s.m, i, j) / h, i);
    return g;
}

// Clears row i behind the superdiagonal; the reflection stays there. Gives the superdiagonal element.
double reflect_row(const Decomposition& s, int i) noexcept
{
    const int l = i + 1;
    double* const row = s.u[i];
    double squares = 0.0;
    for (int j = l; j <= s.n; ++j) squares += row[j] * row[j];
    if (squares == 0.0) return 0.0;
    const double f = row[l], g = reflected(f, squares), h = f * g - squares;
    row[l] = f - g;
    for (int k = l; k <= s.m; ++k) {
        double sum = 0.0;
        for (int j = l; j <= s.n; ++j) sum += s.u[k][j] * row[j];
        for (int j = l; j <= s.n; ++j) s.u[k][j] += sum * (row[j] / h);
    }
    return g;
}

bool bidiagonalise(LpEngine& lp, Decomposition& s) noexcept
{
    double superdiagonal = 0.0;
    for (int i = 1; i <= s.n; ++i) {
        if (has_stopped(lp)) return false;
        s.e[i] = superdiagonal;
        s.w[i] = reflect_column(s, i);
        superdiagonal = reflect_row(s, i);
        s.norm = std::max(s.norm, std::fabs(s.w[i]) + std::fabs(s.e[i]));
    }
    return true;
}

// ---- the transformations

void accumulate_right(const Decomposition& s) noexcept
{
    for (int i = s.n; i >= 1; --i) {
        const int l = i + 1;
        const double* const row = s.u[i];
        if (i < s.n && s.e[l] != 0.0) {
            const double h = row[l] * s.e[l];
            for (int j = l; j <= s.n; ++j) s.v[j][i] = row[j] / h;
            for (int j = l; j <= s.n; ++j) {
                double sum = 0.0;
                for (int k = l; k <= s.n; ++k) sum += row[k] * s.v[k][j];
                add_column(s.v, l, s.n, j, sum, i);
            }
        }
        for (int j = l; j <= s.n; ++j) s.v[i][j] = s.v[j][i] = 0.0;
        s.v[i][i] = 1.0;
    }
}

void accumulate_left(const Decomposition& s) noexcept
{
    for (int i = s.n; i >= 1; --i) {
        const int l = i + 1;
        const double g = s.w[i];
        for (int j = l; j <= s.n; ++j) s.u[i][j] = 0.0;
        if (g != 0.0) {
            const double h = s.u[i][i] * g;
            for (int j = l; j <= s.n; ++j)
                add_column(s.u, i, s.m, j, column_product(s.u, l, s.m, i, j) / h, i);
        }
        for (int k = i; k <= s.m; ++k) s.u[k][i] = g != 0.0 ? s.u[k][i] / g : 0.0;
        s.u[i][i] += 1.0;
    }
}

// ---- QR steps

struct Rotation {
    double c, s, length;
};

Rotation rotation_of(double f, double h) noexcept
{
    const double z = length(f, h);
    return z != 0.0 ? Rotation{f / z, h / z, z} : Rotation{1.0, 0.0, 0.0};
}

void rotate_columns(const Matrix& a, int rows, int i, int j, const Rotation& r) noexcept
{
    for (int k = 1; k <= rows; ++k) {
        const double y = a[k][i], z = a[k][j];
        a[k][i] = y * r.c + z * r.s;
        a[k][j] = z * r.c - y * r.s;
    }
}

// w[l-1] is negligible: rotations with its column clear e[l].
void cancel(const Decomposition& s, int l, int k) noexcept
{
    Rotation r{0.0, 1.0, 0.0};
    for (int i = l; i <= k; ++i) {
        const double f = r.s * s.e[i];
        s.e[i] *= r.c;
        if (s.is_negligible(f)) return;
        const double g = s.w[i];
        s.w[i] = length(f, g);
        r = {g / s.w[i], -f / s.w[i], s.w[i]};
        rotate_columns(s.u, s.m, l - 1, i, r);
    }
}

// Where the block that ends with k begins: e[l] is negligible, or has been made so.
int split(const Decomposition& s, int k) noexcept
{
    for (int l = k;; --l) {
        if (l == 1 || s.is_negligible(s.e[l])) return l;
        if (s.is_negligible(s.w[l - 1])) {
            cancel(s, l, k);
            return l;
        }
    }
}

// The first element of the shifted block, from the lower right one of 2 by 2.
double shifted(const Decomposition& s, int l, int k) noexcept
{
    const double x = s.w[l], y = s.w[k - 1], z = s.w[k], g = s.e[k - 1], h = s.e[k];
    const double f = ((y - z) * (y + z) + (g - h) * (g + h)) / (2.0 * h * y);
    const double root = length(f, 1.0);
    return ((x - z) * (x + z) + h * (y / (f < 0.0 ? f - root : f + root) - h)) / x;
}

void step(const Decomposition& s, int l, int k) noexcept
{
    double f = shifted(s, l, k), x = s.w[l];
    Rotation r{1.0, 1.0, 0.0};
    for (int i = l + 1; i <= k; ++i) {
        const double below = r.s * s.e[i], above = r.c * s.e[i];
        r = rotation_of(f, below);
        s.e[i - 1] = r.length;
        f = x * r.c + above * r.s;
        const double g = above * r.c - x * r.s, y = s.w[i] * r.c;
        const double h = s.w[i] * r.s;
        rotate_columns(s.v, s.n, i - 1, i, r);

        r = rotation_of(f, h);
        s.w[i - 1] = r.length;
        f = r.c * g + r.s * y;
        x = r.c * y - r.s * g;
        rotate_columns(s.u, s.m, i - 1, i, r);
    }
    s.e[l] = 0.0;
    s.e[k] = f;
    s.w[k] = x;
}

void make_positive(const Decomposition& s, int k) noexcept
{
    if (!(s.w[k] < 0.0)) return;
    s.w[k] = -s.w[k];
    for (int j = 1; j <= s.n; ++j) s.v[j][k] = -s.v[j][k];
}

bool find_value(const Decomposition& s, int k) noexcept
{
    constexpr int MOST_PASSES = 100;
    for (int pass = 1; pass <= MOST_PASSES; ++pass) {
        const int l = split(s, k);
        if (l == k) {
            make_positive(s, k);
            return true;
        }
        if (pass < MOST_PASSES) step(s, l, k);
    }
    return false;
}

}  // namespace

bool decompose(LpEngine& lp, const Matrix& u, int m, int n, Vec<double> w, const Matrix& v,
               Vec<double> scratch) noexcept
{
    if (m < n) return false;
    Decomposition s{u, v, w, scratch, m, n};
    if (!bidiagonalise(lp, s)) return false;
    accumulate_right(s);
    accumulate_left(s);
    for (int k = n; k >= 1; --k)
        if (has_stopped(lp) || !find_value(s, k)) return false;
    return true;
}

}  // namespace tarnwick
