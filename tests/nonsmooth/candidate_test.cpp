#include "nonsmooth/candidate.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/nonsmooth/hostmodel.h"
#include "tests/support/clock.h"

namespace tarnwick {
namespace {

// One variable, one row that has the value of the variable, and the given objective.
FunctionCase one_row(const char* sense, double rhs, double objective = 10.0)
{
    return {.functions =
                [objective](const Reals& x, double& f, Reals& rows) {
                    f = objective;
                    for (double& row : rows) row = x[0];
                    return true;
                },
            .senses = sense,
            .rhs = {rhs},
            .lb = {-1e29},
            .ub = {1e29}};
}

TEST(Fitness, is_the_objective_with_a_penalty_for_violated_rows)
{
    // Weights at the default tolerance of 1e-6: 1000, and the square root of that for equations.
    const double EQUALITY = std::sqrt(1000.0);
    const struct {
        const char* name;
        const char* sense;
        double rhs, value, objective, penalty;
    } CASES[] = {
        {"kept",                              "L", 5,    4,       10,   0                },
        {"excess is relative to the value",   "L", 999,  1000,    10,   1e3 / 1001 / 1001},
        {"excess at the value 0",             "L", -0.5, 0,       10,   250              },
        {"shortfall",                         "G", 2,    1,       10,   250              },
        {"within the tolerance",              "L", 0,    0.9e-6,  10,   0                },
        {"just beyond it",                    "L", 0,    1.1e-6,  10,   1.21e-9          },
        {"equation: the square is tolerated", "E", 0,    -0.9e-3, 10,   0                },
        {"equation: the square counts",       "E", 0,    1,       10,   EQUALITY / 4     },
        {"no limit on the side of 1e30",      "L", 5,    -1e300,  10,   0                },
        {"nor on the other",                  "G", 5,    1e300,   10,   0                },
        {"swallowed by a large objective",    "L", 0,    2e-6,    1e12, 4e-9             },
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        Engine engine(one_row(c.sense, c.rhs, c.objective));
        NspEngine& nsp = engine.nsp;
        nsp.rowlower[0] = *c.sense == 'L' ? -HUGE_VAL : c.rhs;
        nsp.rowupper[0] = *c.sense == 'G' ? HUGE_VAL : c.rhs;
        ASSERT_EQ(nsp_fitness(nsp, &c.value), CANDIDATE_STANDS);
        EXPECT_EQ(nsp.objective, c.objective);
        const double tol = 1e-12 * (1 + c.penalty) + 1e-15 * c.objective;
        EXPECT_NEAR(nsp.fitness - c.objective, c.penalty, tol);
        EXPECT_EQ(nsp.fitness > nsp.objective, c.penalty > 0.0);
    }
}

TEST(Fitness, refuses_infeasible_candidates_until_as_many_were_refused_as_are_tolerated)
{
    Engine engine(one_row("L", 0.0));
    engine.nsp.infeasibletolerated = 2;
    const auto stands = [&engine](double x) {
        return nsp_fitness(engine.nsp, &x) == CANDIDATE_STANDS;
    };
    for (const bool expected : {false, false, true, false, false, true, false})
        EXPECT_EQ(stands(1.0), expected);
    EXPECT_TRUE(stands(-1.0));
    for (const bool expected : {false, false, true}) EXPECT_EQ(stands(1.0), expected);
}

TEST(Fitness, lets_equations_be_off_by_a_tenth_in_all_and_refuses_failures)
{
    Engine engine(one_row("E", 0.0));
    NspEngine& nsp = engine.nsp;
    nsp.infeasibletolerated = 100;
    const double near = 0.11, far = 0.12;  // relative to 1.11 and 1.12
    EXPECT_EQ(nsp_fitness(nsp, &near), CANDIDATE_STANDS);
    EXPECT_EQ(nsp_fitness(nsp, &far), CANDIDATE_REFUSED);

    for (const double bad : {std::nan(""), -HUGE_VAL})
        for (const bool in_row : {false, true}) {
            engine.host.model.functions = [=](const Reals&, double& objective, Reals& rows) {
                objective = in_row ? 0.0 : bad;
                rows[0] = in_row ? bad : 0.0;
                return true;
            };
            EXPECT_EQ(nsp_fitness(nsp, &near), CANDIDATE_REFUSED);
        }
    EXPECT_EQ(nsp.infeasibleinrow, 1) << "a failure is no infeasible candidate";
}

TEST(Rounding, takes_the_nearest_whole_number_within_the_bounds)
{
    const struct {
        const char* name;
        double scale, value, lower, upper, want;
    } CASES[] = {
        {"nearer below",                   1,   2.4, 0,   5,   2  },
        {"nearer above",                   1,   2.6, 0,   5,   3  },
        {"a tie goes up",                  1,   2.5, 0,   5,   3  },
        {"unless there is no room",        1,   2.5, 0,   2.9, 2  },
        {"nearer below, but out of range", 1,   2.4, 2.2, 5,   3  },
        {"no whole number in range",       1,   2.5, 2.2, 2.9, 2.5},
        {"nor for what is nearer below",   1,   2.4, 2.2, 2.9, 2.4},
        {"scaled, whole but for rounding", 0.3, 7.0, 0,   9,   7  },
        {"scaled",                         4,   2.4, 0,   5,   2  },
        {"scaled, at a bound that rounds", 0.7, 3.1, 3,   9,   3  },
        {"scaled, whole above its bound",  0.1, 3.0, 3,   3,   3  },
    };
    Engine engine({.functions = always(10.0), .ctype = "I"});
    NspEngine& nsp = engine.nsp;
    for (const auto& c : CASES) {
        nsp.varscale[0] = c.scale;
        nsp.reallower[0] = c.lower;
        nsp.realupper[0] = c.upper;
        nsp.point[0] = c.value / c.scale;
        nsp_round_integers(nsp, nsp.point);
        EXPECT_EQ(real_coordinate(nsp, 0, nsp.point[0]), c.want) << c.name;
    }
}

TEST(Accounts, count_a_failure_row_as_an_iteration_and_watch_the_stall_clock)
{
    set_clock(5000);
    Engine engine({.variables = 2, .functions = always(10.0)});
    NspEngine& nsp = engine.nsp;
    const auto account_at = [&nsp](std::uint32_t now, EngineResult outcome) {
        set_clock(now);
        return nsp_account(nsp, outcome, 0.0);
    };
    engine.run.run.control->iterlimit = 100;
    engine.add({0.0, 0.0}, 1.0);
    nsp.iterations = nsp.failuresinrow = 0;
    nsp.stallseconds = 3;
    nsp.lastimprovetick = 5000;
    for (const int iterations : {0, 0, 1, 1, 1, 2}) {
        EXPECT_EQ(account_at(5000, CANDIDATE_REFUSED), CANDIDATE_REFUSED);
        EXPECT_EQ(nsp.iterations, iterations);
    }
    EXPECT_EQ(account_at(8999, CANDIDATE_REFUSED), CANDIDATE_REFUSED) << "3 whole seconds";
    EXPECT_EQ(account_at(9000, CANDIDATE_REFUSED), ENGINE_STALLED) << "more than 3";
    EXPECT_EQ(account_at(9000, CANDIDATE_STANDS), CANDIDATE_STANDS);
    EXPECT_EQ(nsp.iterations, 3);
    EXPECT_EQ(nsp.lastimprovetick, 9000u) << "the first reference counts as an improvement";
    EXPECT_EQ(account_at(12000, CANDIDATE_STANDS), CANDIDATE_STANDS);
    EXPECT_EQ(nsp.lastimprovetick, 9000u) << "the best fitness is what it was";
    engine.add({0.5, 0.0}, 0.5);
    EXPECT_EQ(account_at(12000, CANDIDATE_STANDS), CANDIDATE_STANDS);
    EXPECT_EQ(nsp.lastimprovetick, 12000u);

    // The clock steps with each of its readings; a report takes no time without improvement.
    set_clock(20000, 100);
    EXPECT_EQ(nsp_account(nsp, CANDIDATE_STANDS, 0.0), CANDIDATE_STANDS);
    EXPECT_GT(nsp.lastimprovetick, 12000u);
    release_clock();
}

}  // namespace
}  // namespace tarnwick
