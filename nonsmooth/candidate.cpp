// A candidate, from its point to its verdict. With l_j <= r_j <= u_j the rows at the point and o the
// objective, the fitness is
//
//     E * equalityweight + I * inequalityweight + o
//
// E the sum of the squared relative violations of the equality rows, I that of the others, where
//
//     a = (l_j - r_j) / (|r_j| + 1),   b = (r_j - u_j) / (|r_j| + 1)
//
// and what is within the tolerance counts as nothing. A candidate with a violation is refused, until
// as many have been refused in a row as are tolerated: then one is let in, at its price.

#include "nonsmooth/candidate.h"

#include <algorithm>
#include <cmath>

#include "control/services.h"
#include "nonsmooth/population.h"
#include "nonsmooth/random.h"
#include "platform/clock.h"

namespace tarnwick {

namespace {

constexpr double WHOLE_TOL = 1e-15;  // relative: what two roundings by a scale factor can do

double whole_if_rounded(double x) noexcept
{
    const double whole = std::round(x);
    return std::fabs(x - whole) <= WHOLE_TOL * std::fabs(x) ? whole : x;
}

bool is_integer(const NspEngine& nsp, int i) noexcept
{
    return nsp.intflags && nsp.intflags[i] != 0;
}

// The caller's function gets coordinates of its own, so that the point is the same before and after,
// to the last bit, and a member evaluated again gives what it gave.
const double* real_point(const NspEngine& nsp, const double* point) noexcept
{
    if (!nsp.scaled) return point;
    for (int i = 0; i < nsp.variables; ++i) nsp.realpoint[i] = real_coordinate(nsp, i, point[i]);
    return nsp.realpoint.data();
}

}  // namespace

double real_coordinate(const NspEngine& nsp, int i, double scaled) noexcept
{
    const double s = nsp.varscale[i];
    double x = scaled * s;
    if (is_integer(nsp, i)) x = whole_if_rounded(x);
    const double lower = nsp.reallower[i], upper = nsp.realupper[i];
    if (x < lower && scaled >= lower / s) return lower;
    if (x > upper && scaled <= upper / s) return upper;
    return x;
}

// ---- evaluation

bool nsp_evaluate_rows(NspEngine& nsp, Vec<double> rowvalue, const double* point) noexcept
{
    if (!evalfunctions(nsp.control, rowvalue.data(), real_point(nsp, point))) return false;
    for (int j = 0; j <= nsp.rows; ++j) {
        if (nsp.scaled) rowvalue[j] /= nsp.rowscale[j];
        if (!std::isfinite(rowvalue[j])) return false;
    }
    return true;
}

bool nsp_evaluate(NspEngine& nsp, Vec<double> rowvalue, const double* point) noexcept
{
    const bool succeeds = nsp_evaluate_rows(nsp, rowvalue, point) &&
                          reportprogress(nsp.control, EVENT_POLL, 0, 0.0) == STOP_NONE;
    nsp.failedevaluations = succeeds ? 0 : nsp.failedevaluations + 1;
    return succeeds;
}

namespace {

// An equality row may be violated by so much in all, in squares, before a candidate is refused.
constexpr double EQUALITY_ALLOWANCE = 0.01;

struct Violation {
    double equality = 0.0;    // E
    double inequality = 0.0;  // I
};

Violation violation_of(const NspEngine& nsp, Vec<const double> rowvalue) noexcept
{
    Violation sum;
    for (int j = 0; j < nsp.rows; ++j) {
        const double r = rowvalue[j], l = nsp.rowlower[j], u = nsp.rowupper[j];
        const double a = (l - r) / (std::fabs(r) + 1.0);
        const double b = (r - u) / (std::fabs(r) + 1.0);
        if (l == u) {
            const double square = -(a * b);
            if (square > nsp.feastol) sum.equality += square;
        } else if (a > nsp.feastol) {
            sum.inequality += a * a;
        } else if (b > nsp.feastol) {
            sum.inequality += b * b;
        }
    }
    return sum;
}

double minimised(const NspEngine& nsp, double objective) noexcept
{
    return nsp.maximise ? -objective : objective;
}

// A penalty too small for the digits of the objective still tells the two apart.
double penalised(const NspEngine& nsp, const Violation& sum, double o) noexcept
{
    const double fitness =
        sum.equality * nsp.equalityweight + sum.inequality * nsp.inequalityweight + o;
    const bool is_violated = sum.equality > 0.0 || sum.inequality > 0.0;
    return is_violated && fitness == o ? std::nextafter(o, HUGE_VAL) : fitness;
}

}  // namespace

EngineResult nsp_fitness(NspEngine& nsp, const double* point) noexcept
{
    ++nsp.evaluations;
    const bool succeeds = nsp_evaluate(nsp, nsp.rowvalue, point);
    nsp.objective = minimised(nsp, nsp.rowvalue[nsp.rows]);
    if (!succeeds) return CANDIDATE_REFUSED;

    const Violation sum = violation_of(nsp, nsp.rowvalue);
    if (sum.equality > EQUALITY_ALLOWANCE || sum.inequality > 0.0) {
        ++nsp.infeasibleinrow;
        if (nsp.infeasibleinrow <= nsp.infeasibletolerated) return CANDIDATE_REFUSED;
    }
    nsp.infeasibleinrow = 0;
    nsp.fitness = penalised(nsp, sum, nsp.objective);
    return CANDIDATE_STANDS;
}

// ---- integers

namespace {

// The whole number nearest to v within the bounds, the upper one of two; else the one on the other
// side; else v.
double rounded(double v, double lower, double upper) noexcept
{
    const double f = std::floor(v), c = std::ceil(v);
    const bool floor_fits = lower <= f, ceiling_fits = upper >= c;
    if (c - v > v - f) {
        if (floor_fits) return f;
        return ceiling_fits ? c : v;
    }
    if (ceiling_fits) return c;
    return floor_fits ? f : v;
}

}  // namespace

void nsp_round_integers(const NspEngine& nsp, Vec<double> point) noexcept
{
    if (!nsp.intflags) return;
    for (int i = 0; i < nsp.variables; ++i) {
        if (nsp.intflags[i] == 0) continue;
        const double s = nsp.varscale[i];
        const double whole = rounded(s * point[i], nsp.reallower[i], nsp.realupper[i]);
        point[i] = (whole + 0.0) / s;  // no zero has a sign
    }
}

EngineResult nsp_try_point(NspEngine& nsp) noexcept
{
    nsp_round_integers(nsp, nsp.point);
    return nsp_fitness(nsp, nsp.point.data());
}

// ---- repair

namespace {

constexpr int REPAIR_ROUNDS = 3;

// blendpoint = a * point + (1 - a) * anchor. Both lie in the box, and so does what is between them.
void blend(const NspEngine& nsp, const double* anchor, double a) noexcept
{
    for (int i = 0; i < nsp.variables; ++i)
        nsp.blendpoint[i] =
            clipped(a * nsp.point[i] + (1.0 - a) * anchor[i], nsp.lower[i], nsp.upper[i]);
    nsp_round_integers(nsp, nsp.blendpoint);
}

bool keeps_all_rows(const NspEngine& nsp, Vec<const double> rowvalue) noexcept
{
    for (int j = 0; j < nsp.rows; ++j)
        if (!(nsp.rowlower[j] <= rowvalue[j] && rowvalue[j] <= nsp.rowupper[j])) return false;
    return true;
}

}  // namespace

EngineResult nsp_repair(NspEngine& nsp, const NspMember* reference) noexcept
{
    const NspMember* const anchor = is_feasible(*reference) ? reference : nsp.bestfeasible;
    if (!anchor) return CANDIDATE_REFUSED;

    for (int k = REPAIR_ROUNDS; k >= 1; --k) {
        ++nsp.evaluations;
        blend(nsp, anchor->point, rng_uniform(nsp.seed) * k / REPAIR_ROUNDS);
        if (!nsp_evaluate(nsp, nsp.blendrowvalue, nsp.blendpoint.data())) return CANDIDATE_REFUSED;
        if (!keeps_all_rows(nsp, nsp.blendrowvalue)) continue;

        std::copy_n(nsp.blendpoint.data(), nsp.variables, nsp.point.data());
        nsp.objective = minimised(nsp, nsp.blendrowvalue[nsp.rows]);
        nsp.fitness = nsp.objective;
        return CANDIDATE_STANDS;
    }
    return CANDIDATE_REFUSED;
}

// ---- the best member

namespace {

// Feasible members rank by their objective, so that the first in the ranking is the best.
const NspMember* best_feasible_member(const NspEngine& nsp) noexcept
{
    if (nsp.feasiblemembers == 0) return nullptr;
    for (int k = 0; k < nsp.count; ++k)
        if (is_feasible(*nsp.ranking[k]))
            return nsp.ranking[k]->objective < INFINITE_BOUND ? nsp.ranking[k] : nullptr;
    return nullptr;
}

}  // namespace

BestResult nsp_best_result(const NspEngine& nsp, EngineResult status, Vec<double> point) noexcept
{
    if (nsp.count == 0) {
        std::fill_n(point.data(), nsp.variables, 0.0);
        return {status == ENGINE_OPTIMAL || status == ENGINE_STALLED ? ENGINE_INFEASIBLE : status,
                0.0};
    }
    const NspMember* const best = best_feasible_member(nsp);
    const NspMember& member = best ? *best : pop_first(nsp);
    std::copy_n(member.point, nsp.variables, point.data());

    EngineResult code = status;
    if (best && status == ENGINE_OPTIMAL) code = ENGINE_CONVERGED;
    if (!best && (status == ENGINE_OPTIMAL || status == ENGINE_STALLED)) code = ENGINE_INFEASIBLE;
    return {code, minimised(nsp, member.objective)};
}

// ---- reports

namespace {

constexpr std::int32_t EVENT_STOP_DONE = EVENT_FINAL_DONE | 1;  // the final word of a stop
constexpr std::uint32_t TICKS_PER_SECOND = 1000;

// A stop comes with the evaluation of the best point, between two events that say so.
EngineResult answer_to(NspEngine& nsp, std::int32_t stop) noexcept
{
    if (stop == STOP_NONE) return CANDIDATE_STANDS;
    reportprogress(nsp.control, EVENT_FINAL, 0, 0.0);
    nsp_evaluate(nsp, nsp.bestrowvalue, nsp.bestpoint.data());
    const std::int32_t last = reportprogress(nsp.control, EVENT_STOP_DONE, 0, 0.0);
    return stopresult(last, ENGINE_OPTIMAL);
}

double in_real_units(const NspEngine& nsp, double objective) noexcept
{
    return nsp.scaled ? objective * nsp.rowscale[nsp.rows] : objective;
}

}  // namespace

EngineResult nsp_report_iteration(NspEngine& nsp, double objective) noexcept
{
    const double value = minimised(nsp, in_real_units(nsp, objective));
    return answer_to(
        nsp, reportprogress(nsp.control, EVENT_ITERATION | EVENT_POLL, nsp.iterations, value));
}

EngineResult nsp_report_generation(NspEngine& nsp, const BestResult& best) noexcept
{
    const std::int32_t incumbent = best.code == ENGINE_CONVERGED ? EVENT_FINAL_DONE : 0;
    return answer_to(nsp, reportprogress(nsp.control, EVENT_NODE | EVENT_POLL | incumbent,
                                         nsp.feasiblecount, in_real_units(nsp, best.objective)));
}

// ---- accounts

namespace {

bool has_improved(const NspEngine& nsp) noexcept
{
    const double reference = nsp.referencefitness;
    if (reference == INFINITE_BOUND) return true;
    return std::fabs(pop_first(nsp).fitness - reference) / std::fabs(1.0 + reference) > nsp.gap;
}

bool has_stalled(const NspEngine& nsp, std::uint32_t now) noexcept
{
    return (now - nsp.lastimprovetick) / TICKS_PER_SECOND > nsp.stallseconds;
}

}  // namespace

EngineResult nsp_account(NspEngine& nsp, EngineResult status, double objective) noexcept
{
    const std::uint32_t now = tick_count();
    if (status == CANDIDATE_STANDS) {
        count_up(nsp.iterations);
        nsp.failuresinrow = 0;
        if (has_improved(nsp)) {
            nsp.lastimprovetick = now;
            nsp.referencefitness = pop_first(nsp).fitness;
        }
    } else {
        if (has_stalled(nsp, now)) return ENGINE_STALLED;
        ++nsp.failuresinrow;
        if (nsp.failuresinrow <= nsp.variables) return status;
        count_up(nsp.iterations);
        nsp.failuresinrow = 0;
    }
    const EngineResult answer = nsp_report_iteration(nsp, objective);
    nsp.lastimprovetick += tick_count() - now;
    return answer != CANDIDATE_STANDS ? answer : status;
}

}  // namespace tarnwick
