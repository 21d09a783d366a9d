// The proof of an infeasibility. The tableau is updated from pivot to pivot and never computed anew:
// after many of them what it claims can be nothing but their errors. The infeasibility row gives a
// multiplier y[i] for each row of the model, the dual of phase one, and these are held against the rows
// as read. With b the right-hand sides, y[i] <= 0 in the <= rows and y[i] >= 0 in the >= rows, every
// point x within the rows has
//
//     sum of y[i] * b[i]  <=  sum of d[j] * x[j],    d[j] = sum of y[i] * a[i][j],
//
// so that there is none if the right side stays below the left one wherever x keeps its bounds
// (J. Farkas, Journal fuer die reine und angewandte Mathematik 124, 1902).

#include "linear/certificate.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "control/services.h"
#include "linear/scaling.h"

namespace tarnwick {

namespace {

// ---- the multipliers

bool is_odd(RowSense sense) noexcept { return sense.flips % 2 != 0; }

// Of a row whose logical variable is in column j. In the column of an artificial that has gone for
// good the sign has changed, and the variable still has its cost.
double multiplier_in_column(const LpEngine& lp, char sense, int j) noexcept
{
    const double entry = lp.tableau[lp.m + 1][j];
    switch (sense) {
    case '<': return std::min(entry, 0.0);
    case '>': return std::max(-entry, 0.0);
    default: return 1.0 - entry;
    }
}

// y[i] for the rows as read.
void find_multipliers(LpEngine& lp, Vec<double> y) noexcept
{
    y[lp.m + 1] = 0.0;  // the objective
    for (int i = 1; i <= lp.m; ++i)
        y[i] = lp.rowpending[i] != 0 && lp.senses[i].sense != '<' ? 1.0 : 0.0;
    for (int j = 1; j <= lp.n; ++j) {
        const int i = lp.collabel[j] - lp.n;
        if (i >= 1) y[i] = multiplier_in_column(lp, lp.senses[i].sense, j);
    }
    for (int i = 1; i <= lp.m; ++i)
        if (is_odd(lp.senses[i])) y[i] = -y[i];
}

// ---- the rows combined

struct Combination {
    Vec<double> y;  // m+1
    Vec<double> d;  // n
};

void add_entry(const Combination& rows, int i, int j, double entry) noexcept
{
    rows.d[j] += rows.y[i] * entry;
}

std::int32_t visit_entry(SolveControl*, void*, std::int32_t row, std::int32_t column, double value,
                         void* data) noexcept
{
    add_entry(*static_cast<const Combination*>(data), row + 1, column + 1, value);
    return 1;
}

// These give the sum of y[i] * b[i].

double combine_kept_rows(const LpEngine& lp, const Combination& rows) noexcept
{
    double sides = 0.0;
    for (int i = 1; i <= lp.m; ++i) {
        if (rows.y[i] == 0.0) continue;
        sides += rows.y[i] * lp.savedtableau[i][0];
        for (int j = 1; j <= lp.n; ++j) add_entry(rows, i, j, lp.savedtableau[i][j]);
    }
    return sides;
}

// The walk shows real entries. The values of the rows at the origin, which the tableau began with, are
// still in rowvalue. NaN: the walk failed.
double combine_walked_rows(LpEngine& lp, Combination& rows) noexcept
{
    double sides = 0.0;
    scalerowvalues(lp, {lp.rowvalue});
    for (int i = 1; i <= lp.m; ++i) sides += rows.y[i] * (lp.rhs[i] - lp.rowvalue[i]);
    unscalerowvalues(lp, {lp.rowvalue});

    unscaleduals(lp, rows.y);
    const bool is_read = walkmatrix(lp.control, nullptr, visit_entry, &rows) != 0;
    scalegradient(lp, {rows.d});
    return is_read ? sides : std::numeric_limits<double>::quiet_NaN();
}

// ---- the proof

// The most that d[j] * x[j] can be. Nothing else than rounding keeps d[j] from zero where x[j] may go on
// for ever; it goes on so far that what is more than rounding shows.
double greatest_term(const LpEngine& lp, const Combination& rows, int j) noexcept
{
    constexpr double FAR_OUT = 1e8;
    const double reach = std::max(FAR_OUT, std::fabs(lp.iterate[j]));
    const double d = rows.d[j];
    return d > 0.0 ? d * std::min(lp.upper[j], reach) : d * std::max(lp.lower[j], -reach);
}

}  // namespace

bool isinfeasible(LpEngine& lp) noexcept
{
    constexpr double ROUNDING = 0.5;  // share of the tolerance
    Combination rows{lp.rhsup, lp.objup};
    std::fill_n(rows.d.data(), lp.n + 1, 0.0);
    find_multipliers(lp, rows.y);

    double shortfall =
        lp.savedtableau ? combine_kept_rows(lp, rows) : combine_walked_rows(lp, rows);
    for (int j = 1; j <= lp.n; ++j) shortfall -= greatest_term(lp, rows, j);
    return shortfall > ROUNDING * lp.feastol;
}

}  // namespace tarnwick
