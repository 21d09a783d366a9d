#include "linear/binaries.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "interface/problem.h"
#include "tests/support/enginerun.h"
#include "tests/support/integers.h"

namespace tarnwick {
namespace {

enum : unsigned { BY_ROW = 1, BY_COST = 2, IN_ORDER = 4, TIGHTER = 8 };

void set_switches(Problem* lp, unsigned switches)
{
    setintparam(lp, PARAM_BINROWFIX, (switches & BY_ROW) != 0);
    setintparam(lp, PARAM_BINDUALFIX, (switches & BY_COST) != 0);
    setintparam(lp, PARAM_BINORDER, (switches & IN_ORDER) != 0);
    setintparam(lp, PARAM_BINTIGHTEN, (switches & TIGHTER) != 0);
}

TEST(Binaries, no_switch_changes_the_optimum)
{
    for (unsigned seed = 1; seed <= 400; ++seed) {
        const IntegerModel model = tiny_integer_model(seed);
        const Truth truth = truth_of(model);
        for (unsigned switches = 1; switches < 16; ++switches) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", switches " + std::to_string(switches));
            const LoadedIntegers loaded(model);
            set_switches(loaded.lp, switches);
            const Answer answer = solve_integers(loaded.lp);
            // An unbounded relaxation may be found out to have no integer point.
            if (truth.status == STAT_UNBOUNDED && answer.status != STAT_UNBOUNDED) continue;
            ASSERT_EQ(answer.status, truth.status);
            if (truth.status != STAT_MIP_OPTIMAL) continue;
            expect_integer_solution(model, answer);
            ASSERT_NEAR(answer.objval, truth.objective, 1e-6);
        }
    }
}

// A model set up by the engine, with its integer letters and switches.
struct Prepared {
    Prepared(const IntegerModel& model, unsigned switches, int scaling) : loaded(model)
    {
        set_switches(loaded.lp, switches);
        setintparam(loaded.lp, PARAM_SCALING, scaling);
        run.emplace(loaded.lp, RUN_REPEATED);
        lpfinish(run->run);
        EXPECT_TRUE(run->run.intflags.create(model.numcols()));
        for (std::size_t j = 0; j < model.numcols(); ++j)
            run->run.intflags[j] = model.is_integer(j);
        EXPECT_EQ(lpinit(run->run), 1);
    }
    LoadedIntegers loaded;
    std::optional<EngineRun> run;
};

TEST(Binaries, are_fixed_and_others_tightened_by_hand_examples)
{
    // clang-format off
    const struct {
        const char* name;
        IntegerModel model;
        unsigned switches;
        std::int32_t possible;
        Reals lower, upper;
    } CASES[] = {
        {"<=: too heavy alone", {{{{{5, 3}, 'L', 4}}, {0, 0}, {0, 0}, {1, 1}}, "BB"}, BY_ROW, 1, {0, 0}, {0, 1}},
        {">=: needed", {{{{{5, 3}, 'G', 4}}, {0, 0}, {0, 0}, {1, 1}}, "BB"}, BY_ROW, 1, {1, 0}, {1, 1}},
        {"an equation by its upper side", {{{{{5, 3}, 'E', 3}}, {0, 0}, {0, 0}, {1, 1}}, "BB"}, BY_ROW, 1, {0, 0}, {0, 1}},
        {"one at one leaves no room", {{{{{2, 3}, 'L', 4}}, {0, 0}, {1, 0}, {1, 1}}, "IB"}, BY_ROW, 1, {1, 0}, {1, 0}},
        {"a chain over two rows", {{{{{5, 0}, 'G', 1}, {{1, 1}, 'L', 1}}, {0, 0}, {0, 0}, {1, 1}}, "BB"}, BY_ROW, 1, {1, 0}, {1, 0}},
        {"others take their share", {{{{{3, 1}, 'L', 4}}, {0, 0}, {0, 2}, {1, 9}}, "BC"}, BY_ROW, 1, {0, 2}, {0, 9}},
        {"<= impossible", {{{{{1, 1}, 'L', -1}}, {0, 0}, {0, 0}, {1, 1}}, "BB"}, IN_ORDER, 0, {0, 0}, {1, 1}},
        {">= impossible", {{{{{1, 1}, 'G', 3}}, {0, 0}, {0, 0}, {1, 1}}, "BB"}, IN_ORDER, 0, {0, 0}, {1, 1}},
        {"impossible by less than the tolerance", {{{{{1, 1}, 'L', -5e-9}}, {0, 0}, {0, 0}, {1, 1}}, "BB"}, IN_ORDER, 1, {0, 0}, {1, 1}},
        {"costs and loosens, and the row lets go", {{{{{1, 1}, 'L', 1}}, {2, -1}, {0, 0}, {1, 1}}, "BB"}, BY_COST, 1, {0, 1}, {0, 1}},
        {"gains and loosens", {{{{{1, -1}, 'L', 0}}, {0, -1}, {0, 0}, {1, 1}}, "BB"}, BY_COST, 1, {0, 1}, {1, 1}},
        {"an equation holds it", {{{{{1, 1}, 'E', 1}}, {2, -1}, {0, 0}, {1, 1}}, "BB"}, BY_COST, 1, {0, 0}, {1, 1}},
        {"<= tightens above", {{{{{2, 4}, 'L', 8}}, {0, 0}, {0, 0}, {1, 9}}, "BC"}, TIGHTER, 1, {0, 0}, {1, 2}},
        {">= tightens below", {{{{{2, 4}, 'G', 6}}, {0, 0}, {0, 0}, {1, 9}}, "BC"}, TIGHTER, 1, {0, 1}, {1, 9}},
        {"an open neighbour tightens nothing", {{{{{1, 1, 1}, 'L', 5}}, {0, 0, 0}, {0, -INF, 0}, {1, INF, 9}}, "BCC"}, TIGHTER, 1, {0, -INF, 0}, {1, INF, 9}},
        {"tighter bounds fix", {{{{{0, 1}, 'G', 3}, {{2, 1}, 'L', 4}}, {0, 0}, {0, 0}, {1, 9}}, "BC"}, TIGHTER | BY_ROW, 1, {0, 3}, {0, 4}},
    };
    // clang-format on
    for (const auto& c : CASES)
        for (const int scaling : {-1, 0}) {
            SCOPED_TRACE(std::string(c.name) + ", scaling " + std::to_string(scaling));
            Prepared prepared(c.model, c.switches, scaling);
            SolveRun& run = prepared.run->run;
            prepared.run->solve();
            if (c.possible == 0) {
                EXPECT_EQ(run.result, ENGINE_INFEASIBLE);
                continue;
            }
            EXPECT_EQ(Reals(run.lb, run.lb + run.numvars), c.lower);
            EXPECT_EQ(Reals(run.ub, run.ub + run.numvars), c.upper);
        }
}

// The first row gives 9 / (2 + 1) to x2: the mean counts those that follow the largest. The second
// has none after 8, and its mean is 1; so has the third. x4 is no 0-1 variable.
TEST(Binaries, stand_in_the_order_of_how_they_dominate_the_rows)
{
    const IntegerModel model{
        {{{{2, 9, 1, 7, 0}, 'L', 9}, {{4, 0, 8, 3, 0}, 'L', 9}, {{0, 0, 0, 0, 5}, 'L', 9}},
         {1, 1, 1, 1, 1},
         {0, 0, 0, 0, 0},
         {1, 1, 1, 5, 1}},
        "BBBIB"
    };
    Prepared ordered(model, IN_ORDER, -1), plain(model, BY_ROW, -1), off(model, 0, -1);
    const auto list_of = [](const Prepared& prepared) {
        const SolveRun& run = prepared.run->run;
        return std::vector<std::int32_t>(run.branchlist, run.branchlist + run.branchcount);
    };
    EXPECT_EQ(list_of(ordered), (std::vector<std::int32_t>{3, 5, 2, 1, 4}));
    EXPECT_EQ(list_of(plain), (std::vector<std::int32_t>{1, 2, 3, 5, 4}));
    EXPECT_EQ(off.run->run.branchlist, nullptr);
}

TEST(Binaries, bounds_that_creep_come_to_an_end)
{
    const IntegerModel model{
        {{{{0, 1, -1}, 'L', -1}, {{0, -1, 1}, 'L', 0}, {{1, 0, 0}, 'L', 1}},
         {1, 1, 1},
         {0, 0, 0},
         {1, 1e9, 1e9}},
        "BCC"
    };
    const LoadedIntegers loaded(model);
    set_switches(loaded.lp, TIGHTER);
    EXPECT_EQ(solve_integers(loaded.lp).status, STAT_MIP_INFEASIBLE);
}

}  // namespace
}  // namespace tarnwick
