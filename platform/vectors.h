#pragma once

namespace tarnwick {

// y[i] += a * x[i] for i = 0..n-1, each product and sum rounded.
void add_multiple(double* y, double a, const double* x, int n) noexcept;

// y += A x, column by column, passing over the zeros of x. A holds the columns one behind the other,
// each of m values; x has n.
void add_columns(double* y, const double* a, const double* x, int m, int n) noexcept;

}  // namespace tarnwick
