#include <gtest/gtest.h>

#include <cmath>

#include "tests/reducedgradient/smoothmodel.h"
#include "tests/support/messages.h"

namespace tarnwick {
namespace {

// Strongly curved, with the optimum on bounds: (1, 4, 2) with x y z = 8. The error is in the row's
// entry for y, and z is fixed, so that its wrong entry is not looked at.
Smooth curved(double error)
{
    Smooth model{.variables = 3, .senses = "G", .rhs = {8}};
    model.functions = [](const Reals& x, double& f, Reals& g) {
        f = 50 * x[0] * x[0] + std::exp(x[1]) + 20 * x[2] * x[2];
        g[0] = x[0] * x[1] * x[2];
        return true;
    };
    model.derivatives = [error](const Reals& x, Reals& c, Reals& a) {
        c = {100 * x[0], std::exp(x[1]), -1};
        a = {x[1] * x[2], x[0] * x[2] + error, 0};
        return true;
    };
    model.start = {1, 5, 2};
    model.lb = {1, 4, 2};
    model.ub = {3, 9, 2};
    return model;
}
const double CURVED = 50 + std::exp(4.0) + 80;

TEST(SmoothDerivatives, end_the_run_when_they_are_wrong_and_not_when_they_are_right)
{
    for (const double error : {0.0, 1e-2, -1e-2, 1e300, std::nan("")}) {
        SCOPED_TRACE(error);
        SmoothHost host(curved(error));
        setintparam(host.lp, PARAM_NLPDERIVMODE, 3);
        EXPECT_EQ(host.solve().status, error == 0.0 ? STAT_OPTIMAL : STAT_EVALERROR);
        EXPECT_EQ(host.jacobians == 1, error != 0.0);
    }
}

// The row's entry for y is 2 by hand.
TEST(SmoothDerivatives, that_are_wrong_can_be_passed_over)
{
    const MessageLog log;
    SmoothHost host(curved(0.01));
    setintparam(host.lp, PARAM_NLPDERIVMODE, 3);
    EXPECT_NEAR(host.solve().objval, CURVED, 1e-4);
    const auto shown = MessageLog::take();
    ASSERT_FALSE(shown.empty());
    EXPECT_EQ(shown[0].text, "Jacobian [0, 1] = 2.01, should be 2.0");
}

// ---- columns that prove constant

TEST(SmoothDerivatives, of_columns_that_only_seemed_constant_are_found_out)
{
    for (const std::int32_t scaling : {-1, 0}) {
        SCOPED_TRACE(scaling);
        long call = 0, bent_from = 1000000;
        Smooth model{.variables = 3, .senses = "L", .rhs = {900}};
        model.start = {5, 0, 2};
        model.lb = {0, -9, -9};
        model.ub = {9, 9, 4};
        model.functions = [&](const Reals& x, double& f, Reals& g) {
            f = 100 * std::pow(x[1] - 3, 4) + x[0] - 7 * x[2];
            g[0] = 40 * x[0] + 0.001 * x[2];
            if (++call >= bent_from) f += x[0];
            EXPECT_TRUE(0 <= x[0] && x[2] <= 4) << x[0] << " " << x[2];
            return true;
        };
        SmoothHost host(model);
        set(host.lp, PARAM_NLPRECOGLIN, 1, PARAM_SCALING, scaling);
        EXPECT_TRUE(is_good(host.solve().status));
        bent_from = std::exchange(call, 0) - 3;
        EXPECT_EQ(host.solve().status, STAT_MODELCHECK);
    }
}

// ---- failures

}  // namespace
}  // namespace tarnwick
