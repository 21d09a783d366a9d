#include <gtest/gtest.h>

#include <limits>

#include "tests/nonsmooth/hostmodel.h"

namespace tarnwick {
namespace {

// A step has a value everywhere, at NaN as well.
bool step(const Reals& x, double& objective, Reals&)
{
    objective = x[1] > 3.0 ? 1.0 : 0.0;
    return true;
}

TEST(NonSmoothStart, that_is_no_number_is_refused_with_and_without_scaling)
{
    constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
    for (const std::int32_t scaling : {0, -1}) {
        const HostModel host({
            .variables = 2, .functions = step, .start = {1.0, NaN}
        });
        setintparam(host.lp, PARAM_SCALING, scaling);
        EXPECT_EQ(optimize(host.lp), 0);
        std::int32_t status = STAT_NONE;
        solution(host.lp, &status, nullptr, nullptr, nullptr, nullptr, nullptr);
        EXPECT_EQ(status, STAT_BADMODEL) << scaling;
    }
}

}  // namespace
}  // namespace tarnwick
