#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "include/tarnwick.h"
#include "tests/interface/functionmodel.h"
#include "tests/interface/refusals.h"
#include "tests/interface/smallmodel.h"
#include "tests/support/olearrays.h"

namespace tarnwick {
namespace {

using NlpCall = FunctionModel;

// ---- loadnlp

// clang-format off
constexpr Refused<NlpCall> NLP_REFUSALS[] = {
    {"no column",      [](NlpCall& c) { c.numcols = 0; },         1, "numcols <= 0"},
    {"rows negative",  [](NlpCall& c) { c.numrows = -1; },        1, "numrows < 0"},
    {"401 columns",    [](NlpCall& c) { c.numcols = 401; },       1, "numcols or numrows is too large"},
    {"201 rows",       [](NlpCall& c) { c.numrows = 201; },       1, "numcols or numrows is too large"},
    {"objsen 0",       [](NlpCall& c) { c.objsen = 0; },          1, "objsen is not -1 or 1"},
    {"no obj",         [](NlpCall& c) { c.obj = nullptr; },       1, "obj is not a valid array"},
    {"no rhs",         [](NlpCall& c) { c.rhs = nullptr; },       1, "rhs is not a valid array"},
    {"no sense",       [](NlpCall& c) { c.sense = nullptr; },     1, "sense is not a valid array"},
    {"no matval",      [](NlpCall& c) { c.matval = nullptr; },    1, "matval is not a valid array"},
    {"no var",         [](NlpCall& c) { c.var = nullptr; },       1, "var is not a valid array"},
    {"no lb",          [](NlpCall& c) { c.lb = nullptr; },        1, "lb or ub is not a valid array"},
    {"no ub",          [](NlpCall& c) { c.ub = nullptr; },        1, "lb or ub is not a valid array"},
    {"no funceval",    [](NlpCall& c) { c.funceval = nullptr; },  1, "funceval is not a valid callback"},
    {"an N row",       [](NlpCall& c) { c.senses[3] = 'N'; },     1, "sense element not E, L, G or R"},
    {"no matbeg",      [](NlpCall& c) { c.matbeg = nullptr; },    1, "matbeg, matcnt, matind are not all valid arrays"},
    {"matbeg -1",      [](NlpCall& c) { c.begins[0] = -1; },      1, "matbeg element is invalid"},
    {"beyond matnz",   [](NlpCall& c) { c.counts[1] = 3; },       1, "matcnt element is invalid"},
    {"row beyond",     [](NlpCall& c) { c.rows[4] = 5; },         1, "matind element is invalid"},
};
// clang-format on

TEST(LoadNlp, refuses_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("loadnlp", NLP_REFUSALS);
}

TEST(LoadNlp, keeps_what_it_was_given)
{
    NlpCall call;
    ASSERT_EQ(call.run(), 0);
    EXPECT_EQ(call.lp->problemtype, PROB_NLP);
    EXPECT_EQ(call.lp->var, call.var);
    EXPECT_EQ(call.lp->rowrange, call.rowrange);
    EXPECT_EQ(call.lp->matnz, 5);
    EXPECT_EQ(call.lp->lastcol, 1);
    EXPECT_EQ(call.lp->lastrow, 3);
    EXPECT_EQ(call.lp->funceval, call.funceval);
}

TEST(LoadNlp, needs_no_arrays_of_rows_where_there_are_no_rows)
{
    NlpCall call;
    call.numrows = 0;
    call.rhs = call.matval = nullptr;
    call.sense = nullptr;
    call.matbeg = call.matcnt = call.matind = nullptr;
    EXPECT_EQ(call.run(), 0);
}

// ---- OLE array mode

struct OleNlpCall {
    FunctionModel plain;
    OleArray<double> obj{0.0, 0.0}, rhs{4.0, 1.0, 2.0, 3.0};
    OleArray<char> sense{'L', 'G', 'E', 'R'};
    OleArray<std::int32_t> matbeg{0, 3}, matcnt{3, 2}, matind{0, 1, 3, 1, 2};
    OleArray<double> matval{0.0, 0.0, 0.0, 0.0, 0.0}, var{1.0, 2.0}, lb{0.0, 0.0}, ub{9.0, 9.0};

    OleNlpCall() { setintparam(nullptr, PARAM_OLEARRAYS, 1); }
    OleNlpCall(const OleNlpCall&) = delete;
    OleNlpCall& operator=(const OleNlpCall&) = delete;
    ~OleNlpCall() { setintparam(nullptr, PARAM_OLEARRAYS, 0); }

    std::int32_t run()
    {
        plain.obj = obj.argument();
        plain.rhs = rhs.argument();
        plain.sense = sense.argument();
        plain.matbeg = matbeg.argument();
        plain.matcnt = matcnt.argument();
        plain.matind = matind.argument();
        plain.matval = matval.argument();
        plain.var = var.argument();
        plain.lb = lb.argument();
        plain.ub = ub.argument();
        return plain.run();
    }
    bool is_untouched() const { return !plain.lp; }
};

// clang-format off
constexpr Refused<OleNlpCall> OLE_NLP_REFUSALS[] = {
    {"obj short",    [](OleNlpCall& c) { c.obj.assign({1.0}); },       1, "obj is not a valid OLE array"},
    {"rhs short",    [](OleNlpCall& c) { c.rhs.assign({1.0}); },       1, "rhs is not a valid OLE array"},
    {"sense short",  [](OleNlpCall& c) { c.sense.assign({'L'}); },     1, "sense is not a valid OLE array"},
    {"matbeg short", [](OleNlpCall& c) { c.matbeg.assign({0}); },      1, "matbeg is not a valid OLE array"},
    {"matcnt short", [](OleNlpCall& c) { c.matcnt.assign({0}); },      1, "matcnt is not a valid OLE array"},
    {"matind short", [](OleNlpCall& c) { c.matind.assign({0}); },      1, "matind is not a valid OLE array"},
    {"matval short", [](OleNlpCall& c) { c.matval.assign({0.0}); },    1, "matval is not a valid OLE array"},
    {"var short",    [](OleNlpCall& c) { c.var.assign({0.0}); },       1, "var is not a valid OLE array"},
    {"lb short",     [](OleNlpCall& c) { c.lb.assign({0.0}); },        1, "lb is not a valid OLE array"},
    {"ub short",     [](OleNlpCall& c) { c.ub.assign({0.0}); },        1, "ub is not a valid OLE array"},
};
// clang-format on

TEST(LoadNlpOle, refuses_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("loadnlp", OLE_NLP_REFUSALS);
}

TEST(LoadNlpOle, keeps_data_and_references)
{
    OleNlpCall call;
    ASSERT_EQ(call.run(), 0);
    EXPECT_EQ(call.plain.lp->var, call.var.values().data());
    const OleReference references[] = {call.obj.reference(), call.matbeg.reference(),
                                       call.matcnt.reference(), call.matind.reference(),
                                       call.matval.reference()};
    EXPECT_TRUE(
        std::equal(std::begin(references), std::end(references), call.plain.lp->olehandles));
}

// ---- loadnltype

struct TypeCase {
    const char* what;
    std::int32_t from;
    const char* objtype;     // two letters, or null
    const char* matvaltype;  // five letters, or null
    std::int32_t code, to;
};

constexpr TypeCase TYPE_CASES[] = {
    {"all linear or smooth",        PROB_NLP,   "LN",    "LLNNL", 0, PROB_NLP  },
    {"the same, with integers",     PROB_MINLP, "NN",    "NNNNN", 0, PROB_MINLP},
    {"an objective's other letter", PROB_NLP,   "LD",    "LLLLL", 0, PROB_NSP  },
    {"an entry's other letter",     PROB_MINLP, "LL",    "LLLL ", 0, PROB_MINSP},
    {"no objtype",                  PROB_NLP,   nullptr, "LLLLL", 0, PROB_NSP  },
    {"no matvaltype",               PROB_NLP,   "LL",    nullptr, 0, PROB_NSP  },
    {"non-smooth stays",            PROB_NSP,   "LL",    "LLLLL", 0, PROB_NSP  },
    {"non-smooth once more",        PROB_MINSP, nullptr, nullptr, 0, PROB_MINSP},
    {"linear model, all linear",    PROB_LP,    "LL",    "LLLLL", 0, PROB_LP   },
    {"linear model, no arrays",     PROB_LP,    nullptr, nullptr, 1, PROB_LP   },
    {"integer, another letter",     PROB_MILP,  "Lx",    "LLLLL", 1, PROB_MILP },
    {"quadratic stays",             PROB_QP,    nullptr, nullptr, 0, PROB_QP   },
    {"integer quadratic stays",     PROB_MIQP,  "xx",    "xxxxx", 0, PROB_MIQP },
};

TEST(LoadNlType, moves_the_type_of_a_model_with_parts_that_are_not_smooth)
{
    const MessageLog log;
    for (const auto& c : TYPE_CASES) {
        SCOPED_TRACE(c.what);
        FunctionModel model;
        ASSERT_EQ(model.run(), 0);
        model.lp->problemtype = c.from;
        std::string objtype = c.objtype ? c.objtype : "",
                    matvaltype = c.matvaltype ? c.matvaltype : "";
        MessageLog::take();
        EXPECT_EQ(loadnltype(model.lp, c.objtype ? objtype.data() : nullptr,
                             c.matvaltype ? matvaltype.data() : nullptr),
                  c.code);
        EXPECT_EQ(model.lp->problemtype, c.to);
        const auto messages = MessageLog::take();
        ASSERT_EQ(messages.size(), c.code == 0 ? 0U : 1U);
        if (c.code != 0) {
            EXPECT_EQ(messages[0].text, "loadnltype cannot be used with loadlp");
        }
    }
}

struct TypeCall {
    FunctionModel model;
    Problem* lp = nullptr;
    OleArray<char> objtype{'L', 'N'}, matvaltype{'L', 'L', 'L', 'L', 'N'};

    TypeCall()
    {
        model.run();
        lp = model.lp;
        setintparam(nullptr, PARAM_OLEARRAYS, 1);
    }
    TypeCall(const TypeCall&) = delete;
    TypeCall& operator=(const TypeCall&) = delete;
    ~TypeCall() { setintparam(nullptr, PARAM_OLEARRAYS, 0); }

    std::int32_t run() { return loadnltype(lp, objtype.argument(), matvaltype.argument()); }
    bool is_untouched() const { return !model.lp->objtype && !model.lp->matvaltype; }
};

// clang-format off
constexpr Refused<TypeCall> TYPE_REFUSALS[] = {
    {"null handle",      [](TypeCall& c) { c.lp = nullptr; },               1, "lp pointer is NULL"},
    {"objtype short",    [](TypeCall& c) { c.objtype.assign({'L'}); },      2, "objtype is not a valid OLE array"},
    {"matvaltype short", [](TypeCall& c) { c.matvaltype.assign({'L'}); },   3, "matvaltype is not a valid OLE array"},
};
// clang-format on

TEST(LoadNlTypeOle, refuses_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("loadnltype", TYPE_REFUSALS);
}

TEST(LoadNlTypeOle, keeps_letters_and_references_and_takes_a_placeholder_for_none)
{
    TypeCall call;
    ASSERT_EQ(call.run(), 0);
    EXPECT_EQ(call.lp->problemtype, PROB_NLP);
    EXPECT_EQ(call.lp->matvaltype, call.matvaltype.values().data());
    EXPECT_EQ(call.lp->oletypehandles[0], call.objtype.reference());
    EXPECT_EQ(call.lp->oletypehandles[1], call.matvaltype.reference());

    call.matvaltype.assign({'\0'});
    ASSERT_EQ(call.run(), 0);
    EXPECT_EQ(call.lp->matvaltype, nullptr);
    EXPECT_EQ(call.lp->problemtype, PROB_NSP);
}

}  // namespace
}  // namespace tarnwick
