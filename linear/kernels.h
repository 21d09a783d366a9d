#pragma once

namespace tarnwick {

// The inner loops over the tableau, over whole cache lines: every row starts on a boundary of 64
// bytes, and `width`, the cells of a row, is a multiple of 8. Each element sees its operations one
// by one, in the order told, with nothing fused or re-associated.

// rows[i][j] -= factors[i] * p[j] for i = first..last and all j. A zero factor leaves its row alone. In
// the other rows the element of column c starts from zero.
void subtract_outer(double* const* rows, const double* factors, int first, int last,
                    const double* p, int width, int c) noexcept;

// y[j] -= f[0] * p[0][j], then f[1] * p[1][j] and so on up to `rows`.
void subtract_rows(double* y, const double* f, const double* const* p, int rows,
                   int width) noexcept;

// Copies elements 1..count of an array, those of magnitude up to `floor`, and NaNs, as zeros.
// Gives the largest magnitude.
double copy_entries(double* target, const double* source, int count, double floor) noexcept;

// How many of the elements 1..count are not zero.
int count_entries(const double* values, int count) noexcept;

// Smallest and largest magnitude above `floor` among the elements 1..count; infinity and 0 when
// there is none.
struct Magnitudes {
    double smallest;
    double largest;
};
Magnitudes magnitudes(const double* values, int count, double floor) noexcept;

// Widens the ranges smallest[j]..largest[j] by |values[j]| * factor, for j = 1..count, where
// |values[j]| is above `floor`.
void widen_ranges(double* smallest, double* largest, const double* values, double factor,
                  int count, double floor) noexcept;

// values[k] *= factor, then *= factors[k], for k = 0..count - 1; magnitudes of `infinite` and more
// stay as they are. count is a multiple of 8, and the arrays go on to it.
void scale_values(double* values, double factor, const double* factors, int count,
                  double infinite) noexcept;

// values[j] = values[j] * factor * factors[j] for j = 1..count, magnitudes below `floor` as zero.
void scale_entries(double* values, double factor, const double* factors, int count,
                   double floor) noexcept;

// The ratio test's steps |(value[i] - bound) / column[i]| for i = 1..m, where the bound is
// `positive[i]` for a column element above `tol` and `negative[i]` for one below -tol. A step that
// does not exist, because the element is too small or the bound infinite, is NaN. Gives the smallest
// step, or infinity.
double ratio_steps(double* steps, const double* column, const double* value, const double* positive,
                   const double* negative, int m, double tol, double infinite) noexcept;

// The first of the elements first..last that equals `value`, or 0.
int find_value(const double* values, double value, int first, int last) noexcept;

// The smallest |costs[j] / a| over the columns j = 1..n with a = row[j] * sign[j] above `floor`, and
// over those with a below -floor; `limit` where there is none.
struct Room {
    double up;
    double down;
};
Room room_of_cost(const double* row, const double* sign, const double* costs, int n, double floor,
                  double limit) noexcept;

// Shrinks rise[j] and fall[j], how far the variable of column j can move before a basic variable
// meets a bound, by a row whose variable is `to_lower` and `to_upper` away from its own. Elements
// below `floor` in magnitude take no part.
void shrink_room(double* rise, double* fall, const double* row, double to_lower, double to_upper,
                 int n, double floor) noexcept;

// target[i] += factor * column[i] for i = 0..last, where |column[i]| is above `floor`.
void add_entries(double* target, double factor, const double* column, int last,
                 double floor) noexcept;

// values[j] *= factor for j = 1..count, where |values[j]| is above `floor`.
void multiply_entries(double* values, double factor, int count, double floor) noexcept;

}  // namespace tarnwick
