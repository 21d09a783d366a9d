#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/interface/refusals.h"
#include "tests/support/functionmodel.h"

namespace tarnwick {
namespace {

using N = FunctionModel;

struct ON : FunctionModel {
    ON() { is_ole = true; }
};

// loadnltype, in OLE array mode for a model that was loaded without it.
struct T : FunctionModel {
    Problem* model;

    T()
    {
        FunctionModel::run();
        model = lp;
    }
    ~T() { lp = model; }
    T(const T&) = delete;
    T& operator=(const T&) = delete;

    std::int32_t run()
    {
        const ArrayMode mode(true);
        return loadnltype(lp, objtype.pass(), matvaltype.pass());
    }
    bool is_untouched() const { return !model->objtype && !model->matvaltype; }
};

// clang-format off
constexpr Refused<N> NLP_REFUSALS[] = {
    {"no column",      [](N& c) { c.numcols = 0; },               1, "numcols <= 0"},
    {"rows negative",  [](N& c) { c.numrows = -1; },              1, "numrows < 0"},
    {"401 columns",    [](N& c) { c.numcols = 401; },             1, "numcols or numrows is too large"},
    {"201 rows",       [](N& c) { c.numrows = 201; },             1, "numcols or numrows is too large"},
    {"objsen 0",       [](N& c) { c.objsen = 0; },                1, "objsen is not -1 or 1"},
    {"no obj",         [](N& c) { c.obj.replace(nullptr); },      1, "obj is not a valid array"},
    {"no rhs",         [](N& c) { c.rhs.replace(nullptr); },      1, "rhs is not a valid array"},
    {"no sense",       [](N& c) { c.sense.replace(nullptr); },    1, "sense is not a valid array"},
    {"no matval",      [](N& c) { c.matval.replace(nullptr); },   1, "matval is not a valid array"},
    {"no var",         [](N& c) { c.var.replace(nullptr); },      1, "var is not a valid array"},
    {"no lb",          [](N& c) { c.lb.replace(nullptr); },       1, "lb or ub is not a valid array"},
    {"no ub",          [](N& c) { c.ub.replace(nullptr); },       1, "lb or ub is not a valid array"},
    {"no funceval",    [](N& c) { c.funceval = nullptr; },        1, "funceval is not a valid callback"},
    {"an N row",       [](N& c) { c.sense[3] = 'N'; },            1, "sense element not E, L, G or R"},
    {"no matbeg",      [](N& c) { c.matbeg.replace(nullptr); },   1, "matbeg, matcnt, matind are not all valid arrays"},
    {"matbeg -1",      [](N& c) { c.matbeg[0] = -1; },            1, "matbeg element is invalid"},
    {"beyond matnz",   [](N& c) { c.matcnt[1] = 3; },             1, "matcnt element is invalid"},
    {"row beyond",     [](N& c) { c.matind[4] = 5; },             1, "matind element is invalid"},
};

constexpr Refused<ON> OLE_NLP_REFUSALS[] = {
    {"obj short",      [](ON& c) { c.obj.assign({1}); },          1, "obj is not a valid OLE array"},
    {"rhs short",      [](ON& c) { c.rhs.assign({1}); },          1, "rhs is not a valid OLE array"},
    {"sense short",    [](ON& c) { c.sense.assign({'L'}); },      1, "sense is not a valid OLE array"},
    {"matbeg short",   [](ON& c) { c.matbeg.assign({0}); },       1, "matbeg is not a valid OLE array"},
    {"matcnt short",   [](ON& c) { c.matcnt.assign({0}); },       1, "matcnt is not a valid OLE array"},
    {"matind short",   [](ON& c) { c.matind.assign({0}); },       1, "matind is not a valid OLE array"},
    {"matval short",   [](ON& c) { c.matval.assign({0}); },       1, "matval is not a valid OLE array"},
    {"var short",      [](ON& c) { c.var.assign({0}); },          1, "var is not a valid OLE array"},
    {"lb short",       [](ON& c) { c.lb.assign({0}); },           1, "lb is not a valid OLE array"},
    {"ub short",       [](ON& c) { c.ub.assign({0}); },           1, "ub is not a valid OLE array"},
    {"a placeholder",  [](ON& c) { c.var.assign({-1}); },         1, "var is not a valid array"},
};

constexpr Refused<T> TYPE_REFUSALS[] = {
    {"null handle",      [](T& c) { c.lp = nullptr; },              1, "lp pointer is NULL"},
    {"objtype short",    [](T& c) { c.objtype.assign({'L'}); },     2, "objtype is not a valid OLE array"},
    {"matvaltype short", [](T& c) { c.matvaltype.assign({'L'}); },  3, "matvaltype is not a valid OLE array"},
};
// clang-format on

TEST(FunctionLoading, refuses_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("loadnlp", NLP_REFUSALS);
    expect_refusals_in_order("loadnlp", OLE_NLP_REFUSALS);
    expect_refusals_in_order("loadnltype", TYPE_REFUSALS);
}

TEST(FunctionLoading, keeps_what_it_was_given)
{
    for (const bool is_ole : {false, true}) {
        FunctionModel call;
        call.is_ole = is_ole;
        ASSERT_EQ(call.run(), 0);
        EXPECT_EQ(call.lp->problemtype, PROB_NLP);
        EXPECT_EQ(call.lp->var, call.var.values().data());
        EXPECT_EQ(call.lp->rowrange, call.rowrange.data());
        EXPECT_EQ(call.lp->matnz, 5);
        EXPECT_EQ(call.lp->lastcol, 1);
        EXPECT_EQ(call.lp->lastrow, 3);
        const OleReference references[] = {call.obj.reference(), call.matbeg.reference(),
                                           call.matcnt.reference(), call.matind.reference(),
                                           call.matval.reference()};
        EXPECT_EQ(is_ole,
                  std::equal(std::begin(references), std::end(references), call.lp->olehandles));
    }
}

TEST(FunctionLoading, needs_no_arrays_of_rows_where_there_are_no_rows)
{
    for (const bool is_ole : {false, true}) {
        FunctionModel call;
        call.is_ole = is_ole;
        call.make_dense(0);
        for (auto* array : {&call.rhs, &call.matval}) array->replace(nullptr);
        call.sense.replace(nullptr);
        EXPECT_EQ(call.run(), 0);
    }
}

// clang-format off
constexpr struct {
    const char* what;
    std::int32_t from;
    const char* objtype;     // two letters, or null
    const char* matvaltype;  // five letters, or null
    std::int32_t code, to;
} TYPE_CASES[] = {
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
// clang-format on

TEST(LoadNlType, moves_the_type_of_a_model_with_parts_that_are_not_smooth)
{
    const MessageLog log;
    for (const auto& c : TYPE_CASES) {
        SCOPED_TRACE(c.what);
        FunctionModel model;
        ASSERT_EQ(model.run(), 0);
        model.lp->problemtype = c.from;
        std::string objtype(c.objtype ? c.objtype : ""), entries(c.matvaltype ? c.matvaltype : "");
        EXPECT_EQ(loadnltype(model.lp, c.objtype ? objtype.data() : nullptr,
                             c.matvaltype ? entries.data() : nullptr),
                  c.code);
        EXPECT_EQ(model.lp->problemtype, c.to);
        for (const Message& message : MessageLog::take())
            EXPECT_EQ(message.text, "loadnltype cannot be used with loadlp");
    }
}

TEST(LoadNlType, keeps_ole_references_and_takes_a_placeholder_for_none)
{
    T call;
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
