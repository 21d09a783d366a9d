// Scaling by powers of two. With column exponents c[j] and row exponents r[i], ro the objective's,
//
//     entry (i, j)            real * 2^(c[j] - r[i])
//     variable j, its bounds  real * 2^(-c[j])
//     row i, rhs              real * 2^(-r[i])
//     objective               real * 2^(-ro)
//     cost of column j        real * 2^(c[j] - ro)
//     dual of row i           real * 2^(r[i] - ro)
//
// so that no digit is lost: the scaled model is the same model in other units. Each row is centred
// on the range of its own exponents, each column on what the rows left, the objective last.

#include "linear/scaling.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <limits>
#include <utility>

#include "control/services.h"
#include "linear/kernels.h"

namespace tarnwick {

namespace {

constexpr int FRACTION_BITS = 52;
constexpr int EXPONENT_MASK = 0x7FF;
constexpr int EXPONENT_BIAS = 1023;

// Entries up to this magnitude count for no exponent and are cleared when the tableau is scaled.
constexpr double SMALLEST_ENTRY = 1e-20;

int exponent_field(double value) noexcept
{
    return static_cast<int>(std::bit_cast<std::uint64_t>(value) >> FRACTION_BITS) & EXPONENT_MASK;
}

// The middle of a range of exponents, towards zero. The exponent grows with the magnitude, so the
// smallest and the largest magnitude give the range; without any entry it is 0.
int middle_exponent(double smallest, double largest) noexcept
{
    if (!(largest > 0.0)) return 0;
    return (exponentof(largest) + exponentof(smallest)) / 2;
}

bool all_zero(Vec<const std::int32_t> exponents) noexcept
{
    const std::int32_t* const first = exponents.first();
    return std::all_of(first, first + exponents.size(), [](std::int32_t e) { return e == 0; });
}

}  // namespace

int exponentof(double value) noexcept
{
    return value == 0.0 ? 0 : exponent_field(value) - EXPONENT_BIAS;
}

double shiftexponent(double value, int power) noexcept
{
    if (power == 0 || value == 0.0) return value;
    const int field = exponent_field(value);
    const int shifted = field + power;
    if (field == 0 || field == EXPONENT_MASK || shifted <= 0 || shifted >= EXPONENT_MASK)
        return std::ldexp(value, power);  // leaves the normal numbers, or never was one
    const auto step = static_cast<std::uint64_t>(static_cast<std::int64_t>(power));
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) + (step << FRACTION_BITS));
}

// ---- exponents

namespace {

void list_factors(Vec<const std::int32_t> exponents, Vec<double> up, Vec<double> down) noexcept
{
    powers_of_two(up.data(), down.data(), exponents.data(), whole_lines(exponents.size()));
}

// The constants of the rows are no entries: column 0 is zero meanwhile. The arrays of the simplex and
// of the analysis are idle during set-up.
void centre_rows(LpEngine& lp) noexcept
{
    const Vec<double> smallest = lp.steps, largest = lp.column;
    row_magnitudes(smallest.data(), largest.data(), lp.tableau.rows(), lp.m, lp.tableau.width(),
                   SMALLEST_ENTRY);
    for (int i = 1; i <= lp.m; ++i) lp.rowexp[i] = middle_exponent(smallest[i], largest[i]);
}

// What the rows have left of the range of each column.
void centre_columns(LpEngine& lp) noexcept
{
    const Vec<double> smallest = lp.rise, largest = lp.fall;
    std::fill_n(smallest.first(), lp.n, std::numeric_limits<double>::infinity());
    std::fill_n(largest.first(), lp.n, 0.0);
    list_factors(lp.rowexp, lp.rowup, lp.rowdown);
    column_magnitudes(smallest.data(), largest.data(), lp.tableau.rows(), lp.rowdown.data(), lp.m,
                      lp.tableau.width(), SMALLEST_ENTRY);
    for (int j = 1; j <= lp.n; ++j) lp.colexp[j] = -middle_exponent(smallest[j], largest[j]);
}

void centre_rows_and_columns(LpEngine& lp) noexcept
{
    const Vec<double> constants = lp.basicvalue;
    for (int i = 1; i <= lp.m; ++i) constants[i] = std::exchange(lp.tableau[i][0], 0.0);
    centre_rows(lp);
    centre_columns(lp);
    for (int i = 1; i <= lp.m; ++i) lp.tableau[i][0] = constants[i];
}

void centre_objective(LpEngine& lp) noexcept
{
    const double* const costs = lp.tableau[0];
    int lowest = EXPONENT_BIAS, highest = -EXPONENT_BIAS;
    for (int j = 1; j <= lp.n; ++j) {
        if (!(std::fabs(costs[j]) > SMALLEST_ENTRY)) continue;
        const int exponent = exponentof(costs[j]) + lp.colexp[j];
        highest = std::max(highest, exponent);
        lowest = std::min(lowest, exponent);
    }
    lp.rowexp[lp.m + 1] = (highest + lowest) / 2;
}

}  // namespace

void computescales(LpEngine& lp) noexcept
{
    const bool scaling_is_on = (getintinfo(lp.control, INFO_SCALING) & 0xFFFF) != 0;
    if (scaling_is_on) {
        centre_rows_and_columns(lp);
        centre_objective(lp);
        lp.colexp[0] = 0;
        lp.rowexp[0] = lp.rowexp[lp.m + 1];
    }
    list_factors(lp.colexp, lp.colup, lp.coldown);
    list_factors(lp.rowexp, lp.rowup, lp.rowdown);
    lp.rowscaled = !all_zero(lp.rowexp);
    lp.colscaled = !all_zero(lp.colexp);
}

// ---- the tableau

namespace {

// The costs alone may lie so far apart that no factor serves: they are shifted one by one.
void scale_costs(LpEngine& lp) noexcept
{
    double* const costs = lp.tableau[0];
    for (int j = 0; j <= lp.n; ++j) {
        if (std::fabs(costs[j]) < SMALLEST_ENTRY) costs[j] = 0.0;
        costs[j] = shiftexponent(costs[j], lp.colexp[j] - lp.rowexp[0]);
    }
}

}  // namespace

void scaletableau(LpEngine& lp) noexcept
{
    scale_costs(lp);
    scale_entries(lp.tableau.rows(), lp.rowdown.data(), lp.colup.data(), lp.m, lp.tableau.width(),
                  SMALLEST_ENTRY);
}

// ---- vectors

namespace {

constexpr std::size_t MOST_ARRAYS = 5;  // of the same units, in one call

// values *= common, then *= factors, element by element; infinite values stay. Whole cache lines,
// which an array block gives to every array.
void multiply(VectorList vectors, double common, Vec<const double> factors) noexcept
{
    assert(vectors.size() <= MOST_ARRAYS);
    double* arrays[MOST_ARRAYS];
    int count = 0;
    for (const Vec<double>& values : vectors) arrays[count++] = values.data();
    scale_values(arrays, count, common, factors.data(), whole_lines(factors.size()),
                 INFINITE_BOUND);
}

}  // namespace

void scalecolumns(const LpEngine& lp, VectorList vectors) noexcept
{
    if (lp.colscaled) multiply(vectors, 1.0, lp.coldown);
}

void unscalecolumns(const LpEngine& lp, VectorList vectors) noexcept
{
    if (lp.colscaled) multiply(vectors, 1.0, lp.colup);
}

void scalerowvalues(const LpEngine& lp, VectorList vectors) noexcept
{
    if (lp.rowscaled) multiply(vectors, 1.0, lp.rowdown);
}

void unscalerowvalues(const LpEngine& lp, VectorList vectors) noexcept
{
    if (lp.rowscaled) multiply(vectors, 1.0, lp.rowup);
}

void scalegradient(const LpEngine& lp, VectorList vectors) noexcept
{
    if (lp.rowscaled || lp.colscaled) multiply(vectors, lp.rowdown[0], lp.colup);
}

void unscalegradient(const LpEngine& lp, VectorList vectors) noexcept
{
    if (lp.rowscaled || lp.colscaled) multiply(vectors, lp.rowup[0], lp.coldown);
}

void unscaleduals(const LpEngine& lp, Vec<double> values) noexcept
{
    if (!lp.rowscaled) return;
    for (int i = 1; i <= lp.m; ++i)
        if (!(std::fabs(values[i]) >= INFINITE_BOUND)) values[i] *= lp.rowup[0] * lp.rowdown[i];
}

double scaleobjective(const LpEngine& lp, double value) noexcept
{
    return shiftexponent(value, -lp.rowexp[0]);
}

double unscaleobjective(const LpEngine& lp, double value) noexcept
{
    return shiftexponent(value, lp.rowexp[0]);
}

}  // namespace tarnwick
