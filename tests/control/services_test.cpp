#include <gtest/gtest.h>

#include <climits>
#include <tuple>

#include "tests/control/servedmodel.h"

namespace tarnwick {
namespace {

// What stands behind the others is seen by the engines that ask, and by their tests.
TEST(Services, know_limits_and_no_other_selectors)
{
    const ServedModel model;
    SolveControl& c = *model.control;
    c.iterlimit = 11, c.timelimit = 12.9, c.nodelimit = 13, c.intsollimit = 14, c.popsize = 15;
    c.stalltime = 16;
    for (std::int32_t k = 0; k < 6; ++k) EXPECT_EQ(getrunparam(&c, k), 11 + k);
    const double known[] = {c.reserved1092, 1e-4};
    double given[2] = {};
    getdblinfo(&c, &given[0], INFO_RESERVED1092);
    getdblinfo(&c, &given[1], INFO_CONSTANT);
    EXPECT_EQ(Reals(given, given + 2), Reals(known, known + 2));
    for (const std::int32_t selector : {-1, 15}) {
        double value = -1.0;
        EXPECT_EQ(getintinfo(model.control, selector), 0);
        EXPECT_EQ(getrunparam(model.control, selector), 0);
        EXPECT_EQ(getcapability(model.control, selector), 0U);
        EXPECT_EQ(getdblinfo(model.control, &value, selector), 0);
        EXPECT_EQ(value, 1e-8);
    }
}

TEST(Services, give_integer_flags_and_a_start_unless_the_model_is_linear)
{
    ServedModel model;
    char ctype[] = "CB";
    model.lp->ctype = ctype;
    for (const std::int32_t type : {0, 1, 4, 8, 12, 16, 20, 24}) {
        model.lp->problemtype = type;
        Ints flags(2, 9);
        Reals start(2, 9.0);
        EXPECT_EQ(getintflags(model.control, flags.data()), 1);
        EXPECT_EQ(getstart(model.control, start.data()), 1);
        EXPECT_EQ(flags, Ints({0, 1}));
        EXPECT_EQ(start, type < PROB_QP ? Reals(2, 0.0) : model.start);
    }
}

Reals visited;  // rows and values

TEST(Services, walk_over_q_and_then_the_linear_objective)
{
    const Visit note = [](SolveControl*, void*, std::int32_t row, std::int32_t, double value,
                          void*) noexcept -> std::int32_t {
        visited.insert(visited.end(), {static_cast<double>(row), value});
        return 1;
    };
    ServedModel model(PROB_QP);
    visited.clear();
    EXPECT_EQ(walkquad(model.control, nullptr, note, nullptr), 1);
    EXPECT_EQ(visited, Reals({0, 1, 1, 2, 0, 0, 1, -1, -1, 5}));
}

using Asked = std::tuple<Reals, std::int32_t, std::int32_t>;  // point, varone, vartwo
std::vector<Asked> asked;
std::int32_t TARNWICK_CALL answer_with_sum(Problem*, std::int32_t numcols, std::int32_t numrows,
                                           double* objval, double* lhs, double* var,
                                           std::int32_t varone, std::int32_t vartwo)
{
    asked.emplace_back(Reals(var, var + numcols), varone, vartwo);
    for (std::int32_t i = 0; i < numrows; ++i) lhs[i] += var[0] + var[1] + i;
    *objval = var[0] * var[1];
    return var[0] > 100.0 ? 7 : 0;
}

TEST(Services, ask_the_callers_function)
{
    ServedModel model(PROB_NLP);
    model.lp->funceval = answer_with_sum;
    asked.clear();
    Reals lhs(5, 9.0), x{2, 3, 1, 1, 1, 1, 1};
    EXPECT_EQ(evalfunctions(model.control, lhs.data(), x.data()), 1);
    EXPECT_EQ(lhs, Reals({5, 6, 7, 8, 6}));
    EXPECT_EQ(evalcolpair(model.control, lhs.data(), 1, 10.0, 0, 1.0), 1);
    EXPECT_EQ(lhs, Reals({11, 12, 13, 14, 10}));
    EXPECT_EQ(evalcol(model.control, lhs.data(), 0, 200.0), 0);
    EXPECT_EQ(lhs[4], 2000.0) << "what a failed function wrote stays";
    EXPECT_EQ(evalcolpair(model.control, lhs.data(), INT_MAX, 1.0, -5, 1.0), 0);
    EXPECT_EQ(asked[0], Asked({2, 3}, -1, -1));
    EXPECT_EQ(asked[1], Asked({1, 10}, 1, 0));
    EXPECT_EQ(asked[2], Asked({200, 10}, 0, 0));
    EXPECT_EQ(asked[3], Asked({200, 10}, -1, -5)) << "no such variables: nothing moves";

    model.make_elastic();
    evalfunctions(model.control, lhs.data(), x.data());
    for (const std::int32_t var : {3, 7}) {  // there is no variable 7
        EXPECT_EQ(evalcol(model.control, lhs.data(), var, 10.0), 1);
        EXPECT_EQ(lhs, Reals({4, 16, 7, 7, 14}));
    }
    endrun(model.control);
}

TEST(Services, store_the_smaller_slack_of_a_ranged_row)
{
    ServedModel model(PROB_NLP);
    ASSERT_TRUE(create_results(*model.lp));
    const Reals zero(4), lower{-INF, -1, 0, 1}, value{1.5, 2, 0, 2}, upper{2, INF, 0, 4};
    const SolutionRecord solution{2, nullptr,      zero.data(),  nullptr,      zero.data(),
                                  4, lower.data(), value.data(), upper.data(), zero.data()};
    storesolution(model.control, &solution, nullptr);
    EXPECT_EQ(Reals(model.lp->slack, model.lp->slack + 4), Reals({0.5, -3, 0, -1}));
}

// ---- elastic variables

TEST(Elastic, variables_are_fixed_and_freed_in_pairs)
{
    const Reals loose{1, 1, INF, INF, INF, INF, INF};
    // clang-format off
    using Int = std::int32_t;
    const std::tuple<const char*, Int, Int, Int, Int, Reals, Reals> CASES[] = {
        {"fix a variable",        2,  0,  9, 1, loose, {1, 1, 0, INF, INF, INF, INF}},
        {"fix one of a pair",     5,  0,  0, 1, loose, {1, 1, INF, INF, 0, 0, INF}},
        {"the model's own",       1,  0,  0, 0, loose, loose},
        {"beyond the last",       7,  0,  0, 0, loose, loose},
        {"fix a row",             -1, 3,  1, 1, loose, {1, 1, INF, INF, INF, INF, 0}},
        {"fix an equation",       -1, 2,  1, 1, loose, {1, 1, INF, INF, 0, 0, INF}},
        {"free an equation",      -9, 2,  0, 1, {1, 1, 0, 0, 0, 0, 0}, {1, 1, 0, 0, INF, INF, 0}},
        {"free what isn't fixed", -1, 2,  0, 0, loose, loose},
        {"no such action",        -1, 2,  2, 0, loose, loose},
        {"a row below 0",         -1, -1, 0, 0, loose, loose},
    };
    // clang-format on
    ServedModel model;
    model.make_elastic();
    for (const auto& [name, var, row, action, result, before, after] : CASES) {
        Reals ub = before;
        EXPECT_EQ(setelastic(model.control, var, row, action, ub.data()), result) << name;
        EXPECT_EQ(ub, after) << name;
    }
    endrun(model.control);
}

}  // namespace
}  // namespace tarnwick
