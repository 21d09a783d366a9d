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

// A long way in small steps: x and y bend, the others are linear.
TEST(SmoothDerivatives, of_constant_columns_are_spared_after_four_sweeps)
{
    Smooth model{.variables = 8, .senses = "G", .rhs = {4}};
    model.functions = [](const Reals& x, double& f, Reals& g) {
        f = 100 * std::pow(x[1] - x[0] * x[0], 2) + std::pow(1 - x[0], 2);
        for (std::size_t j = 2; j < 8; ++j) {
            f += static_cast<double>(j) * x[j];
            g[0] += x[j];
        }
        return true;
    };
    model.start = {-1.2, 1, 1, 1, 1, 1, 1, 1};
    model.lb = {-9, -9, 0, 0, 0, 0, 0, 0};
    model.ub = Reals(8, 9.0);
    long evaluations[2];
    for (const int recognise : {0, 1}) {
        SmoothHost host(model);
        set(host.lp, PARAM_NLPRECOGLIN, recognise, PARAM_SCALING, -1, PARAM_NLPDERIVMODE, 1);
        const Answer answer = host.solve();
        EXPECT_TRUE(is_good(answer.status)) << answer.status;
        EXPECT_NEAR(answer.objval, 8.0, 1e-2);
        evaluations[recognise] = host.evaluations;
    }
    EXPECT_LT(evaluations[1], evaluations[0] * 6 / 10);
}

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

// A point in scaled units would be near (1, 1), far from these bounds. The final call is at the point
// itself, not beside it.
TEST(SmoothDerivatives, that_fail_leave_the_point_in_the_units_of_the_host)
{
    for (const std::int32_t derivmode : {0, 1, 2, 3})
        for (long bad = 1, call = 1; bad <= call && !HasFailure(); ++bad) {
            SCOPED_TRACE(testing::Message() << "derivatives " << derivmode << ", call " << bad);
            Reals failed, final;
            const auto succeeds = [&](const Reals& x) {
                EXPECT_TRUE(80 < x[0] && x[0] < 130 && 0.005 < x[1] && x[1] < 0.05)
                    << x[0] << " " << x[1];
                final = x;
                if (++call == bad) failed = x;
                return call != bad;
            };
            Smooth model{.variables = 2, .senses = "G", .rhs = {100}};
            model.start = {110, 0.03};
            model.lb = {90, 0.01};
            model.ub = {120, 0.04};
            model.functions = [&](const Reals& x, double& f, Reals& g) {
                f = std::pow(x[0] - 105, 2) + 1e4 * std::pow(x[1] - 0.02, 2);
                g[0] = x[0] + 1000 * x[1];
                return succeeds(x);
            };
            model.derivatives = [&](const Reals& x, Reals& c, Reals& a) {
                c = {2 * (x[0] - 105), 2e4 * (x[1] - 0.02)};
                a = {1, 1000};
                return succeeds(x);
            };
            SmoothHost host(model);
            call = 0;
            setintparam(host.lp, PARAM_NLPDERIVMODE, derivmode);
            const Answer answer = host.solve();
            EXPECT_TRUE(call <= bad || answer.status == STAT_EVALERROR) << answer.status;
            for (const auto& [column, point] : host.beside)
                EXPECT_TRUE(point != failed || final != failed) << column;
        }
}

}  // namespace
}  // namespace tarnwick
