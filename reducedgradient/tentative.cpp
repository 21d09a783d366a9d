// One tentative step. The superbasics move along the direction; the basic variables are predicted, by
// the tangent or by a parabola through earlier points, and brought back onto the binding rows by
// Newton iterations with the inverse of the basis as it is:
//
//     x_B -= B^-1 (g(x) - s)
//
// Where a basic variable or an inactive row has crossed a bound, the step t at which it stands on the
// bound is solved for as well. With N d the change of the binding rows along the direction, w the
// gradient of the crossing variable over the basic ones, through the inverse, and e what it lacks:
//
//     t -= c,   c = (e + w'(g - s)) / (w'N d - slope),   x_B -= B^-1 (g - s - c N d)

#include "reducedgradient/tentative.h"

#include <algorithm>
#include <cmath>

#include "reducedgradient/evaluation.h"
#include "reducedgradient/reduction.h"

namespace tarnwick {

// Rounding can carry the one that limits the step past its bound, where the model may have no value.
void move_superbasics(NlpEngine& nlp, double t) noexcept
{
    const bool is_within = t <= nlp.maxstep;
    for (int k = 1; k <= nlp.nsuper; ++k) {
        const int q = nlp.nonbasic[k];
        const double x = nlp.direction[k] * t + nlp.superstart[k];
        nlp.point[q] = is_within ? std::clamp(x, nlp.lower[q], nlp.upper[q]) : x;
    }
}

// ---- prediction

namespace {

void predict_by_tangent(NlpEngine& nlp) noexcept
{
    for (int i = 1; i <= nlp.nbasic; ++i)
        nlp.point[nlp.basic[i]] = (nlp.step - nlp.beststep) * nlp.tangent[i] + nlp.beststate[i];
}

// Through the start with its tangent, and one point.
void predict_by_two_points(NlpEngine& nlp) noexcept
{
    const BasicPoint &p1 = nlp.extrap[0], &p2 = nlp.extrap[1];
    const double ratio = nlp.step / p2.step, q = ratio * ratio;
    for (int i = 1; i <= nlp.nbasic; ++i)
        nlp.point[nlp.basic[i]] = ((p2.value[i] - p1.value[i]) - nlp.tangent[i] * p2.step) * q +
                                  nlp.tangent[i] * nlp.step + p1.value[i];
}

void predict_by_three_points(NlpEngine& nlp) noexcept
{
    const BasicPoint &p1 = nlp.extrap[0], &p2 = nlp.extrap[1], &p3 = nlp.extrap[2];
    const double t = nlp.step - p1.step;
    const double u2 = p2.step - p1.step, u3 = p3.step - p1.step, u32 = p3.step - p2.step;
    const double w1 = 1.0 - ((u3 + u2) * t - t * t) / (u3 * u2);
    const double w2 = (t * u3 - t * t) / (u32 * u2);
    const double w3 = (t * t - u2 * t) / (u32 * u3);
    for (int i = 1; i <= nlp.nbasic; ++i)
        nlp.point[nlp.basic[i]] = w1 * p1.value[i] + w2 * p2.value[i] + w3 * p3.value[i];
}

void nlp_extrapolate(NlpEngine& nlp) noexcept
{
    switch (nlp.extrappoints) {
    case BY_TWO_POINTS: predict_by_two_points(nlp); break;
    case BY_THREE_POINTS: predict_by_three_points(nlp); break;
    default: predict_by_tangent(nlp);
    }
}

// ---- Newton iterations

// How far the variable that is to hit its bound is from it.
double distance_to_hit(NlpEngine& nlp) noexcept
{
    const int v = nlp.basic[nlp.hitposition];
    if (nlp.hitposition > nlp.nbasic) nlp.point[v] = nlp.rowvalue[v - nlp.variables];
    return nlp.hitbound - nlp.point[v];
}

// What the binding rows lack, to work1; the largest of it.
double find_residuals(NlpEngine& nlp) noexcept
{
    double largest = 0.0;
    for (int i = 1; i <= nlp.nbasic; ++i) {
        const int r = nlp.binding[i];
        nlp.work1[i] = nlp.rowvalue[r] - nlp.point[nlp.variables + r];
        largest = std::max(largest, std::fabs(nlp.work1[i]));
    }
    return largest;
}

// Moves hitstep. False: the extended system is singular.
bool correct_step(NlpEngine& nlp, double lack) noexcept
{
    double num = lack, den = -nlp.hitslope;
    for (int i = 1; i <= nlp.nbasic; ++i) {
        num += nlp.work2[i] * nlp.work1[i];
        den += nlp.work2[i] * nlp.work3[i];
    }
    if (!(std::fabs(den) >= TINY)) return false;
    const double c = num / den;
    nlp.hitstep -= c;
    for (int i = 1; i <= nlp.nbasic; ++i) nlp.work1[i] -= c * nlp.work3[i];
    return true;
}

void correct_basics(NlpEngine& nlp) noexcept
{
    for (int i = 1; i <= nlp.nbasic; ++i) {
        double sum = 0.0;
        for (int k = 1; k <= nlp.nbasic; ++k) sum += nlp.basisinverse[i][k] * nlp.work1[k];
        nlp.point[nlp.basic[i]] -= sum;
    }
}

// False: no convergence, or the status is set.
bool iterate_newton(NlpEngine& nlp) noexcept
{
    const bool hits = nlp.hitposition != 0;
    double before = INFINITE_BOUND;
    for (int it = 1; it <= NEWTON_LIMIT; ++it) {
        nlp.newtoniters = it - 1;
        if (hits) move_superbasics(nlp, nlp.hitstep);
        nlp_eval(nlp, nlp.rowvalue, nlp.point);
        if (nlp.status != ENGINE_OPTIMAL || !are_usable(nlp, nlp.rowvalue)) return false;

        const double lack = hits ? distance_to_hit(nlp) : 0.0;
        const double error = std::max(find_residuals(nlp), std::fabs(lack));
        if (error < nlp.rowtol) return true;
        if (!(error <= before)) return error < nlp.feastol;
        before = error;

        if (hits && !correct_step(nlp, lack)) return false;
        correct_basics(nlp);
    }
    return false;
}

// False: the restoration failed, or the status is set.
bool nlp_newton(NlpEngine& nlp) noexcept
{
    nlp.newtonfailed = !iterate_newton(nlp);
    return !nlp.newtonfailed;
}

// The rows at the step, the basic variables on the binding ones.
bool evaluate_step(NlpEngine& nlp) noexcept
{
    if (nlp.nbasic != 0) {
        nlp_extrapolate(nlp);
        return nlp_newton(nlp);
    }
    nlp_eval(nlp, nlp.rowvalue, nlp.point);
    nlp.newtonfailed = nlp.status != ENGINE_OPTIMAL || !are_usable(nlp, nlp.rowvalue);
    return !nlp.newtonfailed;
}

// ---- what has crossed a bound

// Behind the basic variables come the slacks of the inactive rows.
void list_inactive(NlpEngine& nlp) noexcept
{
    for (int k = 1; k <= nlp.ninactive; ++k) {
        const int r = nlp.inactive[k];
        nlp.point[nlp.variables + r] = nlp.rowvalue[r];
        nlp.basic[nlp.nbasic + k] = nlp.variables + r;
    }
}

// A bound that was crossed on the way from x0 to x1, if there is one.
struct CrossedBound {
    bool found;
    double bound;
};

CrossedBound feasible_crossing(const NlpEngine& nlp, int v, double x1) noexcept
{
    if (nlp.lower[v] - x1 > nlp.feastol) return {true, nlp.lower[v]};
    if (x1 - nlp.upper[v] > nlp.feastol) return {true, nlp.upper[v]};
    return {false, 0.0};
}

// What is outside and stays there doesn't count.
CrossedBound phase1_crossing(const NlpEngine& nlp, int v, double x0, double x1) noexcept
{
    const double lower = nlp.lower[v] - nlp.feastol, upper = nlp.upper[v] + nlp.feastol;
    if (x0 >= lower && x1 < lower) return {true, lower};
    if (x0 <= upper && x1 > upper) return {true, upper};
    return {false, 0.0};
}

// The first crossing between the best point and the present one: place in `basic`, 0 for none, and the
// share of the way.
struct Crossing {
    int place = 0;
    double share = INFINITE_BOUND;
};

Crossing first_crossing(const NlpEngine& nlp, bool phase1) noexcept
{
    Crossing first;
    for (int i = 1; i <= nlp.nbasic + nlp.ninactive; ++i) {
        const int v = nlp.basic[i];
        const double x0 = nlp.beststate[i], x1 = nlp.point[v], dx = x1 - x0;
        if (std::fabs(dx) <= TINY) continue;
        const auto [found, bound] =
            phase1 ? phase1_crossing(nlp, v, x0, x1) : feasible_crossing(nlp, v, x1);
        if (!found) continue;
        const double share = (bound - x0) / dx;
        if (share < first.share) first = {i, share};
    }
    return first;
}

// ---- restoration onto the bound

// The gradient of the variable at hitposition over the basic ones, through the inverse, to work2, and
// its slope along the direction.
void set_up_hit(NlpEngine& nlp) noexcept
{
    const int v = nlp.basic[nlp.hitposition];
    nlp.hitslope = 0.0;
    for (int i = 1; i <= nlp.nbasic; ++i) nlp.work1[i] = i == nlp.hitposition ? 1.0 : 0.0;
    if (nlp.hitposition > nlp.nbasic) {
        const float* const row = nlp.jacobian[v - nlp.variables];
        for (int i = 1; i <= nlp.nbasic; ++i)
            if (!is_slack(nlp, nlp.basic[i])) nlp.work1[i] = row[nlp.basic[i]];
        for (int k = 1; k <= nlp.nsuper; ++k)
            if (!is_slack(nlp, nlp.nonbasic[k]))
                nlp.hitslope += row[nlp.nonbasic[k]] * nlp.direction[k];
    }
    for (int i = 1; i <= nlp.nbasic; ++i) nlp.work2[i] = 0.0;
    for (int k = 1; k <= nlp.nbasic; ++k)
        for (int i = 1; i <= nlp.nbasic; ++i) nlp.work2[i] += nlp.basisinverse[k][i] * nlp.work1[k];
}

// Pulls the point back to the share of the way at which its variable crosses, and onto the bound.
bool restore_onto_bound(NlpEngine& nlp, Crossing at) noexcept
{
    const int v = nlp.basic[at.place];
    const bool upper_is_nearer =
        std::fabs(nlp.upper[v] - nlp.point[v]) < std::fabs(nlp.lower[v] - nlp.point[v]);
    nlp.hitbound = upper_is_nearer ? nlp.upper[v] : nlp.lower[v];
    nlp.hitstep = (nlp.step - nlp.beststep) * at.share + nlp.beststep;
    change_along_direction(nlp, nlp.work3);
    set_up_hit(nlp);
    for (int i = 1; i <= nlp.nbasic; ++i) {
        double& x = nlp.point[nlp.basic[i]];
        x = (x - nlp.beststate[i]) * at.share + nlp.beststate[i];
    }
    return nlp_newton(nlp);
}

// After a restoration. False: it has led out of the way.
bool take_hit_step(NlpEngine& nlp) noexcept
{
    if (!(nlp.beststep < nlp.hitstep && nlp.hitstep < nlp.step)) return false;
    nlp.step = nlp.hitstep;
    return true;
}

// ---- acceptance

// The place of the last inactive row that has arrived at a bound, or `otherwise`.
int arrived_row(const NlpEngine& nlp, int otherwise) noexcept
{
    int place = otherwise;
    for (int k = 1; k <= nlp.ninactive; ++k) {
        const int r = nlp.inactive[k], s = nlp.variables + r;
        const double g = nlp.rowvalue[r];
        if (std::fabs(g - nlp.lower[s]) < nlp.feastol || std::fabs(g - nlp.upper[s]) < nlp.feastol)
            place = nlp.nbasic + k;
    }
    return place;
}

void keep_if_best(NlpEngine& nlp) noexcept
{
    if (!(nlp.rowvalue[nlp.objrow] <= nlp.bestobjective)) return;
    for (int i = 1; i <= nlp.nbasic; ++i) nlp.beststate[i] = nlp.point[nlp.basic[i]];
    for (int k = 1; k <= nlp.ninactive; ++k)
        nlp.beststate[nlp.nbasic + k] = nlp.rowvalue[nlp.inactive[k]];
    for (int i = 1; i <= nlp.rows; ++i) nlp.bestrowvalue[i] = nlp.rowvalue[i];
    nlp.beststep = nlp.step;
    nlp.bestobjective = nlp.rowvalue[nlp.objrow];
    nlp.bestinfeasible = nlp.ninfeasible;
}

// A search that began in phase 1 goes by the sum of violations until there are none. True: there are
// none any more, and the point ends the search.
bool ends_phase1(NlpEngine& nlp, Crossing crossing) noexcept
{
    nlp_phase1_objective(nlp, false);
    if (nlp.ninfeasible != 0) return false;
    if (crossing.place != 0) {
        nlp.rowvalue[nlp.objrow] = 0.0;
        return false;
    }
    nlp.beststep = nlp.step;
    nlp.nowfeasible = true;
    nlp.rowvalue[nlp.objrow] = nlp.trueobjective;
    return true;
}

// Takes the step back to the first bound that is crossed, and the next one, until none is. Each time
// the step gets shorter. False: the attempt failed, or needs no more.
bool hold_bounds(NlpEngine& nlp, int& pending) noexcept
{
    const bool phase1 = nlp.bestinfeasible != 0;
    const int limit = nlp.variables + nlp.rows;
    for (int restorations = 0; restorations <= limit; ++restorations) {
        list_inactive(nlp);
        if (nlp.hitposition != 0 && !take_hit_step(nlp)) break;
        const Crossing crossing = first_crossing(nlp, phase1);
        nlp.hitposition = crossing.place;
        if (phase1 && ends_phase1(nlp, crossing)) return false;
        if (crossing.share < 0.0) break;
        if (crossing.place == 0) return true;
        pending = crossing.place;
        if (!restore_onto_bound(nlp, crossing)) return false;
    }
    nlp.newtonfailed = true;
    return false;
}

}  // namespace

void nlp_try_step(NlpEngine& nlp) noexcept
{
    nlp.newtonfailed = false;
    nlp.hitposition = 0;
    nlp.hitbound = 0.0;
    nlp.ninfeasible = nlp.bestinfeasible;
    nlp.superatbound = nlp.step >= nlp.maxstep;
    if (nlp.superatbound) nlp.step = nlp.maxstep;
    move_superbasics(nlp, nlp.step);
    if (!evaluate_step(nlp)) return;

    int pending = 0;
    if (nlp.nbasic + nlp.ninactive != 0) {
        if (!hold_bounds(nlp, pending)) return;
        pending = arrived_row(nlp, pending);
    }
    keep_if_best(nlp);
    nlp.hitposition = pending;
}

// ---- onto bounds and rows exactly

namespace {

void move_onto_bounds(NlpEngine& nlp) noexcept
{
    for (int k = nlp.nsuper + 1; k <= nlp.variables; ++k) {
        const int v = nlp.nonbasic[k];
        if (is_slack(nlp, v) || nlp.boundside[k] == 0) continue;
        nlp.point[v] = nlp.boundside[k] > 0 ? nlp.upper[v] : nlp.lower[v];
    }
}

bool basics_are_within_bounds(const NlpEngine& nlp) noexcept
{
    for (int i = 1; i <= nlp.nbasic; ++i) {
        const int v = nlp.basic[i];
        if (!(nlp.lower[v] - nlp.point[v] <= nlp.feastol)) return false;
        if (!(nlp.point[v] - nlp.upper[v] <= nlp.feastol)) return false;
    }
    return true;
}

}  // namespace

bool nlp_restore_exactly(NlpEngine& nlp) noexcept
{
    move_onto_bounds(nlp);
    double before = INFINITE_BOUND;
    for (int it = 1; it <= NEWTON_LIMIT; ++it) {
        nlp_eval(nlp, nlp.rowvalue, nlp.point);
        if (nlp.status != ENGINE_OPTIMAL || !are_usable(nlp, nlp.rowvalue)) return false;
        const double error = find_residuals(nlp);
        if (!(error < before)) return error < nlp.feastol && basics_are_within_bounds(nlp);
        before = error;
        correct_basics(nlp);
    }
    return false;
}

}  // namespace tarnwick
