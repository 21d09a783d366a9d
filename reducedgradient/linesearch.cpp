// The line search: halve the step until the point is no worse than the start, double it while the
// objective falls, and look once at the lowest point of the parabola
//
//     a = a1 + (P v - Q u) / 2(P - Q),   u = a2 - a1, v = a3 - a1, P = (f2 - f1) v, Q = (f3 - f1) u
//
// through the last three points. Whatever comes of it, the best point of all is taken; only the point
// that ends phase 1 is kept as it is.

#include "reducedgradient/linesearch.h"

#include <algorithm>
#include <cmath>

#include "reducedgradient/tentative.h"

namespace tarnwick {

namespace {

constexpr int ATTEMPTS = 7;    // to find a point that is no worse
constexpr int DOUBLINGS = 30;  // that show an objective without bound, if they lead far
// Newton iterations from which on a step isn't doubled.
constexpr int DOUBLING_LIMIT = NEWTON_LIMIT / 2;
constexpr int QUADRATIC_DOUBLING_LIMIT = 4;
// Bounds count as this far at most.
constexpr double FARTHEST_BOUND = 1e20;
// A first step changes no superbasic by more than this share of its size, or of 1.
constexpr double FIRST_SHARE = 0.05;
// So many times its size, or 1, a superbasic changes where the objective has no bound.
constexpr double FAR_AWAY = 1e4;
// A parabola with less of a curvature has no lowest point.
constexpr double TINY_DENOMINATOR = 1e-30;

// Three steps with their objectives; a2 is the present one.
struct Bracket {
    double a1 = 0.0, a2 = 0.0, a3 = 0.0;
    double f1 = 0.0, f2 = 0.0, f3 = 0.0;
    double fhigh = -INFINITE_BOUND;  // a point beyond a2 that was worse
    bool failed_before = false;      // the restoration of the step before a2 failed
    int nextslot = 2;                // of the stored basic points
};

enum class Search { goes_on, is_bracketed, is_finished, keeps_point };

bool is_finite(const NlpEngine& nlp) noexcept
{
    for (int k = 1; k <= nlp.nsuper; ++k)
        if (!std::isfinite(nlp.direction[k])) return false;
    for (int i = 1; i <= nlp.nbasic; ++i)
        if (!std::isfinite(nlp.tangent[i])) return false;
    return true;
}

void store_point(NlpEngine& nlp, int slot, double step) noexcept
{
    BasicPoint& point = nlp.extrap[slot];
    point.step = step;
    for (int i = 1; i <= nlp.nbasic; ++i) point.value[i] = nlp.point[nlp.basic[i]];
}

// ---- set-up

void clear_verdicts(NlpEngine& nlp) noexcept
{
    nlp.newtoniters = 0;
    nlp.newtonfailed = nlp.superatbound = nlp.nowfeasible = false;
    nlp.step = 0.0;
    nlp.interior = nlp.stepfound = true;
}

void make_start_best(NlpEngine& nlp) noexcept
{
    nlp.beststep = 0.0;
    nlp.bestobjective = nlp.rowvalue[nlp.objrow];
    nlp.bestinfeasible = nlp.ninfeasible;
    for (int i = 1; i <= nlp.nbasic; ++i) nlp.beststate[i] = nlp.point[nlp.basic[i]];
    for (int k = 1; k <= nlp.ninactive; ++k)
        nlp.beststate[nlp.nbasic + k] = nlp.rowvalue[nlp.inactive[k]];
    for (int i = 1; i <= nlp.rows; ++i) nlp.bestrowvalue[i] = nlp.rowvalue[i];
    for (int k = 1; k <= nlp.nsuper; ++k) nlp.superstart[k] = nlp.point[nlp.nonbasic[k]];
}

double largest_component(const NlpEngine& nlp) noexcept
{
    double largest = 0.0;
    for (int k = 1; k <= nlp.nsuper; ++k) largest = std::max(largest, std::fabs(nlp.direction[k]));
    return largest;
}

// The largest step that keeps the superbasics within their bounds.
double step_to_bounds(const NlpEngine& nlp) noexcept
{
    double shortest = INFINITE_BOUND;
    for (int k = 1; k <= nlp.nsuper; ++k) {
        const double d = nlp.direction[k];
        if (std::fabs(d) < TINY) continue;
        const int q = nlp.nonbasic[k];
        const double b =
            std::clamp(d >= 0.0 ? nlp.upper[q] : nlp.lower[q], -FARTHEST_BOUND, FARTHEST_BOUND);
        const double r = (b - nlp.point[q]) / d;
        if (r <= shortest) shortest = r;
    }
    return shortest;
}

// The step within which no superbasic changes by much.
double cautious_step(const NlpEngine& nlp) noexcept
{
    double shortest = nlp.maxstep;
    for (int k = 1; k <= nlp.nsuper; ++k) {
        const double d = std::fabs(nlp.direction[k]);
        const double x = std::fabs(nlp.point[nlp.nonbasic[k]]);
        if (d < TINY) continue;
        shortest = std::min(shortest, x >= 1.0 ? FIRST_SHARE * x / d : FIRST_SHARE / d);
    }
    return shortest;
}

// The last search's step, if that was no exception; always one that moves something.
double first_step(const NlpEngine& nlp, double laststep) noexcept
{
    const double largest = largest_component(nlp);
    double step = laststep;
    if (largest == 0.0)
        step = nlp.maxstep;
    else if (nlp.feastol / largest > step)
        step = nlp.feastol / largest;

    const double cautious = cautious_step(nlp);
    if (!nlp.previnterior || step > cautious) step = cautious;
    return std::min(step, nlp.maxstep);
}

Bracket begin_search(NlpEngine& nlp) noexcept
{
    const double laststep = nlp.beststep;
    nlp.extrappoints = BY_TANGENT;
    store_point(nlp, 0, 0.0);
    clear_verdicts(nlp);
    make_start_best(nlp);
    nlp.maxstep = step_to_bounds(nlp);

    Bracket at;
    at.a2 = first_step(nlp, laststep);
    at.f1 = nlp.bestobjective;
    return at;
}

// ---- the stages

// Halves the step until the point is no worse than the start.
Search find_point(NlpEngine& nlp, Bracket& at) noexcept
{
    for (int t = 1; t <= ATTEMPTS; ++t) {
        at.failed_before = nlp.newtonfailed;
        nlp.step = at.a2;
        nlp_try_step(nlp);
        if (nlp.status != ENGINE_OPTIMAL) return Search::is_finished;
        if (nlp.nowfeasible) return Search::keeps_point;
        if (!nlp.newtonfailed) {
            at.f2 = nlp.rowvalue[nlp.objrow];
            if (at.f1 + TINY >= at.f2) return Search::goes_on;
            at.fhigh = at.f2;
            at.a3 = nlp.step;
        }
        at.a2 = nlp.step / static_cast<double>(1 << t);
    }
    nlp.stepfound = false;
    return Search::is_finished;
}

// A variable that has come to a bound ends the search.
bool has_hit(NlpEngine& nlp) noexcept
{
    if (nlp.hitposition == 0 && !nlp.superatbound) return false;
    nlp.interior = false;
    return true;
}

// Keeps the basic variables for the prediction of the next step: in the slots 1, 2, 0, 1, ...
void keep_basics(NlpEngine& nlp, Bracket& at, Extrapolation next, double step) noexcept
{
    if (!nlp.quadratic || nlp.nbasic == 0) return;
    if (next == BY_TWO_POINTS) at.nextslot = 1;
    store_point(nlp, at.nextslot, step);
    nlp.extrappoints = next;
    at.nextslot = (at.nextslot + 1) % 3;
}

bool may_double(const NlpEngine& nlp) noexcept
{
    return nlp.newtoniters < (nlp.quadratic ? QUADRATIC_DOUBLING_LIMIT : DOUBLING_LIMIT);
}

// The point at twice the step is not lower; in phase 1 it has to be lower indeed.
bool rises(const NlpEngine& nlp, const Bracket& at) noexcept
{
    return at.f3 > at.f2 + TINY || (nlp.ninfeasible > 0 && at.f3 >= at.f2 - TINY);
}

// Doublings of a first step that was next to nothing lead nowhere yet: the next search goes on.
bool is_far_away(const NlpEngine& nlp, double step) noexcept
{
    for (int k = 1; k <= nlp.nsuper; ++k)
        if (std::fabs(nlp.direction[k]) * step >= FAR_AWAY * (std::fabs(nlp.superstart[k]) + 1.0))
            return true;
    return false;
}

// Doubles the step while the objective falls.
Search double_step(NlpEngine& nlp, Bracket& at) noexcept
{
    for (int count = 1; count <= DOUBLINGS; ++count) {
        if (!may_double(nlp)) return Search::is_finished;
        nlp.step = 2.0 * at.a2;
        nlp_try_step(nlp);
        if (nlp.status != ENGINE_OPTIMAL) return Search::is_finished;
        if (nlp.nowfeasible) return Search::keeps_point;
        if (nlp.newtonfailed) return Search::is_finished;

        at.a3 = nlp.step;
        at.f3 = nlp.rowvalue[nlp.objrow];
        keep_basics(nlp, at, BY_THREE_POINTS, at.a3);
        if (rises(nlp, at)) return Search::is_bracketed;
        if (has_hit(nlp)) return Search::is_finished;
        at.a1 = std::exchange(at.a2, at.a3);
        at.f1 = std::exchange(at.f2, at.f3);
    }
    nlp.unbounded = is_far_away(nlp, at.a2);
    return Search::is_finished;
}

Search extend(NlpEngine& nlp, Bracket& at) noexcept
{
    if (has_hit(nlp) || at.failed_before) return Search::is_finished;
    keep_basics(nlp, at, BY_TWO_POINTS, at.a2);
    if (at.f2 + TINY < at.fhigh) {
        at.f3 = at.fhigh;
        return Search::is_bracketed;
    }
    return double_step(nlp, at);
}

Search interpolate(NlpEngine& nlp, const Bracket& at) noexcept
{
    const double u = at.a2 - at.a1, v = at.a3 - at.a1;
    const double p = (at.f2 - at.f1) * v, q = (at.f3 - at.f1) * u;
    const double den = p - q;
    if (!(std::fabs(den) >= TINY_DENOMINATOR)) return Search::is_finished;
    const double a = at.a1 + 0.5 * (p * v - q * u) / den;
    if (!(at.a1 < a && a < at.a3)) return Search::is_finished;

    nlp.step = a;
    nlp_try_step(nlp);
    if (nlp.status != ENGINE_OPTIMAL) return Search::is_finished;
    if (nlp.nowfeasible) return Search::keeps_point;
    if (!nlp.newtonfailed && nlp.hitposition != 0 && nlp.rowvalue[nlp.objrow] < at.f2)
        nlp.interior = false;
    return Search::is_finished;
}

void take_best(NlpEngine& nlp) noexcept
{
    nlp.step = nlp.beststep;
    nlp.previnterior = nlp.interior;
    nlp.ninfeasible = nlp.bestinfeasible;
    move_superbasics(nlp, nlp.step);
    for (int i = 1; i <= nlp.nbasic; ++i) nlp.point[nlp.basic[i]] = nlp.beststate[i];
    for (int i = 1; i <= nlp.rows; ++i)
        nlp.point[nlp.variables + i] = nlp.rowvalue[i] = nlp.bestrowvalue[i];
}

}  // namespace

void nlp_line_search(NlpEngine& nlp) noexcept
{
    // The inverse can lose all its digits in an exchange: such a direction counts as a search that
    // failed, and the next basis is a fresh one.
    if (!is_finite(nlp)) {
        clear_verdicts(nlp);
        nlp.stepfound = false;
        nlp.newtonfailed = true;
        return;
    }
    Bracket at = begin_search(nlp);
    Search state = find_point(nlp, at);
    if (state == Search::goes_on) state = extend(nlp, at);
    if (state == Search::is_bracketed) state = interpolate(nlp, at);
    if (state == Search::is_finished) take_best(nlp);
}

}  // namespace tarnwick
