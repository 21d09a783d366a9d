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
#include <cmath>

#include "control/services.h"

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

bool counts(double entry) noexcept { return std::fabs(entry) > SMALLEST_ENTRY; }

bool is_infinite(double value) noexcept { return std::fabs(value) >= INFINITE_BOUND; }

// The smallest interval of exponents seen so far. Empty, its middle is 0.
struct ExponentRange {
    int lowest = EXPONENT_BIAS;
    int highest = -EXPONENT_BIAS;

    void add(int exponent) noexcept
    {
        highest = std::max(highest, exponent);
        lowest = std::min(lowest, exponent);
    }
    int middle() const noexcept { return (highest + lowest) / 2; }
};

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

void centre_rows(LpEngine& lp) noexcept
{
    for (int i = 1; i <= lp.m; ++i) {
        const double* const row = lp.tableau[i];
        ExponentRange range;
        for (int j = 1; j <= lp.n; ++j)
            if (counts(row[j])) range.add(exponentof(row[j]));
        lp.rowexp[i] = range.middle();
    }
}

// Walks the tableau by rows, which is how it lies in memory; the ranges of the columns are kept in
// two arrays that are idle during set-up.
void centre_columns(LpEngine& lp) noexcept
{
    const Vec<std::int32_t> highest = lp.collabel;
    const Vec<std::int32_t> lowest = lp.colstate;
    const ExponentRange empty;
    std::fill_n(highest.first(), lp.n, empty.highest);
    std::fill_n(lowest.first(), lp.n, empty.lowest);

    for (int i = 1; i <= lp.m; ++i) {
        const double* const row = lp.tableau[i];
        for (int j = 1; j <= lp.n; ++j) {
            if (!counts(row[j])) continue;
            const int exponent = exponentof(row[j]) - lp.rowexp[i];
            highest[j] = std::max(highest[j], exponent);
            lowest[j] = std::min(lowest[j], exponent);
        }
    }
    for (int j = 1; j <= lp.n; ++j) lp.colexp[j] = -((highest[j] + lowest[j]) / 2);
}

void centre_objective(LpEngine& lp) noexcept
{
    const double* const costs = lp.tableau[0];
    ExponentRange range;
    for (int j = 1; j <= lp.n; ++j)
        if (counts(costs[j])) range.add(exponentof(costs[j]) + lp.colexp[j]);
    lp.rowexp[lp.m + 1] = range.middle();
}

}  // namespace

void computescales(LpEngine& lp) noexcept
{
    const bool scaling_is_on = (getintinfo(lp.control, INFO_SCALING) & 0xFFFF) != 0;
    if (scaling_is_on) {
        centre_rows(lp);
        centre_columns(lp);
        centre_objective(lp);
        lp.colexp[0] = 0;
        lp.rowexp[0] = lp.rowexp[lp.m + 1];
    }
    if (!scaling_is_on || all_zero(lp.rowexp)) lp.rowexp = {};
    if (!scaling_is_on || all_zero(lp.colexp)) lp.colexp = {};
}

// ---- the tableau

void scaletableau(LpEngine& lp) noexcept
{
    for (int i = 0; i <= lp.m; ++i) {
        double* const row = lp.tableau[i];
        const int down = lp.rowexp ? lp.rowexp[i] : 0;
        for (int j = 0; j <= lp.n; ++j) {
            if (std::fabs(row[j]) < SMALLEST_ENTRY) row[j] = 0.0;
            const int up = lp.colexp ? lp.colexp[j] : 0;
            row[j] = shiftexponent(row[j], up - down);
        }
    }
}

// ---- vectors

namespace {

// values[k] * 2^(sign * exponents[k]) for k = 1..count, infinite values apart.
void shift_all(Vec<double> values, Vec<const std::int32_t> exponents, int count, int sign) noexcept
{
    if (!exponents) return;
    for (int k = 1; k <= count; ++k)
        if (!is_infinite(values[k])) values[k] = shiftexponent(values[k], sign * exponents[k]);
}

int objective_exponent(const LpEngine& lp) noexcept { return lp.rowexp ? lp.rowexp[lp.m + 1] : 0; }

void shift_gradient(const LpEngine& lp, Vec<double> values, int sign) noexcept
{
    const int objective = objective_exponent(lp);
    for (int j = 0; j <= lp.n; ++j)
        if (!is_infinite(values[j])) values[j] = shiftexponent(values[j], -sign * objective);
    shift_all(values, lp.colexp, lp.n, sign);
}

}  // namespace

void scalecolumns(const LpEngine& lp, Vec<double> values) noexcept
{
    shift_all(values, lp.colexp, lp.n, -1);
}

void unscalecolumns(const LpEngine& lp, Vec<double> values) noexcept
{
    shift_all(values, lp.colexp, lp.n, 1);
}

void scalerowvalues(const LpEngine& lp, Vec<double> values) noexcept
{
    shift_all(values, lp.rowexp, lp.m + 1, -1);
}

void unscalerowvalues(const LpEngine& lp, Vec<double> values) noexcept
{
    shift_all(values, lp.rowexp, lp.m + 1, 1);
}

void scalegradient(const LpEngine& lp, Vec<double> values) noexcept
{
    shift_gradient(lp, values, 1);
}

void unscalegradient(const LpEngine& lp, Vec<double> values) noexcept
{
    shift_gradient(lp, values, -1);
}

void unscaleduals(const LpEngine& lp, Vec<double> values) noexcept
{
    if (!lp.rowexp) return;
    const int objective = objective_exponent(lp);
    for (int i = 1; i <= lp.m; ++i)
        if (!is_infinite(values[i]))
            values[i] = shiftexponent(values[i], objective - lp.rowexp[i]);
}

double scaleobjective(const LpEngine& lp, double value) noexcept
{
    return shiftexponent(value, -objective_exponent(lp));
}

double unscaleobjective(const LpEngine& lp, double value) noexcept
{
    return shiftexponent(value, objective_exponent(lp));
}

}  // namespace tarnwick
