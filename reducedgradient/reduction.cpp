// What the basis makes of the gradient and of a direction. With B the basis matrix, N the columns of
// the nonbasic variables in the binding rows, c the objective's gradient and d the direction:
//
//     multiplier = c_B B^-1,   redgrad = c_N - multiplier N,   tangent = -B^-1 N d
//
// In phase 1, while some row is violated, the objective is the sum of violations beyond feastol.

#include "reducedgradient/reduction.h"

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

// A direction that is blocked within this step can't be followed.
constexpr double DEGENERATE_STEP = 1e-6;
// A tangent is zero below this share of its terms: single precision, and rows that hold within feastol,
// tell the Jacobian no better. Differences, one-sided at a bound, tell it as well as their step.
constexpr double CANCELLED = 1e-5;

// How far row r is outside its bounds, if that is beyond feastol, else 0: negative below the lower
// bound, positive above the upper one. Count, sum and gradient of the violations go by this one test,
// so that rounding can't leave a row in the sum that has no gradient.
double violation(const NlpEngine& nlp, int r) noexcept
{
    const int s = nlp.variables + r;
    const double g = nlp.rowvalue[r];
    if (nlp.lower[s] - g > nlp.feastol) return g - nlp.lower[s];
    return g - nlp.upper[s] > nlp.feastol ? g - nlp.upper[s] : 0.0;
}

}  // namespace

void nlp_phase1_objective(NlpEngine& nlp, bool restart) noexcept
{
    double sum = 0.0;
    nlp.ninfeasible = 0;
    for (int k = 1; k <= nlp.ninactive; ++k) {
        const double excess = violation(nlp, nlp.inactive[k]);
        if (excess == 0.0) continue;
        ++nlp.ninfeasible;
        sum += std::fabs(excess);
    }
    nlp.trueobjective = nlp.rowvalue[nlp.objrow];
    if (nlp.ninfeasible == 0) return;
    if (restart) nlp.restarted = true;
    nlp.rowvalue[nlp.objrow] = sum;
}

// ---- multipliers

namespace {

void write_phase1_gradient(NlpEngine& nlp) noexcept
{
    const int n = nlp.variables;
    const Vec<double> sum = nlp.work1;
    for (int j = 1; j <= n; ++j) sum[j] = 0.0;
    for (int k = 1; k <= nlp.ninactive; ++k) {
        const int r = nlp.inactive[k];
        const double excess = violation(nlp, r);
        const float* const row = nlp.jacobian[r];
        if (excess < 0.0) {
            for (int j = 1; j <= n; ++j) sum[j] -= row[j];
        } else if (excess > 0.0) {
            for (int j = 1; j <= n; ++j) sum[j] += row[j];
        }
    }
    for (int j = 1; j <= n; ++j) nlp.jacobian[nlp.objrow][j] = static_cast<float>(sum[j]);
}

void find_multipliers(NlpEngine& nlp) noexcept
{
    for (int i = 1; i <= nlp.nbasic; ++i) nlp.multiplier[i] = 0.0;
    for (int k = 1; k <= nlp.nbasic; ++k) {
        if (is_slack(nlp, nlp.basic[k])) continue;
        const double cost = nlp.jacobian[nlp.objrow][nlp.basic[k]];
        for (int i = 1; i <= nlp.nbasic; ++i) nlp.multiplier[i] += cost * nlp.basisinverse[k][i];
    }
}

}  // namespace

void nlp_reduced_gradient(NlpEngine& nlp) noexcept
{
    const int n = nlp.variables;
    if (nlp.ninfeasible != 0) write_phase1_gradient(nlp);
    find_multipliers(nlp);

    const Vec<double> product = nlp.work1;  // of the multipliers with each column
    for (int j = 1; j <= n; ++j) product[j] = 0.0;
    for (int i = 1; i <= nlp.nbasic; ++i) {
        const float* const row = nlp.jacobian[nlp.binding[i]];
        for (int j = 1; j <= n; ++j) product[j] += row[j] * nlp.multiplier[i];
    }
    for (int k = 1; k <= n; ++k) {
        const int v = nlp.nonbasic[k];
        nlp.redgrad[k] = is_slack(nlp, v) ? nlp.multiplier[nlp.position[v - n]]
                                          : nlp.jacobian[nlp.objrow][v] - product[v];
    }
}

namespace {

bool cannot_move(const NlpEngine& nlp, int v) noexcept
{
    return is_slack(nlp, v) ? nlp.rowkind[v - nlp.variables] == ROW_EQUALITY : nlp.fixed[v] != 0;
}

// The test in units that are `unit`(v) times those of variable v.
template <class Unit>
bool multipliers_hold_in(const NlpEngine& nlp, Unit unit) noexcept
{
    double largest = 0.0;
    for (int j = 1; j <= nlp.variables; ++j)
        largest = std::max(largest, std::fabs(nlp.jacobian[nlp.objrow][j] / unit(j)));
    if (largest <= nlp.feastol) return true;

    const double tol = std::sqrt(nlp.feastol) * largest;
    for (int k = 1; k <= nlp.variables; ++k) {
        const int v = nlp.nonbasic[k];
        if (cannot_move(nlp, v)) continue;
        const double g = nlp.redgrad[k] / unit(v);
        if (nlp.boundside[k] != 1 && !(-g <= tol)) return false;
        if (nlp.boundside[k] != -1 && !(g <= tol)) return false;
    }
    return true;
}

}  // namespace

bool multipliers_hold(const NlpEngine& nlp) noexcept
{
    if (!multipliers_hold_in(nlp, [](int) { return 1.0; })) return false;
    return !nlp.scaled || multipliers_hold_in(nlp, [&nlp](int v) { return nlp.scale[v]; });
}

// ---- along a direction

void change_along_direction(const NlpEngine& nlp, Vec<double> change) noexcept
{
    for (int i = 1; i <= nlp.nbasic; ++i) {
        double sum = 0.0;
        for (int k = 1; k <= nlp.nsuper; ++k)
            sum += column_entry(nlp, i, nlp.nonbasic[k]) * nlp.direction[k];
        change[i] = sum;
    }
}

namespace {

// The sizes of the terms in each binding row along the direction, by position: what the superbasics and
// what the basic variables contribute.
void size_along_direction(const NlpEngine& nlp, Vec<double> size) noexcept
{
    for (int i = 1; i <= nlp.nbasic; ++i) {
        double sum = 0.0;
        for (int k = 1; k <= nlp.nsuper; ++k)
            sum += std::fabs(column_entry(nlp, i, nlp.nonbasic[k]) * nlp.direction[k]);
        for (int k = 1; k <= nlp.nbasic; ++k)
            sum += std::fabs(column_entry(nlp, i, nlp.basic[k]) * nlp.tangent[k]);
        size[i] = sum;
    }
}

// Errors dB and dN of the Jacobian are an error B^-1 (dN d + dB tangent) of the tangent. What is left of
// terms that cancel is no slope then: it would block the direction, and an exchange would divide by it
// and call any point optimal, with multipliers as large as they like.
void clear_cancelled(NlpEngine& nlp) noexcept
{
    const double share = nlp.derivmode >= DERIVE_ANALYTIC ? CANCELLED : nlp.diffstep;
    size_along_direction(nlp, nlp.work2);
    for (int i = 1; i <= nlp.nbasic; ++i) {
        double size = 0.0;
        for (int k = 1; k <= nlp.nbasic; ++k)
            size += std::fabs(nlp.basisinverse[i][k]) * nlp.work2[k];
        if (std::fabs(nlp.tangent[i]) <= share * size) nlp.tangent[i] = 0.0;
    }
}

}  // namespace

void nlp_tangent(NlpEngine& nlp) noexcept
{
    change_along_direction(nlp, nlp.work1);
    for (int i = 1; i <= nlp.nbasic; ++i) {
        double sum = 0.0;
        for (int k = 1; k <= nlp.nbasic; ++k) sum += nlp.basisinverse[i][k] * nlp.work1[k];
        nlp.tangent[i] = -sum;
    }
    clear_cancelled(nlp);
}

namespace {

// The step at which the variable of value x, falling at the rate d, is at its bound; each bound is
// `slack` further away.
double step_to_bound(const NlpEngine& nlp, int v, double d, double slack) noexcept
{
    return d >= 0.0 ? (nlp.point[v] - nlp.lower[v] + slack) / d
                    : (nlp.point[v] - nlp.upper[v] - slack) / d;
}

}  // namespace

// A ratio test in two passes: of the variables that are at their bounds within the shortest step to
// bounds that are relaxed by feastol, the one with the largest pivot blocks.
void nlp_blocking_test(NlpEngine& nlp) noexcept
{
    nlp.canmove = true;
    nlp.blockrow = 0;
    double shortest = INFINITE_BOUND;
    for (int i = 1; i <= nlp.nbasic; ++i) {
        const double d = -nlp.tangent[i];
        if (!(std::fabs(d) > TINY)) continue;
        const double r = step_to_bound(nlp, nlp.basic[i], d, nlp.feastol);
        if (r < shortest) {
            shortest = r;
            nlp.blockrow = i;
        }
    }
    if (nlp.blockrow == 0) return;

    double step = shortest, pivot = 0.0;
    for (int i = 1; i <= nlp.nbasic; ++i) {
        const double d = -nlp.tangent[i];
        if (!(std::fabs(d) >= TINY)) continue;
        const double r = step_to_bound(nlp, nlp.basic[i], d, 0.0);
        if (r <= shortest && std::fabs(d) >= pivot) {
            pivot = std::fabs(d);
            step = r;
            nlp.blockrow = i;
        }
    }
    if (const int v = nlp.basic[nlp.blockrow]; is_slack(nlp, v)) {
        const double rate = nlp.tangent[nlp.blockrow];
        const double bound = rate > 0.0 ? nlp.upper[v] : nlp.lower[v];
        step = (bound - nlp.rowvalue[v - nlp.variables]) / rate;
    }
    nlp.canmove = !(step <= DEGENERATE_STEP);
}

}  // namespace tarnwick
