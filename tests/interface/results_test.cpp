#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "include/tarnwick.h"
#include "interface/problem.h"
#include "tests/interface/refusals.h"
#include "tests/interface/smallmodel.h"
#include "tests/support/messages.h"
#include "tests/support/olearrays.h"

namespace tarnwick {
namespace {

using Reals = std::vector<double>;
const Reals BLANK2(2, 777.0), BLANK3(3, 777.0);

// The small model as a run leaves it.
struct SolvedModel : SmallModel {
    Reals x{1.0, 2.0}, dj{3.0, 4.0}, piout{5.0, 6.0, 7.0}, slack{8.0, 9.0, 10.0};
    Reals colmid{11.0, 12.0}, collow{13.0, 14.0}, colup{15.0, 16.0};
    Reals rowmid{17.0, 18.0, 19.0}, rowlow{20.0, 21.0, 22.0}, rowup{23.0, 24.0, 25.0};

    explicit SolvedModel(std::int32_t type = PROB_LP, std::int32_t status = STAT_OPTIMAL)
    {
        lp->problemtype = type;
        lp->status = status;
        lp->objval = 3.0;
        lp->hasresults = true;
        lp->x = x.data();
        lp->dj = dj.data();
        lp->piout = piout.data();
        lp->slack = slack.data();
        lp->colrange = {colmid.data(), collow.data(), colup.data()};
        lp->rowrangeof = {rowmid.data(), rowlow.data(), rowup.data()};
    }
};

// ---- solution

struct SolutionCase {
    const char* what;
    std::int32_t type, status;
    bool hasresults;
    std::int32_t code;
    bool gives_point, gives_duals;
    const char* text;
};

// clang-format off
constexpr SolutionCase SOLUTIONS[] = {
    {"LP optimum",         PROB_LP,    STAT_OPTIMAL,       true,  0, true,  true,  nullptr},
    {"QP optimum",         PROB_QP,    STAT_OPTIMAL,       true,  0, true,  true,  nullptr},
    {"NLP optimum",        PROB_NLP,   STAT_OPTIMAL,       true,  0, true,  true,  nullptr},
    {"converged",          PROB_QP,    STAT_CONVERGED,     true,  0, true,  false, nullptr},
    {"iteration limit",    PROB_LP,    STAT_ITERLIM_FEAS,  true,  0, true,  false, nullptr},
    {"failed evaluation",  PROB_LP,    STAT_EVALERROR,     true,  0, false, false, nullptr},
    {"no memory",          PROB_LP,    STAT_NOMEMORY,      true,  0, false, false, nullptr},
    {"status 69",          PROB_LP,    STAT_RESERVED69,    true,  0, false, false, nullptr},
    {"before any run",     PROB_LP,    STAT_NONE,          false, 0, false, false, nullptr},
    {"run without results", PROB_LP,   STAT_BADMODEL,      false, 0, false, false, nullptr},
    {"MILP optimum",       PROB_MILP,  STAT_MIP_OPTIMAL,   true,  5, true,  false, "piout argument invalid for this problem type"},
    {"MIQP, status 1",     PROB_MIQP,  STAT_OPTIMAL,       true,  5, true,  false, "piout argument invalid for this problem type"},
    {"NSP",                PROB_NSP,   STAT_CONVERGED,     true,  5, true,  false, "piout argument invalid for this problem type"},
    {"MILP before a run",  PROB_MILP,  STAT_NONE,          false, 5, false, false, "piout argument invalid for this problem type"},
};
// clang-format on

TEST(Solution, gives_what_type_and_status_allow)
{
    const MessageLog log;
    for (const auto& c : SOLUTIONS) {
        SCOPED_TRACE(c.what);
        const SolvedModel model(c.type, c.status);
        model.lp->hasresults = c.hasresults;

        std::int32_t status = -1;
        double objval = -1.0;
        Reals x = BLANK2, piout = BLANK3, slack = BLANK3, dj = BLANK2;
        EXPECT_EQ(
            solution(model.lp, &status, &objval, x.data(), piout.data(), slack.data(), dj.data()),
            c.code);
        EXPECT_EQ(status, c.status);
        EXPECT_EQ(objval, 3.0);
        EXPECT_EQ(x, c.gives_point ? model.x : BLANK2);
        EXPECT_EQ(slack, c.gives_point ? model.slack : BLANK3);
        EXPECT_EQ(piout, c.gives_duals ? model.piout : BLANK3);
        EXPECT_EQ(dj, c.gives_duals ? model.dj : BLANK2);

        const auto messages = MessageLog::take();
        ASSERT_EQ(messages.size(), c.text ? 1U : 0U);
        if (c.text) {
            EXPECT_EQ(messages[0].text, c.text);
            EXPECT_EQ(messages[0].title, "solution");
        }
    }
}

TEST(Solution, passes_over_absent_arrays)
{
    const SolvedModel lp, milp(PROB_MILP, STAT_MIP_OPTIMAL);
    EXPECT_EQ(solution(lp.lp, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);

    const Reals marked{-1.0, 777.0, 777.0};
    Reals x = marked, piout = marked, slack = marked, dj = marked;
    for (Problem* const problem : {lp.lp, milp.lp}) {
        EXPECT_EQ(
            solution(problem, nullptr, nullptr, x.data(), piout.data(), slack.data(), dj.data()),
            0);
        for (const Reals& array : {x, piout, slack, dj}) EXPECT_EQ(array, marked);
    }

    dj = BLANK2;
    EXPECT_EQ(solution(milp.lp, nullptr, nullptr, nullptr, nullptr, nullptr, dj.data()), 7);
    EXPECT_EQ(dj, BLANK2);
}

TEST(Solution, tests_the_size_but_of_non_smooth_models)
{
    for (const std::int32_t type : {PROB_LP, PROB_MIQP, PROB_NLP, PROB_MINLP, PROB_NSP}) {
        const SolvedModel model(type);
        const std::int32_t limit = type <= PROB_MIQP ? 2000 : 400;
        model.lp->numcols = limit + 1;
        EXPECT_EQ(solution(model.lp, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
                  type == PROB_NSP ? 0 : 1);
        model.lp->numcols = limit;
        EXPECT_EQ(solution(model.lp, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
        model.lp->numcols = 2;
    }
}

struct OleSolutionCall {
    SolvedModel model;
    std::int32_t status = -1;
    double objval = -1.0;
    OleArray<double> x{7.0, 7.0}, piout{7.0, 7.0, 7.0}, slack{7.0, 7.0, 7.0}, dj{7.0, 7.0};
    double* xarg = x.argument();

    OleSolutionCall() { setintparam(nullptr, PARAM_OLEARRAYS, 1); }
    OleSolutionCall(const OleSolutionCall&) = delete;
    OleSolutionCall& operator=(const OleSolutionCall&) = delete;
    ~OleSolutionCall() { setintparam(nullptr, PARAM_OLEARRAYS, 0); }

    std::int32_t run()
    {
        return solution(model.lp, &status, &objval, xarg, piout.argument(), slack.argument(),
                        dj.argument());
    }
    bool is_untouched() const { return status == -1 && objval == -1.0; }
};

double minus_one = -1.0;

// clang-format off
constexpr Refused<OleSolutionCall> OLE_SOLUTION_REFUSALS[] = {
    {"x null",      [](OleSolutionCall& c) { c.xarg = nullptr; },            4, "x is not a valid OLE array"},
    {"a plain -1.0 for x", [](OleSolutionCall& c) { c.xarg = &minus_one; },  4, "x is not a valid OLE array"},
    {"x short",     [](OleSolutionCall& c) { c.x.assign({7.0}); },           4, "x is not a valid OLE array"},
    {"piout short", [](OleSolutionCall& c) { c.piout.assign({7.0, 7.0}); },  5, "piout is not a valid OLE array"},
    {"slack short", [](OleSolutionCall& c) { c.slack.assign({7.0, 7.0}); },  6, "slack is not a valid OLE array"},
    {"dj short",    [](OleSolutionCall& c) { c.dj.assign({7.0}); },          7, "dj is not a valid OLE array"},
};
// clang-format on

TEST(SolutionOle, views_its_arrays_first)
{
    const MessageLog log;
    expect_refusals_in_order("solution", OLE_SOLUTION_REFUSALS);

    OleSolutionCall call;
    call.piout.assign({-1.0});
    call.x.assign({-1.0});
    EXPECT_EQ(call.run(), 0);
    EXPECT_EQ(call.x.values(), Reals{-1.0});
    EXPECT_EQ(call.piout.values(), Reals{-1.0});
    EXPECT_EQ(call.slack.values(), call.model.slack);
    EXPECT_EQ(call.dj.values(), call.model.dj);
}

// ---- ranges

// objsa or rhssa over the first two columns or rows.
template <bool OverColumns>
struct RangeCall {
    SolvedModel model;
    Problem* lp = model.lp;
    char letters[2] = {'I', 'C'};
    std::int32_t begin = 0, end = 1;
    Reals low = BLANK2, up = BLANK2;
    double *lower = low.data(), *upper = up.data();

    std::int32_t run() { return (OverColumns ? objsa : rhssa)(lp, begin, end, lower, upper); }
    bool is_untouched() const { return low == BLANK2 && up == BLANK2; }
};
using ObjsaCall = RangeCall<true>;
using RhssaCall = RangeCall<false>;

// clang-format off
constexpr Refused<ObjsaCall> OBJSA_REFUSALS[] = {
    {"null handle",     [](ObjsaCall& c) { c.lp = nullptr; },                         1, "lp pointer is NULL"},
    {"quadratic model", [](ObjsaCall& c) { c.model.lp->problemtype = PROB_QP; },      1, "objsa is valid only for LP problems"},
    {"integer letters", [](ObjsaCall& c) { c.model.lp->ctype = c.letters; },          1, "objsa is not valid for MIP problems"},
    {"begin -1",        [](ObjsaCall& c) { c.begin = -1; },                           2, "begin or end is out of range"},
    {"end at numcols",  [](ObjsaCall& c) { c.end = 2; },                              2, "begin or end is out of range"},
    {"begin above end", [](ObjsaCall& c) { c.begin = 1; c.end = 0; },                 2, "begin or end is out of range"},
    {"no lower",        [](ObjsaCall& c) { c.lower = nullptr; },                      4, "lower or upper is not a valid array"},
    {"no upper",        [](ObjsaCall& c) { c.upper = nullptr; },                      4, "lower or upper is not a valid array"},
};

constexpr Refused<RhssaCall> RHSSA_REFUSALS[] = {
    {"non-smooth model", [](RhssaCall& c) { c.model.lp->problemtype = PROB_NSP; },    1, "rhssa is valid only for LP problems"},
    {"integer letters",  [](RhssaCall& c) { c.model.lp->ctype = c.letters; },         1, "rhssa is not valid for MIP problems"},
    {"end at numrows",   [](RhssaCall& c) { c.end = 3; },                             2, "begin or end is out of range"},
    {"no lower",         [](RhssaCall& c) { c.lower = nullptr; },                     4, "lower or upper is not a valid array"},
};
// clang-format on

TEST(Ranges, refuse_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("objsa", OBJSA_REFUSALS);
    expect_refusals_in_order("rhssa", RHSSA_REFUSALS);
}

TEST(Ranges, element_0_belongs_to_begin)
{
    ObjsaCall objective;
    EXPECT_EQ(objective.run(), 0);
    EXPECT_EQ(objective.low, objective.model.collow);
    EXPECT_EQ(objective.up, objective.model.colup);

    RhssaCall rows;
    rows.begin = rows.end = 2;
    EXPECT_EQ(rows.run(), 0);
    EXPECT_EQ(rows.low, (Reals{22.0, 777.0}));
    EXPECT_EQ(rows.up, (Reals{25.0, 777.0}));
}

TEST(Ranges, are_not_written_without_trusted_arrays)
{
    for (const std::int32_t status : {STAT_EVALERROR, STAT_NOMEMORY, STAT_RESERVED69, STAT_NONE}) {
        ObjsaCall call;
        call.lp->status = status;
        call.lp->hasresults = status != STAT_NONE;
        EXPECT_EQ(call.run(), 0);
        EXPECT_TRUE(call.is_untouched());
    }
}

struct OleRangeCall {
    SolvedModel model;
    OleArray<double> lower{7.0, 7.0}, upper{7.0, 7.0};

    OleRangeCall() { setintparam(nullptr, PARAM_OLEARRAYS, 1); }
    OleRangeCall(const OleRangeCall&) = delete;
    OleRangeCall& operator=(const OleRangeCall&) = delete;
    ~OleRangeCall() { setintparam(nullptr, PARAM_OLEARRAYS, 0); }

    std::int32_t run() { return rhssa(model.lp, 1, 2, lower.argument(), upper.argument()); }
    bool is_untouched() const { return std::max(lower.values()[0], upper.values()[0]) <= 7.0; }
};

// clang-format off
constexpr Refused<OleRangeCall> OLE_RANGE_REFUSALS[] = {
    {"lower short",          [](OleRangeCall& c) { c.lower.assign({7.0}); },  4, "lower is not a valid OLE array"},
    {"upper short",          [](OleRangeCall& c) { c.upper.assign({7.0}); },  5, "upper is not a valid OLE array"},
};
constexpr Refused<OleRangeCall> OLE_RANGE_PLACEHOLDERS[] = {
    {"lower",                [](OleRangeCall& c) { c.lower.assign({-1.0}); }, 4, "lower or upper is not a valid array"},
    {"upper",                [](OleRangeCall& c) { c.upper.assign({-1.0}); }, 4, "lower or upper is not a valid array"},
};
// clang-format on

TEST(RangesOle, views_its_arrays)
{
    const MessageLog log;
    expect_refusals_in_order("rhssa", OLE_RANGE_REFUSALS);
    expect_refusals("rhssa", OLE_RANGE_PLACEHOLDERS);

    OleRangeCall call;
    EXPECT_EQ(call.run(), 0);
    EXPECT_EQ(call.lower.values(), (Reals{21.0, 22.0}));
    EXPECT_EQ(call.upper.values(), (Reals{24.0, 25.0}));
}

// ---- statistics

// varstat or constat over the first two columns or rows.
template <bool OverColumns>
struct StatCall {
    SolvedModel model{PROB_NSP, STAT_CONVERGED};
    Problem* lp = model.lp;
    std::int32_t begin = 0, end = 1;
    Reals out[4] = {BLANK2, BLANK2, BLANK2, BLANK2};
    double *mid = out[0].data(), *disp = out[1].data(), *lower = out[2].data(),
           *upper = out[3].data();

    std::int32_t run()
    {
        return (OverColumns ? varstat : constat)(lp, begin, end, mid, disp, lower, upper);
    }
    bool is_untouched() const
    {
        return std::all_of(std::begin(out), std::end(out),
                           [](const Reals& array) { return array == BLANK2; });
    }
};
using VarstatCall = StatCall<true>;
using ConstatCall = StatCall<false>;

// clang-format off
constexpr Refused<VarstatCall> VARSTAT_REFUSALS[] = {
    {"null handle",     [](VarstatCall& c) { c.lp = nullptr; },                    1, "lp pointer is NULL"},
    {"smooth model",    [](VarstatCall& c) { c.model.lp->problemtype = PROB_NLP; }, 1, "varsa is valid only for NSP problems"},
    {"end at numcols",  [](VarstatCall& c) { c.end = 2; },                         2, "begin or end is out of range"},
    {"no mid",          [](VarstatCall& c) { c.mid = nullptr; },                   4, "mid or disp is not a valid array"},
    {"no disp",         [](VarstatCall& c) { c.disp = nullptr; },                  4, "mid or disp is not a valid array"},
    {"no lower",        [](VarstatCall& c) { c.lower = nullptr; },                 6, "lower or upper is not a valid array"},
    {"no upper",        [](VarstatCall& c) { c.upper = nullptr; },                 6, "lower or upper is not a valid array"},
};

constexpr Refused<ConstatCall> CONSTAT_REFUSALS[] = {
    {"linear model",    [](ConstatCall& c) { c.model.lp->problemtype = PROB_LP; }, 1, "consa is valid only for NSP problems"},
    {"end at numrows",  [](ConstatCall& c) { c.end = 3; },                         2, "begin or end is out of range"},
    {"no disp",         [](ConstatCall& c) { c.disp = nullptr; },                  4, "mid or disp is not a valid array"},
};
// clang-format on

TEST(Statistics, refuse_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("varstat", VARSTAT_REFUSALS);
    expect_refusals_in_order("constat", CONSTAT_REFUSALS);
}

TEST(Statistics, are_mean_deviation_and_range)
{
    VarstatCall columns;
    EXPECT_EQ(columns.run(), 0);
    EXPECT_EQ(columns.out[0], columns.model.dj);
    EXPECT_EQ(columns.out[1], columns.model.colmid);
    EXPECT_EQ(columns.out[2], columns.model.collow);
    EXPECT_EQ(columns.out[3], columns.model.colup);

    ConstatCall rows;
    rows.begin = rows.end = 2;
    EXPECT_EQ(rows.run(), 0);
    const double expected[] = {7.0, 19.0, 22.0, 25.0};
    for (std::size_t k = 0; k < 4; ++k) EXPECT_EQ(rows.out[k], (Reals{expected[k], 777.0}));

    VarstatCall before;
    before.lp->hasresults = false;
    EXPECT_EQ(before.run(), 0);
    EXPECT_TRUE(before.is_untouched());
}

struct OleStatCall {
    SolvedModel model{PROB_MINSP, STAT_CONVERGED};
    OleArray<double> mid{7.0, 7.0}, disp{7.0, 7.0}, lower{7.0, 7.0}, upper{7.0, 7.0};

    OleStatCall() { setintparam(nullptr, PARAM_OLEARRAYS, 1); }
    OleStatCall(const OleStatCall&) = delete;
    OleStatCall& operator=(const OleStatCall&) = delete;
    ~OleStatCall() { setintparam(nullptr, PARAM_OLEARRAYS, 0); }

    std::int32_t run()
    {
        return varstat(model.lp, 0, 1, mid.argument(), disp.argument(), lower.argument(),
                       upper.argument());
    }
    bool is_untouched() const { return std::max(mid.values()[0], upper.values()[0]) <= 7.0; }
};

// clang-format off
constexpr Refused<OleStatCall> OLE_STAT_REFUSALS[] = {
    {"mid short",   [](OleStatCall& c) { c.mid.assign({7.0}); },    4, "mid is not a valid OLE array"},
    {"disp short",  [](OleStatCall& c) { c.disp.assign({7.0}); },   5, "disp is not a valid OLE array"},
    {"lower short", [](OleStatCall& c) { c.lower.assign({7.0}); },  6, "lower is not a valid OLE array"},
    {"upper short", [](OleStatCall& c) { c.upper.assign({7.0}); },  7, "upper is not a valid OLE array"},
};
constexpr Refused<OleStatCall> OLE_STAT_PLACEHOLDERS[] = {
    {"disp",        [](OleStatCall& c) { c.disp.assign({-1.0}); },  4, "mid or disp is not a valid array"},
    {"upper",       [](OleStatCall& c) { c.upper.assign({-1.0}); }, 6, "lower or upper is not a valid array"},
};
// clang-format on

TEST(StatisticsOle, views_its_arrays)
{
    const MessageLog log;
    expect_refusals_in_order("varstat", OLE_STAT_REFUSALS);
    expect_refusals("varstat", OLE_STAT_PLACEHOLDERS);

    OleStatCall call;
    EXPECT_EQ(call.run(), 0);
    EXPECT_EQ(call.upper.values(), call.model.colup);
}

// ---- counters and callbacks

TEST(CallbackInfo, gives_the_counters_of_the_run)
{
    const SmallModel model;
    Problem& lp = *model.lp;
    lp.currentobj = 1.5;
    lp.infeasibility = 2.5;
    lp.bestinteger = 3.5;
    lp.iterations = 4;
    lp.nodes = 5;
    lp.totaliterations = 6;

    double real = 0.0;
    EXPECT_EQ(getcallbackinfo(&lp, nullptr, CB_OBJECTIVE, &real), 0);
    EXPECT_EQ(real, 1.5);
    EXPECT_EQ(getcallbackinfo(&lp, nullptr, CB_INFEASIBILITY, &real), 0);
    EXPECT_EQ(real, 2.5);
    EXPECT_EQ(getcallbackinfo(&lp, nullptr, CB_BESTINTEGER, &real), 0);
    EXPECT_EQ(real, 3.5);

    std::int32_t whole = 0;
    EXPECT_EQ(getcallbackinfo(&lp, nullptr, CB_ITERATIONS, &whole), 0);
    EXPECT_EQ(whole, 4);
    EXPECT_EQ(getcallbackinfo(&lp, nullptr, CB_NODES, &whole), 0);
    EXPECT_EQ(whole, 5);
    EXPECT_EQ(getcallbackinfo(&lp, nullptr, CB_TOTALITERATIONS, &whole), 0);
    EXPECT_EQ(whole, 6);
    EXPECT_EQ(getcallbackinfo(&lp, nullptr, CB_NODES, nullptr), 0);

    const MessageLog log;
    EXPECT_EQ(getcallbackinfo(&lp, nullptr, 2, &whole), 1);
    EXPECT_EQ(whole, 6);
    EXPECT_EQ(MessageLog::take().at(0).text, "whichinfo is out of range");
}

TEST(CallbackInfo, feasible_is_within_the_tolerance)
{
    const SmallModel model;
    const auto is_feasible = [&](double infeasibility, double feastol) {
        EXPECT_EQ(setdblparam(model.lp, PARAM_FEASTOL, feastol), 0);
        model.lp->infeasibility = infeasibility;
        std::int32_t answer = -1;
        EXPECT_EQ(getcallbackinfo(model.lp, nullptr, CB_FEASIBLE, &answer), 0);
        return answer;
    };
    EXPECT_EQ(is_feasible(1e-5, 1e-5), 1);
    EXPECT_EQ(is_feasible(1e-5, 1e-6), 0);
    EXPECT_EQ(is_feasible(std::nan(""), 1e-4), 0);
}

std::int32_t TARNWICK_CALL go_on(Problem*, std::int32_t) { return 0; }

TEST(Callbacks, are_stored_apart_and_removed_by_null)
{
    const SmallModel model;
    TarnwickCallback lpfunction = go_on, mipfunction = go_on;
    EXPECT_EQ(getlpcallbackfunc(model.lp, &lpfunction), 0);
    EXPECT_EQ(lpfunction, nullptr);

    EXPECT_EQ(setlpcallbackfunc(model.lp, go_on), 0);
    EXPECT_EQ(getlpcallbackfunc(model.lp, &lpfunction), 0);
    EXPECT_EQ(getmipcallbackfunc(model.lp, &mipfunction), 0);
    EXPECT_EQ(lpfunction, go_on);
    EXPECT_EQ(mipfunction, nullptr);

    EXPECT_EQ(setmipcallbackfunc(model.lp, go_on), 0);
    EXPECT_EQ(setlpcallbackfunc(model.lp, nullptr), 0);
    EXPECT_EQ(getlpcallbackfunc(model.lp, &lpfunction), 0);
    EXPECT_EQ(getmipcallbackfunc(model.lp, &mipfunction), 0);
    EXPECT_EQ(lpfunction, nullptr);
    EXPECT_EQ(mipfunction, go_on);
    EXPECT_EQ(getlpcallbackfunc(model.lp, nullptr), 0);
    EXPECT_EQ(getmipcallbackfunc(model.lp, nullptr), 0);
}

}  // namespace
}  // namespace tarnwick
