// The definiteness test of a quadratic objective, by symmetric elimination of a dense copy.
//
//     A = s Q,  s = 1 minimising, -1 maximising;   A := (A + A') / 2
//
// Step p takes the multiples of row p from the rows below that clear column p. Only congruences are
// applied, so the trailing matrix keeps its signs of curvature: A is positive semi-definite when no
// pivot is negative. Indices are 0-based.

#include <cassert>
#include <cmath>

#include "interface/problem.h"

namespace tarnwick {

namespace {

// Absolute: entries up to this magnitude count as zero, pivots down to minus it as not negative.
constexpr double ZERO = 1e-15;

// Entries for one place add up; a row index outside 0..n-1 names nothing.
void gather_sparse(const Problem& problem, double sign, const Matrix& a) noexcept
{
    for (int j = 0; j < problem.numcols; ++j) {
        const std::int32_t end = problem.qmatbeg[j] + problem.qmatcnt[j];
        for (std::int32_t k = problem.qmatbeg[j]; k < end; ++k) {
            const std::int32_t i = problem.qmatind[k];
            if (0 <= i && i < problem.numcols) a[j][i] += sign * problem.qmatval[k];
        }
    }
}

void gather_dense(const Problem& problem, double sign, const Matrix& a) noexcept
{
    const double* value = problem.qmatval;
    for (int j = 0; j < problem.numcols; ++j)
        for (int i = 0; i < problem.numcols; ++i) a[j][i] = sign * *value++;
}

void symmetrise(const Matrix& a, int n) noexcept
{
    for (int i = 0; i < n; ++i)
        for (int k = i; k < n; ++k) a[i][k] = a[k][i] = (a[i][k] + a[k][i]) / 2.0;
}

// The first row from p on with an entry in column p, n if there is none. A NaN counts as an entry,
// and fails the test as a pivot or as a multiplier.
int first_entry(const Matrix& a, int n, int p) noexcept
{
    for (int r = p; r < n; ++r)
        if (!(std::fabs(a[r][p]) <= ZERO)) return r;
    return n;
}

// Adds row and column r to row and column p, which brings an entry onto the diagonal.
void add_row_and_column(const Matrix& a, int n, int p, int r) noexcept
{
    for (int c = p; c < n; ++c) a[p][c] += a[r][c];
    for (int i = p; i < n; ++i) a[i][p] += a[i][r];
}

void subtract_multiple(double* __restrict row, double f, const double* __restrict pivotrow,
                       int first, int n) noexcept
{
    for (int c = first; c < n; ++c) row[c] -= f * pivotrow[c];
}

// Clears column p below the pivot. False: a multiplier is infinite or not a number, as from a pivot
// of zero.
bool eliminate(const Matrix& a, int n, int p) noexcept
{
    for (int i = p + 1; i < n; ++i) {
        const double f = a[i][p] / a[p][p];
        if (!std::isfinite(f)) return false;
        if (f != 0.0) subtract_multiple(a[i], f, a[p], p + 1, n);
    }
    return true;
}

bool has_no_negative_pivot(const Matrix& a, int n) noexcept
{
    for (int p = 0; p < n; ++p) {
        const int r = first_entry(a, n, p);
        if (r == n) continue;
        if (r != p) add_row_and_column(a, n, p, r);
        if (!(a[p][p] >= -ZERO)) return false;
        if (!eliminate(a, n, p)) return false;
    }
    return true;
}

}  // namespace

bool is_semidefinite(const Problem& problem) noexcept
{
    const int n = problem.numcols;
    const double sign = problem.objsen == -1 ? -1.0 : 1.0;
    const bool is_sparse = problem.qmatbeg && problem.qmatcnt && problem.qmatind;

    Matrix a;
    ArrayBlock block;
    if (!block.create([&a, n](auto& layout) { layout(a, n - 1, n - 1); })) return false;
    assert(a);
    if (is_sparse)
        gather_sparse(problem, sign, a);
    else
        gather_dense(problem, sign, a);
    symmetrise(a, n);
    return has_no_negative_pivot(a, n);
}

}  // namespace tarnwick
