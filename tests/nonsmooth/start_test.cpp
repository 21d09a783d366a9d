#include <gtest/gtest.h>

#include <limits>

#include "tests/nonsmooth/hostmodel.h"
#include "tests/support/clock.h"

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

// Each evaluation takes two seconds of the clock, so that the time is up long before there are 200
// members.
TEST(NonSmoothStart, is_stopped_by_the_time_limit_if_the_function_is_slow)
{
    std::uint32_t now = 1000;
    set_clock(now);
    const HostModel host({.variables = 2, .functions = [&now](const Reals&, double& f, Reals&) {
                              f = 0.0;
                              set_clock(now += 2000);
                              return true;
                          }});
    setintparam(host.lp, PARAM_NSPPOPSIZE, 200);
    setdblparam(host.lp, PARAM_TIMELIMIT, 20.0);
    EXPECT_EQ(optimize(host.lp), 0);
    release_clock();
    std::int32_t status = STAT_NONE;
    solution(host.lp, &status, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(status, STAT_TIMELIM_FEAS);
    EXPECT_LT(host.evaluations, 30);
}

}  // namespace
}  // namespace tarnwick
