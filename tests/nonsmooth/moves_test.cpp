#include "nonsmooth/moves.h"

#include <gtest/gtest.h>

#include <cmath>

#include "nonsmooth/candidate.h"
#include "nonsmooth/random.h"
#include "tests/nonsmooth/hostmodel.h"

namespace tarnwick {
namespace {

// Ten feasible members for each variable in a box from -1 to 2, member k at k / 100 with the
// objective k.
struct Moves : Engine {
    explicit Moves(std::size_t variables, double found = 0.0)
        : Engine({.variables = static_cast<int>(variables),
                  .functions = always(found),
                  .lb = Reals(variables, -1.0),
                  .ub = Reals(variables, 2.0)})
    {
        run.run.control->iterlimit = INT32_MAX;
        nsp.mutationcount = nsp.crossovercount = nsp.acceptedcrossovers = 0;
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

TEST(Mutation, changes_one_variable_and_never_the_last)
{
    constexpr int CALLS = 4000;
    Moves moves(4);
    int at_bound = 0, used[40] = {};
    for (int k = 0; k < CALLS; ++k) {
        const Reals x = moves.made_by(nsp_mutate);
        const double parent = x[3];
        ++used[std::lround(parent * 100.0) - 1];
        ASSERT_EQ(std::count(x.begin(), x.end(), parent), 3);
        for (const double v : x) at_bound += v == -1.0 || v == 2.0;
    }
    EXPECT_NEAR(at_bound, CALLS / 2, 160);

    // A position is used about three times in as many calls as there are members.
    EXPECT_EQ(used[0], 0) << "the best is no parent";
    EXPECT_EQ(used[39], 0) << "nor is the last";
    EXPECT_LE(*std::max_element(used, used + 40), CALLS * 3 / 40 + 1);
}

TEST(Mutation, must_be_better_than_nearly_the_worst)
{
    for (const double last : {10.0, -10.0})
        for (const double share : {0.98, 0.99, 0.995, 1.005}) {
            const bool good = last * share < 0.99 * last;
            Moves moves(1, last * share);
            for (int p = 1; p <= 10; ++p) moves.set_objective(p, last - (10 - p) * 1e-3);
            EXPECT_EQ(nsp_mutate(moves.nsp), good ? CANDIDATE_STANDS : CANDIDATE_REFUSED)
                << last * share;
        }
}

TEST(Crossover, finds_the_minimum_of_a_parabola)
{
    Moves moves(1, -1.0);
    NspEngine& nsp = moves.nsp;
    for (int p = 1; p <= 10; ++p)
        moves.set_objective(p, std::pow(pop_at(nsp, p)->point[0] - 1.5, 2.0));
    std::reverse(nsp.ranking.data(), nsp.ranking.data() + 10);
    const std::int32_t iterations = nsp.iterations;
    int hits = 0;
    for (int k = 0; k < 300; ++k) hits += std::fabs(moves.made_by(nsp_crossover)[0] - 1.5) < 1e-6;
    EXPECT_NEAR(hits, 201, 40);
    EXPECT_EQ(nsp.acceptedcrossovers, 300);
    EXPECT_EQ(nsp.iterations, iterations) << "crossovers are no iterations";
}

TEST(Resampling, draws_around_the_best_member)
{
    Moves moves(1);
    // First at 0.5, last at 1.2: mean 1/2 and variance 0.175 on a box of width 3.
    pop_first(moves.nsp).point[0] = 0.5;
    pop_last(moves.nsp).point[0] = 1.2;
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
        {"no spread",             -1, 2,   0.5,  0.5,         true },
        {"hardly any spread",     -1, 2,   0.5,  0.5 + 1e-16, true },
        {"more spread than fits", 0,  0.1, 0.05, 0.1,         false},
        {"first at a bound",      -1, 2,   2,    0.5,         false},
        {"no room",               1,  1,   1,    1,           false},
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        Moves moves(1);
        NspEngine& nsp = moves.nsp;
        nsp.lower[0] = c.lower;
        nsp.upper[0] = c.upper;
        pop_first(nsp).point[0] = c.first;
        pop_last(nsp).point[0] = c.last;
        EXPECT_EQ(nsp_resample(nsp), c.stands ? CANDIDATE_STANDS : CANDIDATE_REFUSED);
        const double x = c.stands ? nsp.point[0] : c.first;
        EXPECT_NEAR(x, c.first, c.first == c.last ? 0.0 : 1e-6);
    }
}

}  // namespace
}  // namespace tarnwick
