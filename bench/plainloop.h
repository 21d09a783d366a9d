#pragma once

namespace bench {

// rows[i][j] -= factors[i] * p[j] for i = 1..m and j = 0..width-1, as anyone would write it,
// compiled for the processor at hand. The measure of the engine's kernels.
void plain_update(double* const* rows, const double* factors, const double* p, int m, int width);

}  // namespace bench
