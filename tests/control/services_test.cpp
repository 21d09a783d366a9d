#include <gtest/gtest.h>

#include <climits>
#include <tuple>

#include "tests/control/servedmodel.h"

namespace tarnwick {
namespace {

// ---- settings

TEST(Services, tell_sizes_and_switches_by_selector)
{
    ServedModel plain, elastic;
    elastic.make_elastic(2);
    elastic.lp->objsen = plain.lp->objsen = -1;
    elastic.control->scaling = -1;
    elastic.lp->problemtype = PROB_NSP;
    const auto expect_infos = [](const ServedModel& model, const Ints& infos) {
        for (std::int32_t selector = -1; selector < 15; ++selector) {
            const auto k = static_cast<std::size_t>(selector + 1);
            EXPECT_EQ(getintinfo(model.control, selector), infos[k]) << selector;
        }
    };
    expect_infos(plain, {0, 2, 5, 0, 4, 0, 1, 1, 0, 1, 1, 1, 0, 0, 0, 0});
    expect_infos(elastic, {0, 7, 5, 5, 4, 2, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0});
    endrun(elastic.control);
    expect_infos(elastic, {0, 2, 5, 0, 4, 0, 1, 1, 0, 0, 1, 0, 0, 0, 0, 0});
}

TEST(Services, tell_numbers_by_selector)
{
    ServedModel model;
    SolveControl& c = *model.control;
    c.feastol = 0.1, c.mipgap = 0.2, c.nlpconvtol = 0.3, c.mutation = 0.4, c.reserved1092 = 0.5;
    c.pivottol = 0.6, c.opttol = 0.7, c.objuppercut = 0.8, c.objlowercut = 0.9, c.nlpfeastol = 1.5;
    const auto expect_number = [&c](std::int32_t selector, double want, std::int32_t is_known = 1) {
        double value = -1.0;
        EXPECT_EQ(getdblinfo(&c, &value, selector), is_known) << selector;
        EXPECT_EQ(value, want) << selector;
    };
    const Reals numbers{0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 1e-4};
    for (std::size_t k = 0; k < 9; ++k) expect_number(static_cast<std::int32_t>(k), numbers[k]);
    for (const std::int32_t unknown : {-1, 9}) expect_number(unknown, 1e-8, 0);
    model.lp->objsen = -1;
    expect_number(INFO_CUTOFF, 0.9);
    for (const std::int32_t type : {0, 1, 4, 8, 12, 16, 20, 24}) {
        model.lp->problemtype = type;
        expect_number(INFO_FEASTOL, type < PROB_NLP ? 0.1 : 1.5);
        EXPECT_EQ(getengineclass(&c), type < PROB_NLP ? 1 : type < PROB_NSP ? 0 : 3) << type;
    }
    c.iterlimit = 11, c.timelimit = 12.9, c.nodelimit = 13, c.intsollimit = 14, c.popsize = 15;
    c.stalltime = 16;
    for (std::int32_t selector = -1; selector < 7; ++selector)
        EXPECT_EQ(getrunparam(&c, selector), selector < 0 || selector > 5 ? 0 : 11 + selector);
}

TEST(Services, build_capability_words_from_switches)
{
    using S = SolveControl;
    // clang-format off
    const std::tuple<std::int32_t, std::int32_t S::*, std::int32_t, std::uint32_t> CASES[] = {
        {0, &S::popsize,      1, 0   }, {0, &S::nlpquadext,   1, 4  }, {0, &S::nlpcgonly, 1, 8},
        {0, &S::nlprecoglin,  1, 32  }, {0, &S::nlpderivmode, 1, 2  }, {0, &S::nlpderivmode, 2, 16},
        {0, &S::nlpderivmode, 3, 18  }, {1, &S::popsize,      1, 1  }, {1, &S::binrowfix, 1, 257},
        {1, &S::bindualfix,   1, 513 }, {1, &S::binorder,  1, 1025  }, {1, &S::bintighten, 1, 2049},
        {3, &S::popsize,      1, 0   }, {3, &S::reqbounds,    1, 64 }, {4, &S::popsize, 1, 1},
        {4, &S::reserved1007, 1, 3   }, {2, &S::popsize,      1, 0  },
    };
    // clang-format on
    const TarnwickJacobian some = [](auto...) { return 0; };
    for (const auto& [selector, member, value, word] : CASES)
        for (const TarnwickJacobian jacobian : {some, TarnwickJacobian{}}) {
            ServedModel model;
            S& control = *model.control;
            control.reqbounds = 0;
            model.lp->jacobian = jacobian;
            control.*member = value;
            const std::uint32_t derivatives = jacobian ? 0 : 16;  // are out of reach without
            EXPECT_EQ(getcapability(&control, selector), selector == 0 ? word & ~derivatives : word)
                << selector << ", " << word;
        }
}

// ---- the model

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
