#pragma once

#include <cstdint>

namespace tarnwick {

// The inner loops over the tableau and its arrays. They run over whole cache lines: every array
// starts on a boundary of 64 bytes, and `width`, a multiple of 8, counts its elements from 0 to the
// end of its last line. What stands in element 0 and behind the last one is told to be harmless or
// stays out of account. Each element sees its operations one by one, in the order told, with nothing
// fused or re-associated.

// ---- the update of a pivot

// rows[i][j] -= factors[i] * p[j] for i = first..last and all j. A zero factor leaves its row alone.
// In the other rows the element of column c starts from zero.
void subtract_outer(double* const* rows, const double* factors, int first, int last,
                    const double* p, int width, int c) noexcept;

// y[j] -= f[0] * p[0][j], then f[1] * p[1][j] and so on up to `rows`.
void subtract_rows(double* y, const double* f, const double* const* p, int rows,
                   int width) noexcept;

// What goes before the update of the rows. The pivot row is multiplied by `inverse` where it is above
// `floor` in magnitude, and copied to `divided`; the pivot column is copied to `factors`; in both
// copies magnitudes up to `floor`, and NaNs, are zeros. Where the column is above `floor`, its
// multiple `step` is added to `values`, unless the step itself is not. Gives the largest magnitude of
// the copies.
struct PivotArrays {
    double *row, *divided;  // width
    const double* column;   // height, like the next two
    double *factors, *values;
    int width, height;
};
double prepare_update(const PivotArrays& arrays, double inverse, double step,
                      double floor) noexcept;

// target[i] += factor * column[i] where |column[i]| is above `floor`.
void add_entries(double* target, double factor, const double* column, int width,
                 double floor) noexcept;

// How many elements are not zero.
int count_entries(const double* values, int width) noexcept;

// ---- the ratio test

// The steps |(value[i] - bound) / column[i]|, where the bound is positive[i] for a column element
// above `tol` and negative[i] for one below -tol. A step that does not exist, because the element is
// too small or the bound of a magnitude of `infinite` or more, is NaN.
struct LeastStep {
    double step;  // the smallest, or infinity
    int row;      // the row that has it, 0 for none; of no meaning where there are several
    int rows;     // how many rows have exactly this step
};
LeastStep ratio_steps(double* steps, const double* column, const double* value,
                      const double* positive, const double* negative, int width, double tol,
                      double infinite) noexcept;

// The first of the elements first..last that equals `value`, or 0.
int find_value(const double* values, double value, int first, int last) noexcept;

// ---- the analysis

// For each of the rows 1..m whose label is at most `last_label`: up[i] is the smallest |costs[j] / a|
// over the columns with a = row[j] * sign[j] above `floor`, down[i] that over those with a below
// -floor; `limit` where there is none. A zero sign keeps a column out.
void rooms_of_costs(double* const* rows, const std::int32_t* labels, int last_label, int m,
                    const double* sign, const double* costs, double* up, double* down, int width,
                    double floor, double limit) noexcept;

// Shrinks rise[j] and fall[j], how far the variable of column j can move before a basic variable
// meets a bound, by the rows 1..m, whose variables are to_lower[i] and to_upper[i] away from theirs, or
// infinitely far. Elements below `floor` in magnitude take no part.
void shrink_rooms(double* rise, double* fall, double* const* rows, int m, const double* to_lower,
                  const double* to_upper, int width, double floor) noexcept;

// ---- scaling

// The smallest and the largest magnitude above `floor` in each of the rows 1..m; infinity and 0 when
// there is none.
void row_magnitudes(double* smallest, double* largest, double* const* rows, int m, int width,
                    double floor) noexcept;

// Widens the ranges smallest[j]..largest[j] by |rows[i][j]| * factors[i] for i = 1..m where |rows[i][j]|
// is above `floor`.
void column_magnitudes(double* smallest, double* largest, double* const* rows,
                       const double* factors, int m, int width, double floor) noexcept;

// rows[i][j] = rows[i][j] * row_factors[i] * factors[j] for i = 1..m, magnitudes below `floor` as zero.
void scale_entries(double* const* rows, const double* row_factors, const double* factors, int m,
                   int width, double floor) noexcept;

// In each of the arrays values[k] *= factor, then *= factors[k]; magnitudes of `infinite` and more
// stay as they are.
void scale_values(double* const* arrays, int count, double factor, const double* factors, int width,
                  double infinite) noexcept;

// up[k] = two to the power of exponents[k], down[k] = its inverse; within the normal numbers.
void powers_of_two(double* up, double* down, const std::int32_t* exponents, int width) noexcept;

}  // namespace tarnwick
