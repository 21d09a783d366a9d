// The search. A population is filled with random points of the box, then improved by one candidate
// at a time: perhaps a mutation, a crossover, and a resampling whenever one of them gave a new best
// member. It has converged when the fitness of the best member and that of the 99th hundredth of the
// ranking have come together,
//
//     |f(99%) - f(1)| <= convergence * max(|f(1)|, 1),
//
// after at least as many crossovers were accepted as there are variables.

#include "nonsmooth/search.h"

#include <algorithm>
#include <cmath>

#include "control/services.h"
#include "nonsmooth/candidate.h"
#include "nonsmooth/moves.h"
#include "nonsmooth/population.h"
#include "nonsmooth/random.h"
#include "platform/clock.h"

namespace tarnwick {

namespace {

constexpr double DEFAULT_FEASTOL = 1e-8;  // where the setting is 0

EngineResult nsp_start_search(NspEngine& nsp) noexcept
{
    if (nsp.feastol == 0.0) nsp.feastol = DEFAULT_FEASTOL;
    nsp.inequalityweight = 1.0 / std::sqrt(nsp.feastol);
    nsp.equalityweight = std::sqrt(nsp.inequalityweight);
    rng_seed(nsp.seed, static_cast<std::int32_t>(tick_count()));

    nsp.evaluations = nsp.popsize;
    nsp.failedevaluations = 0;
    nsp.mutationcount = nsp.crossovercount = 0;
    nsp.acceptedcrossovers = 0;
    nsp.iterations = 0;
    nsp.feasiblecount = 0;
    nsp.failuresinrow = nsp.infeasibleinrow = 0;
    nsp.infeasibletolerated = 2 * nsp.variables;
    nsp.lastimprovetick = tick_count();
    nsp.referencefitness = INFINITE_BOUND;
    std::copy_n(nsp.startpoint.data(), nsp.variables, nsp.bestpoint.data());

    pop_release(nsp);
    return pop_create(nsp) ? ENGINE_OPTIMAL : ENGINE_NOMEMORY;
}

// ---- the first population

constexpr std::int32_t EVENT_SETUP = 2;
constexpr int FAILURES_PER_MEMBER = 100;  // evaluations in a row that may fail
// A function that fails, or is slow, can be stopped: a report is due after so many candidates, or
// after so many milliseconds.
constexpr int CANDIDATES_PER_REPORT = 1000;
constexpr std::uint32_t TICKS_PER_REPORT = 1000;

// How far the first population has come.
struct Filling {
    std::int64_t tried;        // candidates
    std::uint32_t lastreport;  // milliseconds
};

void draw_point(NspEngine& nsp) noexcept
{
    for (int i = 0; i < nsp.variables; ++i) {
        const double u = rng_uniform(nsp.seed);
        nsp.point[i] = (nsp.upper[i] - nsp.lower[i]) * u + nsp.lower[i];
    }
}

void return_to_start(NspEngine& nsp) noexcept
{
    for (int i = 0; i < nsp.variables; ++i)
        nsp.point[i] = clipped(nsp.startpoint[i], nsp.lower[i], nsp.upper[i]);
}

bool is_report_due(const Filling& filling, std::uint32_t now) noexcept
{
    if (filling.tried == 0) return false;
    return filling.tried % CANDIDATES_PER_REPORT == 0 ||
           now - filling.lastreport >= TICKS_PER_REPORT;
}

EngineResult report_setup(NspEngine& nsp, int k, Filling& filling) noexcept
{
    const auto work = static_cast<std::uint32_t>(k) * static_cast<std::uint32_t>(nsp.variables) *
                      static_cast<std::uint32_t>(nsp.rows) /
                      static_cast<std::uint32_t>(nsp.popsize);
    const std::int32_t stop =
        reportprogress(nsp.control, EVENT_SETUP, static_cast<std::int32_t>(work), 0.0);
    const std::uint32_t now = tick_count();
    if (stop != STOP_NONE || !is_report_due(filling, now)) return stopresult(stop, ENGINE_OPTIMAL);
    filling.lastreport = now;
    return nsp_report_iteration(nsp, nsp.objective);
}

// Tries points until one becomes the k-th member. The start point comes first, and again after each
// `cycle` of them.
EngineResult find_member(NspEngine& nsp, int k, int cycle, Filling& filling) noexcept
{
    const std::int64_t most_failures = std::int64_t{FAILURES_PER_MEMBER} * nsp.popsize;
    for (;;) {
        if (const EngineResult code = report_setup(nsp, k, filling); code != ENGINE_OPTIMAL)
            return code;
        if (filling.tried % cycle == 0)
            return_to_start(nsp);
        else
            draw_point(nsp);
        ++filling.tried;

        EngineResult status = nsp_try_point(nsp);
        if (status == CANDIDATE_REFUSED && nsp.bestfeasible)
            status = nsp_repair(nsp, nsp.bestfeasible);
        if (status == CANDIDATE_STANDS) return nsp_new_member(nsp);

        if (nsp.failedevaluations > most_failures) return ENGINE_EVALERROR;
    }
}

// Infeasible points are tolerated the less, the more evaluations a member has cost so far.
void lower_tolerance(NspEngine& nsp, int k) noexcept
{
    const std::int64_t expected = std::int64_t{k} * nsp.variables;
    if (nsp.evaluations > expected)
        nsp.infeasibletolerated =
            static_cast<std::int32_t>(nsp.infeasibletolerated * expected / nsp.evaluations);
}

EngineResult nsp_initial_population(NspEngine& nsp) noexcept
{
    const std::int32_t tolerated = nsp.infeasibletolerated;
    Filling filling{.tried = 0, .lastreport = tick_count()};
    const bool start_stands = nsp_fitness(nsp, nsp.startpoint.data()) == CANDIDATE_STANDS;
    const int cycle = start_stands ? nsp.variables : 2 * nsp.variables;

    for (int k = 1; k <= nsp.popsize; ++k) {
        if (const EngineResult code = find_member(nsp, k, cycle, filling); code != CANDIDATE_STANDS)
            return code;
        pop_insert(nsp);
        lower_tolerance(nsp, k);
    }
    nsp.infeasibletolerated = tolerated;
    std::copy_n(pop_first(nsp).point, nsp.variables, nsp.bestpoint.data());
    return ENGINE_OPTIMAL;
}

// ---- the main loop

constexpr std::int64_t QUANTILE = 99;  // hundredths of the ranking

bool has_converged(NspEngine& nsp) noexcept
{
    nsp.current = pop_at(nsp, static_cast<int>(nsp.count * QUANTILE / 100));
    const double best = pop_first(nsp).fitness;
    const double size = std::fabs(best);
    const double d = size > 1.0 ? size : 1.0;
    return nsp.acceptedcrossovers >= nsp.variables &&
           std::fabs(nsp.current->fitness - best) / d <= nsp.convergence;
}

// One pass: a mutation now and then, a crossover, and a resampling around a member that has just
// become the best.
EngineResult run_pass(NspEngine& nsp) noexcept
{
    bool made = false;
    if (rng_uniform(nsp.seed) < nsp.mutationrate) {
        if (const EngineResult code = nsp_mutate(nsp); code != CANDIDATE_STANDS) return code;
        pop_insert(nsp);
        made = true;
    }
    if (const EngineResult code = nsp_crossover(nsp); code != CANDIDATE_STANDS) return code;
    if (nsp.pending) {
        pop_insert(nsp);
        made = true;
    }
    if (!made || nsp.current != &pop_first(nsp)) return CANDIDATE_STANDS;

    if (const EngineResult code = nsp_resample(nsp); code != CANDIDATE_STANDS) return code;
    pop_insert(nsp);
    return CANDIDATE_STANDS;
}

EngineResult run_search(NspEngine& nsp) noexcept
{
    if (const EngineResult code = nsp_start_search(nsp); code != ENGINE_OPTIMAL) return code;
    if (const EngineResult code = nsp_initial_population(nsp); code != ENGINE_OPTIMAL) return code;
    nsp.lastimprovetick = tick_count();
    while (!has_converged(nsp)) {
        const EngineResult code = run_pass(nsp);
        if (code != CANDIDATE_STANDS && code != CANDIDATE_REFUSED) return code;
    }
    return ENGINE_OPTIMAL;
}

}  // namespace

EngineResult nsp_search(NspEngine& nsp, double& objective) noexcept
{
    const BestResult best = nsp_best_result(nsp, run_search(nsp), nsp.point);
    objective = best.objective;
    nsp.finalcode = best.code;
    return best.code;
}

}  // namespace tarnwick
