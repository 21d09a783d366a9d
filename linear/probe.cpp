// Reading the model. The engine trusts no declaration: it evaluates the functions at points
// (t, ..., t) and sees what they are. A linear f has
//
//     (f(8) - f(0)) / 8 = (f(4) - f(0)) / 4,
//
// and a quadratic one is given by its parabola through three points. Two or more entries of Q may
// cancel along that line, so a quadratic part that the walk shows counts as well.
//
// As read, before scaling, with c the costs, F the functions at the origin, b the right-hand sides:
//
//     T[0][0] = F[m+1]        T[0][j] = -c[j]
//     T[i][0] = b[i] - F[i]   T[i][j] = a[i][j]
//     T[m+1][0] = F[m+1]      T[m+1][j] = c[j]

#include "linear/probe.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "control/services.h"
#include "linear/scaling.h"

namespace tarnwick {

bool evalrows(const LpEngine& lp, Vec<double> target, Vec<double> point) noexcept
{
    unscalecolumns(lp, {point});
    const bool is_evaluated = evalfunctions(lp.control, target.first(), point.first()) != 0;
    scalecolumns(lp, {point});
    if (!is_evaluated || reportprogress(lp.control, EVENT_POLL, 0, 0.0) != STOP_NONE) return false;
    scalerowvalues(lp, {target});
    return true;
}

// ---- classification

namespace {

bool evaluate_everywhere(LpEngine& lp, Vec<double> target, double value) noexcept
{
    std::fill_n(lp.x.first(), lp.n, value);
    return evalrows(lp, target, lp.x);
}

bool is_straight(double f0, double f4, double f8, double tol) noexcept
{
    const double bend = std::fabs((f8 - f0) * 0.125 - (f4 - f0) * 0.25);
    return bend <= (std::fabs(f0) + 1.0) * tol;
}

// The value at 2 of the parabola through those at 0, 4 and 8.
double parabola_at_two(double f0, double f4, double f8) noexcept
{
    return (3.0 * f0 + 6.0 * f4 - f8) * 0.125;
}

// 0 stops the walk at the first quadratic entry; rows below 0 are the linear terms.
std::int32_t stop_at_quadratic(SolveControl*, void*, std::int32_t row, std::int32_t, double value,
                               void*) noexcept
{
    return row < 0 || value == 0.0;
}

bool has_quadratic_entry(const LpEngine& lp) noexcept
{
    // The objective of an elastic model is the sum of its elastic variables, whatever the model's.
    if (getintinfo(lp.control, INFO_ELASTICMODE) != 0) return false;
    return walkquad(lp.control, nullptr, stop_at_quadratic, nullptr) == 0;
}

LpMode probe_objective(LpEngine& lp, double f0, double f4, double f8) noexcept
{
    if (is_straight(f0, f4, f8, lp.tol))
        return has_quadratic_entry(lp) ? MODE_QUADRATIC : MODE_LINEAR;

    if (!evaluate_everywhere(lp, lp.rowprobe, 2.0)) return MODE_NONE;
    const double f2 = lp.rowprobe[lp.m + 1];
    const double gap = std::fabs(f2 - parabola_at_two(f0, f4, f8));
    return (std::fabs(f2) + 1.0) * lp.tol > gap ? MODE_QUADRATIC : MODE_NONE;
}

// A model of plain arrays is homogeneous, F(0) = 0 and F(4) = F(8) / 2 to the last bit, so that one
// evaluation says all: whether the numbers are any.
LpMode probe_arrays(LpEngine& lp) noexcept
{
    if (!evaluate_everywhere(lp, lp.rowvalue, 8.0)) return MODE_NONE;
    bool all_finite = true;
    for (int i = 1; i <= lp.m + 1; ++i) all_finite = all_finite && std::isfinite(lp.rowvalue[i]);
    std::fill_n(lp.rowbase.data(), lp.m + 2, 0.0);
    return all_finite ? MODE_LINEAR : MODE_NONE;
}

LpMode probe(LpEngine& lp) noexcept
{
    if (ishomogeneous(*lp.control)) return probe_arrays(lp);
    if (!evaluate_everywhere(lp, lp.rowbase, 0.0) || !evaluate_everywhere(lp, lp.rowvalue, 8.0) ||
        !evaluate_everywhere(lp, lp.rowprobe, 4.0))
        return MODE_NONE;

    const Vec<double> f0 = lp.rowbase, f4 = lp.rowprobe, f8 = lp.rowvalue;
    for (int i = 1; i <= lp.m; ++i)
        if (!is_straight(f0[i], f4[i], f8[i], lp.tol)) return MODE_NONE;
    const int objective = lp.m + 1;
    return probe_objective(lp, f0[objective], f4[objective], f8[objective]);
}

}  // namespace

bool classify(LpEngine& lp) noexcept
{
    lp.mode = probe(lp);
    std::swap(lp.rowvalue, lp.rowbase);  // the values at the origin, which the tableau needs
    std::copy_n(lp.start.data(), lp.n + 1, lp.x.data());
    return evalrows(lp, lp.rowbase, lp.start);
}

// ---- rows

bool buildsenses(LpEngine& lp) noexcept
{
    for (int i = 1; i <= lp.m; ++i) lp.senses[i] = {0, 0};
    for (int i = 1; i <= lp.m; ++i) {
        const double lower = lp.rowlower[i], upper = lp.rowupper[i];
        const bool no_lower = lower <= -INFINITE_BOUND, has_lower = lower > -INFINITE_BOUND;
        const bool no_upper = upper >= INFINITE_BOUND, has_upper = upper < INFINITE_BOUND;

        if (lower == upper) {
            lp.senses[i].sense = '=';
            lp.rhs[i] = upper;
        } else if (has_lower && no_upper) {
            lp.senses[i].sense = '>';
            lp.rhs[i] = lower;
        } else if (no_lower && has_upper) {
            lp.senses[i].sense = '<';
            lp.rhs[i] = upper;
        } else {
            return false;
        }
    }
    return true;
}

// ---- matrix

std::int32_t visitmatrix(SolveControl*, void*, std::int32_t row, std::int32_t column, double value,
                         void* data) noexcept
{
    if (!data) return 0;
    double* const* const rows = static_cast<double* const*>(data);
    rows[row + 1][column + 1] += value;
    return 1;
}

namespace {

bool walk_into_tableau(LpEngine& lp) noexcept
{
    std::fill_n(lp.x.first(), lp.n, 0.0);
    for (int i = 1; i <= lp.m + 1; ++i) lp.tableau[i][0] = lp.rowvalue[i];

    if (!copymatrix(*lp.control, lp.tableau.rows()) &&
        !walkmatrix(lp.control, &lp, visitmatrix, lp.tableau.data()))
        return false;
    std::copy_n(lp.tableau[lp.m + 1], lp.n + 1, lp.tableau[0]);
    return true;
}

}  // namespace

bool readmatrix(LpEngine& lp) noexcept
{
    if (!walk_into_tableau(lp)) return false;

    double* const costs = lp.tableau[0];
    for (int j = 1; j <= lp.n; ++j) {
        lp.grad[j] = costs[j];
        costs[j] = -costs[j];
    }
    for (int i = 1; i <= lp.m; ++i) lp.tableau[i][0] = lp.rhs[i] - lp.tableau[i][0];
    return true;
}

// ---- the check of the answer

namespace {

bool agrees(double evaluated, double difference, double tol) noexcept
{
    return std::fabs(difference) <= (std::fabs(evaluated) + 1.0) * tol;
}

// Each logical variable must be what its row says: zero where it is nonbasic, and the distance
// of the row from its right-hand side where it is basic.
bool rows_agree(const LpEngine& lp) noexcept
{
    for (int j = 1; j <= lp.n; ++j) {
        const int k = lp.collabel[j] - lp.n;
        if (k < 1) continue;
        const double value = lp.rowvalue[k];
        if (!agrees(value, value - lp.rhs[k], lp.tol)) return false;
    }
    for (int i = 1; i <= lp.m; ++i) {
        const int k = lp.rowlabel[i] - lp.n;
        if (k < 1) continue;
        const double value = lp.rowvalue[k];
        const double distance = std::fabs(value - lp.rhs[k]);
        if (!agrees(value, distance - lp.tableau[i][0], lp.tol)) return false;
    }
    return true;
}

bool objective_agrees(const LpEngine& lp) noexcept
{
    const double value = lp.rowvalue[lp.m + 1];
    const double claimed = lp.maximize ? -lp.tableau[0][0] : lp.tableau[0][0];
    return agrees(value, claimed - value, lp.tol);
}

// A value may stand beyond its bounds by rounding and by what the pivots leave: pivots below the
// pivot tolerance limit no step.
bool lies_within(double lower, double value, double upper, double tol) noexcept
{
    const double room = (std::fabs(value) + 1.0) * tol;
    return value >= lower - room && value <= upper + room;
}

bool all_within_bounds(const LpEngine& lp) noexcept
{
    constexpr double SMALLEST_TOL = 1e-6;  // relative, with 1.0 added
    const double tol = std::max(lp.tol, SMALLEST_TOL);
    for (int i = 1; i <= lp.m; ++i)
        if (!lies_within(lp.rowlower[i], lp.rowvalue[i], lp.rowupper[i], tol)) return false;
    for (int j = 1; j <= lp.n; ++j)
        if (!lies_within(lp.lower[j], lp.x[j], lp.upper[j], tol)) return false;
    return true;
}

// A quadratic answer has no basis to agree with: each row must be the linear form as read.
bool rows_are_linear(const LpEngine& lp) noexcept
{
    for (int i = 1; i <= lp.m; ++i) {
        const double* const row = lp.savedtableau[i];
        double predicted = lp.rhs[i] - row[0];
        for (int j = 1; j <= lp.n; ++j) predicted += row[j] * lp.x[j];
        const double value = lp.rowvalue[i];
        if (!(std::fabs(value - predicted) / (std::fabs(value) + 1.0) <= lp.tol)) return false;
    }
    return true;
}

bool is_consistent(const LpEngine& lp) noexcept
{
    if (lp.mode == MODE_QUADRATIC) return rows_are_linear(lp);
    return rows_agree(lp) && objective_agrees(lp);
}

}  // namespace

EngineResult checkanswer(LpEngine& lp, EngineResult code) noexcept
{
    if (lp.answerverified || code != ENGINE_OPTIMAL) return code;
    if (!evalrows(lp, lp.rowvalue, lp.x)) return ENGINE_EVALERROR;
    lp.rowsarecurrent = true;
    if (!is_consistent(lp) || !all_within_bounds(lp)) return ENGINE_MODELCHECK;
    lp.answerverified = true;
    return code;
}

}  // namespace tarnwick
