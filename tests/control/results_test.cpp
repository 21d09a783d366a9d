#include <gtest/gtest.h>

#include "tests/control/servedmodel.h"

namespace tarnwick {
namespace {

struct Stored {
    Reals dj = Reals(2), piout = Reals(4), slack = Reals(4), ranges = Reals(18, 5.0);

    explicit Stored(Problem& problem)
    {
        double* const r = ranges.data();
        problem.dj = dj.data(), problem.piout = piout.data(), problem.slack = slack.data();
        problem.colrange = {r, r + 2, r + 4};
        problem.rowrangeof = {r + 6, r + 10, r + 14};
    }
};

TEST(Results, are_stored_by_the_type_of_the_model)
{
    const Reals lower{-1, 0}, point{3, 4}, upper{9, 9}, reduced{6, 7}, duals{1, 2, 3, 4};
    const Reals rowlower{-INF, -1, 0, 1}, rowvalue{1.5, 2, 0, 2}, rowupper{2, INF, 0, 4};
    const SolutionRecord solution{
        2, lower.data(),    point.data(),    upper.data(),    reduced.data(),
        4, rowlower.data(), rowvalue.data(), rowupper.data(), duals.data()};
    const Reals cost{10, 20}, costup{1, INF}, costdown{2, 3}, rhs{1, 2, 3, 4}, rhsup{1, 1, 1, 1},
        rhsdown{2, 2, 2, INF};
    const SensitivityRecord ranges{2, cost.data(), costup.data(), costdown.data(), {},
                                   4, rhs.data(),  rhsup.data(),  rhsdown.data()};
    const Reals lp_ranges{0, 0, 8, 17, 11, INF, 0, 0, 0, 0, -1, 0, 1, -INF, 2, 3, 4, 5};
    const Reals statistics{10, 20, 2, 3, 1, INF, 1, 2, 3, 4, 2, 2, 2, INF, 1, 1, 1, 1};
    const Reals untouched(18, 5.0), none(18, 0.0);
    const struct {
        std::int32_t type;
        bool has_duals;
        const SensitivityRecord* record;
        const Reals& ranges;
    } CASES[] = {
        {PROB_LP,    true,  &ranges, lp_ranges },
        {PROB_LP,    true,  nullptr, none      },
        {PROB_MILP,  false, &ranges, untouched },
        {PROB_QP,    true,  nullptr, untouched },
        {PROB_MIQP,  false, nullptr, untouched },
        {PROB_NLP,   true,  nullptr, untouched },
        {PROB_MINLP, false, nullptr, untouched },
        {PROB_MINSP, true,  &ranges, statistics},
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.type);
        ServedModel model(c.type);
        model.lp->firstcol = model.lp->firstrow = 0;
        model.lp->lastcol = 1, model.lp->lastrow = 3;
        Stored stored(*model.lp);
        storesolution(model.control, &solution, c.record);
        EXPECT_TRUE(model.lp->hasresults);
        EXPECT_EQ(Reals(model.x.begin(), model.x.begin() + 2), point);
        EXPECT_EQ(stored.dj, c.has_duals ? reduced : Reals(2, 0.0));
        EXPECT_EQ(stored.piout, c.has_duals ? duals : Reals(4, 0.0));
        EXPECT_EQ(stored.slack, Reals({0.5, -3, 0, -1})) << "a ranged row has the smaller of two";
        EXPECT_EQ(stored.ranges, c.ranges);
    }
}

// ---- elastic variables

TEST(Elastic, variables_are_fixed_and_freed_in_pairs)
{
    const Reals loose{1, 1, INF, INF, INF, INF, INF};
    const struct {
        const char* name;
        std::int32_t var, row, action, result;
        Reals before, after;
    } CASES[] = {
  // clang-format off
        {"fix a variable",        2,  0,  9, 1, loose, {1, 1, 0, INF, INF, INF, INF}},
        {"fix one of a pair",     5,  0,  0, 1, loose, {1, 1, INF, INF, 0, 0, INF}},
        {"the model's own",       1,  0,  0, 0, loose, loose},
        {"beyond the last",       7,  0,  0, 0, loose, loose},
        {"fix a row",             -1, 3,  1, 1, loose, {1, 1, INF, INF, INF, INF, 0}},
        {"fix an equation",       -1, 2,  1, 1, loose, {1, 1, INF, INF, 0, 0, INF}},
        {"free an equation",      -9, 2,  0, 1, {1, 1, 0, 0, 0, 0, 0}, {1, 1, 0, 0, INF, INF, 0}},
        {"free what isn't fixed", -1, 2,  0, 0, loose, loose},
        {"a row below 0",         -1, -1, 0, 0, loose, loose},
  // clang-format on
    };
    ServedModel model;
    model.make_elastic();
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        Reals ub = c.before;
        EXPECT_EQ(setelastic(model.control, c.var, c.row, c.action, ub.data()), c.result);
        EXPECT_EQ(ub, c.after);
    }
    endrun(model.control);
}

TEST(Elastic, results_are_the_rows_and_bounds_that_still_hold)
{
    ServedModel model;
    model.make_elastic();
    const Reals lower{-1e30, -5, 0, 0, 0, 0, 0}, upper{1e30, 1e30, 0, INF, 0, 0, 0}, point(7, 1.0);
    const Reals rowlower{-INF, -1, 0, 1}, rowvalue{3, 2, 0, 2}, rowupper{2, INF, 0, 4};
    const SolutionRecord solution{7, lower.data(),    point.data(),    upper.data(),    nullptr,
                                  4, rowlower.data(), rowvalue.data(), rowupper.data(), nullptr};
    storesolution(model.control, &solution, nullptr);

    const Problem& problem = *model.lp;
    EXPECT_FALSE(problem.hasresults);
    EXPECT_EQ(model.x, Reals(8, 0.0)) << "the point stays as it was";
    ASSERT_EQ(problem.iisnumrows, 4);
    ASSERT_EQ(problem.iisnumcols, 1);
    const auto listed = [](const Array<std::int32_t>& array, int n) {
        return Ints(array.data(), array.data() + n);
    };
    EXPECT_EQ(listed(problem.rowind, 4), Ints({0, 2, 2, 3})) << "an equation comes twice";
    EXPECT_EQ(listed(problem.rowbdstat, 4), Ints({2, 1, 1, 0}));
    EXPECT_EQ(listed(problem.colind, 1), Ints({1}));
    EXPECT_EQ(listed(problem.colbdstat, 1), Ints({0}));
    endrun(model.control);

    // clang-format off
    const struct {
        double lower, upper;
        std::int32_t stand;
    } BOUNDS[] = {{0, INF, 0}, {0, 5, 1}, {-INF, 5, 2}, {-1e29, 1e29, 1}};
    // clang-format on
    for (const auto& c : BOUNDS) {
        model.make_elastic();
        const Reals low{-INF, c.lower, 0, 0, 0, 0, 0}, up{INF, c.upper, 1, 1, 1, 1, 1};
        SolutionRecord bounds = solution;
        bounds.lower = low.data(), bounds.upper = up.data();
        storesolution(model.control, &bounds, nullptr);
        EXPECT_EQ(problem.iisnumrows, 0);
        EXPECT_EQ(problem.colbdstat[0], c.stand);
        endrun(model.control);
    }
}

}  // namespace
}  // namespace tarnwick
