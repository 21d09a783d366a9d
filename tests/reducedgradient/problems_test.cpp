#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "bench/problems/loadedproblem.h"

namespace tarnwick {

namespace {

// Relative to 1 + the size of the optimum; of a row also to its value at the start, which is the
// row's unit.
constexpr double OPTIMUM_TOL = 1e-4;
constexpr double FEASTOL = 2e-6;
constexpr double BINDING_TOL = 1e-3;  // how near to a limit a multiplier may still be felt
constexpr double STATIONARY_TOL = 0.02;

// With the default a run ends when it has made 1 - 1e-4 of its progress.
constexpr double CONVERGENCE_TOL = 1e-10;

enum Derivatives : std::int32_t { FORWARD, CENTRAL, HOST };

struct Allowance {
    double forward = OPTIMUM_TOL, exact = OPTIMUM_TOL;  // by the source of the derivatives
    bool is_scaled = true;
    bool may_find_nothing = false;
};

// Where the method leaves more of the optimum, and why.
// clang-format off
const struct {
    const char* name;
    Allowance allowance;
} HARD[] = {
    // curved valleys, in which forward differences lose the direction
    {"HS 1",                           {.forward = 5e-3}},
    {"HS 38",                          {.forward = 1e-3}},
    {"MGH 1: Rosenbrock",              {.forward = 5e-3}},
    {"MGH 12: Box, three-dimensional", {.forward = 5e-3}},
    {"MGH 21: Rosenbrock in 30 variables", {.forward = 0.1}},
    // rows that start hundreds of times as large as their limit, with a tolerance to match
    {"HS 10",                          {.forward = 1e-3, .exact = 1e-3}},
    {"HS 64",                          {.forward = 1e-3, .exact = 1e-3}},
    {"HS 72",                          {.forward = 1e-3, .exact = 1e-3}},
    // fourteen variables start at a thousandth of their size
    {"HS 117",                         {.is_scaled = false}},
    // two variables start where no row feels them, and the violation is stationary in the others
    {"HS 61",                          {.may_find_nothing = true}},
};
// clang-format on

Allowance allowance_of(const FunctionProblem& problem)
{
    for (const auto& hard : HARD)
        if (std::strcmp(hard.name, problem.name) == 0) return hard.allowance;
    return {};
}

// Distance from the optimum or from the nearest known local one.
double gap(const FunctionProblem& problem, double f)
{
    Reals optima = problem.local;
    optima.push_back(problem.optimum);
    double nearest = INF;
    for (const double best : optima)
        nearest = std::min(nearest, std::fabs(f - best) / (1 + std::fabs(best)));
    return nearest;
}

void expect_solved(const FunctionProblem& problem, const Answer& answer, double optimumtol)
{
    EXPECT_TRUE(answer.status == STAT_OPTIMAL || answer.status == STAT_CONVERGED) << answer.status;
    EXPECT_LE(violation(problem, answer.x), FEASTOL);
    const double f = objective(problem, answer.x);
    EXPECT_NEAR(answer.objval, f, 1e-12 * std::fabs(f));
    EXPECT_LE(gap(problem, f), optimumtol) << f << " for " << problem.optimum;
    if (answer.status == STAT_OPTIMAL) {
        EXPECT_LE(stationarity_error(problem, answer, BINDING_TOL), STATIONARY_TOL);
    }
}

class SmoothProblems : public testing::TestWithParam<std::int32_t> {};

TEST_P(SmoothProblems, end_at_their_optimum_or_with_their_status)
{
    for (const auto& problem : smooth_problems()) {
        SCOPED_TRACE(problem.name);
        const Allowance allowance = allowance_of(problem);
        LoadedProblem loaded(problem, Family::smooth);
        setintparam(loaded.lp, PARAM_NLPDERIVMODE, GetParam());
        setdblparam(loaded.lp, PARAM_NLPCONVTOL, CONVERGENCE_TOL);
        if (!allowance.is_scaled) setintparam(loaded.lp, PARAM_SCALING, -1);

        const Answer answer = loaded.solve();
        if (problem.status != STAT_NONE)
            EXPECT_EQ(answer.status, problem.status);
        else if (!allowance.may_find_nothing || answer.status != STAT_INFEASIBLE)
            expect_solved(problem, answer,
                          GetParam() == FORWARD ? allowance.forward : allowance.exact);
    }
}

// On the way the derivative of a row by its basic variable goes to zero, and the steps with it. With
// another basis the run goes on.
TEST(SmoothProblem, whose_basis_becomes_singular_does_not_end_there)
{
    for (const char* name : {"HS 6", "HS 27", "HS 56"}) {
        SCOPED_TRACE(name);
        LoadedProblem loaded(problem_named(name), Family::smooth);
        setintparam(loaded.lp, PARAM_NLPDERIVMODE, HOST);
        expect_solved(loaded.problem, loaded.solve(), OPTIMUM_TOL);
    }
}

// The first step of a search can be so short that thirty doublings hardly move the point.
TEST(SmoothProblem, is_not_called_unbounded_for_doublings_of_tiny_steps)
{
    const FunctionProblem& problem = problem_named("HS 117");
    const Answer answer = LoadedProblem(problem, Family::smooth).solve();
    EXPECT_TRUE(answer.status == STAT_OPTIMAL || answer.status == STAT_CONVERGED) << answer.status;
    EXPECT_LE(gap(problem, answer.objval), 0.05);
}

INSTANTIATE_TEST_SUITE_P(DerivativeModes, SmoothProblems, testing::Values(FORWARD, CENTRAL, HOST));

}  // namespace

}  // namespace tarnwick
