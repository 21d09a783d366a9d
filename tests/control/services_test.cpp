#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <vector>

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
            const auto k = static_cast<std::size_t>(selector);
            EXPECT_EQ(getintinfo(model.control, selector), selector < 0 ? 0 : infos[k]) << selector;
        }
    };
    expect_infos(plain, {2, 5, 0, 4, 0, 1, 1, 0, 1, 1, 1, 0, 0, 0, 0});
    expect_infos(elastic, {7, 5, 5, 4, 2, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0});
    endrun(elastic.control);
    EXPECT_EQ(getintinfo(elastic.control, INFO_NUMVARS), 2);
    EXPECT_EQ(getintinfo(elastic.control, INFO_ELASTICMODE), 0);
}

TEST(Services, tell_numbers_by_selector)
{
    ServedModel model;
    SolveControl& c = *model.control;
    c.feastol = 0.1, c.mipgap = 0.2, c.nlpconvtol = 0.3, c.mutation = 0.4, c.reserved1092 = 0.5;
    c.pivottol = 0.6, c.opttol = 0.7, c.objuppercut = 0.8, c.objlowercut = 0.9, c.nlpfeastol = 1.5;
    const auto number = [&c](std::int32_t selector, std::int32_t is_known) {
        double value = -1.0;
        EXPECT_EQ(getdblinfo(&c, &value, selector), is_known);
        return value;
    };
    const Reals numbers{0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 1e-4};
    for (std::int32_t selector = 0; selector < 9; ++selector)
        EXPECT_EQ(number(selector, 1), numbers[static_cast<std::size_t>(selector)]) << selector;
    for (const std::int32_t unknown : {-1, 9}) EXPECT_EQ(number(unknown, 0), 1e-8);
    model.lp->objsen = -1;
    EXPECT_EQ(number(INFO_CUTOFF, 1), 0.9);
    for (const std::int32_t type : {0, 1, 4, 8, 12, 16, 20, 24}) {
        model.lp->problemtype = type;
        EXPECT_EQ(number(INFO_FEASTOL, 1), type < PROB_NLP ? 0.1 : 1.5) << type;
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
    const struct {
        std::int32_t selector, S::*member, value;
        std::uint32_t word;
    } CASES[] = {
        {0, &S::popsize,    1, 0   }, {0, &S::nlpquadext,  1, 4  }, {0, &S::nlpcgonly,    1, 8   }, {0, &S::nlprecoglin, 1, 32},
        {1, &S::popsize,    1, 1   }, {1, &S::binrowfix,   1, 257}, {1, &S::bindualfix,   1, 513 }, {1, &S::binorder,    1, 1025},
        {1, &S::bintighten, 1, 2049}, {3, &S::popsize,     1, 0  }, {3, &S::reqbounds,    1, 64  }, {4, &S::popsize,     1, 1},
        {4, &S::reserved1007, 1, 3 }, {0, &S::nlpderivmode, 1, 2 }, {0, &S::nlpderivmode, 3, 2   },
        {0, &S::nlpderivmode, 2, 0 },  // the model has no function for derivatives
    };
    // clang-format on
    for (const auto& c : CASES) {
        ServedModel model;
        S& control = *model.control;
        for (const auto member : {&S::nlpderivmode, &S::nlpquadext, &S::nlpcgonly, &S::nlprecoglin,
                                  &S::reqbounds, &S::reserved1007})
            control.*member = 0;
        control.*c.member = c.value;
        EXPECT_EQ(getcapability(&control, c.selector), c.word) << c.selector << ", " << c.word;
    }
}

// ---- bounds, flags, start

struct Bounds {
    Reals lower, upper, rowlower = Reals(4), rowupper = Reals(4);

    Bounds(SolveControl* control, std::size_t columns) : lower(columns), upper(columns)
    {
        getbounds(control, lower.data(), upper.data(), rowlower.data(), rowupper.data());
    }
};

TEST(Services, give_bounds_with_elastic_variables_behind)
{
    ServedModel model(PROB_MILP);
    char ctype[] = "CB";
    model.lp->ctype = ctype;
    const Bounds plain(model.control, 2);
    EXPECT_EQ(plain.lower, Reals({-1, 0}));
    EXPECT_EQ(plain.upper, Reals({INF, 1}));
    EXPECT_EQ(plain.rowlower, Reals({-INF, -1, 0, 1}));
    EXPECT_EQ(plain.rowupper, Reals({2, INF, 0, 4}));
    EXPECT_EQ(model.lb[1], -9.0) << "the caller's own bounds stay";

    model.make_elastic();
    const Bounds elastic(model.control, 7);
    EXPECT_EQ(elastic.lower, Reals({-1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(elastic.upper, Reals({INF, 1, INF, INF, INF, INF, INF}));
    EXPECT_EQ(elastic.rowlower, plain.rowlower);
    endrun(model.control);

    model.ranges[3] = 2.5;
    EXPECT_EQ(Bounds(model.control, 2).rowlower[3], 4.0);
    EXPECT_EQ(Bounds(model.control, 2).rowupper[3], 6.5);
    model.lp->rowrange = nullptr;
    EXPECT_EQ(Bounds(model.control, 2).rowlower[3], 4.0);
    EXPECT_EQ(Bounds(model.control, 2).rowupper[3], 4.0) << "without a range it is an equation";
}

TEST(Services, give_integer_flags_and_the_start)
{
    ServedModel model(PROB_MILP);
    char ctype[] = "CB";
    const auto expect_given = [&model](const Ints& flags, const Reals& start) {
        Ints given_flags(flags.size(), 9);
        Reals given_start(start.size(), 9.0);
        EXPECT_EQ(getintflags(model.control, given_flags.data()), 1);
        EXPECT_EQ(getstart(model.control, given_start.data()), 1);
        EXPECT_EQ(given_flags, flags);
        EXPECT_EQ(given_start, start);
    };
    expect_given({0, 0}, {0, 0});  // linear models start at zero
    model.lp->ctype = ctype;
    expect_given({0, 1}, {0, 0});
    model.control->relaxint = 1;
    expect_given({0, 0}, {0, 0});
    model.control->relaxint = 0;
    model.lp->problemtype = PROB_MIQP;
    expect_given({0, 1}, model.start);
    model.make_elastic();
    expect_given(Ints(7, 0), {7, 8, 0, 0, 0, 0, 0});
    endrun(model.control);
}

// ---- evaluation

TEST(Services, evaluate_rows_and_objective)
{
    const struct {
        const char* name;
        std::int32_t type;
        bool elastic;
        Reals x, lhs;
    } CASES[] = {
        {"at zero",           PROB_LP,   false, {0, 0},                 {0, 0, 0, 0, 0}               },
        {"linear",            PROB_LP,   false, {3, -2},                {3, -6, 4, 1, 15}             },
        {"Q counts for QP",   PROB_QP,   false, {3, -2},                {3, -6, 4, 1, 15 + 9 - 12 - 4}},
        {"but not for MILP",  PROB_MILP, false, {3, -2},                {3, -6, 4, 1, 15}             },
        {"elastic variables", PROB_LP,   true,  {3, -2, 1, 2, 3, 4, 5}, {2, -4, 3, -4, 15}            },
    };
    for (const auto layout : {MatrixLayout::sparse, MatrixLayout::dense})
        for (const auto& c : CASES) {
            SCOPED_TRACE(c.name);
            ServedModel model(c.type, layout);
            if (c.elastic) model.make_elastic();
            Reals lhs(5, 99.0);
            EXPECT_EQ(evalfunctions(model.control, lhs.data(), c.x.data()), 1);
            EXPECT_EQ(lhs, c.lhs);
            EXPECT_EQ(model.lp->objval, c.elastic ? 15.0 : c.lhs[4]);
            EXPECT_EQ(model.x[0], c.x[0]);
            EXPECT_EQ(evalcol(model.control, lhs.data(), 0, 1.0), 0) << "there is no function";
            endrun(model.control);
        }

    // Entries for one place are added, in the matrix and in Q.
    ServedModel model(PROB_QP);
    model.lp->matind[1] = 0;  // (2, 0) becomes a second (0, 0)
    Ints beg{0, 2}, count{2, 0}, index{1, 1};
    model.lp->qmatbeg = beg.data(), model.lp->qmatcnt = count.data(),
    model.lp->qmatind = index.data();
    Reals lhs(5), x{3, -2};
    evalfunctions(model.control, lhs.data(), x.data());
    EXPECT_EQ(lhs, Reals({9, -6, -2, 1, 15 - 6 - 12}));
}

struct Asked {
    Reals x;
    std::int32_t varone, vartwo;
};
std::vector<Asked> asked;
std::int32_t TARNWICK_CALL answer_with_sum(Problem*, std::int32_t numcols, std::int32_t numrows,
                                           double* objval, double* lhs, double* var,
                                           std::int32_t varone, std::int32_t vartwo)
{
    asked.push_back({Reals(var, var + numcols), varone, vartwo});
    for (std::int32_t i = 0; i < numrows; ++i) lhs[i] += var[0] + var[1] + i;
    *objval = var[0] * var[1];
    return var[0] > 100.0 ? 7 : 0;
}

TEST(Services, ask_the_callers_function)
{
    ServedModel model(PROB_NLP);
    model.lp->funceval = answer_with_sum;
    asked.clear();
    Reals lhs(5, 9.0), x{2, 3};
    EXPECT_EQ(evalfunctions(model.control, lhs.data(), x.data()), 1);
    EXPECT_EQ(lhs, Reals({5, 6, 7, 8, 6}));
    EXPECT_EQ(evalcolpair(model.control, lhs.data(), 1, 10.0, 0, 1.0), 1);
    EXPECT_EQ(lhs, Reals({11, 12, 13, 14, 10}));
    EXPECT_EQ(evalcol(model.control, lhs.data(), 0, 200.0), 0);
    EXPECT_EQ(lhs[4], 2000.0) << "what a failed function wrote stays";
    EXPECT_EQ(evalcolpair(model.control, lhs.data(), INT_MAX, 1.0, -5, 1.0), 0);

    EXPECT_EQ(asked[0].varone, -1);
    EXPECT_EQ(asked[1].varone, 1);
    EXPECT_EQ(asked[1].vartwo, 0);
    EXPECT_EQ(asked[2].x, Reals({200, 10}));
    EXPECT_EQ(asked[3].x, Reals({200, 10})) << "no such variables: nothing moves";
    EXPECT_EQ(asked[3].varone, -1);

    model.make_elastic();
    x = {2, 3, 1, 1, 1, 1, 1};
    evalfunctions(model.control, lhs.data(), x.data());
    EXPECT_EQ(evalcol(model.control, lhs.data(), 3, 10.0), 1);
    EXPECT_EQ(lhs, Reals({4, 16, 7, 7, 14}));
    EXPECT_EQ(evalcol(model.control, lhs.data(), 7, 99.0), 1) << "there is no variable 7";
    EXPECT_EQ(lhs, Reals({4, 16, 7, 7, 14}));
    endrun(model.control);
}

// ---- walks

struct Entry {
    std::int32_t row, column;
    double value;
    bool operator==(const Entry&) const = default;
};

using Entries = std::vector<Entry>;

// clang-format off
const Entries SPARSE{{0, 0, 1}, {2, 0, 2}, {3, 0, 1}, {1, 1, 3}, {2, 1, 1}, {3, 1, 1}};
const Entries DENSE{{0, 0, 1}, {1, 0, 0}, {2, 0, 2}, {3, 0, 1}, {0, 1, 0}, {1, 1, 3}, {2, 1, 1}, {3, 1, 1}};
const Entries COST{{4, 0, 5}}, LINEAR{{-1, 0, 5}};
const Entries Q{{0, 0, 1}, {1, 0, 2}, {0, 1, 0}, {1, 1, -1}};
const Entries ELASTIC{{0, 2, -1}, {1, 3, 1}, {2, 4, 1}, {2, 5, -1}, {3, 6, -1},
                      {4, 2, 1},  {4, 3, 1}, {4, 4, 1}, {4, 5, 1},  {4, 6, 1}};
// clang-format on

struct Walked {
    Entries entries;
    std::size_t stop_after = 99;
};

std::int32_t TARNWICK_CALL note_entry(SolveControl*, void* user, std::int32_t row,
                                      std::int32_t column, double value, void* data) noexcept
{
    EXPECT_EQ(user, &asked);
    auto& walked = *static_cast<Walked*>(data);
    walked.entries.push_back({row, column, value});
    return walked.entries.size() < walked.stop_after;
}

TEST(Services, walk_over_every_entry_in_order)
{
    const auto joined = [](Entries first, const Entries& second) {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    };
    for (const auto layout : {MatrixLayout::sparse, MatrixLayout::dense}) {
        ServedModel model(PROB_QP, layout);
        const Entries& matrix = layout == MatrixLayout::sparse ? SPARSE : DENSE;
        const auto expect_walk = [&model](auto walk, const Entries& want) {
            Walked all, some{{}, 2};
            EXPECT_EQ(walk(model.control, &asked, note_entry, &all), 1);
            EXPECT_EQ(all.entries, want);
            EXPECT_EQ(walk(model.control, &asked, note_entry, &some), want.size() < 2 ? 1 : 0);
            EXPECT_EQ(some.entries.size(), std::min<std::size_t>(want.size(), 2));
        };
        expect_walk(walkmatrix, joined(matrix, COST));
        expect_walk(walkquad, joined(Q, LINEAR));
        model.make_elastic();
        expect_walk(walkmatrix, joined(matrix, ELASTIC));
        endrun(model.control);
        model.lp->problemtype = PROB_LP;
        expect_walk(walkquad, LINEAR);
        model.lp->obj[0] = 0.0;
        expect_walk(walkmatrix, matrix);
    }
    ServedModel model;
    model.lp->matind[2] = 4;  // no such row
    Walked walked;
    walkmatrix(model.control, &asked, note_entry, &walked);
    EXPECT_EQ(walked.entries.size(), 6U);
}

}  // namespace
}  // namespace tarnwick
