#include "platform/floatcontrol.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <cfloat>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include "tests/support/verifier.h"

namespace tarnwick {
namespace {

volatile double one = 1.0, tiny = DBL_MIN, zero = 0.0;

void expect_the_setting_of_the_library()
{
    EXPECT_EQ(std::fegetround(), FE_TONEAREST);
    EXPECT_EQ(one + DBL_EPSILON / 4.0, 1.0);
    EXPECT_GT(tiny / 2.0, 0.0) << "denormals are numbers";
    EXPECT_GT(one / zero, DBL_MAX) << "and nothing is trapped";
}

TEST(FloatControl, is_set_whatever_the_host_had_chosen)
{
    for (const int rounding : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        std::fesetround(rounding);
#if defined(__SSE2__)
        _mm_setcsr((_mm_getcsr() | 0x8040U) & ~0x1F80U);  // denormals flushed, everything trapped
#endif
        set_float_control();
        expect_the_setting_of_the_library();
    }
}

TEST(FloatControl, is_set_by_a_run)
{
    const LinearModel model{
        {{{3.0, 1.0}, 'L', 1.0}},
        { -1.0,                   0.0}
    };
    const LoadedModel loaded(model);
    std::fesetround(FE_UPWARD);
    EXPECT_EQ(optimize(loaded.lp), 0);
    expect_the_setting_of_the_library();
    expect_optimal(model, answer_of(loaded.lp));
}

}  // namespace
}  // namespace tarnwick
