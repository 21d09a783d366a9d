#pragma once

namespace tarnwick {

// y[i] += a * x[i] for i = 0..n-1, each product and sum rounded.
void add_multiple(double* y, double a, const double* x, int n) noexcept;

}  // namespace tarnwick
