#pragma once

#include "linear/lpengine.h"

namespace tarnwick {

// The singular value decomposition U W V' of the matrix in u, rows 1..m and columns 1..n, m >= n. u
// becomes U; w holds the singular values, not negative and not in order; v is n by n; scratch has n
// elements. False: more columns than rows, no convergence, or a stop.
bool decompose(LpEngine& lp, const Matrix& u, int m, int n, Vec<double> w, const Matrix& v,
               Vec<double> scratch) noexcept;

}  // namespace tarnwick
