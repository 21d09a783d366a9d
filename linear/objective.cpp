// The quadratic objective, in real units,
//
//     f(x) = c'x + x'Q x,     gradient 2 Q x + c,
//
// with Q made symmetric and no factor of one half. It is read once; after that no evaluation asks the
// model. The sum over the columns of each row of Q is taken row by row of x instead,
//
//     s[j] = sum over k above j of Q[j][k] x[k],     k rising,
//
// which gives each sum its terms in the same order and lets zeros of x, and the zeros around the
// entries of a row, be passed over.

#include "linear/objective.h"

#include <algorithm>

#include "control/services.h"
#include "linear/scaling.h"
#include "platform/vectors.h"

namespace tarnwick {

std::int32_t visitquad(SolveControl*, void*, std::int32_t row, std::int32_t column, double value,
                       void* data) noexcept
{
    if (!data) return 0;
    double* const* const rows = static_cast<double* const*>(data);
    rows[row + 1][column + 1] += value;
    return 1;
}

// ---- reading

namespace {

void symmetrise(const LpEngine& lp) noexcept
{
    for (int i = 1; i <= lp.n; ++i) {
        for (int k = i + 1; k <= lp.n; ++k) {
            double &upper = lp.quad[i][k], &lower = lp.quad[k][i];
            if (upper != lower) upper = lower = 0.5 * (upper + lower);
        }
    }
}

void find_entries(const LpEngine& lp) noexcept
{
    for (int i = 1; i <= lp.n; ++i) {
        const double* const row = lp.quad[i];
        int first = 1, last = lp.n;
        while (first <= lp.n && row[first] == 0.0) ++first;
        while (last >= first && row[last] == 0.0) --last;
        lp.quadfirst[i] = first;
        lp.quadlast[i] = last >= first ? last : 0;
    }
}

}  // namespace

EngineResult readquad(LpEngine& lp) noexcept
{
    const int n = lp.n;
    const bool has_memory = lp.quadratics.create([&lp, n](auto& layout) {
        layout(lp.quad, n, n);
        layout(lp.quadfirst, n);
        layout(lp.quadlast, n);
        layout(lp.vertices, n + 3, n);
        layout(lp.midvalues, n + 3, n + 2);
    });
    if (!has_memory) return ENGINE_NOMEMORY;
    if (!walkquad(lp.control, &lp, visitquad, lp.quad.data())) return ENGINE_BADMODEL;
    symmetrise(lp);
    find_entries(lp);
    return ENGINE_OPTIMAL;
}

// ---- evaluation, in real units

namespace {

// sums[j] += Q[k][j] * factor for the columns j up to `last` that may have an entry.
void add_row(const LpEngine& lp, Vec<double> sums, int k, int last, double factor) noexcept
{
    const int first = lp.quadfirst[k];
    const int count = std::min(last, lp.quadlast[k]) - first + 1;
    if (factor == 0.0 || count < 1) return;
    add_multiple(&sums[first], factor, lp.quad[k] + first, count);
}

double value_at(const LpEngine& lp, Vec<const double> x) noexcept
{
    const Vec<double> sums = lp.rise;  // idle until the analysis
    std::fill_n(sums.first(), lp.n, 0.0);
    for (int k = 2; k <= lp.n; ++k) add_row(lp, sums, k, k - 1, x[k]);

    const double* const costs = lp.quad[0];
    double value = costs[0];
    for (int j = 1; j <= lp.n; ++j) value += costs[j] * x[j];
    for (int j = 1; j <= lp.n; ++j) value += x[j] * (lp.quad[j][j] * x[j] + 2.0 * sums[j]);
    return value;
}

void gradient_at(const LpEngine& lp, Vec<double> gradient, Vec<const double> x) noexcept
{
    std::fill_n(gradient.first(), lp.n, 0.0);
    for (int k = 1; k <= lp.n; ++k) add_row(lp, gradient, k, lp.n, x[k]);
    for (int j = 1; j <= lp.n; ++j) gradient[j] = 2.0 * gradient[j] + lp.quad[0][j];
}

}  // namespace

bool objectiveat(const LpEngine& lp, double* value, Vec<double> gradient,
                 Vec<double> point) noexcept
{
    if (!point || !lp.quad) return false;
    unscalecolumns(lp, {point});
    const double f = value_at(lp, point);
    if (gradient) gradient_at(lp, gradient, point);
    scalecolumns(lp, {point});

    if (gradient) {
        gradient[0] = f;
        scalegradient(lp, {gradient});
    }
    if (value) *value = scaleobjective(lp, f);
    return true;
}

}  // namespace tarnwick
