#pragma once

namespace tarnwick {

// The inner loops of the simplex, over whole cache lines. Row arrays start on a boundary of 64
// bytes; `count` is a multiple of 8 and covers the cells between column n and the end of a row.

// y[j] -= f * p[j]
void subtract_row(double* y, double f, const double* p, int count) noexcept;

// y[j] -= f[0] * p[0][j], then f[1] * p[1][j] and so on, each difference rounded: the same numbers
// as `rows` calls of subtract_row, with one pass over y for every eight of them.
void subtract_rows(double* y, const double* f, const double* const* p, int rows,
                   int count) noexcept;

}  // namespace tarnwick
