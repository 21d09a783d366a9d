// The moves of the search. Mutation changes one variable of a member, crossover combines two members,
// and resampling draws a point around the best one. The position of a parent is drawn among
// 2..popsize-1, and a position that has been used more often than its share is passed over:
//
//     use <= count * share / popsize,   count the calls of the move so far

#include "nonsmooth/moves.h"

#include <algorithm>
#include <cmath>

#include "nonsmooth/candidate.h"
#include "nonsmooth/population.h"
#include "nonsmooth/random.h"
#include "platform/clock.h"

namespace tarnwick {

namespace {

constexpr int MUTATION_SHARE = 3;
constexpr int CROSSOVER_SHARE = 6;

// A whole number 0..n-1; 0 if n is 0.
int draw_below(NspEngine& nsp, int n) noexcept
{
    return static_cast<int>(rng_uniform(nsp.seed) * n);
}

bool draws_below(NspEngine& nsp, double probability) noexcept
{
    return rng_uniform(nsp.seed) < probability;
}

// After 2 popsize draws the last one stands.
int draw_position(NspEngine& nsp, Vec<const std::int32_t> use, std::int64_t ceiling) noexcept
{
    int position = 0;
    for (std::int64_t draw = 0; draw < 2 * std::int64_t{nsp.popsize}; ++draw) {
        position = std::max(2, draw_below(nsp, nsp.popsize));
        if (use[position] <= ceiling) break;
    }
    return position;
}

struct Pair {
    int a, b;  // positions
};

Pair nsp_pick_parents(NspEngine& nsp) noexcept
{
    const std::int64_t ceiling = nsp.crossovercount * CROSSOVER_SHARE / nsp.popsize;
    for (;;) {
        const int a = draw_position(nsp, nsp.crossoveruse, ceiling);
        const int b = draw_position(nsp, nsp.crossoveruse, ceiling);
        if (a != b) return {a, b};
    }
}

// A step from 0 to d that gets shorter as the crossovers near their limit.
double nsp_shrinking_step(NspEngine& nsp, double d) noexcept
{
    const double share = static_cast<double>(nsp.acceptedcrossovers) / nsp.crossoverlimit;
    const double t = std::max(0.0, 1.0 - share);
    return (1.0 - std::pow(rng_uniform(nsp.seed), t * t)) * d;
}

bool beats_last(const NspEngine& nsp) noexcept { return nsp.fitness < pop_last(nsp).fitness; }

}  // namespace

// ---- mutation

namespace {

constexpr double BOUNDARY_SHARE = 0.5;
constexpr double NONUNIFORM_SHARE = 0.5;
constexpr double WORST_SHARE = 0.99;  // of the last fitness: a mutation must be below it

void change_variable(NspEngine& nsp) noexcept
{
    const double r = rng_uniform(nsp.seed);
    const int j = draw_below(nsp, nsp.variables - 1);
    double& x = nsp.point[j];
    const double lower = nsp.lower[j], upper = nsp.upper[j];

    if (r < BOUNDARY_SHARE) {
        x = draws_below(nsp, 0.5) ? lower : upper;
    } else if (nsp.acceptedcrossovers < nsp.crossoverlimit && draws_below(nsp, NONUNIFORM_SHARE)) {
        if (draws_below(nsp, 0.5))
            x += nsp_shrinking_step(nsp, upper - x);
        else
            x -= nsp_shrinking_step(nsp, x - lower);
    } else {
        x = lower + rng_uniform(nsp.seed) * (upper - lower);
    }
}

}  // namespace

EngineResult nsp_mutate(NspEngine& nsp) noexcept
{
    ++nsp.mutationcount;
    const int position =
        draw_position(nsp, nsp.mutationuse, nsp.mutationcount * MUTATION_SHARE / nsp.popsize);
    count_up(nsp.mutationuse[position]);
    const NspMember* const parent = pop_at(nsp, position);
    if (!parent) return ENGINE_INTERNAL;

    std::copy_n(parent->point, nsp.variables, nsp.point.data());
    change_variable(nsp);
    EngineResult status = nsp_try_point(nsp);
    if (status == CANDIDATE_REFUSED) status = nsp_repair(nsp, parent);
    if (status != CANDIDATE_STANDS) return nsp_account(nsp, status, nsp.objective);

    if (WORST_SHARE * pop_last(nsp).fitness <= nsp.fitness)
        return nsp_account(nsp, CANDIDATE_REFUSED, nsp.objective);
    if (const EngineResult code = nsp_new_member(nsp); code != CANDIDATE_STANDS) return code;
    return nsp_account(nsp, CANDIDATE_STANDS, nsp.objective);
}

// ---- crossover

namespace {

constexpr double QUADRATIC_SHARE = 0.67;
constexpr int CROSSOVER_DRAWS = 2;

struct Parents {
    const NspMember* a = nullptr;
    const NspMember* b = nullptr;
};

bool are_alike(const NspEngine& nsp, const Parents& parents) noexcept
{
    for (int i = 0; i < nsp.variables; ++i)
        if (!(std::fabs(parents.a->point[i] - parents.b->point[i]) < nsp.feastol)) return false;
    return true;
}

// The better of two positions, the first on a tie. 0 is none yet.
int better_position(const NspEngine& nsp, int best, int position) noexcept
{
    if (best == 0) return position;
    return pop_at(nsp, position)->fitness < pop_at(nsp, best)->fitness ? position : best;
}

// Draws pairs, of which the last one becomes the parents; of each parent's positions the best one is
// counted as used.
EngineResult draw_parents(NspEngine& nsp, int draws, Parents& parents) noexcept
{
    Pair best{0, 0};
    for (int draw = 0; draw < draws; ++draw) {
        const Pair pair = nsp_pick_parents(nsp);
        parents = {pop_at(nsp, pair.a), pop_at(nsp, pair.b)};
        if (!parents.a || !parents.b) return ENGINE_INTERNAL;
        if (are_alike(nsp, parents)) return nsp_account(nsp, CANDIDATE_REFUSED, 0.0);
        best = {better_position(nsp, best.a, pair.a), better_position(nsp, best.b, pair.b)};
    }
    count_up(nsp.crossoveruse[best.a]);
    count_up(nsp.crossoveruse[best.b]);
    return CANDIDATE_STANDS;
}

struct Values {
    double a, b, h;
};

// The values that the parabola takes: penalties while the best member has the least, else fitness.
Values parabola_values(const NspMember& a, const NspMember& b, const NspMember& h) noexcept
{
    const Values penalties{a.fitness - a.objective, b.fitness - b.objective,
                           h.fitness - h.objective};
    if (penalties.h < penalties.a && penalties.h < penalties.b) return penalties;
    return {a.fitness, b.fitness, h.fitness};
}

// Each coordinate at the stationary point of the parabola through those of the parents and of the
// best member. Where there is none, the division by zero ends at a bound.
void combine_quadratically(NspEngine& nsp, const Parents& parents) noexcept
{
    const NspMember& best = pop_first(nsp);
    const Values f = parabola_values(*parents.a, *parents.b, best);
    for (int i = 0; i < nsp.variables; ++i) {
        const double a = parents.a->point[i], b = parents.b->point[i], h = best.point[i];
        const double num = (a * a - b * b) * f.h + (b * b - h * h) * f.a + (h * h - a * a) * f.b;
        const double den = (a - b) * f.h + (b - h) * f.a + (h - a) * f.b;
        nsp.point[i] = clipped(num / den / 2.0, nsp.lower[i], nsp.upper[i]);
    }
}

// The first parent up to a cut, a weighted mean of both from there on.
void combine_by_blending(NspEngine& nsp, const Parents& parents) noexcept
{
    const double w = rng_uniform(nsp.seed);
    const int cut = draws_below(nsp, 0.5) ? 0 : draw_below(nsp, nsp.variables - 1);
    for (int i = 0; i < nsp.variables; ++i) {
        const double a = parents.a->point[i], b = parents.b->point[i];
        const double x = i < cut ? a : w * a + (1.0 - w) * b;
        nsp.point[i] = clipped(x, nsp.lower[i], nsp.upper[i]);
    }
}

// Makes a member of a candidate that stands and beats the last one.
EngineResult accept_crossover(NspEngine& nsp, EngineResult status) noexcept
{
    if (status != CANDIDATE_STANDS || !beats_last(nsp)) return CANDIDATE_REFUSED;
    if (const EngineResult code = nsp_new_member(nsp); code != CANDIDATE_STANDS) return code;
    count_up(nsp.acceptedcrossovers);
    return CANDIDATE_STANDS;
}

}  // namespace

EngineResult nsp_crossover(NspEngine& nsp) noexcept
{
    ++nsp.crossovercount;
    const bool is_quadratic = draws_below(nsp, QUADRATIC_SHARE);
    Parents parents;
    if (const EngineResult code = draw_parents(nsp, is_quadratic ? 1 : CROSSOVER_DRAWS, parents);
        code != CANDIDATE_STANDS)
        return code;
    if (is_quadratic)
        combine_quadratically(nsp, parents);
    else
        combine_by_blending(nsp, parents);

    EngineResult status = nsp_try_point(nsp);
    if (status == CANDIDATE_REFUSED)
        status = nsp_repair(nsp, is_feasible(*parents.a) ? parents.a : parents.b);
    status = accept_crossover(nsp, status);
    if (status == ENGINE_NOMEMORY) return status;

    const BestResult best = nsp_best_result(nsp, status, nsp.bestpoint);
    const std::uint32_t before = tick_count();
    const EngineResult answer = nsp_report_generation(nsp, best);
    nsp.lastimprovetick += tick_count() - before;
    return answer;
}

// ---- resampling

namespace {

constexpr int RESAMPLE_ROUNDS = 2;
constexpr double SPREAD_SHARE = 0.25;  // of the distance from first to last: the variance

// Coordinate i from a beta distribution on its range whose mean is that of the first member and
// whose variance is v, with shapes by the method of moments. Without any spread the coordinate stays,
// and so it does where 2 t is infinite: the scale of a gamma deviate, the square root of 2 a - 1,
// must be finite. False: there is no such distribution.
bool resample_coordinate(NspEngine& nsp, int i) noexcept
{
    const double first = pop_first(nsp).point[i];
    const double lower = nsp.lower[i], upper = nsp.upper[i];
    const double v = std::fabs(pop_last(nsp).point[i] - first) * SPREAD_SHARE;
    const double w = upper - lower;
    const double m = (first - lower) / w;
    const double t = w * w * m * (1.0 - m) / v - 1.0;
    if (std::isinf(2.0 * t)) {
        nsp.point[i] = first;
        return true;
    }
    const double a = t * m, b = t * (1.0 - m);
    if (!(a > 0.0 && b > 0.0)) return false;
    nsp.point[i] = clipped(lower + rng_beta(nsp.seed, a, b) * w, lower, upper);
    return true;
}

bool resample_point(NspEngine& nsp) noexcept
{
    for (int i = 0; i < nsp.variables; ++i)
        if (!resample_coordinate(nsp, i)) return false;
    return true;
}

}  // namespace

EngineResult nsp_resample(NspEngine& nsp) noexcept
{
    EngineResult status = CANDIDATE_REFUSED;
    nsp.objective = 0.0;
    for (int round = 1; round <= RESAMPLE_ROUNDS; ++round) {
        if (!resample_point(nsp)) continue;
        status = nsp_try_point(nsp);
        if (status == CANDIDATE_REFUSED && nsp.bestfeasible)
            status = nsp_repair(nsp, nsp.bestfeasible);
        if (status == CANDIDATE_STANDS && beats_last(nsp)) break;
    }
    if (status != CANDIDATE_STANDS || !beats_last(nsp))
        return nsp_account(nsp, CANDIDATE_REFUSED, nsp.objective);
    if (const EngineResult code = nsp_new_member(nsp); code != CANDIDATE_STANDS) return code;
    return nsp_account(nsp, CANDIDATE_STANDS, nsp.objective);
}

}  // namespace tarnwick
