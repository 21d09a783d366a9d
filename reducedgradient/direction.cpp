// The search direction. With g the reduced gradient of the superbasics:
//
//     quasi-Newton           B d = -g,   B updated by the BFGS formula
//     conjugate gradients    d = (|g|^2 / |g0|^2) d0 - g   (R. Fletcher and C. M. Reeves, 1964)
//
// Then superbasics leave that stand on the bound which the direction would cross, and nonbasic
// variables join whose reduced gradient is worth it. They start along their steepest descent.

#include "reducedgradient/direction.h"

#include <algorithm>
#include <cmath>

#include "reducedgradient/factor.h"
#include "reducedgradient/reduction.h"

namespace tarnwick {

namespace {

// The factor is updated only if the slope along the old direction has lost the rest of its size.
constexpr double SLOPE_SHARE = 0.99;
// A slack needs so many times the reduced gradient of a structural variable to join.
constexpr double SLACK_HURDLE = 100.0;

double product(const NlpEngine& nlp, Vec<const double> a, Vec<const double> b) noexcept
{
    double sum = 0.0;
    for (int k = 1; k <= nlp.nsuper; ++k) sum += a[k] * b[k];
    return sum;
}

void point_downhill(NlpEngine& nlp) noexcept
{
    for (int k = 1; k <= nlp.nsuper; ++k) nlp.direction[k] = -nlp.redgrad[k];
}

// The direction points across the bound on which the superbasic stands.
bool is_blocked(const NlpEngine& nlp, int k) noexcept
{
    return (nlp.boundside[k] == -1 && nlp.direction[k] < 0.0) ||
           (nlp.boundside[k] == 1 && nlp.direction[k] > 0.0);
}

bool nlp_is_descent(const NlpEngine& nlp) noexcept
{
    double slope = 0.0;
    for (int k = 1; k <= nlp.nsuper; ++k)
        if (!is_blocked(nlp, k)) slope += nlp.redgrad[k] * nlp.direction[k];
    return slope < -TINY;
}

bool is_zero(const NlpEngine& nlp) noexcept
{
    for (int k = 1; k <= nlp.nsuper; ++k)
        if (nlp.direction[k] != 0.0) return false;
    return true;
}

// ---- the two methods

// Brings the factor up to date with the last step, or starts afresh.
void renew_factor(NlpEngine& nlp) noexcept
{
    if (nlp.iterations == 0 || nlp.superchanged || nlp.restarted) {
        nlp_factor_reset(nlp);
        return;
    }
    if (!(nlp.step > TINY)) return;
    for (int k = 1; k <= nlp.nsuper; ++k) nlp.gradchange[k] = nlp.redgrad[k] - nlp.prevredgrad[k];
    const double change = product(nlp, nlp.direction, nlp.gradchange);
    const double slope_before = product(nlp, nlp.direction, nlp.prevredgrad);
    const double slope_now = product(nlp, nlp.direction, nlp.redgrad);
    if (slope_now > SLOPE_SHARE * slope_before) nlp_bfgs_update(nlp, change, slope_before);
}

void nlp_cg_direction(NlpEngine& nlp) noexcept
{
    if (!nlp.restarted && nlp.cgcount <= nlp.nsuper) {
        const double before = product(nlp, nlp.prevredgrad, nlp.prevredgrad);
        if (before > TINY) {
            const double ratio = product(nlp, nlp.redgrad, nlp.redgrad) / before;
            ++nlp.cgcount;
            for (int k = 1; k <= nlp.nsuper; ++k)
                nlp.direction[k] = ratio * nlp.direction[k] - nlp.redgrad[k];
            return;
        }
    }
    nlp.cgcount = 0;
    point_downhill(nlp);
}

// True: a factor with a sound diagonal, which needs no test of descent.
bool follow_factor(NlpEngine& nlp) noexcept
{
    point_downhill(nlp);
    nlp_factor_solve(nlp);
    return has_sound_diagonal(nlp);
}

void follow_conjugate_gradients(NlpEngine& nlp) noexcept
{
    if (!nlp.interior || nlp.superchanged) nlp.restarted = true;
    nlp_cg_direction(nlp);
}

// A direction of the method in force, restarted if it doesn't descend. False: there is none. What
// stands on bounds is asked first, though, where it could lower the objective.
bool find_direction(NlpEngine& nlp) noexcept
{
    if (nlp.quasinewton) renew_factor(nlp);
    for (;;) {
        if (nlp.quasinewton) {
            if (follow_factor(nlp)) return true;
        } else {
            follow_conjugate_gradients(nlp);
        }
        if (nlp_is_descent(nlp)) return true;
        if (nlp.restarted) {
            if (!is_zero(nlp) && multipliers_hold(nlp)) return false;
            nlp.forcedescent = true;
            return true;
        }
        nlp.restarted = true;
        if (nlp.quasinewton) nlp_factor_reset(nlp);
    }
}

// ---- the set of superbasics

// Takes superbasic k to place nsuper and out of the set; the others keep their order.
void take_out(NlpEngine& nlp, int k) noexcept
{
    const int last = nlp.nsuper;
    if (nlp.quasinewton)
        nlp_factor_delete(nlp, k);
    else
        --nlp.nsuper;

    const auto to_the_end = [k, last](auto list) {
        std::rotate(list.data() + k, list.data() + k + 1, list.data() + last + 1);
    };
    to_the_end(nlp.nonbasic);
    to_the_end(nlp.boundside);
    to_the_end(nlp.redgrad);
    to_the_end(nlp.prevredgrad);
    to_the_end(nlp.direction);
}

void nlp_drop_blocked(NlpEngine& nlp) noexcept
{
    for (int k = nlp.nsuper; k >= 1; --k)
        if (is_blocked(nlp, k)) take_out(nlp, k);
}

// The norm of what the superbasics still have to give, divided by their count.
double joining_threshold(const NlpEngine& nlp) noexcept
{
    if (nlp.forcedescent) return 0.0;
    int count = 0;
    double sum = 0.0;
    for (int k = 1; k <= nlp.nsuper; ++k) {
        if (!(std::fabs(nlp.redgrad[k]) > nlp.feastol)) continue;
        ++count;
        sum += nlp.redgrad[k] * nlp.redgrad[k];
    }
    return count == 0 ? 0.0 : std::sqrt(sum) / count;
}

bool may_join(const NlpEngine& nlp, int k, double threshold) noexcept
{
    const int v = nlp.nonbasic[k];
    const double g = -nlp.redgrad[k];
    if (nlp.upper[v] == nlp.lower[v]) return false;
    if ((nlp.boundside[k] == 1 && g > 0.0) || (nlp.boundside[k] == -1 && g < 0.0)) return false;
    if (!(std::fabs(g) >= threshold)) return false;
    return !is_slack(nlp, v) || std::fabs(g) >= SLACK_HURDLE * threshold;
}

void nlp_add_candidates(NlpEngine& nlp) noexcept
{
    const double threshold = joining_threshold(nlp);
    for (int k = nlp.nsuper + 1; k <= nlp.variables; ++k) {
        if (!may_join(nlp, k, threshold)) continue;
        const int last = ++nlp.nsuper;
        std::swap(nlp.nonbasic[k], nlp.nonbasic[last]);
        std::swap(nlp.redgrad[k], nlp.redgrad[last]);
        std::swap(nlp.boundside[k], nlp.boundside[last]);
        nlp.direction[last] = -nlp.redgrad[last];
        nlp.quasinewton = last <= nlp.factorlimit;
        if (nlp.quasinewton) nlp_factor_append(nlp);
        nlp.nodirection = false;
    }
}

// What limits no step must not move either, however long the step is.
void clear_negligible(NlpEngine& nlp) noexcept
{
    for (int k = 1; k <= nlp.nsuper; ++k)
        if (std::fabs(nlp.direction[k]) < TINY) nlp.direction[k] = 0.0;
}

}  // namespace

void nlp_direction(NlpEngine& nlp) noexcept
{
    nlp.nodirection = true;
    if (nlp.nsuper == 0) nlp.forcedescent = true;
    nlp.quasinewton = nlp.nsuper <= nlp.factorlimit;
    if (nlp.nowfeasible) nlp.restarted = true;
    if (!nlp.forcedescent && !find_direction(nlp)) return;

    nlp_drop_blocked(nlp);
    nlp_add_candidates(nlp);
    if (nlp.forcedescent) {
        if (nlp.nodirection && nlp.restarted) return;
        point_downhill(nlp);
        nlp.restarted = true;
        if (nlp.quasinewton) nlp_factor_reset(nlp);
        nlp.forcedescent = false;
    }
    clear_negligible(nlp);
    for (int k = 1; k <= nlp.variables; ++k) nlp.prevredgrad[k] = nlp.redgrad[k];
    nlp.nodirection = false;
}

}  // namespace tarnwick
