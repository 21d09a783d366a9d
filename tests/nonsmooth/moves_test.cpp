#include "nonsmooth/moves.h"

#include <gtest/gtest.h>

#include <cmath>

#include "nonsmooth/candidate.h"
#include "nonsmooth/random.h"
#include "tests/nonsmooth/hostmodel.h"

namespace tarnwick {
namespace {

// Ten feasible members for each variable in a box from -1 to 2, member k with the objective k.
struct Moves : Engine {
    explicit Moves(std::size_t variables)
        : Engine({.variables = static_cast<int>(variables),
                  .functions = always(0.0),
                  .lb = Reals(variables, -1.0),
                  .ub = Reals(variables, 2.0)})
    {
        run.run.control->iterlimit = INT32_MAX;
        nsp.mutationcount = nsp.crossovercount = 0;
        nsp.acceptedcrossovers = nsp.iterations = 0;
        rng_seed(nsp.seed, 5);
        for (int k = 1; k <= nsp.popsize; ++k) add(Reals(variables, 0.01 * k), k);
    }
    // The point that a move has made, which must stand; the member goes.
    Reals made_by(EngineResult (*move)(NspEngine&) noexcept)
    {
        EXPECT_EQ(move(nsp), CANDIDATE_STANDS);
        const Reals x(nsp.pending->point, nsp.pending->point + nsp.variables);
        if (nsp.bestfeasible == nsp.pending) nsp.bestfeasible = nsp.ranking[0];
        release_block(std::exchange(nsp.pending, nullptr));
        return x;
    }
    void set_objective(int p, double objective)
    {
        pop_at(nsp, p)->fitness = pop_at(nsp, p)->objective = objective;
    }
};

TEST(Mutation, changes_one_variable_by_its_three_ways_and_never_the_last)
{
    constexpr int CALLS = 4000;
    Moves moves(4);
    int at_bound = 0, moved[4] = {}, used[40] = {};
    double sum = 0.0;
    for (int k = 0; k < CALLS; ++k) {
        const Reals x = moves.made_by(nsp_mutate);
        const double parent = x[3];
        ++used[std::lround(parent * 100.0) - 1];
        int changes = 0;
        for (std::size_t j = 0; j < 3; ++j) {
            if (x[j] == parent) continue;
            ++changes;
            ++moved[j];
            ASSERT_TRUE(-1.0 <= x[j] && x[j] <= 2.0);
            const bool is_bound = x[j] == -1.0 || x[j] == 2.0;
            at_bound += is_bound;
            sum += is_bound ? 0.0 : x[j];
        }
        ASSERT_EQ(changes, 1);
    }
    EXPECT_NEAR(at_bound, CALLS / 2, 160);
    // Steps within the box: half are uniform, half start at the parent and end uniformly between it
    // and a bound.
    const double parents = 0.205, uniform = 0.5, shrinking = 0.5 * parents + 0.5 * uniform;
    EXPECT_NEAR(sum / (CALLS - at_bound), 0.5 * (uniform + shrinking), 0.06);
    for (const int j : {0, 1, 2}) EXPECT_NEAR(moved[j], CALLS / 3, 150);

    // A position is used about three times in as many calls as there are members.
    EXPECT_EQ(used[0], 0) << "the best is no parent";
    EXPECT_EQ(used[39], 0) << "nor is the last";
    for (int p = 2; p <= 39; ++p) EXPECT_LE(used[p - 1], CALLS * 3 / 40 + 1) << p;
}

TEST(Mutation, must_be_better_than_nearly_the_worst)
{
    for (const double last : {10.0, -10.0})
        for (const double share : {0.98, 0.99, 0.995, 1.005}) {
            Moves moves(1);
            moves.add({0.5}, last < 0.0 ? -1.0 : 20.0);
            NspEngine& nsp = moves.nsp;
            for (int p = 1; p <= nsp.count; ++p)
                moves.set_objective(p, last - (nsp.count - p) * 1e-3);
            moves.host.model.functions = always(last * share);
            const bool good = last * share < 0.99 * last;
            EXPECT_EQ(nsp_mutate(nsp), good ? CANDIDATE_STANDS : CANDIDATE_REFUSED) << last * share;
            EXPECT_EQ(nsp.pending != nullptr, good);
        }
}

TEST(Crossover, makes_points_of_the_box_from_two_members)
{
    Moves moves(3);
    NspEngine& nsp = moves.nsp;
    const std::int32_t before = nsp.iterations;
    int on_line = 0;
    constexpr int CALLS = 3000;
    for (int k = 0; k < CALLS; ++k) {
        const Reals x = moves.made_by(nsp_crossover);
        for (const double v : x) ASSERT_TRUE(-1.0 <= v && v <= 2.0);
        on_line += x[0] > 0.0199 && x[0] < 0.2901;
    }
    EXPECT_EQ(nsp.acceptedcrossovers, CALLS);
    EXPECT_EQ(nsp.iterations, before) << "crossovers are no iterations";
    // Members lie on a line, and so does the fitness over it: no parabola has a minimum there. The
    // clipped points go to bounds, the blends lie between the parents.
    EXPECT_NEAR(on_line, CALLS * 0.33, 110);
}

TEST(Crossover, finds_the_minimum_of_a_parabola)
{
    Moves moves(1);
    NspEngine& nsp = moves.nsp;
    for (int p = 1; p <= nsp.count; ++p)
        moves.set_objective(p, std::pow(pop_at(nsp, p)->point[0] - 1.5, 2.0));
    std::reverse(nsp.ranking.data(), nsp.ranking.data() + nsp.count);
    moves.host.model.functions = always(-1.0);
    int hits = 0;
    for (int k = 0; k < 300; ++k) hits += std::fabs(moves.made_by(nsp_crossover)[0] - 1.5) < 1e-6;
    EXPECT_NEAR(hits, 201, 40);
}

TEST(Crossover, of_members_that_are_alike_is_a_failure)
{
    Moves moves(2);
    NspEngine& nsp = moves.nsp;
    for (int p = 1; p <= nsp.count; ++p) {
        pop_at(nsp, p)->point[0] = p * 1e-9;
        pop_at(nsp, p)->point[1] = 0.5;
    }
    const long before = moves.host.evaluations;
    EXPECT_EQ(nsp_crossover(nsp), CANDIDATE_REFUSED);
    EXPECT_EQ(moves.host.evaluations, before);
    nsp.lastimprovetick -= 31000;
    EXPECT_EQ(nsp_crossover(nsp), ENGINE_STALLED);
}

TEST(Resampling, draws_around_the_best_member)
{
    Moves moves(1);
    NspEngine& nsp = moves.nsp;
    // First at 0.5, last at 1.2: mean 1/2 and variance 0.175 on a box of width 3.
    pop_first(nsp).point[0] = 0.5;
    pop_last(nsp).point[0] = 1.2;
    constexpr int CALLS = 4000;
    double sum = 0.0, squares = 0.0;
    for (int k = 0; k < CALLS; ++k) {
        const double x = moves.made_by(nsp_resample)[0];
        sum += x;
        squares += (x - 0.5) * (x - 0.5);
    }
    EXPECT_NEAR(sum / CALLS, 0.5, 0.03);
    EXPECT_NEAR(squares / CALLS, 0.175, 0.015);
}

TEST(Resampling, keeps_a_coordinate_without_spread_and_gives_up_one_without_room)
{
    const struct {
        const char* name;
        double lower, upper, first, last;
        bool stands;
    } CASES[] = {
        {"spread",                -1, 2,   0.5,  1.5,         true },
        {"no spread",             -1, 2,   0.5,  0.5,         true },
        {"first at a bound",      -1, 2,   2,    0.5,         false},
        {"both at a bound",       -1, 2,   -1,   -1,          false},
        {"no room",               1,  1,   1,    1,           false},
        {"more spread than fits", 0,  0.1, 0.05, 0.1,         false},
        {"hardly any spread",     -1, 2,   0.5,  0.5 + 1e-16, true },
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        Moves moves(2);
        NspEngine& nsp = moves.nsp;
        nsp.lower[1] = c.lower;
        nsp.upper[1] = c.upper;
        pop_first(nsp).point[0] = 0.5;
        pop_last(nsp).point[0] = 0.7;
        pop_first(nsp).point[1] = c.first;
        pop_last(nsp).point[1] = c.last;
        const long before = moves.host.evaluations;
        EXPECT_EQ(nsp_resample(nsp), c.stands ? CANDIDATE_STANDS : CANDIDATE_REFUSED);
        EXPECT_EQ(moves.host.evaluations - before, c.stands ? 1 : 0);
        if (c.stands && c.first == c.last) {
            EXPECT_EQ(nsp.pending->point[1], c.first);
        }
    }
}

}  // namespace
}  // namespace tarnwick
