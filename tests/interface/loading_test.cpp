#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "tests/support/functionmodel.h"
#include "tests/support/memory.h"
#include "tests/support/messages.h"

namespace tarnwick {
namespace {

// ---- calls and how they are refused

// One way to spoil the arguments of a call, and how it is then refused. A Call starts out with good
// arguments; run() makes the call, and is_untouched() says whether it left everything as it was.
template <class Call>
struct Refused {
    const char* what;
    void (*spoil)(Call&);
    const char* text;  // null: the code alone tells; a leading space: it goes on from `what`
    std::int32_t code = 1;
};

constexpr char ABSENT[] = " is not a valid array", NOT_OLE[] = " is not a valid OLE array";
constexpr char INDICES[] = "matbeg, matcnt, matind are not all valid arrays";
constexpr char BEG[] = "matbeg element is invalid", CNT[] = "matcnt element is invalid";
constexpr char IND[] = "matind element is invalid";
constexpr char OBJSEN[] = "objsen is not -1 or 1", SENSE[] = "sense element not E, L, G or R";
constexpr char TOO_LARGE[] = "numcols or numrows is too large";

// What spoils a call: an array that isn't there, is short or has one element; a field.
template <auto ARRAY, class Call>
void drop(Call& call)
{
    (call.*ARRAY).replace(nullptr);
}
template <auto ARRAY, int VALUE, class Call>
void fill(Call& call)
{
    (call.*ARRAY).assign({VALUE});
}
template <auto FIELD, auto VALUE, class Call>
void set(Call& call)
{
    call.*FIELD = VALUE;
}
template <auto ARRAY, class Call>
void cut(Call& call)
{
    auto values = (call.*ARRAY).values();
    values.pop_back();
    (call.*ARRAY).assign(values);
}

// A call in OLE array mode.
template <class Call>
struct Ole : Call {
    Ole() { this->is_ole = true; }
};

// A call spoilt in two ways, or in one when both are the same, is refused for the first.
template <class Call>
void expect_refusal(const char* title, const Refused<Call>& first, const Refused<Call>& second)
{
    SCOPED_TRACE(std::string(first.what) + ", then " + second.what);
    const long alive = blocks_alive();
    {
        Call call;
        if (&first != &second) second.spoil(call);
        first.spoil(call);
        const std::int32_t code = call.run();
        EXPECT_TRUE(call.is_untouched());
        if (first.text)
            expect_told(code, first.code, title,
                        (*first.text == ' ' ? first.what : "") + std::string(first.text));
        else
            EXPECT_EQ(code, first.code);
    }
    EXPECT_EQ(blocks_alive(), alive);
}

// Each row is refused on its own. Rows that stand in the order of the tests are tried in pairs, too,
// of which the first is told.
template <class Call, std::size_t N>
void expect_refusals(const char* title, const Refused<Call> (&rows)[N], bool in_order = true)
{
    for (std::size_t first = 0; first < N; ++first)
        for (std::size_t second = first; second < (in_order ? N : first + 1); ++second)
            expect_refusal(title, rows[first], rows[second]);
}

// loadlp with the arrays of a model of functions: rows that it takes, and a gap in the matrix.
struct LpCall : FunctionModel {
    const char* name = "test";

    LpCall()
    {
        sense[3] = 'L';
        matcnt[0] = 2;
    }
    std::int32_t run()
    {
        const ArrayMode mode(is_ole);
        lp = loadlp(name, numcols, numrows, objsen, obj.pass(), rhs.pass(), sense.pass(),
                    matbeg.pass(), matcnt.pass(), matind.pass(), matval.pass(), lb.pass(),
                    ub.pass(), nullptr, 7, 8, matnz);
        return lp ? 0 : 1;
    }
};

// loadquad for such a model, which is loaded in the plain mode.
struct QuadCall : LpCall {
    std::int32_t qnz = 2;
    OleArray<std::int32_t> qmatbeg{0, 1}, qmatcnt{1, 1}, qmatind{0, 1};
    OleArray<double> qmatval{1, 2};

    QuadCall() { LpCall::run(); }
    std::int32_t run()
    {
        const ArrayMode mode(is_ole);
        return loadquad(lp, qmatbeg.pass(), qmatcnt.pass(), qmatind.pass(), qmatval.pass(), qnz,
                        var.pass());
    }
    bool is_untouched() const { return !lp->qmatval && !lp->var && lp->control.qstate == Q_NONE; }
};

// ---- refusals

using L = LpCall;
using OL = Ole<LpCall>;
using Q = QuadCall;
using N = FunctionModel;

constexpr char NO_SIZE[] = "numcols or numrows <= 0", Q_BEG[] = "qmatbeg element is invalid";
constexpr char NO_QUAD[] = "loadquad cannot be used with loadnlp";
std::int32_t minus_one = -1;

void mark_dense(L& c, std::size_t values)
{
    for (auto* array : {&c.matbeg, &c.matcnt, &c.matind}) array->assign({-1});
    c.matval.assign(std::vector<double>(values, -1.0));
}

// clang-format off
constexpr Refused<L> LP_REFUSALS[] = {
    {"no column",         set<&L::numcols, 0>,            NO_SIZE},
    {"2001 columns",      set<&L::numcols, 2001>,         TOO_LARGE},
    {"8193 rows",         set<&L::numrows, 8193>,         TOO_LARGE},
    {"objsen 0",          set<&L::objsen, 0>,             OBJSEN},
    {"obj or rhs", drop<&L::obj>, ABSENT}, {"obj or rhs", drop<&L::rhs>,    ABSENT},
    {"sense",    drop<&L::sense>, ABSENT}, {"matval",     drop<&L::matval>, ABSENT},
    {"lb or ub", drop<&L::lb>,    ABSENT}, {"lb or ub",   drop<&L::ub>,     ABSENT},
    {"an R row",          [](L& c) { c.sense[2] = 'R'; }, SENSE},
    {"no matbeg", drop<&L::matbeg>, INDICES}, {"no matcnt", drop<&L::matcnt>, INDICES},
    {"no matind", drop<&L::matind>, INDICES},
    {"matbeg -1",         [](L& c) { c.matbeg[0] = -1; }, BEG},
    {"more than numrows", [](L& c) { c.matcnt[0] = 5; },  CNT},
    {"row -1",            [](L& c) { c.matind[0] = -1; }, IND},
    {"overlap",           [](L& c) { c.matbeg[1] = 1; },  BEG},
    {"count -1",          [](L& c) { c.matcnt[1] = -1; }, CNT},
    {"beyond matnz",      [](L& c) { c.matcnt[1] = 3; },  CNT},
    {"row numrows + 1",   [](L& c) { c.matind[3] = 5; },  IND},
};
constexpr Refused<L> OTHER_LP_REFUSALS[] = {
    {"no row",                         set<&L::numrows, 0>, NO_SIZE},
    {"start beyond numcols * numrows", [](L& c) { c.matbeg[1] = 9; c.matnz = 100; }, BEG},
    {"two marks of a dense matrix",    [](L& c) { c.matbeg[0] = c.matcnt[0] = -1; }, BEG},
};
constexpr Refused<OL> OLE_LP_REFUSALS[] = {
    {"obj or rhs", drop<&L::obj>, ABSENT}, {"obj",    cut<&L::obj>,    NOT_OLE},
    {"rhs",    cut<&L::rhs>,    NOT_OLE},  {"sense",  cut<&L::sense>,  NOT_OLE},
    {"matbeg", cut<&L::matbeg>, NOT_OLE},  {"matcnt", cut<&L::matcnt>, NOT_OLE},
    {"matind", cut<&L::matind>, NOT_OLE},  {"matval", cut<&L::matval>, NOT_OLE},
    {"lb",     cut<&L::lb>,     NOT_OLE},  {"ub",     cut<&L::ub>,     NOT_OLE},
};
// Views that succeed although the array can't serve, and views that fail for another reason.
constexpr Refused<OL> OLE_LP_VIEWS[] = {
    {"obj or rhs", fill<&L::obj, -1>,    ABSENT}, {"sense",    fill<&L::sense, 0>, ABSENT},
    {"matval",     fill<&L::matval, -1>, ABSENT}, {"lb or ub", fill<&L::ub, -1>,   ABSENT},
    {"matbeg placeholder",    fill<&L::matbeg, -1>,                           BEG},
    {"matind placeholder",    fill<&L::matind, -1>,                           INDICES},
    {"a plain -1 for matind", [](OL& c) { c.matind.replace(&minus_one); },    INDICES},
    {"matval",                [](OL& c) { mark_dense(c, 7); },                ABSENT},
    {"matval",                [](OL& c) { mark_dense(c, 1); c.matnz = 1; },   ABSENT},
    {"obj",                   [](OL& c) { c.obj.header.dimensions = 2; },     NOT_OLE},
    {"obj",                   [](OL& c) { c.obj.header.elementsize = 4; },    NOT_OLE},
    {"obj",                   [](OL& c) { c.obj.header.bound.lowerbound = 1; }, NOT_OLE},
    {"obj",                   [](OL& c) { c.obj.pointer = nullptr; },         NOT_OLE},
};
constexpr Refused<Q> QUAD_REFUSALS[] = {
    {"qmatval",             drop<&Q::qmatval>,                ABSENT, 5},
    {"var",                 drop<&Q::var>,                    ABSENT, 7},
    {"smooth model",        [](Q& c) { c.lp->problemtype = PROB_NLP; }, NO_QUAD},
    {"no qmatbeg",          drop<&Q::qmatbeg>,                nullptr},
    {"start -1",            [](Q& c) { c.qmatbeg[0] = -1; },  Q_BEG, 2},
    {"count above numcols", [](Q& c) { c.qmatcnt[0] = 3; },   "qmatcnt element is invalid", 3},
    {"row -1",              [](Q& c) { c.qmatind[0] = -1; },  "qmatind element is invalid", 4},
};
constexpr Refused<Ole<Q>> OLE_QUAD_REFUSALS[] = {
    {"qmatbeg", cut<&Q::qmatbeg>,      NOT_OLE, 2}, {"qmatcnt", cut<&Q::qmatcnt>, NOT_OLE, 3},
    {"qmatind", cut<&Q::qmatind>,      NOT_OLE, 4}, {"qmatval", cut<&Q::qmatval>, NOT_OLE, 5},
    {"var",     cut<&Q::var>,          NOT_OLE, 7},
    {"qmatval", fill<&Q::qmatval, -1>, ABSENT,  5}, {"var",     fill<&Q::var, -1>, ABSENT, 7},
    {"a placeholder", fill<&Q::qmatind, -1>, nullptr},
};
constexpr Refused<N> NLP_REFUSALS[] = {
    {"no column",   set<&N::numcols, 0>,   "numcols <= 0"},
    {"rows -1",     set<&N::numrows, -1>,  "numrows < 0"},
    {"401 columns", set<&N::numcols, 401>, TOO_LARGE},
    {"201 rows",    set<&N::numrows, 201>, TOO_LARGE},
    {"objsen 0",    set<&N::objsen, 0>,    OBJSEN},
    {"obj",   drop<&N::obj>,   ABSENT}, {"rhs",      drop<&N::rhs>,    ABSENT},
    {"sense", drop<&N::sense>, ABSENT}, {"matval",   drop<&N::matval>, ABSENT},
    {"var",   drop<&N::var>,   ABSENT}, {"lb or ub", drop<&N::lb>,     ABSENT},
    {"lb or ub",    drop<&N::ub>,          ABSENT},
    {"no funceval", set<&N::funceval, nullptr>,     "funceval is not a valid callback"},
    {"an N row",    [](N& c) { c.sense[3] = 'N'; }, SENSE},
    {"no matbeg",   drop<&N::matbeg>,               INDICES},
};
constexpr Refused<Ole<N>> OLE_NLP_REFUSALS[] = {
    {"obj",    cut<&N::obj>,    NOT_OLE}, {"rhs",    cut<&N::rhs>,      NOT_OLE},
    {"sense",  cut<&N::sense>,  NOT_OLE}, {"matbeg", cut<&N::matbeg>,   NOT_OLE},
    {"matval", cut<&N::matval>, NOT_OLE}, {"var",    cut<&N::var>,      NOT_OLE},
    {"lb",     cut<&N::lb>,     NOT_OLE}, {"ub",     cut<&N::ub>,       NOT_OLE},
    {"var",    fill<&N::var, -1>, ABSENT},
};
// clang-format on

TEST(Loading, refuses_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals("loadlp", LP_REFUSALS);
    expect_refusals("loadlp", OTHER_LP_REFUSALS, false);
    expect_refusals("loadlp", OLE_LP_REFUSALS);
    expect_refusals("loadlp", OLE_LP_VIEWS, false);
    expect_refusals("loadquad", QUAD_REFUSALS);
    expect_refusals("loadquad", OLE_QUAD_REFUSALS);
    expect_refusals("loadnlp", NLP_REFUSALS);
    expect_refusals("loadnlp", OLE_NLP_REFUSALS);

    LpCall call;
    call.objsen = 0;
    setintparam(nullptr, PARAM_MESSAGES, 0);
    EXPECT_EQ(call.run(), 1);
    EXPECT_TRUE(MessageLog::take().empty());
}

TEST(Loading, of_letters_refuses_the_first_fault)
{
    const MessageLog log;
    FunctionModel model;
    ASSERT_EQ(model.run(), 0);
    Problem* const lp = model.lp;
    OleArray<char> lower{'I', 'i'}, one{'L'}, placeholder{'\0'};
    expect_told(loadctype(lp, nullptr), 2, "loadctype", "ctype is not a valid array");
    expect_told(loadctype(lp, lower.pass()), 2, "loadctype", "ctype element is not C, I or B");
    const ArrayMode mode(true);
    char *const s = one.pass(), *const p = placeholder.pass(), *const good = model.objtype.pass();
    expect_told(loadctype(lp, s), 2, "loadctype", "ctype is not a valid OLE array");
    expect_told(loadctype(lp, p), 2, "loadctype", "ctype is not a valid array");
    expect_told(loadnltype(lp, s, s), 2, "loadnltype", "objtype is not a valid OLE array");
    expect_told(loadnltype(lp, good, s), 3, "loadnltype", "matvaltype is not a valid OLE array");
    EXPECT_TRUE(!lp->ctype && !lp->objtype && !lp->matvaltype);
    EXPECT_EQ(loadnltype(lp, good, p), 0);
    EXPECT_EQ(lp->matvaltype, nullptr) << "a placeholder stands for none";
}

// ---- linear models

void make_largest(L& c)
{
    c.numcols = 2000, c.numrows = 8192;
    for (auto* array : {&c.obj, &c.lb, &c.ub}) array->assign(std::vector<double>(2000));
    for (auto* array : {&c.matbeg, &c.matcnt}) array->assign(std::vector<std::int32_t>(2000));
    c.rhs.assign(std::vector<double>(8192));
    c.sense.assign(std::vector<char>(8192, 'G'));
}

TEST(LoadLp, keeps_what_it_was_given)
{
    // clang-format off
    const std::tuple<const char*, void (*)(L&), bool> CASES[] = {
        {"a null name is an empty one",  set<&L::name, nullptr>,                          false},
        {"row index equal to numrows",   [](L& c) { c.matind[3] = 4; },                   false},
        {"start at numcols * numrows",   [](L& c) { c.matbeg[1] = 8, c.matcnt[1] = 0; },  false},
        {"the largest",                  make_largest,                                    false},
        {"OLE arrays",                   set<&L::is_ole, true>,                           false},
        {"an OLE array of a single -1",  [](L& c) { c.obj.assign({-1}), c.numcols = 1, c.is_ole = true; }, false},
        {"dense by three null pointers", [](L& c) { c.make_dense(4); },                   true},
        {"dense by three marks",         [](L& c) { mark_dense(c, 8), c.matnz = 0; },     true},
        {"dense OLE arrays",             [](L& c) { mark_dense(c, 8), c.is_ole = true; }, true},
    };
    // clang-format on
    for (const auto& [what, change, is_dense] : CASES) {
        SCOPED_TRACE(what);
        LpCall call;
        change(call);
        ASSERT_EQ(call.run(), 0);
        const Problem& lp = *call.lp;
        EXPECT_STREQ(lp.name, call.name ? "test" : "");
        EXPECT_EQ(lp.matbeg, is_dense ? nullptr : call.matbeg.values().data());
        EXPECT_EQ(std::tie(lp.problemtype, lp.objsen, lp.matnz, lp.colspare, lp.rowspare),
                  std::make_tuple(PROB_LP, call.objsen, call.matnz, 7, 8));
        EXPECT_EQ(lp.lastcol - lp.firstcol, call.numcols - 1);
        EXPECT_EQ(lp.lastrow - lp.firstrow, call.numrows - 1);
        EXPECT_EQ(call.holds_references(), call.is_ole);
    }
}

// ---- Q and letters

TEST(LoadQuad, replaces_an_earlier_q_unless_it_is_refused)
{
    QuadCall call;
    const Problem& lp = *call.lp;
    ASSERT_EQ(call.run(), 0);
    std::int32_t begins[] = {0, -1};
    call.qmatbeg.replace(begins);
    call.lp->problemtype = PROB_LP;
    EXPECT_EQ(call.run(), 2);
    EXPECT_EQ(lp.problemtype, PROB_QP) << "refused elements move the type";
    EXPECT_EQ(lp.qmatbeg, call.qmatbeg.values().data());
    EXPECT_EQ(lp.control.qstate, Q_ACCEPTED);

    for (auto* array : {&call.qmatbeg, &call.qmatcnt, &call.qmatind}) array->replace(nullptr);
    call.qmatval.assign({1, 2, 2, 1});
    for (const bool is_ole : {false, true}) {
        call.is_ole = is_ole;
        EXPECT_EQ(call.run(), 5) << "indefinite";
        EXPECT_EQ(lp.qmatval, call.qmatval.values().data());
    }
}

TEST(Loading, moves_the_type_up)
{
    // clang-format off
    const std::tuple<std::int32_t, std::int32_t, std::int32_t> MOVES[] = {
        {PROB_LP,  PROB_QP,  PROB_MILP },  {PROB_MILP,  PROB_MIQP,  PROB_MILP },
        {PROB_QP,  PROB_QP,  PROB_MIQP },  {PROB_MIQP,  PROB_MIQP,  PROB_MIQP },
        {PROB_NLP, PROB_NLP, PROB_MINLP},  {PROB_MINLP, PROB_MINLP, PROB_MINLP},
        {PROB_NSP, PROB_NSP, PROB_MINSP},  {PROB_MINSP, PROB_MINSP, PROB_MINSP},
    };
    // clang-format on
    for (const auto& [from, after_quad, after_ctype] : MOVES) {
        QuadCall quad, letters;
        quad.lp->problemtype = letters.lp->problemtype = from;
        quad.run();
        EXPECT_EQ(quad.lp->problemtype, after_quad);
        char bad[] = {'S', 'I'};
        EXPECT_EQ(loadctype(letters.lp, bad), 2);
        EXPECT_EQ(letters.lp->problemtype, after_ctype) << "a bad letter moves it, too";
    }
}

// ---- models of functions

TEST(LoadNlp, keeps_what_it_was_given_and_needs_no_arrays_where_there_are_no_rows)
{
    for (const bool is_ole : {false, true}) {
        FunctionModel call, rowless;
        call.is_ole = rowless.is_ole = is_ole;
        ASSERT_EQ(call.run(), 0);
        EXPECT_EQ(call.lp->var, call.var.values().data());
        EXPECT_EQ(call.lp->rowrange, call.rowrange.data());
        EXPECT_EQ(call.holds_references(), is_ole);

        rowless.make_dense(0);
        for (auto* array : {&rowless.rhs, &rowless.matval}) array->replace(nullptr);
        rowless.sense.replace(nullptr);
        EXPECT_EQ(rowless.run(), 0);
    }
}

// objtype has two letters, matvaltype five; null: they are absent.
TEST(LoadNlType, moves_the_type_of_a_model_with_parts_that_are_not_smooth)
{
    const std::tuple<std::int32_t, const char*, const char*, std::int32_t> CASES[] = {
        {PROB_NLP,   "LN",    "LLNNL", PROB_NLP  },
        {PROB_NLP,   "LD",    "LLLLL", PROB_NSP  },
        {PROB_MINLP, "LL",    "LLLL ", PROB_MINSP},
        {PROB_NLP,   nullptr, "LLLLL", PROB_NSP  },
        {PROB_NLP,   "LL",    nullptr, PROB_NSP  },
        {PROB_LP,    nullptr, nullptr, PROB_LP   },
        {PROB_MILP,  "Lx",    "LLLLL", PROB_MILP },
        {PROB_MIQP,  "xx",    "xxxxx", PROB_MIQP },
    };
    const MessageLog log;
    for (const auto& [from, objtype, matvaltype, to] : CASES) {
        FunctionModel model;
        ASSERT_EQ(model.run(), 0);
        model.lp->problemtype = from;
        const std::int32_t code =
            loadnltype(model.lp, const_cast<char*>(objtype), const_cast<char*>(matvaltype));
        EXPECT_EQ(model.lp->problemtype, to);
        if (from == PROB_LP || from == PROB_MILP)
            expect_told(code, 1, "loadnltype", "loadnltype cannot be used with loadlp");
        else
            EXPECT_EQ(code, 0);
    }
}

}  // namespace
}  // namespace tarnwick
