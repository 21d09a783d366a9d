#include "nonsmooth/population.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

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
        nsp.seed = -99;
        EXPECT_TRUE(pop_create(nsp));
    }
    double name[1] = {0.0};

    // A penalty makes it infeasible.
    NspMember* add(double objective, double penalty = 0.0)
    {
        name[0] += 1.0;
        return add_member(nsp, objective, penalty);
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
        {"a better one leads",         {5, 4},           {2, 1}      },
        {"a tie goes behind the head", {4, 4},           {1, 2}      },
        {"and in front of the others", {4, 4, 4},        {1, 3, 2}   },
        {"in front of a tie within",   {1, 3, 5, 3},     {1, 4, 2, 3}},
        {"infinite ones are last",     {1, HUGE_VAL, 2}, {1, 3, 2}   },
    };
    for (const auto& c : CASES) {
        Population population(10);
        for (const double fitness : c.fitness) population.add(fitness);
        EXPECT_EQ(population.names(), c.order) << c.name;
    }
}

TEST(Population, stays_sorted_and_keeps_who_is_protected)
{
    const long alive = blocks_alive();
    for (const double infeasible : {0.0, 0.5, 1.0})
        for (const int popsize : {10, 37}) {
            Population population(popsize);
            const NspEngine& nsp = population.nsp;
            Draw draw(7);
            double worst = -1.0;
            for (int k = 0; k < 2000; ++k) {
                const double penalty = draw.with(infeasible) ? draw.real(1, 2) : 0.0;
                const NspMember* const added = population.add(draw.unit(), penalty);
                worst = std::max(worst, added->fitness);

                ASSERT_EQ(nsp.count, std::min(k + 1, popsize));
                int feasible = 0;
                bool is_in = false;
                double lowest = 1e30;
                for (int p = 1; p <= nsp.count; ++p) {
                    const NspMember& member = *pop_at(nsp, p);
                    ASSERT_TRUE(p == 1 || pop_at(nsp, p - 1)->fitness <= member.fitness);
                    if (is_feasible(member)) lowest = std::min(lowest, member.objective);
                    feasible += is_feasible(member);
                    is_in = is_in || &member == added;
                }
                ASSERT_EQ(nsp.feasiblemembers, feasible);
                ASSERT_TRUE(is_in);
                ASSERT_EQ(pop_last(nsp).fitness, worst) << "the worst one goes never";
                ASSERT_TRUE(feasible == 0 || nsp.bestfeasible->objective == lowest);
            }
        }
    EXPECT_EQ(blocks_alive(), alive);
}

}  // namespace
}  // namespace tarnwick
