#pragma once

#include "platform/array.h"

namespace tarnwick {

// Factors the symmetric matrix a, rows and columns 1..n, in place into L D L': D on the diagonal, L
// below and, transposed, above it. There is no pivoting: false if an element of D is below 1e-15.
bool factorldl(const Matrix& a, int n) noexcept;

// Solves L D L' y = b in place.
void solveldl(const Matrix& a, Vec<double> b) noexcept;

}  // namespace tarnwick
