#include <gtest/gtest.h>

#include <cmath>

#include "tests/reducedgradient/smoothmodel.h"
#include "tests/support/messages.h"

namespace tarnwick {
namespace {

// Phase 1 has a gradient for x, the objective has none: what isn't passed is zero.
TEST(SmoothDerivatives, that_the_host_does_not_pass_are_zero)
{
    SmoothHost host({
        .name = "zero entries",
        .variables = 2,
        .functions =
            [](const Reals& x, double& f, Reals& g) {
                f = std::pow(x[1] - 2, 2);
                g[0] = x[0] + x[1];
                return true;
                                                     },
        .senses = "G",
        .rhs = {4},
        .lb = {0, 0},
        .ub = {3, 9},
        .derivatives =
            [](const Reals& x, Reals& c, Reals& a) {
                c = {0, 2 * (x[1] - 2)};
                a = {1, 1};
                return true;
                                                     }
    });
    setintparam(host.lp, PARAM_NLPDERIVMODE, 2);
    const Answer answer = host.solve();
    EXPECT_EQ(answer.status, STAT_OPTIMAL);
    EXPECT_NEAR(answer.objval, 0.0, 1e-6);
    expect_stationary(host, answer, 1e-3);
}

// Strongly curved, with the optimum on bounds: (1, 4, 2) with x y z = 8.
Smooth curved(double error)
{
    return {
        .name = "curved",
        .variables = 3,
        .functions =
            [](const Reals& x, double& f, Reals& g) {
                f = 50 * x[0] * x[0] + std::exp(x[1]) + 20 * x[2] * x[2];
                g[0] = x[0] * x[1] * x[2];
                return true;
                                                     },
        .senses = "G",
        .rhs = {8 },
        .start = {1,  5, 2},
        .lb = {1, 4, 2},
        .ub = {3,  9, 2},
        .derivatives =
            [error](const Reals& x, Reals& c, Reals& a) {
                c = {100 * x[0], std::exp(x[1]), -1};  // z is fixed
                a = {x[1] * x[2], x[0] * x[2] + error, 0};
                return true;
                                                     }
    };
}

TEST(SmoothDerivatives, pass_their_check_when_they_are_right)
{
    for (const std::int32_t scaling : {-1, 0}) {
        SmoothHost host(curved(0.0));
        setintparam(host.lp, PARAM_SCALING, scaling);
        setintparam(host.lp, PARAM_NLPDERIVMODE, 3);
        const Answer answer = host.solve();
        EXPECT_EQ(answer.status, STAT_OPTIMAL);
        EXPECT_NEAR(answer.objval, 50 + std::exp(4.0) + 80, 1e-4);
    }
}

TEST(SmoothDerivatives, end_the_run_when_they_are_wrong)
{
    for (const double error : {1e-2, -1e-2, 1e300, std::nan("")}) {
        SCOPED_TRACE(error);
        SmoothHost host(curved(error));
        setintparam(host.lp, PARAM_NLPDERIVMODE, 3);
        EXPECT_EQ(host.solve().status, STAT_EVALERROR);
        EXPECT_EQ(host.jacobians, 1);
    }
}

// The row's entry for y is 2 by hand.
TEST(SmoothDerivatives, that_are_wrong_can_be_passed_over)
{
    const MessageLog log;
    SmoothHost host(curved(0.01));
    setintparam(host.lp, PARAM_NLPDERIVMODE, 3);
    const Answer answer = host.solve();
    EXPECT_NEAR(answer.objval, 50 + std::exp(4.0) + 80, 1e-4);
    const auto shown = MessageLog::take();
    ASSERT_FALSE(shown.empty());
    EXPECT_EQ(shown[0].text, "Jacobian [0, 1] = 2.01, should be 2.0");
}

// ---- columns that prove constant

TEST(SmoothDerivatives, of_constant_columns_are_spared_after_four_sweeps)
{
    long spared = 0, all = 0;
    for (const std::int32_t recognise : {0, 1}) {
        // A long way in small steps: the first row bends, x3 to x8 are linear.
        SmoothHost host({
            .name = "mostly linear",
            .variables = 8,
            .functions =
                [](const Reals& x, double& f, Reals& g) {
                    f = 100 * std::pow(x[1] - x[0] * x[0], 2) + std::pow(1 - x[0], 2);
                    g[0] = 0.0;
                    for (std::size_t j = 2; j < 8; ++j) {
                        f += static_cast<double>(j) * x[j];
                        g[0] += x[j];
                    }
                    return true;
                                                         },
            .senses = "G",
            .rhs = {                                                               4},
            .start = { -1.2, 1,  1, 1, 1, 1, 1, 1},
            .lb = { -9,   -9, 0, 0, 0, 0, 0, 0},
            .ub = Reals(8, 9.0)
        });
        setintparam(host.lp, PARAM_NLPRECOGLIN, recognise);
        setintparam(host.lp, PARAM_SCALING, -1);
        setintparam(host.lp, PARAM_NLPDERIVMODE, 1);
        const Answer answer = host.solve();
        EXPECT_TRUE(answer.status == STAT_OPTIMAL || answer.status == STAT_CONVERGED);
        EXPECT_NEAR(answer.objval, 8.0, 1e-2);
        (recognise ? spared : all) = host.evaluations;
    }
    EXPECT_LT(spared, all * 6 / 10);
}

// Linear as far as the path goes, until the last of its points.
TEST(SmoothDerivatives, of_columns_that_only_seemed_constant_are_found_out)
{
    long call = 0;
    SmoothHost host({
        .name = "bends at last",
        .variables = 2,
        .functions =
            [&call](const Reals& x, double& f, Reals&) {
                f = 100 * std::pow(x[1] - 3, 4) + x[0];
                if (x[0] < 1e-9) f += 1e-3 * std::pow(x[0], 2);
                ++call;
                return true;
                                                        },
        .start = {                                                              5, 0},
        .lb = {  0, -9},
        .ub = { 9, 9}
    });
    setintparam(host.lp, PARAM_NLPRECOGLIN, 1);
    setintparam(host.lp, PARAM_SCALING, -1);
    EXPECT_NE(host.solve().status, STAT_MODELCHECK);
    const long all = call;

    // The same with another slope in the very last calls, those of the check.
    SmoothHost bent(host.model);
    call = 0;
    bent.model.functions = [&call, all](const Reals& x, double& f, Reals&) {
        f = 100 * std::pow(x[1] - 3, 4) + x[0];
        if (++call > all - 4) f += x[0];
        return true;
    };
    setintparam(bent.lp, PARAM_NLPRECOGLIN, 1);
    setintparam(bent.lp, PARAM_SCALING, -1);
    EXPECT_EQ(bent.solve().status, STAT_MODELCHECK);
}

}  // namespace
}  // namespace tarnwick
