#include <gtest/gtest.h>

#include <cmath>

#include "tests/nonsmooth/hostmodel.h"
#include "tests/support/clock.h"

namespace tarnwick {
namespace {

struct Outcome {
    std::int32_t status = STAT_NONE;
    double objval = 0.0;
    Reals x, slack;
};

Outcome solve(const HostModel& host)
{
    Outcome outcome;
    outcome.x.resize(host.model.lb.size());
    outcome.slack.resize(host.model.senses.size() + 1);
    EXPECT_EQ(optimize(host.lp), 0);
    EXPECT_EQ(solution(host.lp, &outcome.status, &outcome.objval, outcome.x.data(), nullptr,
                       outcome.slack.data(), nullptr),
              0);
    return outcome;
}

bool absolute_value(const Reals& x, double& objective, Reals& rows)
{
    objective = 1.0;
    for (const double v : x) objective += std::fabs(v - 3.0);
    double sum = 0.0;
    for (const double v : x) sum += v;
    for (double& row : rows) row = sum;
    return true;
}

TEST(NonSmoothSolve, finds_a_minimum_with_a_kink)
{
    const HostModel host({.variables = 3, .functions = absolute_value});
    const Outcome outcome = solve(host);
    EXPECT_EQ(outcome.status, STAT_CONVERGED);
    EXPECT_NEAR(outcome.objval, 1.0, 0.1);
}

}  // namespace
}  // namespace tarnwick
