#pragma once

#include <cstdint>

namespace tarnwick {

// y[i] += a * x[i] for i = 0..n-1, each product and sum rounded.
void add_multiple(double* y, double a, const double* x, int n) noexcept;

// y += A x, column by column, passing over the zeros of x. A holds the columns one behind the other,
// each of m values; x has n.
void add_columns(double* y, const double* a, const double* x, int m, int n) noexcept;

// True if the indices list every entry of an m x n matrix held by columns, in order, one column behind
// the other: column j has its m entries from beg[j] = m * j on, in the rows 0..m-1. `ind` holds
// `length` elements, `beg` and `cnt` hold n.
bool lists_all(const std::int32_t* beg, const std::int32_t* cnt, const std::int32_t* ind,
               std::int32_t length, std::int32_t m, std::int32_t n) noexcept;

}  // namespace tarnwick
