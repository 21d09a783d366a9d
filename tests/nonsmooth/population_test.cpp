#include "nonsmooth/population.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "nonsmooth/random.h"
#include "tests/nonsmooth/hostmodel.h"
#include "tests/support/memory.h"

namespace tarnwick {
namespace {

// A population of one variable, which serves as the name of a member.
struct Population {
    NspEngine nsp;

    explicit Population(int popsize)
    {
        nsp.variables = 1;
        nsp.popsize = popsize;
        nsp.point = {name, 0};
        rng_seed(nsp.seed, 99);
        EXPECT_TRUE(pop_create(nsp));
    }
    double name[1] = {0.0};

    // A penalty makes it infeasible.
    NspMember* add(double objective, double penalty = 0.0)
    {
        name[0] += 1.0;
        return add_member(nsp, objective, penalty);
    }
    bool has(const NspMember* member) const
    {
        NspMember** const first = nsp.ranking.data();
        return std::find(first, first + nsp.count, member) != first + nsp.count;
    }
    std::vector<double> names() const
    {
        std::vector<double> all;
        for (int p = 1; p <= nsp.count; ++p) all.push_back(pop_at(nsp, p)->point[0]);
        return all;
    }
};

TEST(Population, ranks_members_and_settles_ties)
{
    const struct {
        const char* name;
        std::vector<double> fitness;
        std::vector<double> order;  // numbers of the members as added, from 1
    } CASES[] = {
        {"one",                           {5},              {1}         },
        {"a better one leads",            {5, 4},           {2, 1}      },
        {"a worse one trails",            {4, 5},           {1, 2}      },
        {"a tie goes behind the head",    {4, 4},           {1, 2}      },
        {"and in front of the others",    {4, 4, 4},        {1, 3, 2}   },
        {"in front of a tie within",      {1, 3, 5, 3},     {1, 4, 2, 3}},
        {"in front of a tie at the tail", {1, 5, 5},        {1, 3, 2}   },
        {"infinite ones are last",        {1, HUGE_VAL, 2}, {1, 3, 2}   },
    };
    for (const auto& c : CASES) {
        Population population(10);
        for (const double fitness : c.fitness) population.add(fitness);
        EXPECT_EQ(population.names(), c.order) << c.name;
        EXPECT_EQ(pop_at(population.nsp, 0), nullptr);
        EXPECT_EQ(pop_at(population.nsp, population.nsp.count + 1), nullptr);
    }
}

TEST(Population, stays_sorted_and_keeps_who_is_protected)
{
    const long alive = blocks_alive();
    for (const double infeasible : {0.0, 0.5, 1.0})
        for (const int popsize : {10, 37}) {
            Population population(popsize);
            const NspEngine& nsp = population.nsp;
            std::mt19937 random(7);
            std::uniform_real_distribution<double> unit;
            double worst = -1.0;
            for (int k = 0; k < 2000; ++k) {
                const double penalty = unit(random) < infeasible ? 1.0 + unit(random) : 0.0;
                const NspMember* const added = population.add(unit(random), penalty);
                worst = std::max(worst, added->fitness);

                ASSERT_EQ(nsp.count, std::min(k + 1, popsize));
                int feasible = 0;
                double lowest = 1e30;
                for (int p = 1; p <= nsp.count; ++p) {
                    const NspMember& member = *pop_at(nsp, p);
                    ASSERT_TRUE(p == 1 || pop_at(nsp, p - 1)->fitness <= member.fitness);
                    if (is_feasible(member)) lowest = std::min(lowest, member.objective);
                    feasible += is_feasible(member);
                }
                ASSERT_EQ(nsp.feasiblemembers, feasible);
                ASSERT_TRUE(population.has(added));
                ASSERT_EQ(pop_last(nsp).fitness, worst) << "the worst one goes never";
                ASSERT_TRUE(feasible == 0 || nsp.bestfeasible->objective == lowest);
            }
        }
    EXPECT_EQ(blocks_alive(), alive);
}

// Inserts a new best member into a full population, over and over, and counts which position loses.
TEST(Population, culls_evenly_in_the_worst_part)
{
    constexpr int ROUNDS = 3000;
    int lost[12] = {};
    for (int round = 0; round < ROUNDS; ++round) {
        Population population(10);
        population.nsp.seed = -1 - round;
        for (int k = 1; k <= 10; ++k) population.add(k, 1.0);
        population.add(0.0, 1.0);
        // Position 1 is the new one, and member k was at k + 1.
        const std::vector<double> left = population.names();
        for (int k = 1; k <= 10; ++k)
            if (std::find(left.begin(), left.end(), k) == left.end()) ++lost[k + 1];
    }
    for (int position = 1; position <= 11; ++position) {
        const bool may_go = 8 <= position && position <= 10;
        EXPECT_NEAR(lost[position], may_go ? ROUNDS / 3 : 0, may_go ? 150 : 0) << position;
    }
}

TEST(Population, spares_feasible_members_where_they_are_rare)
{
    constexpr int ROUNDS = 3000;
    int lost = 0;
    for (int round = 0; round < ROUNDS; ++round) {
        Population population(10);
        population.nsp.seed = -1 - round;
        population.add(0.0);  // the best feasible member
        for (int k = 1; k <= 7; ++k) population.add(k, 0.5);
        const NspMember* const feasible = population.add(9.0);
        population.add(10.0, 1.0);
        population.add(-5.0, 1.0);  // one too many: 8 to 10 may go, 10 is the feasible one
        lost += !population.has(feasible);
    }
    // A draw of position 10 costs it its place with probability 2/11, and is repeated otherwise.
    const double chance = (2.0 / 11.0) / 3.0 / (1.0 - (9.0 / 11.0) / 3.0);
    EXPECT_NEAR(lost, ROUNDS * chance, 5.0 * std::sqrt(ROUNDS * chance));
}

}  // namespace
}  // namespace tarnwick
