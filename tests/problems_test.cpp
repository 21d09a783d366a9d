#include <gtest/gtest.h>

#include <cmath>

#include "bench/problems/loadedproblem.h"

namespace tarnwick {

namespace {

// The digits in which the points were published.
constexpr double PRINTED_TOL = 1e-6;

TEST(ProblemsTest, published_best_points_are_feasible_and_attain_the_optimum)
{
    for (const auto& collection : {smooth_problems(), nonsmooth_problems()}) {
        for (const auto& problem : collection) {
            if (problem.best.empty()) continue;
            SCOPED_TRACE(problem.name);
            EXPECT_LE(violation(problem, problem.best), PRINTED_TOL);
            EXPECT_NEAR(objective(problem, problem.best), problem.optimum,
                        PRINTED_TOL * (1 + std::fabs(problem.optimum)));
        }
    }
}

}  // namespace

}  // namespace tarnwick
