// Quadratic objectives over linear rows, by simplicial decomposition. A linear subproblem, with the
// gradient at the current point as its costs, finds a vertex of the region; the master (master.cpp)
// finds the best point in the convex hull of the vertices gathered so far. With g the gradient, x the
// current point and v the vertex, in minimisation form,
//
//     f(x) - minimum <= g'(x - v),
//
// the linear gap, for a convex objective: it says when the method may end.
//
// A vertex must exist. Where bounds are missing, the method runs in a box that grows until the answer
// keeps away from it.

#include "linear/quadratic.h"

#include <algorithm>
#include <cmath>

#include "control/services.h"
#include "linear/master.h"
#include "linear/objective.h"
#include "linear/scaling.h"
#include "linear/simplex.h"

namespace tarnwick {

namespace {

Vec<double> current(const LpEngine& lp) noexcept { return {lp.vertices[0], lp.n}; }

void copy_point(const LpEngine& lp, Vec<double> to, Vec<const double> from) noexcept
{
    std::copy_n(from.data() + 1, lp.n, to.first());
}

void negate(double* values, int n) noexcept
{
    for (int j = 0; j <= n; ++j) values[j] = -values[j];
}

// ---- tests of points and gradients

// The largest slope relative to the objective plus 1, in real units.
double relgradient(const LpEngine& lp, Vec<double> gradient) noexcept
{
    unscalegradient(lp, {gradient});
    double largest = 0.0;
    for (int j = 1; j <= lp.n; ++j)
        if (!(std::fabs(gradient[j]) <= largest)) largest = std::fabs(gradient[j]);
    const double relative = largest / (std::fabs(gradient[0]) + 1.0);
    scalegradient(lp, {gradient});
    return relative;
}

bool samepoint(const LpEngine& lp, Vec<double> p, Vec<double> q) noexcept
{
    const double near = std::sqrt(lp.tol);  // relative with 1, real units
    unscalecolumns(lp, {p, q});
    int j = 1;
    while (j <= lp.n && std::fabs(q[j] - p[j]) <= (std::fabs(p[j]) + 1.0) * near) ++j;
    scalecolumns(lp, {p, q});
    return j > lp.n;
}

bool row_holds(const LpEngine& lp, int i, Vec<const double> p) noexcept
{
    const double* const row = lp.tableau[i];
    double activity = 0.0;
    for (int j = 1; j <= lp.n; ++j) activity += row[j] * p[j];
    switch (lp.senses[i].sense) {
    case '<': return activity <= row[0] + lp.tol;
    case '>': return activity >= row[0] - lp.tol;
    default: return std::fabs(activity - row[0]) <= lp.tol;
    }
}

// On the tableau as read.
bool pointfeasible(const LpEngine& lp, Vec<const double> p) noexcept
{
    for (int j = 1; j <= lp.n; ++j)
        if (!(p[j] >= lp.lower[j] - lp.tol && p[j] <= lp.upper[j] + lp.tol)) return false;
    for (int i = 1; i <= lp.m; ++i)
        if (!row_holds(lp, i, p)) return false;
    return true;
}

// ---- reports

EngineResult report_major(LpEngine& lp) noexcept
{
    lp.iterations = 0;  // the pivots of the next subproblem
    copy_point(lp, lp.iterate, current(lp));
    const double value = unscaleobjective(lp, current(lp)[0]);
    const std::int32_t stop =
        reportprogress(lp.control, EVENT_ITERATION | EVENT_POLL, lp.majors, value);
    return stop == STOP_NONE ? ENGINE_OPTIMAL : stopatiterate(lp);
}

// ---- the steps of the loop

constexpr double CLOSED_GAP = 1e-6;    // linear gap at an optimum, relative with 1 to the objective
constexpr double IDLE_SHARE = 1e-14;   // a gain up to it is none, relative with 1 to the objective
constexpr double STATIONARY = 1e-14;   // slope of a start that is the answer, as of relgradient
constexpr double LEAST_SLOPE = 1e-14;  // the least slope that ends the loop
constexpr double LAST_BIT = 0x1p-52;   // likewise, relative to the terms of the prediction
constexpr double SHARPEST_PRICING = 1e-12;  // scaled, absolute: below it costs are rounding
constexpr double ROUNDING = 1e-12;          // of a prediction, relative to the size of its terms
constexpr int IDLE_EXTRA = 10;  // idle iterations in a row, beyond the number of columns

// What one major iteration knows of its start, in minimisation form and scaled units.
struct Descent {
    double value;  // objective at the start of the iteration
    double gap;    // linear gap there
};

double minimised(const LpEngine& lp, double value) noexcept { return lp.maximize ? -value : value; }

// Whether the iteration lowers the objective by more than the rounding of its value and of its terms.
bool makes_progress(const LpEngine& lp, const Descent& descent) noexcept
{
    const double gain = descent.value - minimised(lp, current(lp)[0]);
    return gain > (std::fabs(descent.value) + 1.0) * IDLE_SHARE &&
           gain > sizeofprediction(lp) * LAST_BIT;
}

bool is_closed(const LpEngine& lp, double gap, double value) noexcept
{
    return unscaleobjective(lp, gap) <= (std::fabs(unscaleobjective(lp, value)) + 1.0) * CLOSED_GAP;
}

// The gap bounds what is missing at the start of the iteration; the current point may be worse by a
// drop from the hull.
bool gap_is_closed(const LpEngine& lp, const Descent& descent) noexcept
{
    const double rise = std::max(0.0, minimised(lp, current(lp)[0]) - descent.value);
    return is_closed(lp, descent.gap + rise, descent.value);
}

// A slope that is small beside a huge objective may still lead a long way: the gap that the bounds
// alone allow must be closed as well.
bool is_stationary(const LpEngine& lp, double gradtol) noexcept
{
    if (!(relgradient(lp, lp.grad) < gradtol)) return false;
    double gap = 0.0;
    for (int j = 1; j <= lp.n; ++j)
        if (lp.grad[j] != 0.0) gap += std::fabs(lp.grad[j]) * (lp.upper[j] - lp.lower[j]);
    return is_closed(lp, gap, lp.grad[0]);
}

double linear_gap(const LpEngine& lp) noexcept
{
    double gap = 0.0;
    for (int j = 1; j <= lp.n; ++j) gap += lp.grad[j] * (lp.start[j] - lp.x[j]);
    return gap;
}

EngineResult restart_hull(LpEngine& lp) noexcept
{
    lp.hullsize = 0;
    if (const EngineResult code = addvertex(lp, current(lp)); code != ENGINE_OPTIMAL) return code;
    return addvertex(lp, lp.x);
}

EngineResult extend_hull(LpEngine& lp) noexcept
{
    const EngineResult code = addvertex(lp, lp.x);
    return code == MASTER_INDEFINITE ? restart_hull(lp) : code;
}

// The master predicts the value of a quadratic exactly, but for the rounding of its sum. Where that is
// all, the hull starts again from the point and its true value.
EngineResult check_prediction(LpEngine& lp) noexcept
{
    const double gap = std::fabs(lp.grad[0] - current(lp)[0]);
    if (gap <= (std::fabs(lp.grad[0]) + 1.0) * lp.tol) return ENGINE_OPTIMAL;
    if (!(gap <= sizeofprediction(lp) * ROUNDING)) return ENGINE_MODELCHECK;
    lp.hullsize = 0;
    return addvertex(lp, current(lp));
}

double gradient_tolerance(const LpEngine& lp) noexcept
{
    return std::max(lp.tol * std::sqrt(lp.tol), LEAST_SLOPE);
}

// Costs up to the pricing tolerance, times wide bounds, can hide more than a closed gap may miss. From
// here on the subproblems of this solve are priced so that all bounds together hide no more, as far as
// rounding allows.
void sharpen_pricing(LpEngine& lp, double value) noexcept
{
    double widths = 1.0;
    for (int j = 1; j <= lp.n; ++j)
        if (lp.lower[j] > -INFINITE_BOUND && lp.upper[j] < INFINITE_BOUND)
            widths += lp.upper[j] - lp.lower[j];
    const double hidden = (std::fabs(unscaleobjective(lp, value)) + 1.0) * CLOSED_GAP;
    const double sharp = std::max(scaleobjective(lp, hidden) / widths, SHARPEST_PRICING);
    lp.opttol = std::min(lp.opttol, sharp);
}

// ---- the loop

enum class Outcome { go_on, leave, failed };

struct Major {
    Outcome outcome;
    EngineResult code;
    Descent descent;
};

// The gradient at the current point, the vertex that it asks for, the hull with that vertex.
Major major_iteration(LpEngine& lp) noexcept
{
    const double value = minimised(lp, lp.grad[0]);
    if (lp.maximize) negate(lp.grad.data(), lp.n);
    if (const EngineResult code = resolvesimplex(lp, lp.grad); code != ENGINE_OPTIMAL)
        return {Outcome::failed, code, {}};

    const Descent descent{value, linear_gap(lp)};
    if (atvertex(lp, lp.x) != 0) return {Outcome::leave, ENGINE_OPTIMAL, descent};
    if (const EngineResult code = extend_hull(lp); code != ENGINE_OPTIMAL)
        return {Outcome::failed, code, {}};
    const bool has_stayed = samepoint(lp, lp.start, current(lp));
    return {has_stayed ? Outcome::leave : Outcome::go_on, ENGINE_OPTIMAL, descent};
}

// Without any gain from starting again with the current point and the vertex, the method has stalled.
EngineResult restart_or_stall(LpEngine& lp, const Descent& descent) noexcept
{
    if (const EngineResult code = restart_hull(lp); code != ENGINE_OPTIMAL) return code;
    return makes_progress(lp, descent) ? ENGINE_OPTIMAL : ENGINE_STALLED;
}

// Solves the subproblem to its end before a closed gap is believed.
EngineResult confirm(LpEngine& lp, Descent& descent) noexcept
{
    sharpen_pricing(lp, descent.value);
    const EngineResult code = resolvesimplex(lp, lp.grad);
    if (code == ENGINE_OPTIMAL) descent.gap = linear_gap(lp);
    return code;
}

// Leaving the loop needs a closed gap. Otherwise the iteration goes on: with the hull as it is, while
// that gains, with the vertex of the sharper subproblem, or with a new hull.
Major leave_or_go_on(LpEngine& lp, Descent descent) noexcept
{
    const bool seems_optimal = gap_is_closed(lp, descent);
    if (seems_optimal) {
        if (const EngineResult code = confirm(lp, descent); code != ENGINE_OPTIMAL)
            return {Outcome::failed, code, descent};
        if (gap_is_closed(lp, descent)) return {Outcome::leave, ENGINE_OPTIMAL, descent};
    }
    EngineResult code = ENGINE_OPTIMAL;
    if (seems_optimal && atvertex(lp, lp.x) == 0)
        code = extend_hull(lp);
    else if (!makes_progress(lp, descent))
        code = restart_or_stall(lp, descent);
    return {code == ENGINE_OPTIMAL ? Outcome::go_on : Outcome::failed, code, descent};
}

EngineResult iterate(LpEngine& lp) noexcept
{
    const double gradtol = gradient_tolerance(lp);
    int idle = 0;
    for (lp.majors = 1;; ++lp.majors) {
        if (const EngineResult stop = report_major(lp); stop != ENGINE_OPTIMAL) return stop;

        copy_point(lp, lp.start, current(lp));
        if (!objectiveat(lp, nullptr, lp.grad, lp.start)) return ENGINE_EVALERROR;
        if (const EngineResult code = check_prediction(lp); code != ENGINE_OPTIMAL) return code;
        if (is_stationary(lp, gradtol)) return ENGINE_OPTIMAL;

        Major major = major_iteration(lp);
        if (major.outcome != Outcome::failed) {
            idle = makes_progress(lp, major.descent) ? 0 : idle + 1;
            if (major.outcome == Outcome::leave || idle >= lp.n + IDLE_EXTRA)
                major = leave_or_go_on(lp, major.descent);
        }
        if (major.outcome != Outcome::go_on) return major.code;
    }
}

// ---- one solve inside finite or infinite bounds

void set_linear_costs(LpEngine& lp) noexcept
{
    double* const costs = lp.tableau[0];
    for (int j = 0; j <= lp.n; ++j) costs[j] = -lp.grad[j];
    if (lp.maximize) negate(costs, lp.n);
}

EngineResult decompose(LpEngine& lp) noexcept
{
    if (const EngineResult code = solvesimplex(lp); code != ENGINE_OPTIMAL) return code;
    if (atvertex(lp, lp.x) == 0)
        if (const EngineResult code = addvertex(lp, lp.x); code != ENGINE_OPTIMAL) return code;
    return iterate(lp);
}

// Row 0 of the tableau becomes the linear subproblem at the start. The best point of the hull, if
// there is one, is the answer whatever the code.
EngineResult solvequadratic(LpEngine& lp, double& objective) noexcept
{
    lp.hullsize = 0;
    copy_point(lp, lp.iterate, lp.start);
    if (!objectiveat(lp, nullptr, lp.grad, lp.start)) return ENGINE_EVALERROR;
    set_linear_costs(lp);
    if (pointfeasible(lp, lp.start)) {
        if (is_stationary(lp, STATIONARY)) {
            copy_point(lp, lp.x, lp.start);
            objective = lp.grad[0];
            return ENGINE_OPTIMAL;
        }
        if (const EngineResult code = addvertex(lp, lp.start); code != ENGINE_OPTIMAL) return code;
    }
    const EngineResult code = decompose(lp);
    if (lp.hullsize > 0) {
        copy_point(lp, lp.x, current(lp));
        objective = current(lp)[0];
    }
    return code;
}

// ---- the box

bool is_boxed(const LpEngine& lp) noexcept
{
    for (int j = 1; j <= lp.n; ++j)
        if (lp.lower[j] <= -INFINITE_BOUND || lp.upper[j] >= INFINITE_BOUND) return false;
    return true;
}

double largest_bound(const LpEngine& lp) noexcept
{
    double largest = 1.0;
    for (int j = 1; j <= lp.n; ++j) {
        if (lp.lower[j] > -INFINITE_BOUND) largest = std::max(largest, std::fabs(lp.lower[j]));
        if (lp.upper[j] < INFINITE_BOUND) largest = std::max(largest, std::fabs(lp.upper[j]));
    }
    return largest;
}

void put_box(LpEngine& lp, double box) noexcept
{
    for (int j = 1; j <= lp.n; ++j) {
        if (lp.lower[j] <= -INFINITE_BOUND) lp.lower[j] = -box;
        if (lp.upper[j] >= INFINITE_BOUND) lp.upper[j] = box;
    }
}

void take_box_away(LpEngine& lp, double box) noexcept
{
    for (int j = 1; j <= lp.n; ++j) {
        if (lp.lower[j] <= -box) lp.lower[j] = -INFINITE_BOUND;
        if (lp.upper[j] >= box) lp.upper[j] = INFINITE_BOUND;
    }
}

bool touches_box(const LpEngine& lp, double box) noexcept
{
    const double near = 1.0 + box / 100.0;
    for (int j = 1; j <= lp.n; ++j)
        if (std::fabs(std::fabs(lp.x[j]) - box) <= near) return true;
    return false;
}

// Whether a larger box may change the answer. A solve that stalls where an earlier box has held it
// back, with the way out open, has met nothing but rounding.
bool may_be_the_box(const LpEngine& lp, EngineResult code, double box, double& touched) noexcept
{
    if (code == ENGINE_UNBOUNDED || code == ENGINE_INFEASIBLE) return true;
    if (code == ENGINE_STALLED) return touches_box(lp, box) || touches_box(lp, touched);
    if (code != ENGINE_OPTIMAL || !touches_box(lp, box)) return false;
    touched = box;
    return true;
}

// What is to be told of a box in which no point was found: ENGINE_OPTIMAL asks for a larger one. Phase
// one runs within the true bounds, with no costs to follow; a failure of its arithmetic proves nothing.
EngineResult judge_infeasibility(LpEngine& lp) noexcept
{
    restoretableau(lp);
    std::fill_n(lp.tableau[0], lp.n + 1, 0.0);
    const EngineResult code = solvesimplex(lp);
    const bool is_failure = code == ENGINE_UNBOUNDED || code == ENGINE_MODELCHECK;
    return is_failure ? ENGINE_OPTIMAL : code;
}

}  // namespace

EngineResult setupquadratic(LpEngine& lp) noexcept { return readquad(lp); }

EngineResult solveboxed(LpEngine& lp, double& objective) noexcept
{
    constexpr double GROWTH = 100.0;
    if (is_boxed(lp)) return solvequadratic(lp, objective);

    double touched = INFINITE_BOUND;  // the last box that held an answer back
    for (double box = largest_bound(lp);;) {
        box = std::min(box * GROWTH, INFINITE_BOUND);
        put_box(lp, box);
        const EngineResult code = solvequadratic(lp, objective);
        take_box_away(lp, box);
        if (box >= INFINITE_BOUND || !may_be_the_box(lp, code, box, touched)) return code;
        if (code == ENGINE_INFEASIBLE)
            if (const EngineResult verdict = judge_infeasibility(lp); verdict != ENGINE_OPTIMAL)
                return verdict;
        restoretableau(lp);
    }
}

}  // namespace tarnwick
