#include "linear/certificate.h"

#include <gtest/gtest.h>

#include "tests/support/enginerun.h"
#include "tests/support/verifier.h"

namespace tarnwick {
namespace {

// Each model falls short of its rows by 1, and turns feasible when its first variable loses its upper
// bound. All its entries are 1 or -1, so that scaled units are the real ones.
// clang-format off
const struct {
    const char* name;
    LinearModel model;
} CASES[] = {
    {"an artificial stays basic",              {{{{1}, 'G', 2}}, {0}, {0}, {1}}},
    {"an equation whose sign is changed",      {{{{-1}, 'E', -2}}, {0}, {0}, {1}}},
    {"a <= row whose sign is changed",         {{{{-1}, 'L', -2}}, {0}, {0}, {1}}},
    {"the artificial of an equation has gone", {{{{-1, 1}, 'E', 0}, {{0, 1}, 'G', 2}}, {0, 0}, {0, 0}, {1, INF}}},
    {"a surplus is nonbasic",                  {{{{0, 1, 0}, 'G', 1}, {{1, -1, 0}, 'G', 1}, {{0, 1, 1}, 'G', 2}}, {0, 0, 0}, {0, 0, 0}, {1, INF, INF}}},
    {"a slack is nonbasic",                    {{{{-1, 1}, 'L', 0}, {{0, 1}, 'E', 3}}, {0, 0}, {0, 0}, {2, INF}}},
    {"rest values away from zero",             {{{{1, 1}, 'G', 0}}, {0, 0}, {-9, -5}, {-3, 2}}},
};
// clang-format on

TEST(Certificate, confirms_an_infeasibility_and_nothing_else)
{
    for (const std::uint32_t flags : {RUN_DIRECT, RUN_REPEATED})
        for (const auto& c : CASES) {
            SCOPED_TRACE(std::string(c.name) + (flags == RUN_DIRECT ? "" : ", rows kept"));
            const LoadedModel loaded(c.model);
            EngineRun engine(loaded.lp, flags);
            EXPECT_EQ(engine.solve(), ENGINE_INFEASIBLE);
            LpEngine& lp = engine.record();
            lp.feastol = 1.9;  // half of it is rounding
            EXPECT_TRUE(isinfeasible(lp));
            lp.feastol = 2.1;
            EXPECT_FALSE(isinfeasible(lp)) << "within the tolerance";

            lp.feastol = 1e-8;
            lp.upper[1] = INF;
            EXPECT_FALSE(isinfeasible(lp)) << "the bound that the proof needs is not there";
        }
}

// Unscaled, entries below the tolerance of pricing.
TEST(Certificate, is_asked_for_after_small_entries_have_been_tried)
{
    // clang-format off
    const struct {
        const char* name;
        LinearModel model;
        std::int32_t status;
        double objective;
    } cases[] = {
        {"one that makes a pivot",           {{{{5e-6}, 'G', 1}}, {1}},                         STAT_OPTIMAL,    2e5},
        {"one too small for a pivot",        {{{{1, 5e-7}, 'G', 2}}, {1, 0}, {0, 0}, {1, INF}}, STAT_MODELCHECK, 0.0},
        {"the same, with nowhere far to go", {{{{1, 5e-7}, 'G', 2}}, {1, 0}, {0, 0}, {1, 9}},   STAT_INFEASIBLE, 0.0},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const LoadedModel loaded(c.model);
        setintparam(loaded.lp, PARAM_SCALING, -1);
        const Answer answer = solve(loaded.lp);
        EXPECT_EQ(answer.status, c.status);
        if (c.status != STAT_OPTIMAL) continue;
        EXPECT_NEAR(answer.objval, c.objective, 1e-6);
    }
}

}  // namespace
}  // namespace tarnwick
