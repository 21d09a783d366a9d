#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "interface/problem.h"
#include "tests/interface/refusals.h"
#include "tests/interface/smallmodel.h"
#include "tests/support/messages.h"
#include "tests/support/olearrays.h"

namespace tarnwick {
namespace {

using Reals = std::vector<double>;
const Reals BLANK2(2, 7.0), BLANK3(3, 7.0);

// The small model as a run leaves it.
struct SolvedModel : SmallModel {
    Reals x{11, 12}, dj{13, 14}, piout{15, 16, 17}, slack{18, 19, 20};
    Reals colmid{21, 22}, collow{23, 24}, colup{25, 26};
    Reals rowmid{27, 28, 29}, rowlow{30, 31, 32}, rowup{33, 34, 35};

    explicit SolvedModel(std::int32_t type = PROB_LP, std::int32_t status = STAT_OPTIMAL)
    {
        lp->problemtype = type;
        lp->status = status;
        lp->objval = 3.0;
        lp->hasresults = true;
        lp->x = x.data(), lp->dj = dj.data(), lp->piout = piout.data(), lp->slack = slack.data();
        lp->colrange = {colmid.data(), collow.data(), colup.data()};
        lp->rowrangeof = {rowmid.data(), rowlow.data(), rowup.data()};
    }
};

using RangeFunction = decltype(&objsa);
using StatFunction = decltype(&varstat);

// The arguments of the five queries. The arrays are x, piout, slack and dj of a solution; or mean,
// deviation, lower and upper end of the first two columns or rows, of which ranges have the ends.
template <auto FUNCTION, bool IS_OLE = false>
struct Query {
    static constexpr bool IS_RANGE = std::is_same_v<decltype(FUNCTION), RangeFunction>;
    static constexpr bool IS_STAT = std::is_same_v<decltype(FUNCTION), StatFunction>;

    SolvedModel model{IS_STAT ? PROB_NSP : PROB_LP, IS_STAT ? STAT_CONVERGED : STAT_OPTIMAL};
    Problem* lp = model.lp;
    char letters[2] = {'I', 'C'};
    std::int32_t begin = 0, end = 1, status = -1;
    double objval = -1.0;
    OleArray<double> out[4]{
        {7,  7},
        {7,  7, 7},
        {7,  7,   7},
        {7, 7}
    };

    std::int32_t run()
    {
        const ArrayMode mode(IS_OLE);
        if constexpr (IS_RANGE)
            return FUNCTION(lp, begin, end, out[2].pass(), out[3].pass());
        else if constexpr (IS_STAT)
            return FUNCTION(lp, begin, end, out[0].pass(), out[1].pass(), out[2].pass(),
                            out[3].pass());
        else
            return FUNCTION(lp, &status, &objval, out[0].pass(), out[1].pass(), out[2].pass(),
                            out[3].pass());
    }
    bool is_untouched() const
    {
        return status == -1 && objval == -1.0 &&
               std::all_of(std::begin(out), std::end(out), [](const auto& array) {
                   return *std::max_element(array.values().begin(), array.values().end()) <= 7.0;
               });
    }
};

// ---- refusals

double minus_one = -1.0;

using O = Query<objsa>;
using R = Query<rhssa>;
using V = Query<varstat>;
using N = Query<constat>;
using OS = Query<solution, true>;
using OR = Query<rhssa, true>;
using OV = Query<varstat, true>;

// clang-format off
constexpr Refused<O> OBJSA_REFUSALS[] = {
    {"null handle",      [](O& c) { c.lp = nullptr; },                    1, "lp pointer is NULL"},
    {"quadratic model",  [](O& c) { c.model.lp->problemtype = PROB_QP; }, 1, "objsa is valid only for LP problems"},
    {"integer letters",  [](O& c) { c.model.lp->ctype = c.letters; },     1, "objsa is not valid for MIP problems"},
    {"begin -1",         [](O& c) { c.begin = -1; },                      2, "begin or end is out of range"},
    {"end at numcols",   [](O& c) { c.end = 2; },                         2, "begin or end is out of range"},
    {"begin above end",  [](O& c) { c.begin = 1; c.end = 0; },            2, "begin or end is out of range"},
    {"no lower",         [](O& c) { c.out[2].replace(nullptr); },         4, "lower or upper is not a valid array"},
    {"no upper",         [](O& c) { c.out[3].replace(nullptr); },         4, "lower or upper is not a valid array"},
};
constexpr Refused<R> RHSSA_REFUSALS[] = {
    {"non-smooth model", [](R& c) { c.model.lp->problemtype = PROB_NSP; }, 1, "rhssa is valid only for LP problems"},
    {"integer letters",  [](R& c) { c.model.lp->ctype = c.letters; },     1, "rhssa is not valid for MIP problems"},
    {"end at numrows",   [](R& c) { c.end = 3; },                         2, "begin or end is out of range"},
};
constexpr Refused<V> VARSTAT_REFUSALS[] = {
    {"null handle",      [](V& c) { c.lp = nullptr; },                    1, "lp pointer is NULL"},
    {"smooth model",     [](V& c) { c.model.lp->problemtype = PROB_NLP; }, 1, "varsa is valid only for NSP problems"},
    {"end at numcols",   [](V& c) { c.end = 2; },                         2, "begin or end is out of range"},
    {"no mid",           [](V& c) { c.out[0].replace(nullptr); },         4, "mid or disp is not a valid array"},
    {"no disp",          [](V& c) { c.out[1].replace(nullptr); },         4, "mid or disp is not a valid array"},
    {"no lower",         [](V& c) { c.out[2].replace(nullptr); },         6, "lower or upper is not a valid array"},
    {"no upper",         [](V& c) { c.out[3].replace(nullptr); },         6, "lower or upper is not a valid array"},
};
constexpr Refused<N> CONSTAT_REFUSALS[] = {
    {"linear model",     [](N& c) { c.model.lp->problemtype = PROB_LP; }, 1, "consa is valid only for NSP problems"},
    {"end at numrows",   [](N& c) { c.end = 3; },                         2, "begin or end is out of range"},
};
constexpr Refused<OS> OLE_SOLUTION_REFUSALS[] = {
    {"x null",           [](OS& c) { c.out[0].replace(nullptr); },        4, "x is not a valid OLE array"},
    {"a plain -1.0",     [](OS& c) { c.out[0].replace(&minus_one); },     4, "x is not a valid OLE array"},
    {"x short",          [](OS& c) { c.out[0].assign({7}); },             4, "x is not a valid OLE array"},
    {"piout short",      [](OS& c) { c.out[1].assign({7, 7}); },          5, "piout is not a valid OLE array"},
    {"slack short",      [](OS& c) { c.out[2].assign({7, 7}); },          6, "slack is not a valid OLE array"},
    {"dj short",         [](OS& c) { c.out[3].assign({7}); },             7, "dj is not a valid OLE array"},
};
constexpr Refused<OR> OLE_RANGE_REFUSALS[] = {
    {"lower short",      [](OR& c) { c.out[2].assign({7}); },             4, "lower is not a valid OLE array"},
    {"upper short",      [](OR& c) { c.out[3].assign({7}); },             5, "upper is not a valid OLE array"},
    {"no upper",         [](OR& c) { c.out[3].assign({-1}); },            4, "lower or upper is not a valid array"},
};
constexpr Refused<OV> OLE_STAT_REFUSALS[] = {
    {"mid short",        [](OV& c) { c.out[0].assign({7}); },             4, "mid is not a valid OLE array"},
    {"disp short",       [](OV& c) { c.out[1].assign({7}); },             5, "disp is not a valid OLE array"},
    {"lower short",      [](OV& c) { c.out[2].assign({7}); },             6, "lower is not a valid OLE array"},
    {"upper short",      [](OV& c) { c.out[3].assign({7}); },             7, "upper is not a valid OLE array"},
    {"no upper",         [](OV& c) { c.out[3].assign({-1}); },            6, "lower or upper is not a valid array"},
};
// clang-format on

TEST(Queries, refuse_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("objsa", OBJSA_REFUSALS);
    expect_refusals_in_order("rhssa", RHSSA_REFUSALS);
    expect_refusals_in_order("varstat", VARSTAT_REFUSALS);
    expect_refusals_in_order("constat", CONSTAT_REFUSALS);
    expect_refusals_in_order("solution", OLE_SOLUTION_REFUSALS);
    expect_refusals("rhssa", OLE_RANGE_REFUSALS);
    expect_refusals("varstat", OLE_STAT_REFUSALS);
}

// ---- what is given

constexpr const char NO_PIOUT[] = "piout argument invalid for this problem type";

// clang-format off
constexpr struct {
    const char* what;
    std::int32_t type, status;
    bool hasresults;
    bool gives_point, gives_duals;
    const char* text;  // refused with 5
} SOLUTIONS[] = {
    {"LP optimum",          PROB_LP,   STAT_OPTIMAL,      true,  true,  true,  nullptr},
    {"QP optimum",          PROB_QP,   STAT_OPTIMAL,      true,  true,  true,  nullptr},
    {"NLP optimum",         PROB_NLP,  STAT_OPTIMAL,      true,  true,  true,  nullptr},
    {"iteration limit",     PROB_LP,   STAT_ITERLIM_FEAS, true,  true,  false, nullptr},
    {"failed evaluation",   PROB_LP,   STAT_EVALERROR,    true,  false, false, nullptr},
    {"no memory",           PROB_LP,   STAT_NOMEMORY,     true,  false, false, nullptr},
    {"status 69",           PROB_LP,   STAT_RESERVED69,   true,  false, false, nullptr},
    {"before any run",      PROB_LP,   STAT_NONE,         false, false, false, nullptr},
    {"MIQP, status 1",      PROB_MIQP, STAT_OPTIMAL,      true,  true,  false, NO_PIOUT},
    {"NSP",                 PROB_NSP,  STAT_CONVERGED,    true,  true,  false, NO_PIOUT},
    {"MILP before a run",   PROB_MILP, STAT_NONE,         false, false, false, NO_PIOUT},
};
// clang-format on

TEST(Solution, gives_what_type_and_status_allow)
{
    const MessageLog log;
    for (const auto& c : SOLUTIONS) {
        SCOPED_TRACE(c.what);
        Query<solution> call;
        call.lp->problemtype = c.type;
        call.lp->status = c.status;
        call.lp->hasresults = c.hasresults;
        EXPECT_EQ(call.run(), c.text ? 5 : 0);
        EXPECT_EQ(call.status, c.status);
        EXPECT_EQ(call.objval, 3.0);
        EXPECT_EQ(call.out[0].values(), c.gives_point ? call.model.x : BLANK2);
        EXPECT_EQ(call.out[1].values(), c.gives_duals ? call.model.piout : BLANK3);
        EXPECT_EQ(call.out[2].values(), c.gives_point ? call.model.slack : BLANK3);
        EXPECT_EQ(call.out[3].values(), c.gives_duals ? call.model.dj : BLANK2);
        const auto messages = MessageLog::take();
        EXPECT_EQ(messages.size(), c.text ? 1U : 0U);
        for (const auto& message : messages) EXPECT_EQ(message.text, NO_PIOUT);
    }
}

TEST(Solution, passes_over_absent_arrays)
{
    for (const std::int32_t type : {PROB_LP, PROB_MILP}) {
        Query<solution> call;
        call.lp->problemtype = type;
        for (auto& array : call.out) array[0] = -1.0;
        EXPECT_EQ(call.run(), 0);
        for (auto& array : call.out) EXPECT_EQ(array.values()[1], 7.0);
        EXPECT_EQ(solution(call.lp, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
        call.out[3][0] = 7.0;
        EXPECT_EQ(call.run(), type == PROB_MILP ? 7 : 0);
        EXPECT_EQ(call.out[3].values(), type == PROB_MILP ? BLANK2 : call.model.dj);
    }
    Query<solution, true> ole;
    for (const std::size_t k : {0U, 1U}) ole.out[k].assign({-1});
    EXPECT_EQ(ole.run(), 0);
    for (const std::size_t k : {0U, 1U}) EXPECT_EQ(ole.out[k].values(), Reals{-1});
    EXPECT_EQ(ole.out[2].values(), ole.model.slack);
    EXPECT_EQ(ole.out[3].values(), ole.model.dj);
}

TEST(Solution, tests_the_size_but_of_non_smooth_models)
{
    for (const std::int32_t type : {PROB_LP, PROB_MIQP, PROB_NLP, PROB_MINLP, PROB_NSP}) {
        const SolvedModel model(type);
        const std::int32_t limit = type <= PROB_MIQP ? 2000 : 400;
        for (const std::int32_t numcols : {limit, limit + 1, 2}) {
            model.lp->numcols = numcols;
            EXPECT_EQ(solution(model.lp, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
                      numcols > limit && type != PROB_NSP ? 1 : 0);
        }
    }
}

// The last two columns or rows, then the last alone: element 0 belongs to begin.
template <class Call>
void expect_given(std::int32_t last, const Reals* const (&stored)[4])
{
    for (const std::int32_t begin : {last - 1, last}) {
        Call call;
        call.begin = begin, call.end = last;
        EXPECT_EQ(call.run(), 0);
        for (std::size_t k = 0; k < 4; ++k) {
            if (!stored[k]) continue;
            const std::size_t from = static_cast<std::size_t>(begin);
            EXPECT_EQ(call.out[k][0], (*stored[k])[from]);
            EXPECT_EQ(call.out[k][1], begin < last ? (*stored[k])[from + 1] : 7.0);
        }
    }
    for (const std::int32_t status : {STAT_EVALERROR, STAT_NOMEMORY, STAT_RESERVED69, STAT_NONE}) {
        Call call;
        call.lp->status = status;
        call.lp->hasresults = status != STAT_NONE;
        EXPECT_EQ(call.run(), 0);
        EXPECT_TRUE(call.is_untouched()) << "arrays that can't be trusted";
    }
}

TEST(Queries, give_ranges_and_statistics)
{
    const SolvedModel m;
    expect_given<Query<objsa>>(1, {nullptr, nullptr, &m.collow, &m.colup});
    expect_given<Query<rhssa, true>>(2, {nullptr, nullptr, &m.rowlow, &m.rowup});
    expect_given<Query<varstat, true>>(1, {&m.dj, &m.colmid, &m.collow, &m.colup});
    expect_given<Query<constat>>(2, {&m.piout, &m.rowmid, &m.rowlow, &m.rowup});
}

// ---- counters and callbacks

TEST(CallbackInfo, gives_the_counters_of_the_run)
{
    const SmallModel model;
    Problem& lp = *model.lp;
    lp.currentobj = 1.5, lp.infeasibility = 2.5, lp.bestinteger = 3.5;
    lp.iterations = 4, lp.nodes = 5, lp.totaliterations = 6;
    const std::pair<std::int32_t, double> reals[] = {
        {CB_OBJECTIVE,     1.5},
        {CB_INFEASIBILITY, 2.5},
        {CB_BESTINTEGER,   3.5}
    };
    for (const auto& [which, want] : reals) {
        double value = 0.0;
        EXPECT_EQ(getcallbackinfo(&lp, nullptr, which, &value), 0);
        EXPECT_EQ(value, want);
    }
    const std::pair<std::int32_t, std::int32_t> wholes[] = {
        {CB_ITERATIONS,      4},
        {CB_NODES,           5},
        {CB_TOTALITERATIONS, 6},
        {CB_FEASIBLE,        0}
    };
    std::int32_t value = 0;
    for (const auto& [which, want] : wholes) {
        EXPECT_EQ(getcallbackinfo(&lp, nullptr, which, &value), 0);
        EXPECT_EQ(value, want);
    }
    for (const double infeasibility : {1e-8, 1.1e-8, std::nan("")}) {
        lp.infeasibility = infeasibility;
        EXPECT_EQ(getcallbackinfo(&lp, nullptr, CB_FEASIBLE, &value), 0);
        EXPECT_EQ(value, infeasibility == 1e-8 ? 1 : 0) << "within PARAM_FEASTOL";
    }
    EXPECT_EQ(getcallbackinfo(&lp, nullptr, CB_NODES, nullptr), 0);

    const MessageLog log;
    EXPECT_EQ(getcallbackinfo(&lp, nullptr, 2, &value), 1);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(MessageLog::take().at(0).text, "whichinfo is out of range");
}

std::int32_t TARNWICK_CALL go_on(Problem*, std::int32_t) { return 0; }

TEST(Callbacks, are_stored_apart_and_removed_by_null)
{
    const SmallModel model;
    const auto expect_stored = [&model](TarnwickCallback lp, TarnwickCallback mip) {
        TarnwickCallback lpfunction = nullptr, mipfunction = nullptr;
        EXPECT_EQ(getlpcallbackfunc(model.lp, &lpfunction), 0);
        EXPECT_EQ(getmipcallbackfunc(model.lp, &mipfunction), 0);
        EXPECT_EQ(lpfunction, lp);
        EXPECT_EQ(mipfunction, mip);
    };
    expect_stored(nullptr, nullptr);
    EXPECT_EQ(setlpcallbackfunc(model.lp, go_on), 0);
    expect_stored(go_on, nullptr);
    EXPECT_EQ(setmipcallbackfunc(model.lp, go_on), 0);
    EXPECT_EQ(setlpcallbackfunc(model.lp, nullptr), 0);
    expect_stored(nullptr, go_on);
    EXPECT_EQ(getlpcallbackfunc(model.lp, nullptr), 0);
    EXPECT_EQ(getmipcallbackfunc(model.lp, nullptr), 0);
}

}  // namespace
}  // namespace tarnwick
