// What the final tableau says of the model, beside the point.
//
//     dj[V]   = -T[0][j] for the variable V of column j, 0 for a basic one
//     pi[k]   = -T[0][j] for the logical variable of row k in column j, with the signs of the row
//
// The cost of a basic variable can move until the first reduced cost reaches zero, that of a
// nonbasic one by its own reduced cost. A right-hand side moves the logical variable of its row:
// that can go on until the first basic variable meets a bound. Everything is in the scaled units of
// the tableau and leaves in real ones; 1e30 means no limit.
//
// A column with a logical variable has the sign of a slack in a < row and the opposite one in the
// others. A row with an odd flip count was negated as a whole: up and down have changed places.

#include "linear/analysis.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "control/services.h"
#include "linear/kernels.h"
#include "linear/pivot.h"
#include "linear/probe.h"
#include "linear/scaling.h"

namespace tarnwick {

namespace {

// Nobody wants to read a dual of -0.
double negative(double value) noexcept { return 0.0 - value; }

// ---- columns

bool rests_at_lower(const LpEngine& lp, int label) noexcept
{
    return lp.x[label] == lp.lower[label];
}

bool is_gone_for_good(const LpEngine& lp, int label) noexcept
{
    return label > lp.n && lp.senses[label - lp.n].sense == '=';
}

// In which direction the cost of a basic variable with a positive element in column j may go until
// that column's reduced cost is zero: 1 up, -1 down, 0 for a column that takes no part.
double direction_of(const LpEngine& lp, int label) noexcept
{
    if (is_gone_for_good(lp, label)) return 0.0;
    return label > lp.n || rests_at_lower(lp, label) ? 1.0 : -1.0;
}

void read_reduced_costs(LpEngine& lp) noexcept
{
    for (int i = 1; i <= lp.m; ++i)
        if (lp.rowlabel[i] <= lp.n) lp.dj[lp.rowlabel[i]] = 0.0;
    for (int j = 1; j <= lp.n; ++j)
        if (lp.collabel[j] <= lp.n) lp.dj[lp.collabel[j]] = negative(lp.tableau[0][j]);
    if (lp.maximize)
        for (int j = 1; j <= lp.n; ++j) lp.dj[j] = negative(lp.dj[j]);
}

// The cost ranges of the basic variables. The arrays of the ratio test are idle by now.
void range_basic_costs(LpEngine& lp) noexcept
{
    const Vec<double> up = lp.steps, down = lp.column;
    rooms_of_costs(lp.tableau.rows(), lp.rowlabel.data(), lp.n, lp.m, lp.rise.data(), lp.tableau[0],
                   up.data(), down.data(), lp.tableau.width(), NEGLIGIBLE, INFINITE_BOUND);
    for (int i = 1; i <= lp.m; ++i) {
        const int label = lp.rowlabel[i];
        if (label > lp.n) continue;
        lp.objup[label] = up[i];
        lp.objdown[label] = down[i];
    }
}

void range_nonbasic_cost(LpEngine& lp, int j, int label) noexcept
{
    const double room = std::fabs(lp.tableau[0][j]);
    const bool at_lower = rests_at_lower(lp, label);
    lp.objdown[label] = at_lower ? room : INFINITE_BOUND;
    lp.objup[label] = at_lower ? INFINITE_BOUND : room;
}

void range_costs(LpEngine& lp) noexcept
{
    std::fill_n(lp.rise.data(), lp.tableau.width(), 0.0);
    for (int j = 1; j <= lp.n; ++j) lp.rise[j] = direction_of(lp, lp.collabel[j]);
    range_basic_costs(lp);
    for (int j = 1; j <= lp.n; ++j)
        if (lp.collabel[j] <= lp.n) range_nonbasic_cost(lp, j, lp.collabel[j]);
    if (!lp.maximize) return;
    for (int j = 1; j <= lp.n; ++j) std::swap(lp.objup[j], lp.objdown[j]);
}

// ---- rows

// Whether the logical variable of row k falls when the right-hand side rises.
bool is_slack(const LpEngine& lp, int k) noexcept
{
    return (lp.senses[k].sense == '<') != (lp.senses[k].flips % 2 != 0);
}

// A nonbasic logical variable means a binding row, which has a dual.
void read_duals(LpEngine& lp) noexcept
{
    for (int i = 1; i <= lp.m; ++i)
        if (lp.rowlabel[i] > lp.n) lp.pi[lp.rowlabel[i] - lp.n] = 0.0;
    for (int j = 1; j <= lp.n; ++j) {
        if (lp.collabel[j] <= lp.n) continue;
        const int k = lp.collabel[j] - lp.n;
        lp.pi[k] = is_slack(lp, k) ? 0.0 + lp.tableau[0][j] : negative(lp.tableau[0][j]);
    }
    if (lp.maximize)
        for (int k = 1; k <= lp.m; ++k) lp.pi[k] = negative(lp.pi[k]);
}

// The right-hand side of row k can move as far as its logical variable can.
void store_row_range(LpEngine& lp, int k, double rise, double fall) noexcept
{
    lp.rhsup[k] = is_slack(lp, k) ? fall : rise;
    lp.rhsdown[k] = is_slack(lp, k) ? rise : fall;
}

// How far the variable of each column could move before a basic variable meets a bound.
void find_room_of_columns(LpEngine& lp) noexcept
{
    constexpr double NO_BOUND = std::numeric_limits<double>::infinity();
    const Vec<double> to_lower = lp.steps, to_upper = lp.column;
    for (int i = 1; i <= lp.m; ++i) {
        const double value = lp.tableau[i][0];
        const double lower = lowerof(lp, lp.rowlabel[i]), upper = upperof(lp, lp.rowlabel[i]);
        to_lower[i] = lower > -INFINITE_BOUND ? std::max(value - lower, 0.0) : NO_BOUND;
        to_upper[i] = upper < INFINITE_BOUND ? std::max(upper - value, 0.0) : NO_BOUND;
    }
    std::fill_n(lp.rise.first(), lp.n, INFINITE_BOUND);
    std::fill_n(lp.fall.first(), lp.n, INFINITE_BOUND);
    shrink_rooms(lp.rise.data(), lp.fall.data(), lp.tableau.rows(), lp.m, to_lower.data(),
                 to_upper.data(), lp.tableau.width(), NEGLIGIBLE);
}

// A basic logical variable is itself the room on one side of its row.
void range_rows(LpEngine& lp) noexcept
{
    for (int i = 1; i <= lp.m; ++i)
        if (lp.rowlabel[i] > lp.n)
            store_row_range(lp, lp.rowlabel[i] - lp.n, lp.tableau[i][0], INFINITE_BOUND);

    find_room_of_columns(lp);
    for (int j = 1; j <= lp.n; ++j)
        if (lp.collabel[j] > lp.n)
            store_row_range(lp, lp.collabel[j] - lp.n, lp.rise[j], lp.fall[j]);
}

// ---- storing

// The rows stay in real units: nothing here reads them.
void scale_point(LpEngine& lp) noexcept
{
    if (!lp.pointisscaled) scalecolumns(lp, {lp.x, lp.lower, lp.upper});
    lp.pointisscaled = true;
}

void unscale_solution(LpEngine& lp, Vec<double> reduced, Vec<double> duals) noexcept
{
    unscalecolumns(lp, {lp.lower, lp.x, lp.upper});
    lp.pointisscaled = false;
    unscalegradient(lp, {reduced});
    unscalerowvalues(lp, {lp.rowlower, lp.rowupper});
    unscaleduals(lp, duals);
}

SolutionRecord solution_record(const LpEngine& lp, Vec<double> reduced, Vec<double> duals) noexcept
{
    return {.columns = lp.n,
            .lower = lp.lower.first(),
            .point = lp.x.first(),
            .upper = lp.upper.first(),
            .reduced = reduced.first(),
            .rows = lp.m,
            .rowlower = lp.rowlower.first(),
            .rowvalue = lp.rowvalue.first(),
            .rowupper = lp.rowupper.first(),
            .duals = duals.first()};
}

}  // namespace

void finishlinear(LpEngine& lp) noexcept
{
    read_reduced_costs(lp);
    read_duals(lp);
    scale_point(lp);
    unscale_solution(lp, lp.dj, lp.pi);
    const SolutionRecord solution = solution_record(lp, lp.dj, lp.pi);
    storesolution(lp.control, &solution, nullptr);
}

SensitivityRecord readlinearranges(LpEngine& lp) noexcept
{
    scale_point(lp);
    range_costs(lp);
    range_rows(lp);
    unscalegradient(lp, {lp.grad, lp.objup, lp.objdown});
    unscalerowvalues(lp, {lp.rhs, lp.rhsup, lp.rhsdown});
    return {.columns = lp.n,
            .cost = lp.grad.first(),
            .costup = lp.objup.first(),
            .costdown = lp.objdown.first(),
            .own = {},
            .rows = lp.m,
            .rhs = lp.rhs.first(),
            .rhsup = lp.rhsup.first(),
            .rhsdown = lp.rhsdown.first()};
}

// ---- the plain finish

namespace {

constexpr double NO_RESULT = -1.0;
constexpr double FITS = 0.0;
constexpr double ROW_DIFFERS = 1.0;
constexpr double OBJECTIVE_DIFFERS = 2.0;

bool differs(double evaluated, double predicted, double tol) noexcept
{
    return !(std::fabs(evaluated - predicted) / (std::fabs(evaluated) + 1.0) <= tol);
}

// Compares the functions with the linear model while variable j alone is at a value of its own.
bool probe_column(LpEngine& lp, int j) noexcept
{
    constexpr double PROBE = 8.0;
    lp.iterate[j] = PROBE;
    lp.iterate[j - 1] = 0.0;
    scalecolumns(lp, {lp.iterate});
    const double p = lp.iterate[j];
    if (!evalrows(lp, lp.rowprobe, lp.iterate)) return false;
    unscalecolumns(lp, {lp.iterate});

    for (int i = 1; i <= lp.m; ++i) {
        const double* const row = lp.tableau[i];
        if (!differs(lp.rowprobe[i], lp.rhs[i] - row[0] + p * row[j], lp.tol)) continue;
        lp.pi[i] = ROW_DIFFERS;
        lp.dj[j] = ROW_DIFFERS;
    }
    const double* const costs = lp.tableau[0];
    const double origin = lp.maximize ? -costs[0] : costs[0];
    const double cost = lp.maximize ? costs[j] : -costs[j];
    if (differs(lp.rowprobe[lp.m + 1], origin + p * cost, lp.tol)) lp.dj[j] = OBJECTIVE_DIFFERS;
    return true;
}

// Marks what does not fit the linear model as read. The marks are put into scaled units so that
// the common way out restores them.
void diagnose_model(LpEngine& lp) noexcept
{
    std::fill_n(lp.iterate.data(), lp.n + 1, 0.0);
    for (int j = 1; j <= lp.n; ++j)
        if (!probe_column(lp, j)) return;
    if (!evalrows(lp, lp.rowbase, lp.start)) return;

    for (int j = 1; j <= lp.n; ++j)
        if (lp.dj[j] == NO_RESULT) lp.dj[j] = FITS;
    for (int i = 1; i <= lp.m; ++i)
        if (lp.pi[i] == NO_RESULT) lp.pi[i] = FITS;
    scalegradient(lp, {lp.dj});
    for (int i = 1; i <= lp.m; ++i) lp.pi[i] = scaleobjective(lp, lp.pi[i]);
    unscalerowvalues(lp, {lp.pi});
}

}  // namespace

void finishplain(LpEngine& lp, bool diagnose) noexcept
{
    std::fill_n(lp.dj.data(), lp.n + 1, NO_RESULT);
    std::fill_n(lp.pi.data(), lp.m + 2, NO_RESULT);
    scale_point(lp);
    if (diagnose) diagnose_model(lp);

    unscale_solution(lp, lp.dj, lp.pi);
    // The probes have moved the stored point and its objective.
    if (diagnose) evalfunctions(lp.control, lp.rowvalue.first(), lp.x.first());
    const SolutionRecord solution = solution_record(lp, lp.dj, lp.pi);
    storesolution(lp.control, &solution, nullptr);
}

void storeresults(LpEngine& lp, Vec<double> reduced, Vec<double> duals) noexcept
{
    unscale_solution(lp, reduced, duals);
    unscalerowvalues(lp, {lp.rowvalue});
    const SolutionRecord solution = solution_record(lp, reduced, duals);
    storesolution(lp.control, &solution, nullptr);
}

}  // namespace tarnwick
