#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "interface/problem.h"
#include "tests/interface/refusals.h"
#include "tests/support/memory.h"
#include "tests/support/messages.h"
#include "tests/support/olearrays.h"

namespace tarnwick {
namespace {

// The arguments of all load functions. Two columns and three rows, the second column after a gap; Q
// has one entry in each column.
struct LoadArguments {
    bool is_ole = false;
    const char* name = "test";
    std::int32_t numcols = 2, numrows = 3, objsen = 1, matnz = 4, qnz = 2;
    OleArray<double> obj{1, 2}, rhs{4, 5, 6}, matval{1, 2, 9, 3}, lb{0, 0}, ub{1, 1};
    OleArray<double> qmatval{1, 2}, var{0, 0};
    OleArray<char> sense{'L', 'E', 'G'}, ctype{'I', 'B'};
    OleArray<std::int32_t> matbeg{0, 3}, matcnt{2, 1}, matind{0, 2, 9, 1};
    OleArray<std::int32_t> qmatbeg{0, 1}, qmatcnt{1, 1}, qmatind{0, 1};
    Problem* lp = nullptr;

    LoadArguments() = default;
    LoadArguments(const LoadArguments&) = delete;
    LoadArguments& operator=(const LoadArguments&) = delete;

    Problem* load()
    {
        const ArrayMode mode(is_ole);
        return loadlp(name, numcols, numrows, objsen, obj.pass(), rhs.pass(), sense.pass(),
                      matbeg.pass(), matcnt.pass(), matind.pass(), matval.pass(), lb.pass(),
                      ub.pass(), nullptr, 7, 8, matnz);
    }
    void make_dense(std::vector<double> values)
    {
        for (auto* array : {&matbeg, &matcnt, &matind}) array->assign({-1});
        matval.assign(std::move(values));
    }
};

struct LpCall : LoadArguments {
    ~LpCall()
    {
        if (lp) unloadprob(&lp);
    }
    std::int32_t run() { return (lp = load()) ? 0 : 1; }  // 1 stands for the null handle
    bool is_untouched() const { return !lp; }
};

// The calls that need a model, which they load in the plain mode.
struct ModelCall : LoadArguments {
    Problem* model = load();

    ModelCall() { lp = model; }
    ~ModelCall() { unloadprob(&model); }
};

struct QuadCall : ModelCall {
    std::int32_t run()
    {
        const ArrayMode mode(is_ole);
        return loadquad(lp, qmatbeg.pass(), qmatcnt.pass(), qmatind.pass(), qmatval.pass(), qnz,
                        var.pass());
    }
    bool is_untouched() const
    {
        return !model->qmatval && !model->var && model->control.qstate == Q_NONE;
    }
};

struct CtypeCall : ModelCall {
    std::int32_t run()
    {
        const ArrayMode mode(is_ole);
        return loadctype(lp, ctype.pass());
    }
    bool is_untouched() const { return !model->ctype; }
};

template <class Call>
struct Ole : Call {
    Ole() { this->is_ole = true; }
};

// ---- refusals

std::int32_t minus_one = -1;

using L = LpCall;
using OL = Ole<LpCall>;
using Q = QuadCall;
using OQ = Ole<QuadCall>;
using C = CtypeCall;
using OC = Ole<CtypeCall>;

// clang-format off
constexpr Refused<L> LP_REFUSALS[] = {
    {"no column",         [](L& c) { c.numcols = 0; },            1, "numcols or numrows <= 0"},
    {"no row",            [](L& c) { c.numrows = 0; },            1, "numcols or numrows <= 0"},
    {"2001 columns",      [](L& c) { c.numcols = 2001; },         1, "numcols or numrows is too large"},
    {"8193 rows",         [](L& c) { c.numrows = 8193; },         1, "numcols or numrows is too large"},
    {"objsen 0",          [](L& c) { c.objsen = 0; },             1, "objsen is not -1 or 1"},
    {"no obj",            [](L& c) { c.obj.replace(nullptr); },   1, "obj or rhs is not a valid array"},
    {"no rhs",            [](L& c) { c.rhs.replace(nullptr); },   1, "obj or rhs is not a valid array"},
    {"no sense",          [](L& c) { c.sense.replace(nullptr); }, 1, "sense is not a valid array"},
    {"no matval",         [](L& c) { c.matval.replace(nullptr); }, 1, "matval is not a valid array"},
    {"no lb",             [](L& c) { c.lb.replace(nullptr); },    1, "lb or ub is not a valid array"},
    {"no ub",             [](L& c) { c.ub.replace(nullptr); },    1, "lb or ub is not a valid array"},
    {"an R row",          [](L& c) { c.sense[2] = 'R'; },         1, "sense element not E, L, G or R"},
    {"no matbeg",         [](L& c) { c.matbeg.replace(nullptr); }, 1, "matbeg, matcnt, matind are not all valid arrays"},
    {"no matcnt",         [](L& c) { c.matcnt.replace(nullptr); }, 1, "matbeg, matcnt, matind are not all valid arrays"},
    {"no matind",         [](L& c) { c.matind.replace(nullptr); }, 1, "matbeg, matcnt, matind are not all valid arrays"},
    {"matbeg -1",         [](L& c) { c.matbeg[0] = -1; },         1, "matbeg element is invalid"},
    {"more than numrows", [](L& c) { c.matcnt[0] = 4; },          1, "matcnt element is invalid"},
    {"row -1",            [](L& c) { c.matind[0] = -1; },         1, "matind element is invalid"},
    {"overlap",           [](L& c) { c.matbeg[1] = 1; },          1, "matbeg element is invalid"},
    {"count -1",          [](L& c) { c.matcnt[1] = -1; },         1, "matcnt element is invalid"},
    {"beyond matnz",      [](L& c) { c.matcnt[1] = 2; },          1, "matcnt element is invalid"},
    {"row numrows + 1",   [](L& c) { c.matind[3] = 4; },          1, "matind element is invalid"},
};

constexpr Refused<L> LP_STRUCTURE_REFUSALS[] = {
    {"start beyond numcols * numrows", [](L& c) { c.matbeg[1] = 7; c.matnz = 100; },               1, "matbeg element is invalid"},
    {"end beyond 32 bits",             [](L& c) { c.matbeg[1] = INT32_MAX; c.matnz = INT32_MAX; }, 1, "matbeg element is invalid"},
    {"entries, and matnz 0",           [](L& c) { c.matnz = 0; },                                  1, "matcnt element is invalid"},
    {"two marks of a dense matrix",    [](L& c) { c.matbeg[0] = c.matcnt[0] = -1; },               1, "matbeg element is invalid"},
};

constexpr Refused<OL> OLE_LP_REFUSALS[] = {
    {"null obj",     [](OL& c) { c.obj.replace(nullptr); }, 1, "obj or rhs is not a valid array"},
    {"obj short",    [](OL& c) { c.obj.assign({1}); },      1, "obj is not a valid OLE array"},
    {"rhs short",    [](OL& c) { c.rhs.assign({1, 2}); },   1, "rhs is not a valid OLE array"},
    {"sense short",  [](OL& c) { c.sense.assign({'L'}); },  1, "sense is not a valid OLE array"},
    {"matbeg short", [](OL& c) { c.matbeg.assign({0}); },   1, "matbeg is not a valid OLE array"},
    {"matcnt short", [](OL& c) { c.matcnt.assign({0}); },   1, "matcnt is not a valid OLE array"},
    {"matind short", [](OL& c) { c.matind.assign({0}); },   1, "matind is not a valid OLE array"},
    {"matval short", [](OL& c) { c.matval.assign({1}); },   1, "matval is not a valid OLE array"},
    {"lb short",     [](OL& c) { c.lb.assign({1}); },       1, "lb is not a valid OLE array"},
    {"ub short",     [](OL& c) { c.ub.assign({1}); },       1, "ub is not a valid OLE array"},
};

// Views that succeed although the array can't serve, and views that fail for another reason.
constexpr Refused<OL> OLE_LP_VIEWS[] = {
    {"obj placeholder",           [](OL& c) { c.obj.assign({-1}); },                 1, "obj or rhs is not a valid array"},
    {"sense placeholder",         [](OL& c) { c.sense.assign({'\0'}); },             1, "sense is not a valid array"},
    {"matval placeholder",        [](OL& c) { c.matval.assign({-1}); },              1, "matval is not a valid array"},
    {"ub placeholder",            [](OL& c) { c.ub.assign({-1}); },                  1, "lb or ub is not a valid array"},
    {"matind placeholder",        [](OL& c) { c.matind.assign({-1}); },              1, "matbeg, matcnt, matind are not all valid arrays"},
    {"a plain -1 for matind",     [](OL& c) { c.matind.replace(&minus_one); },       1, "matbeg, matcnt, matind are not all valid arrays"},
    {"matbeg placeholder",        [](OL& c) { c.matbeg.assign({-1}); },              1, "matbeg element is invalid"},
    {"dense matval short by one", [](OL& c) { c.make_dense({1, 1, 1, 1, 1}); },      1, "matval is not a valid array"},
    {"dense matval, matnz 0",     [](OL& c) { c.make_dense({1}); c.matnz = 0; },     1, "matval is not a valid array"},
    {"dense matval placeholder",  [](OL& c) { c.make_dense({-1}); c.matnz = 1; },    1, "matval is not a valid array"},
    {"two dimensions",            [](OL& c) { c.obj.header.dimensions = 2; },        1, "obj is not a valid OLE array"},
    {"four-byte elements",        [](OL& c) { c.obj.header.elementsize = 4; },       1, "obj is not a valid OLE array"},
    {"counted from 1",            [](OL& c) { c.obj.header.bound.lowerbound = 1; },  1, "obj is not a valid OLE array"},
    {"reference to null",         [](OL& c) { c.obj.pointer = nullptr; },            1, "obj is not a valid OLE array"},
};

constexpr Refused<Q> QUAD_REFUSALS[] = {
    {"null handle",         [](Q& c) { c.lp = nullptr; },                   1, "lp pointer is NULL"},
    {"no qmatval",          [](Q& c) { c.qmatval.replace(nullptr); },       5, "qmatval is not a valid array"},
    {"no var",              [](Q& c) { c.var.replace(nullptr); },           7, "var is not a valid array"},
    {"smooth model",        [](Q& c) { c.model->problemtype = PROB_NLP; },  1, "loadquad cannot be used with loadnlp"},
    {"no qmatbeg",          [](Q& c) { c.qmatbeg.replace(nullptr); },       1, nullptr},
    {"no qmatcnt",          [](Q& c) { c.qmatcnt.replace(nullptr); },       1, nullptr},
    {"no qmatind",          [](Q& c) { c.qmatind.replace(nullptr); },       1, nullptr},
    {"start -1",            [](Q& c) { c.qmatbeg[0] = -1; },                2, "qmatbeg element is invalid"},
    {"count above numcols", [](Q& c) { c.qmatcnt[0] = 3; },                 3, "qmatcnt element is invalid"},
    {"row -1",              [](Q& c) { c.qmatind[0] = -1; },                4, "qmatind element is invalid"},
    {"start beyond numcols squared", [](Q& c) { c.qmatbeg[1] = 5; },        2, "qmatbeg element is invalid"},
};

constexpr Refused<OQ> OLE_QUAD_REFUSALS[] = {
    {"qmatbeg short",       [](OQ& c) { c.qmatbeg.assign({0}); },           2, "qmatbeg is not a valid OLE array"},
    {"qmatcnt short",       [](OQ& c) { c.qmatcnt.assign({0}); },           3, "qmatcnt is not a valid OLE array"},
    {"qmatind short",       [](OQ& c) { c.qmatind.assign({0}); },           4, "qmatind is not a valid OLE array"},
    {"qmatval short",       [](OQ& c) { c.qmatval.assign({1}); },           5, "qmatval is not a valid OLE array"},
    {"var short",           [](OQ& c) { c.var.assign({1}); },               7, "var is not a valid OLE array"},
    {"matind a placeholder", [](OQ& c) { c.qmatind.assign({-1}); },         1, nullptr},
};

constexpr Refused<OQ> OLE_QUAD_VIEWS[] = {
    {"qmatval placeholder", [](OQ& c) { c.qmatval.assign({-1}); },          5, "qmatval is not a valid array"},
    {"var placeholder",     [](OQ& c) { c.var.assign({-1}); },              7, "var is not a valid array"},
};

constexpr Refused<C> CTYPE_REFUSALS[] = {
    {"null handle",         [](C& c) { c.lp = nullptr; },                   1, "lp pointer is NULL"},
    {"no ctype",            [](C& c) { c.ctype.replace(nullptr); },         2, "ctype is not a valid array"},
    {"lower case",          [](C& c) { c.ctype[1] = 'i'; },                 2, "ctype element is not C, I or B"},
};

constexpr Refused<OC> OLE_CTYPE_VIEWS[] = {
    {"short",               [](OC& c) { c.ctype.assign({'C'}); },           2, "ctype is not a valid OLE array"},
    {"placeholder",         [](OC& c) { c.ctype.assign({'\0'}); },          2, "ctype is not a valid array"},
};
// clang-format on

TEST(Loading, refuses_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("loadlp", LP_REFUSALS);
    expect_refusals("loadlp", LP_STRUCTURE_REFUSALS);
    expect_refusals_in_order("loadquad", QUAD_REFUSALS);
    expect_refusals_in_order("loadctype", CTYPE_REFUSALS);

    LpCall call;
    call.objsen = 0;
    setintparam(nullptr, PARAM_MESSAGES, 0);
    EXPECT_EQ(call.run(), 1);
    EXPECT_TRUE(MessageLog::take().empty());
}

TEST(Loading, refuses_each_ole_array_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("loadlp", OLE_LP_REFUSALS);
    expect_refusals("loadlp", OLE_LP_VIEWS);
    expect_refusals_in_order("loadquad", OLE_QUAD_REFUSALS);
    expect_refusals("loadquad", OLE_QUAD_VIEWS);
    expect_refusals("loadctype", OLE_CTYPE_VIEWS);
}

// ---- linear models

void make_largest(LpCall& c)
{
    c.numcols = 2000, c.numrows = 8192;
    for (auto* array : {&c.obj, &c.lb, &c.ub}) array->assign(std::vector<double>(2000));
    for (auto* array : {&c.matbeg, &c.matcnt}) array->assign(std::vector<std::int32_t>(2000));
    c.rhs.assign(std::vector<double>(8192));
    c.sense.assign(std::vector<char>(8192, 'G'));
}

// One element that looks like a placeholder serves where one is needed.
void make_single_column(LpCall& c)
{
    c.is_ole = true;
    c.numcols = c.matnz = 1;
    for (auto* array : {&c.obj, &c.lb, &c.ub, &c.matval}) array->assign({-1});
    c.matcnt.assign({1});
    for (auto* array : {&c.matbeg, &c.matind}) array->assign({0});
}

// clang-format off
constexpr struct {
    const char* what;
    void (*change)(LpCall&);
    bool is_dense;
} ACCEPTED_LPS[] = {
    {"gap before the second column",   [](L&) {}, false},
    {"a null name is an empty one",    [](L& c) { c.name = nullptr; }, false},
    {"row index equal to numrows",     [](L& c) { c.matind[3] = 3; }, false},
    {"start equal to numcols*numrows", [](L& c) { c.matbeg[1] = 6; c.matcnt[1] = 0; }, false},
    {"a matrix without entries",       [](L& c) { c.matcnt.assign({0, 0}); c.matnz = 0; }, false},
    {"three null pointers",            [](L& c) { for (auto* a : {&c.matbeg, &c.matcnt, &c.matind}) a->replace(nullptr); }, true},
    {"three marks, matnz of no account", [](L& c) { c.make_dense({1, 1, 1, 1, 1, 1}); c.matnz = 0; }, true},
    {"maximisation",                   [](L& c) { c.objsen = -1; }, false},
    {"the largest",                    make_largest, false},
    {"OLE arrays",                     [](L& c) { c.is_ole = true; }, false},
    {"OLE arrays, dense",              [](L& c) { c.is_ole = true; c.make_dense({1, 1, 1, 1, 1, 1}); }, true},
    {"OLE arrays of one element",      make_single_column, false},
};
// clang-format on

TEST(LoadLp, keeps_what_it_was_given)
{
    for (const auto& c : ACCEPTED_LPS) {
        SCOPED_TRACE(c.what);
        LpCall call;
        c.change(call);
        ASSERT_EQ(call.run(), 0);
        const Problem& lp = *call.lp;
        EXPECT_STREQ(lp.name, call.name ? "test" : "");
        EXPECT_EQ(lp.problemtype, PROB_LP);
        EXPECT_EQ(lp.objsen, call.objsen);
        EXPECT_EQ(lp.obj, call.obj.values().data());
        EXPECT_EQ(lp.matbeg, c.is_dense ? nullptr : call.matbeg.values().data());
        EXPECT_EQ(lp.matcnt, c.is_dense ? nullptr : call.matcnt.values().data());
        EXPECT_EQ(lp.matind, c.is_dense ? nullptr : call.matind.values().data());
        EXPECT_EQ(lp.matnz, call.matnz);
        EXPECT_EQ(lp.colspare, 7);
        EXPECT_EQ(lp.rowspare, 8);
        EXPECT_EQ(lp.lastcol, call.numcols - 1);
        EXPECT_EQ(lp.lastrow, call.numrows - 1);
        EXPECT_EQ(lp.control.problem, &lp);
        EXPECT_EQ(lp.control.qstate, Q_NONE);
        if (!call.is_ole) continue;
        const OleReference references[] = {call.obj.reference(), call.matbeg.reference(),
                                           call.matcnt.reference(), call.matind.reference(),
                                           call.matval.reference()};
        EXPECT_TRUE(std::equal(std::begin(references), std::end(references), lp.olehandles));
    }
}

TEST(LoadLp, without_memory_there_is_no_model_and_no_message)
{
    const MessageLog log;
    const long alive = blocks_alive();
    LpCall call;
    bool failed = true;
    for (long allowed = 0; failed; ++allowed) {
        EXPECT_LE(allowed, 2) << "small models come by the thousand";
        allow_allocations(allowed);
        const std::int32_t code = call.run();
        failed = allocation_failed();
        allow_all_allocations();
        EXPECT_EQ(code, failed ? 1 : 0);
        EXPECT_TRUE(!failed || blocks_alive() == alive);
    }
    EXPECT_TRUE(MessageLog::take().empty());
}

// ---- Q and letters

TEST(LoadQuad, replaces_an_earlier_q_unless_it_is_refused)
{
    QuadCall call;
    ASSERT_EQ(call.run(), 0);
    EXPECT_EQ(call.model->var, call.var.values().data());

    call.model->problemtype = PROB_MILP;
    std::vector<std::int32_t> begins{0, -1};
    call.qmatbeg.replace(begins.data());
    EXPECT_EQ(call.run(), 2);
    EXPECT_EQ(call.model->problemtype, PROB_MIQP) << "the type has moved";
    EXPECT_EQ(call.model->qmatbeg, call.qmatbeg.values().data());
    EXPECT_EQ(call.model->control.qstate, Q_ACCEPTED);

    for (auto* array : {&call.qmatbeg, &call.qmatcnt, &call.qmatind}) array->replace(nullptr);
    for (call.is_ole = false;; call.is_ole = true) {
        call.qmatval.assign({1, 2, 2, 1});
        EXPECT_EQ(call.run(), 5) << "indefinite";
        EXPECT_EQ(call.model->qmatbeg, nullptr);
        EXPECT_EQ(call.model->qmatval, call.qmatval.values().data());
        EXPECT_EQ(call.model->control.qstate, Q_INDEFINITE);
        if (call.is_ole) break;
    }
}

TEST(Loading, moves_the_type_up)
{
    const struct {
        std::int32_t from, after_quad, after_ctype;
    } MOVES[] = {
        {PROB_LP,    PROB_QP,    PROB_MILP },
        {PROB_MILP,  PROB_MIQP,  PROB_MILP },
        {PROB_QP,    PROB_QP,    PROB_MIQP },
        {PROB_MIQP,  PROB_MIQP,  PROB_MIQP },
        {PROB_NLP,   PROB_NLP,   PROB_MINLP},
        {PROB_MINLP, PROB_MINLP, PROB_MINLP},
        {PROB_NSP,   PROB_NSP,   PROB_MINSP},
        {PROB_MINSP, PROB_MINSP, PROB_MINSP},
    };
    for (const auto& c : MOVES)
        for (const char letter : {'I', 'S'}) {
            SCOPED_TRACE(c.from);
            QuadCall quad;
            quad.model->problemtype = c.from;
            EXPECT_EQ(quad.run(), c.from == PROB_NLP || c.from == PROB_MINLP ? 1 : 0);
            EXPECT_EQ(quad.model->problemtype, c.after_quad);

            Ole<CtypeCall> ctype;
            ctype.model->problemtype = c.from;
            ctype.ctype[0] = letter;
            EXPECT_EQ(ctype.run(), letter == 'S' ? 2 : 0);
            EXPECT_EQ(ctype.model->problemtype, c.after_ctype) << "a bad letter moves it, too";
        }
}

}  // namespace
}  // namespace tarnwick
