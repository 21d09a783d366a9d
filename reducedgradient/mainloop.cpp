// The generalised reduced gradient method (J. Abadie and J. Carpentier, 1969; L. S. Lasdon, A. D. Waren,
// A. Jain and M. Ratner, ACM Transactions on Mathematical Software 4, 1978). Each pass
//
//     1  classifies the rows, renews the Jacobian and the basis             nlp_refresh_basis
//     2  reduces the gradient                                               nlp_reduced_gradient
//     3  ends at an optimum, or when the objective has converged
//     4  makes a direction over the superbasics                             nlp_direction
//     5  exchanges the basis where a basic variable blocks it, back to 2    nlp_exchange_basis
//     6  searches along it                                                  nlp_line_search
//
// in phase 1 for less violation, in phase 2 for a lower objective.

#include "reducedgradient/mainloop.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "reducedgradient/basis.h"
#include "reducedgradient/direction.h"
#include "reducedgradient/evaluation.h"
#include "reducedgradient/factor.h"
#include "reducedgradient/linesearch.h"
#include "reducedgradient/reduction.h"
#include "reducedgradient/tentative.h"

namespace tarnwick {

namespace {

// Exchanges in a row that end a run, unless half of the variables are more.
constexpr int FEWEST_EXCHANGES = 15;
// Passes in a row within the band of convergence that end phase 1 where it isn't stationary.
constexpr int PHASE1_STALL_LIMIT = 50;
// Of feastol: what Newton's method leaves of the binding rows once a verdict has turned on them.
constexpr double EXACT_SHARE = 1e-3;

// ---- preparation

bool is_in_range(const NlpEngine& nlp) noexcept
{
    return nlp.feastol > 0.0 && nlp.feastol < 1.0 && nlp.diffstep >= 0.0 &&
           nlp.derivmode >= DERIVE_FORWARD && nlp.derivmode <= DERIVE_CHECKED;
}

// False for a pair out of order, NaN included.
bool in_order(Vec<const double> lower, Vec<const double> upper, int count) noexcept
{
    for (int k = 1; k <= count; ++k)
        if (!(lower[k] <= upper[k])) return false;
    return true;
}

void prepare_rows(NlpEngine& nlp) noexcept
{
    for (int i = 1; i < nlp.objrow; ++i) {
        const int s = nlp.variables + i;
        nlp.lower[s] = nlp.rowlower[i];
        nlp.upper[s] = nlp.rowupper[i];
        const bool is_free = nlp.lower[s] == -INFINITE_BOUND && nlp.upper[s] == INFINITE_BOUND;
        nlp.rowkind[i] = is_free                        ? ROW_FREE
                         : nlp.lower[s] == nlp.upper[s] ? ROW_EQUALITY
                                                        : ROW_BOUNDED;
    }
    nlp.rowkind[nlp.objrow] = ROW_FREE;
    nlp.lower[nlp.variables + nlp.objrow] = -INFINITE_BOUND;
    nlp.upper[nlp.variables + nlp.objrow] = INFINITE_BOUND;
}

// False: a start value is no number.
bool prepare_variables(NlpEngine& nlp) noexcept
{
    for (int j = 1; j <= nlp.variables; ++j) {
        nlp.lower[j] = nlp.varlower[j];
        nlp.upper[j] = nlp.varupper[j];
        nlp.fixed[j] = nlp.lower[j] == nlp.upper[j];
        nlp.startpoint[j] = std::clamp(nlp.startpoint[j], nlp.lower[j], nlp.upper[j]);
        nlp.point[j] = nlp.startpoint[j];
        if (std::isnan(nlp.point[j])) return false;
    }
    return true;
}

EngineResult nlp_prepare_run(NlpEngine& nlp) noexcept
{
    if (!in_order(nlp.varlower, nlp.varupper, nlp.variables) ||
        !in_order(nlp.rowlower, nlp.rowupper, nlp.rows - 1))
        return ENGINE_INFEASIBLE;
    if (!is_in_range(nlp) || !prepare_variables(nlp)) return ENGINE_BADMODEL;
    prepare_rows(nlp);
    return ENGINE_OPTIMAL;
}

// Another start for a model that couldn't be improved from the first one at all.
void nlp_perturb_start(NlpEngine& nlp) noexcept
{
    for (int j = 1; j <= nlp.variables; ++j) {
        if (nlp.fixed[j]) continue;
        const double x = nlp.point[j], l = nlp.lower[j], u = nlp.upper[j];
        const bool open_below = l <= -INFINITE_BOUND, open_above = u >= INFINITE_BOUND;
        double d = open_below ? (open_above ? -0.5 * x : 0.5 * (u - x)) : 0.5 * (l - x);
        if (std::fabs(d) <= nlp.feastol) {
            if (open_below || open_above)
                d = open_above ? 1.0 : -1.0;
            else
                d = 0.5 * (u - x);
        }
        nlp.point[j] = nlp.startpoint[j] = x + d;
    }
}

// ---- the tests

// Whether the point has hardly moved since the last test, which follows it.
bool has_settled(NlpEngine& nlp) noexcept
{
    double size = 0.0, change = 0.0;
    for (int j = 1; j <= nlp.variables; ++j) {
        size = std::max(size, std::fabs(nlp.point[j]));
        change = std::max(change, std::fabs(nlp.point[j] - nlp.lastpoint[j]));
        nlp.lastpoint[j] = nlp.point[j];
    }
    return change < std::sqrt(nlp.feastol) * (size + 1.0);
}

bool nlp_optimal(NlpEngine& nlp) noexcept
{
    return nlp.ninfeasible == 0 && has_settled(nlp) && multipliers_hold(nlp);
}

// What a main loop counts.
struct Accounts {
    double reference = INFINITE_BOUND;  // objective from which on progress is measured
    int stalled = 0;                    // passes in a row within the band around it
    int exchanges = 0;                  // in a row
};

// True: the objective has stayed within its band, a share of the progress made so far, for some
// passes. The reference moves only with an objective that leaves the band. A basis that goes towards
// a singular one keeps the steps short and looks like convergence, so that a pass without progress has
// the next one choose its basis afresh. While rows are violated a rest would be a proof of
// infeasibility, for which the violations must be stationary as well, or long at rest.
bool has_converged(NlpEngine& nlp, Accounts& accounts) noexcept
{
    const double now = nlp.rowvalue[nlp.objrow], start = nlp.startrowvalue[nlp.objrow];
    const double reference = accounts.reference;
    const double band = std::fabs((reference - start) * nlp.convergence);
    nlp.rebuildnext = reference != INFINITE_BOUND && band >= std::fabs(now - reference);
    if (nlp.rebuildnext) {
        ++accounts.stalled;
        const bool is_proof = nlp.ninfeasible == 0 || multipliers_hold(nlp);
        return accounts.stalled >= (is_proof ? STALL_LIMIT : PHASE1_STALL_LIMIT);
    }
    accounts.stalled = 0;
    accounts.reference = now;
    return false;
}

// False: the point is so far out that rounding alone moves the binding rows by more than feastol, or, if
// the multipliers don't hold, by more than exact rows may be off. That the objective rests proves nothing.
bool is_within_reach(const NlpEngine& nlp) noexcept
{
    double size = 0.0;
    for (int j = 1; j <= nlp.variables; ++j) size = std::max(size, std::fabs(nlp.point[j]));
    const double rounding = size * std::numeric_limits<double>::epsilon();
    if (nlp.nbasic == 0 || rounding < EXACT_SHARE * nlp.feastol) return true;
    return rounding < nlp.feastol && multipliers_hold(nlp);
}

// ---- the passes

// What becomes of a pass. ended: finalcode is set. failed: the status is.
enum class Pass { moves, exchanges, ended, failed };

Pass end(NlpEngine& nlp, EngineResult code) noexcept
{
    nlp.finalcode = code;
    return Pass::ended;
}

void clear_state(NlpEngine& nlp) noexcept
{
    nlp.forcedescent = nlp.restarted = nlp.unbounded = nlp.nowfeasible = false;
    nlp.degenerate = nlp.interior = nlp.superchanged = false;
    nlp.hitposition = nlp.nsuper = nlp.nbasic = nlp.ninfeasible = 0;
    nlp.canmove = nlp.rebuildnext = nlp.stepfound = true;
    nlp.beststep = 1.0;
    nlp.step = 0.0;
    nlp.rowtol = nlp.feastol;
}

// False: the model can't be evaluated at the start.
bool begin_loop(NlpEngine& nlp) noexcept
{
    for (int j = 1; j <= nlp.variables; ++j) nlp.lastpoint[j] = nlp.startpoint[j];
    nlp.iterations = 0;
    nlp.jacobianvalid = nlp.previnterior = nlp.hasmoved = false;
    nlp_eval(nlp, nlp.rowvalue, nlp.startpoint);
    if (nlp.status != ENGINE_OPTIMAL) return false;
    if (!are_usable(nlp, nlp.rowvalue) || !std::isfinite(nlp.rowvalue[nlp.objrow])) {
        nlp.status = ENGINE_EVALERROR;
        return false;
    }
    clear_state(nlp);
    for (int i = 1; i <= nlp.rows; ++i)
        nlp.point[nlp.variables + i] = nlp.startrowvalue[i] = nlp.rowvalue[i];
    return true;
}

// The verdict where no direction is left. A point from which restorations have failed is no optimum
// for that.
EngineResult verdict_without_direction(const NlpEngine& nlp) noexcept
{
    const bool is_stuck = !nlp.stepfound && nlp.newtonfailed;
    return is_stuck && !multipliers_hold(nlp) ? ENGINE_STALLED : nlp.finalcode;
}

// A basic variable blocks the direction at once: it leaves the basis, and the point stays.
Pass exchange(NlpEngine& nlp, Accounts& accounts) noexcept
{
    nlp.degenerate = true;
    nlp.hitposition = nlp.blockrow;
    ++accounts.exchanges;
    if (accounts.exchanges >= std::max((nlp.variables + 1) / 2, FEWEST_EXCHANGES))
        return end(nlp, ENGINE_STALLED);
    if (nlp_report_iteration(nlp) != ENGINE_OPTIMAL) return end(nlp, nlp.status);
    nlp.step = 0.0;
    nlp_exchange_basis(nlp);
    nlp.restarted = nlp.interior = false;
    nlp.superchanged = true;
    return Pass::exchanges;
}

// From the multipliers to a direction that can be followed.
Pass choose_direction(NlpEngine& nlp, Accounts& accounts) noexcept
{
    nlp_reduced_gradient(nlp);
    if (nlp_poll_stop(nlp) != ENGINE_OPTIMAL) return end(nlp, nlp.status);
    if (nlp_optimal(nlp)) return end(nlp, ENGINE_OPTIMAL);
    if (!nlp.degenerate && has_converged(nlp, accounts))
        return end(nlp, is_within_reach(nlp) ? ENGINE_CONVERGED : ENGINE_STALLED);

    nlp_direction(nlp);
    if (nlp.nodirection) return end(nlp, verdict_without_direction(nlp));
    if (nlp.nbasic != 0) {
        nlp_tangent(nlp);
        nlp_blocking_test(nlp);
        if (!nlp.canmove) return exchange(nlp, accounts);
    }
    nlp.degenerate = false;
    accounts.exchanges = 0;
    nlp.finalcode = nlp_report_iteration(nlp);
    return nlp.finalcode == ENGINE_OPTIMAL ? Pass::moves : Pass::ended;
}

// Superbasics that came to a bound leave the factor; the next refresh lists the others anew.
void drop_superbasics_at_bounds(NlpEngine& nlp) noexcept
{
    int count = nlp.nsuper;
    for (int k = nlp.nsuper; k >= 1; --k) {
        const int v = nlp.nonbasic[k];
        const double x = nlp.point[v];
        if (!(std::fabs(x - nlp.lower[v]) <= nlp.feastol) &&
            !(std::fabs(x - nlp.upper[v]) <= nlp.feastol))
            continue;
        --count;
        if (nlp.quasinewton) nlp_factor_delete(nlp, k);
        for (int p = k; p <= count; ++p) nlp.prevredgrad[p] = nlp.prevredgrad[p + 1];
    }
}

bool has_moved(const NlpEngine& nlp) noexcept
{
    if (nlp.beststep == 0.0) return false;
    for (int k = 1; k <= nlp.nsuper; ++k)
        if (nlp.direction[k] != 0.0) return true;
    return false;
}

Pass follow_direction(NlpEngine& nlp) noexcept
{
    nlp_line_search(nlp);
    if (nlp.status != ENGINE_OPTIMAL) return Pass::failed;
    nlp.hasmoved = nlp.hasmoved || has_moved(nlp);
    for (int j = 1; j <= nlp.variables; ++j)
        if (std::fabs(nlp.point[j]) < TINY) nlp.point[j] = 0.0;
    ++nlp.iterations;
    if (nlp.superatbound) drop_superbasics_at_bounds(nlp);

    if (nlp.stepfound) {
        if (nlp.unbounded) return end(nlp, ENGINE_UNBOUNDED);
        nlp.restarted = nlp.forcedescent = false;
    } else {
        // The next direction is steepest descent, from a basis chosen afresh.
        if (nlp.forcedescent) return end(nlp, ENGINE_STALLED);
        nlp.forcedescent = nlp.rebuildnext = true;
    }
    return Pass::moves;
}

Pass make_pass(NlpEngine& nlp, Accounts& accounts) noexcept
{
    nlp_refresh_basis(nlp);
    if (nlp.status != ENGINE_OPTIMAL) return Pass::failed;
    if (nlp.ninfeasible != 0 || nlp.iterations == 0) nlp_phase1_objective(nlp, true);

    Pass pass = Pass::exchanges;
    while (pass == Pass::exchanges) pass = choose_direction(nlp, accounts);
    return pass == Pass::moves ? follow_direction(nlp) : pass;
}

// ---- rows that hold exactly

// False: the binding rows can't be held exactly, or not without violating another one; the point is
// what it was.
bool meets_rows_exactly(NlpEngine& nlp) noexcept
{
    const Vec<double> given = nlp.superstart;
    const int ninfeasible = nlp.ninfeasible;
    for (int j = 1; j <= nlp.variables; ++j) given[j] = nlp.point[j];
    if (nlp_restore_exactly(nlp)) {
        nlp_phase1_objective(nlp, false);
        if (nlp.ninfeasible == 0) return true;
    }
    if (nlp.status != ENGINE_OPTIMAL) return false;

    for (int j = 1; j <= nlp.variables; ++j) nlp.point[j] = given[j];
    nlp.ninfeasible = ninfeasible;
    nlp_eval(nlp, nlp.rowvalue, nlp.point);
    return false;
}

// Newton's method leaves up to feastol of each binding row. Times a multiplier that is noise in the
// objective, which can hide all progress, and where many rows meet in a point it can be the violation
// of another one. A verdict without a proof, or of infeasibility, has to stand once more with rows that
// hold exactly. True: the loop goes on with such rows.
bool goes_on_exactly(NlpEngine& nlp, Accounts& accounts) noexcept
{
    if (nlp.rowtol != nlp.feastol || nlp.status != ENGINE_OPTIMAL || nlp.unbounded) return false;
    const bool is_phase1 = nlp.ninfeasible != 0, is_proof = multipliers_hold(nlp);
    if (!is_phase1 && (is_proof || nlp.nbasic == 0)) return false;
    const bool is_restored = meets_rows_exactly(nlp);
    if (nlp.status != ENGINE_OPTIMAL || (!is_restored && is_proof)) return false;

    nlp.rowtol = EXACT_SHARE * nlp.feastol;
    nlp.nowfeasible = is_phase1 && is_restored;
    nlp.forcedescent = nlp.newtonfailed = nlp.degenerate = false;
    nlp.stepfound = nlp.restarted = nlp.rebuildnext = true;
    nlp.finalcode = ENGINE_OPTIMAL;
    accounts = {};
    return true;
}

// Every pass ends with a report of progress, or ends the loop.
void nlp_main_loop(NlpEngine& nlp) noexcept
{
    if (!begin_loop(nlp)) return;
    Accounts accounts;
    Pass pass = Pass::moves;
    while (pass == Pass::moves) {
        pass = make_pass(nlp, accounts);
        if (pass == Pass::ended && goes_on_exactly(nlp, accounts)) pass = Pass::moves;
    }
    if (pass == Pass::failed) return;

    if (nlp.ninfeasible != 0) nlp.finalcode = ENGINE_INFEASIBLE;
    nlp_eval(nlp, nlp.rowvalue, nlp.point);
}

}  // namespace

void nlp_run(NlpEngine& nlp) noexcept
{
    if (nlp.status != ENGINE_OPTIMAL) return;
    nlp.finalcode = nlp_prepare_run(nlp);
    if (nlp.finalcode != ENGINE_OPTIMAL) return;

    nlp_main_loop(nlp);
    if (nlp.status != ENGINE_OPTIMAL || nlp.hasmoved || nlp.finalcode != ENGINE_INFEASIBLE) return;
    nlp_perturb_start(nlp);
    nlp.finalcode = ENGINE_OPTIMAL;  // the verdict on the first start is none on this one
    nlp_main_loop(nlp);
}

}  // namespace tarnwick
