#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "include/tarnwick.h"
#include "interface/problem.h"
#include "tests/interface/refusals.h"
#include "tests/interface/smallmodel.h"
#include "tests/support/memory.h"
#include "tests/support/messages.h"
#include "tests/support/olearrays.h"

namespace tarnwick {
namespace {

// ---- loadlp

// Two columns and three rows, the second column after a gap.
struct LpCall {
    std::int32_t numcols = 2, numrows = 3, objsen = 1;
    std::vector<double> c{1.0, 2.0}, b{4.0, 5.0, 6.0};
    std::vector<char> senses{'L', 'E', 'G'};
    std::vector<std::int32_t> begins{0, 3}, counts{2, 1}, rows{0, 2, 9, 1};
    std::vector<double> values{1.0, 2.0, 9.0, 3.0}, lower{0.0, 0.0}, upper{1.0, 1.0};

    double *obj = c.data(), *rhs = b.data();
    char* sense = senses.data();
    std::int32_t *matbeg = begins.data(), *matcnt = counts.data(), *matind = rows.data();
    double *matval = values.data(), *lb = lower.data(), *ub = upper.data();
    std::int32_t matnz = 4;
    Problem* lp = nullptr;

    LpCall() = default;
    LpCall(const LpCall&) = delete;
    LpCall& operator=(const LpCall&) = delete;
    ~LpCall()
    {
        if (lp) unloadprob(&lp);
    }

    // 1 stands for the null handle.
    std::int32_t run()
    {
        lp = loadlp("test", numcols, numrows, objsen, obj, rhs, sense, matbeg, matcnt, matind,
                    matval, lb, ub, nullptr, 7, 8, matnz);
        return lp ? 0 : 1;
    }
    bool is_untouched() const { return !lp; }
};

// clang-format off
constexpr Refused<LpCall> LP_REFUSALS[] = {
    {"no column",          [](LpCall& c) { c.numcols = 0; },                    1, "numcols or numrows <= 0"},
    {"no row",             [](LpCall& c) { c.numrows = 0; },                    1, "numcols or numrows <= 0"},
    {"2001 columns",       [](LpCall& c) { c.numcols = 2001; },                 1, "numcols or numrows is too large"},
    {"8193 rows",          [](LpCall& c) { c.numrows = 8193; },                 1, "numcols or numrows is too large"},
    {"objsen 0",           [](LpCall& c) { c.objsen = 0; },                     1, "objsen is not -1 or 1"},
    {"no obj",             [](LpCall& c) { c.obj = nullptr; },                  1, "obj or rhs is not a valid array"},
    {"no rhs",             [](LpCall& c) { c.rhs = nullptr; },                  1, "obj or rhs is not a valid array"},
    {"no sense",           [](LpCall& c) { c.sense = nullptr; },                1, "sense is not a valid array"},
    {"no matval",          [](LpCall& c) { c.matval = nullptr; },               1, "matval is not a valid array"},
    {"no lb",              [](LpCall& c) { c.lb = nullptr; },                   1, "lb or ub is not a valid array"},
    {"no ub",              [](LpCall& c) { c.ub = nullptr; },                   1, "lb or ub is not a valid array"},
    {"an R row",           [](LpCall& c) { c.senses[2] = 'R'; },                1, "sense element not E, L, G or R"},
    {"no matbeg",          [](LpCall& c) { c.matbeg = nullptr; },               1, "matbeg, matcnt, matind are not all valid arrays"},
    {"no matcnt",          [](LpCall& c) { c.matcnt = nullptr; },               1, "matbeg, matcnt, matind are not all valid arrays"},
    {"no matind",          [](LpCall& c) { c.matind = nullptr; },               1, "matbeg, matcnt, matind are not all valid arrays"},
    {"matbeg -1",          [](LpCall& c) { c.begins[0] = -1; },                 1, "matbeg element is invalid"},
    {"more than numrows",  [](LpCall& c) { c.counts[0] = 4; },                  1, "matcnt element is invalid"},
    {"row -1",             [](LpCall& c) { c.rows[0] = -1; },                   1, "matind element is invalid"},
    {"overlap",            [](LpCall& c) { c.begins[1] = 1; },                  1, "matbeg element is invalid"},
    {"count -1",           [](LpCall& c) { c.counts[1] = -1; },                 1, "matcnt element is invalid"},
    {"beyond matnz",       [](LpCall& c) { c.counts[1] = 2; },                  1, "matcnt element is invalid"},
    {"row numrows + 1",    [](LpCall& c) { c.rows[3] = 4; },                    1, "matind element is invalid"},
};

// Faults in sizes that only count within the structure.
constexpr Refused<LpCall> LP_STRUCTURE_REFUSALS[] = {
    {"start beyond numcols * numrows", [](LpCall& c) { c.begins[1] = 7; c.matnz = 100; },      1, "matbeg element is invalid"},
    {"end beyond 32 bits",    [](LpCall& c) { c.begins[1] = INT32_MAX; c.matnz = INT32_MAX; }, 1, "matbeg element is invalid"},
    {"matnz 0",               [](LpCall& c) { c.matnz = 0; },                                  1, "matcnt element is invalid"},
    {"matnz negative",        [](LpCall& c) { c.matnz = -5; },                                 1, "matcnt element is invalid"},
    {"only two marks of a dense matrix", [](LpCall& c) { c.begins[0] = c.counts[0] = -1; },    1, "matbeg element is invalid"},
    {"objsen 2",              [](LpCall& c) { c.objsen = 2; },                                 1, "objsen is not -1 or 1"},
    {"columns negative",      [](LpCall& c) { c.numcols = INT32_MIN; },                        1, "numcols or numrows <= 0"},
};
// clang-format on

TEST(LoadLp, refuses_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("loadlp", LP_REFUSALS);
    expect_refusals("loadlp", LP_STRUCTURE_REFUSALS);
}

TEST(LoadLp, keeps_what_it_was_given)
{
    LpCall call;
    ASSERT_EQ(call.run(), 0);
    const Problem& lp = *call.lp;
    EXPECT_STREQ(lp.name, "test");
    EXPECT_EQ(lp.problemtype, PROB_LP);
    EXPECT_EQ(lp.matbeg, call.begins.data());
    EXPECT_EQ(lp.matnz, 4);
    EXPECT_EQ(lp.colspare, 7);
    EXPECT_EQ(lp.rowspare, 8);
    EXPECT_EQ(lp.lastcol, 1);
    EXPECT_EQ(lp.lastrow, 2);
    EXPECT_EQ(lp.control.problem, &lp);
    EXPECT_EQ(lp.control.qstate, Q_NONE);
}

struct AcceptedCase {
    const char* what;
    void (*change)(LpCall&);
    bool is_dense;
};

// clang-format off
constexpr AcceptedCase ACCEPTED_LPS[] = {
    {"gap before the second column",   [](LpCall&) {}, false},
    {"row index equal to numrows",     [](LpCall& c) { c.rows[3] = 3; }, false},
    {"start equal to numcols*numrows", [](LpCall& c) { c.begins[1] = 6; c.counts[1] = 0; }, false},
    {"empty columns of a matrix without entries",
                                       [](LpCall& c) { c.counts = {0, 0}; c.matnz = 0; }, false},
    {"three null pointers",            [](LpCall& c) { c.matbeg = c.matcnt = c.matind = nullptr; }, true},
    {"three marks of a dense matrix",  [](LpCall& c) { c.begins[0] = c.counts[0] = c.rows[0] = -1; }, true},
    {"dense, matnz of no account",     [](LpCall& c) { c.matbeg = c.matcnt = c.matind = nullptr; c.matnz = 0; }, true},
    {"maximisation",                   [](LpCall& c) { c.objsen = -1; }, false},
};
// clang-format on

TEST(LoadLp, accepts_both_layouts)
{
    for (const auto& c : ACCEPTED_LPS) {
        SCOPED_TRACE(c.what);
        LpCall call;
        call.values.resize(6);
        call.matval = call.values.data();
        c.change(call);
        ASSERT_EQ(call.run(), 0);
        EXPECT_EQ(call.lp->matbeg == nullptr, c.is_dense);
        EXPECT_EQ(call.lp->matcnt == nullptr, c.is_dense);
        EXPECT_EQ(call.lp->matind == nullptr, c.is_dense);
    }
}

TEST(LoadLp, takes_the_largest_model)
{
    LpCall call;
    call.numcols = 2000;
    call.numrows = 8192;
    call.c.resize(2000);
    call.b.resize(8192);
    call.senses.assign(8192, 'G');
    call.begins.assign(2000, 0);
    call.counts.assign(2000, 0);
    call.obj = call.lb = call.ub = call.c.data();
    call.rhs = call.b.data();
    call.sense = call.senses.data();
    call.matbeg = call.begins.data();
    call.matcnt = call.counts.data();
    EXPECT_EQ(call.run(), 0);
}

TEST(LoadLp, a_null_name_is_an_empty_one)
{
    LpCall call;
    Problem* lp = loadlp(nullptr, 2, 3, 1, call.obj, call.rhs, call.sense, call.matbeg, call.matcnt,
                         call.matind, call.matval, call.lb, call.ub, nullptr, 0, 0, call.matnz);
    ASSERT_TRUE(lp);
    EXPECT_STREQ(lp->name, "");
    EXPECT_EQ(unloadprob(&lp), 0);
}

TEST(LoadLp, without_memory_there_is_no_model_and_no_message)
{
    const MessageLog log;
    const long alive = blocks_alive();
    LpCall call;
    long allowed = 0;
    for (;; ++allowed) {
        allow_allocations(allowed);
        const std::int32_t code = call.run();
        const bool failed = allocation_failed();
        allow_all_allocations();
        EXPECT_EQ(code == 0, !failed);
        if (!failed) break;
        EXPECT_EQ(blocks_alive(), alive);
    }
    EXPECT_LE(allowed, 2);  // small models come by the thousand
    EXPECT_TRUE(MessageLog::take().empty());
}

TEST(LoadLp, refusals_are_silent_without_messages)
{
    const MessageLog log;
    setintparam(nullptr, PARAM_MESSAGES, 0);
    LpCall call;
    call.obj = nullptr;
    EXPECT_EQ(call.run(), 1);
    EXPECT_TRUE(MessageLog::take().empty());
}

// ---- loadlp in OLE array mode

struct OleLpCall {
    std::int32_t numcols = 2, numrows = 3, matnz = 4;
    OleArray<double> obj{1.0, 2.0}, rhs{4.0, 5.0, 6.0};
    OleArray<char> sense{'L', 'E', 'G'};
    OleArray<std::int32_t> matbeg{0, 3}, matcnt{2, 1}, matind{0, 2, 3, 1};
    OleArray<double> matval{1.0, 2.0, 9.0, 3.0}, lb{0.0, 0.0}, ub{1.0, 1.0};
    std::int32_t* matindarg = matind.argument();
    double* objarg = obj.argument();
    Problem* lp = nullptr;

    OleLpCall() { setintparam(nullptr, PARAM_OLEARRAYS, 1); }
    OleLpCall(const OleLpCall&) = delete;
    OleLpCall& operator=(const OleLpCall&) = delete;
    ~OleLpCall()
    {
        if (lp) unloadprob(&lp);
        setintparam(nullptr, PARAM_OLEARRAYS, 0);
    }

    std::int32_t run()
    {
        lp = loadlp("test", numcols, numrows, 1, objarg, rhs.argument(), sense.argument(),
                    matbeg.argument(), matcnt.argument(), matindarg, matval.argument(),
                    lb.argument(), ub.argument(), nullptr, 0, 0, matnz);
        return lp ? 0 : 1;
    }
    bool is_untouched() const { return !lp; }

    void make_dense(std::vector<double> values)
    {
        matbeg.assign({-1});
        matcnt.assign({-1});
        matind.assign({-1});
        matval.assign(std::move(values));
    }
};

std::int32_t minus_one = -1;

// clang-format off
constexpr Refused<OleLpCall> OLE_LP_REFUSALS[] = {
    {"null obj",               [](OleLpCall& c) { c.objarg = nullptr; },       1, "obj or rhs is not a valid array"},
    {"obj short",              [](OleLpCall& c) { c.obj.assign({1.0}); },      1, "obj is not a valid OLE array"},
    {"rhs short",              [](OleLpCall& c) { c.rhs.assign({1.0, 2.0}); }, 1, "rhs is not a valid OLE array"},
    {"sense short",            [](OleLpCall& c) { c.sense.assign({'L'}); },    1, "sense is not a valid OLE array"},
    {"matbeg short",           [](OleLpCall& c) { c.matbeg.assign({0}); },     1, "matbeg is not a valid OLE array"},
    {"matcnt short",           [](OleLpCall& c) { c.matcnt.assign({0}); },     1, "matcnt is not a valid OLE array"},
    {"matind short",           [](OleLpCall& c) { c.matind.assign({0}); },     1, "matind is not a valid OLE array"},
    {"matval short",           [](OleLpCall& c) { c.matval.assign({1.0}); },   1, "matval is not a valid OLE array"},
    {"lb short",               [](OleLpCall& c) { c.lb.assign({1.0}); },       1, "lb is not a valid OLE array"},
    {"ub short",               [](OleLpCall& c) { c.ub.assign({1.0}); },       1, "ub is not a valid OLE array"},
};

// Views that succeed although the array can't serve.
constexpr Refused<OleLpCall> PLACEHOLDER_REFUSALS[] = {
    {"obj",       [](OleLpCall& c) { c.obj.assign({-1.0}); },    1, "obj or rhs is not a valid array"},
    {"rhs",       [](OleLpCall& c) { c.rhs.assign({-1.0}); },    1, "obj or rhs is not a valid array"},
    {"sense",     [](OleLpCall& c) { c.sense.assign({'\0'}); },  1, "sense is not a valid array"},
    {"matval",    [](OleLpCall& c) { c.matval.assign({-1.0}); }, 1, "matval is not a valid array"},
    {"lb",        [](OleLpCall& c) { c.lb.assign({-1.0}); },     1, "lb or ub is not a valid array"},
    {"ub",        [](OleLpCall& c) { c.ub.assign({-1.0}); },     1, "lb or ub is not a valid array"},
    {"R row",     [](OleLpCall& c) { c.sense.assign({'L', 'R', 'L'}); }, 1, "sense element not E, L, G or R"},
    {"matind",    [](OleLpCall& c) { c.matind.assign({-1}); },   1, "matbeg, matcnt, matind are not all valid arrays"},
    {"a plain -1 for matind", [](OleLpCall& c) { c.matindarg = &minus_one; },
                                                                 1, "matbeg, matcnt, matind are not all valid arrays"},
    {"matbeg",    [](OleLpCall& c) { c.matbeg.assign({-1}); },   1, "matbeg element is invalid"},
    {"matcnt",    [](OleLpCall& c) { c.matcnt.assign({-1}); },   1, "matcnt element is invalid"},
};

// Faults that no other test of the arguments would find.
constexpr Refused<OleLpCall> OLE_SIZE_REFUSALS[] = {
    {"dense matval short by one", [](OleLpCall& c) { c.make_dense({1.0, 1.0, 1.0, 1.0, 1.0}); }, 1, "matval is not a valid array"},
    {"dense matval, matnz 0",     [](OleLpCall& c) { c.make_dense({1.0}); c.matnz = 0; },        1, "matval is not a valid array"},
    {"dense matval a placeholder", [](OleLpCall& c) { c.make_dense({-1.0}); c.matnz = 1; },      1, "matval is not a valid array"},
    {"sparse, matnz 0, one entry", [](OleLpCall& c) { c.matind.assign({0}); c.matnz = 0; },      1, "matcnt element is invalid"},
    {"two dimensions",            [](OleLpCall& c) { c.obj.header.dimensions = 2; },             1, "obj is not a valid OLE array"},
    {"four-byte elements",        [](OleLpCall& c) { c.obj.header.elementsize = 4; },            1, "obj is not a valid OLE array"},
    {"counted from 1",            [](OleLpCall& c) { c.obj.header.bound.lowerbound = 1; },       1, "obj is not a valid OLE array"},
    {"reference to null",         [](OleLpCall& c) { c.obj.pointer = nullptr; },                 1, "obj is not a valid OLE array"},
};
// clang-format on

TEST(LoadLpOle, refuses_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("loadlp", OLE_LP_REFUSALS);
    expect_refusals("loadlp", PLACEHOLDER_REFUSALS);
    expect_refusals("loadlp", OLE_SIZE_REFUSALS);
}

TEST(LoadLpOle, keeps_the_data_and_the_references)
{
    OleLpCall call;
    ASSERT_EQ(call.run(), 0);
    EXPECT_EQ(call.lp->obj, call.obj.values().data());
    EXPECT_EQ(call.lp->matind, call.matind.values().data());
    const OleReference references[] = {call.obj.reference(), call.matbeg.reference(),
                                       call.matcnt.reference(), call.matind.reference(),
                                       call.matval.reference()};
    EXPECT_TRUE(std::equal(std::begin(references), std::end(references), call.lp->olehandles));
}

TEST(LoadLpOle, three_placeholders_make_a_dense_matrix)
{
    OleLpCall call;
    call.make_dense({1.0, 1.0, 1.0, 1.0, 1.0, 1.0});
    ASSERT_EQ(call.run(), 0);
    EXPECT_FALSE(call.lp->matbeg || call.lp->matcnt || call.lp->matind);
}

TEST(LoadLpOle, one_element_that_looks_like_a_placeholder_serves_where_one_is_needed)
{
    OleLpCall call;
    call.numcols = 1;
    call.obj.assign({-1.0});
    call.lb.assign({-1.0});
    call.ub.assign({-1.0});
    call.matbeg.assign({0});
    call.matcnt.assign({1});
    call.matind.assign({0});
    call.matval.assign({-1.0});
    call.matnz = 1;
    EXPECT_EQ(call.run(), 0);
}

// ---- loadquad

// Q on the two columns of the small model: one entry each.
struct QuadCall {
    SmallModel model;
    Problem* lp = model.lp;
    std::vector<std::int32_t> begins{0, 1}, counts{1, 1}, rows{0, 1};
    std::vector<double> values{1.0, 2.0}, start{0.0, 0.0};

    std::int32_t *qmatbeg = begins.data(), *qmatcnt = counts.data(), *qmatind = rows.data();
    double *qmatval = values.data(), *var = start.data();
    std::int32_t qnz = 2;

    std::int32_t run() { return loadquad(lp, qmatbeg, qmatcnt, qmatind, qmatval, qnz, var); }
    bool is_untouched() const
    {
        return !model.lp->qmatval && !model.lp->var && model.lp->control.qstate == Q_NONE;
    }
};

// clang-format off
constexpr Refused<QuadCall> QUAD_REFUSALS[] = {
    {"null handle",        [](QuadCall& c) { c.lp = nullptr; },              1, "lp pointer is NULL"},
    {"no qmatval",         [](QuadCall& c) { c.qmatval = nullptr; },         5, "qmatval is not a valid array"},
    {"no var",             [](QuadCall& c) { c.var = nullptr; },             7, "var is not a valid array"},
    {"smooth model",       [](QuadCall& c) { c.model.lp->problemtype = PROB_NLP; }, 1, "loadquad cannot be used with loadnlp"},
    {"no qmatbeg",         [](QuadCall& c) { c.qmatbeg = nullptr; },         1, nullptr},
    {"no qmatcnt",         [](QuadCall& c) { c.qmatcnt = nullptr; },         1, nullptr},
    {"no qmatind",         [](QuadCall& c) { c.qmatind = nullptr; },         1, nullptr},
    {"start -1",           [](QuadCall& c) { c.begins[0] = -1; },            2, "qmatbeg element is invalid"},
    {"count above numcols", [](QuadCall& c) { c.counts[0] = 3; },            3, "qmatcnt element is invalid"},
    {"row -1",             [](QuadCall& c) { c.rows[0] = -1; },              4, "qmatind element is invalid"},
    {"start beyond numcols squared", [](QuadCall& c) { c.begins[1] = 5; },   2, "qmatbeg element is invalid"},
    {"beyond qnz",         [](QuadCall& c) { c.counts[1] = 2; },             3, "qmatcnt element is invalid"},
    {"row numcols + 1",    [](QuadCall& c) { c.rows[1] = 3; },               4, "qmatind element is invalid"},
};
// clang-format on

TEST(LoadQuad, refuses_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("loadquad", QUAD_REFUSALS);
}

TEST(LoadQuad, replaces_an_earlier_q)
{
    QuadCall call;
    ASSERT_EQ(call.run(), 0);
    EXPECT_EQ(call.model.lp->qmatbeg, call.begins.data());
    EXPECT_EQ(call.model.lp->var, call.start.data());

    std::vector<double> dense{1.0, 2.0, 2.0, 1.0};
    EXPECT_EQ(loadquad(call.lp, nullptr, nullptr, nullptr, dense.data(), 0, call.var), 5);
    EXPECT_EQ(call.model.lp->qmatbeg, nullptr);
    EXPECT_EQ(call.model.lp->qmatval, dense.data());
    EXPECT_EQ(call.model.lp->control.qstate, Q_INDEFINITE);
}

TEST(LoadQuad, a_refused_q_leaves_the_moved_type_and_the_earlier_q)
{
    QuadCall call;
    ASSERT_EQ(call.run(), 0);
    call.model.lp->problemtype = PROB_MILP;
    std::vector<std::int32_t> begins{0, -1};
    call.qmatbeg = begins.data();
    EXPECT_EQ(call.run(), 2);
    EXPECT_EQ(call.model.lp->problemtype, PROB_MIQP);
    EXPECT_EQ(call.model.lp->qmatbeg, call.begins.data());
    EXPECT_EQ(call.model.lp->control.qstate, Q_ACCEPTED);
}

struct OleQuadCall {
    SmallModel model;
    OleArray<std::int32_t> qmatbeg{0, 1}, qmatcnt{1, 1}, qmatind{0, 1};
    OleArray<double> qmatval{1.0, 2.0}, var{0.0, 0.0};
    std::int32_t qnz = 2;

    OleQuadCall() { setintparam(nullptr, PARAM_OLEARRAYS, 1); }
    OleQuadCall(const OleQuadCall&) = delete;
    OleQuadCall& operator=(const OleQuadCall&) = delete;
    ~OleQuadCall() { setintparam(nullptr, PARAM_OLEARRAYS, 0); }

    std::int32_t run()
    {
        return loadquad(model.lp, qmatbeg.argument(), qmatcnt.argument(), qmatind.argument(),
                        qmatval.argument(), qnz, var.argument());
    }
    bool is_untouched() const { return !model.lp->qmatval && !model.lp->var; }

    void make_dense(std::vector<double> values)
    {
        qmatbeg.assign({-1});
        qmatcnt.assign({-1});
        qmatind.assign({-1});
        qmatval.assign(std::move(values));
    }
};

// clang-format off
constexpr Refused<OleQuadCall> OLE_QUAD_REFUSALS[] = {
    {"qmatbeg short", [](OleQuadCall& c) { c.qmatbeg.assign({0}); },   2, "qmatbeg is not a valid OLE array"},
    {"qmatcnt short", [](OleQuadCall& c) { c.qmatcnt.assign({0}); },   3, "qmatcnt is not a valid OLE array"},
    {"qmatind short", [](OleQuadCall& c) { c.qmatind.assign({0}); },   4, "qmatind is not a valid OLE array"},
    {"qmatval short", [](OleQuadCall& c) { c.qmatval.assign({1.0}); }, 5, "qmatval is not a valid OLE array"},
    {"var short",     [](OleQuadCall& c) { c.var.assign({1.0}); },     7, "var is not a valid OLE array"},
};

constexpr Refused<OleQuadCall> OLE_QUAD_PLACEHOLDERS[] = {
    {"qmatval",       [](OleQuadCall& c) { c.qmatval.assign({-1.0}); }, 5, "qmatval is not a valid array"},
    {"var",           [](OleQuadCall& c) { c.var.assign({-1.0}); },     7, "var is not a valid array"},
    {"qmatind",       [](OleQuadCall& c) { c.qmatind.assign({-1}); },   1, nullptr},
    {"qmatbeg",       [](OleQuadCall& c) { c.qmatbeg.assign({-1}); },   2, "qmatbeg element is invalid"},
    {"qmatcnt",       [](OleQuadCall& c) { c.qmatcnt.assign({-1}); },   3, "qmatcnt element is invalid"},
    {"dense, short",  [](OleQuadCall& c) { c.make_dense({1.0, 0.0, 0.0}); }, 5, "qmatval is not a valid array"},
};
// clang-format on

TEST(LoadQuadOle, refuses_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("loadquad", OLE_QUAD_REFUSALS);
    expect_refusals("loadquad", OLE_QUAD_PLACEHOLDERS);
}

TEST(LoadQuadOle, accepts_both_layouts)
{
    OleQuadCall call;
    EXPECT_EQ(call.run(), 0);
    call.make_dense({1.0, 0.0, 0.0, 2.0});
    EXPECT_EQ(call.run(), 0);
    EXPECT_EQ(call.model.lp->qmatbeg, nullptr);
}

// ---- loadctype

struct CtypeCall {
    SmallModel model;
    Problem* lp = model.lp;
    std::vector<char> letters{'I', 'B'};
    char* ctype = letters.data();

    std::int32_t run() { return loadctype(lp, ctype); }
    bool is_untouched() const { return !model.lp->ctype; }
};

// clang-format off
constexpr Refused<CtypeCall> CTYPE_REFUSALS[] = {
    {"null handle",      [](CtypeCall& c) { c.lp = nullptr; },      1, "lp pointer is NULL"},
    {"no ctype",         [](CtypeCall& c) { c.ctype = nullptr; },   2, "ctype is not a valid array"},
    {"lower case",       [](CtypeCall& c) { c.letters[1] = 'i'; },  2, "ctype element is not C, I or B"},
};
// clang-format on

TEST(LoadCtype, refuses_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("loadctype", CTYPE_REFUSALS);
}

TEST(LoadCtype, a_bad_letter_leaves_the_moved_type)
{
    CtypeCall call;
    call.letters[0] = 'S';
    EXPECT_EQ(call.run(), 2);
    EXPECT_EQ(call.model.lp->problemtype, PROB_MILP);
}

struct OleCtypeCase {
    const char* what;
    std::vector<char> letters;
    std::int32_t code;
    std::int32_t type;
    const char* text;
};

TEST(LoadCtypeOle, views_the_letters)
{
    const OleCtypeCase cases[] = {
        {"one for each column", {'C', 'I'}, 0, PROB_MILP, nullptr                         },
        {"too few",             {'C'},      2, PROB_LP,   "ctype is not a valid OLE array"},
        {"placeholder",         {'\0'},     2, PROB_LP,   "ctype is not a valid array"    },
    };
    const MessageLog log;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const SmallModel model;
        OleArray<char> ctype{};
        ctype.assign(c.letters);
        setintparam(nullptr, PARAM_OLEARRAYS, 1);
        EXPECT_EQ(loadctype(model.lp, ctype.argument()), c.code);
        setintparam(nullptr, PARAM_OLEARRAYS, 0);
        EXPECT_EQ(model.lp->problemtype, c.type);

        const auto messages = MessageLog::take();
        ASSERT_EQ(messages.size(), c.text ? 1U : 0U);
        if (c.text) {
            EXPECT_EQ(messages[0].text, c.text);
        }
    }
}

// ---- type moves

struct MoveCase {
    std::int32_t from, after_quad, after_ctype;
};

constexpr MoveCase MOVES[] = {
    {PROB_LP,    PROB_QP,    PROB_MILP },
    {PROB_MILP,  PROB_MIQP,  PROB_MILP },
    {PROB_QP,    PROB_QP,    PROB_MIQP },
    {PROB_MIQP,  PROB_MIQP,  PROB_MIQP },
    {PROB_NSP,   PROB_NSP,   PROB_MINSP},
    {PROB_MINSP, PROB_MINSP, PROB_MINSP},
};

TEST(ProblemType, moves_up_with_each_load)
{
    for (const auto& c : MOVES) {
        SCOPED_TRACE(c.from);
        QuadCall quad;
        quad.model.lp->problemtype = c.from;
        EXPECT_EQ(quad.run(), 0);
        EXPECT_EQ(quad.model.lp->problemtype, c.after_quad);

        CtypeCall ctype;
        ctype.model.lp->problemtype = c.from;
        EXPECT_EQ(ctype.run(), 0);
        EXPECT_EQ(ctype.model.lp->problemtype, c.after_ctype);
    }
}

TEST(ProblemType, a_smooth_model_takes_letters_and_no_q)
{
    for (const std::int32_t type : {PROB_NLP, PROB_MINLP}) {
        CtypeCall ctype;
        ctype.model.lp->problemtype = type;
        EXPECT_EQ(ctype.run(), 0);
        EXPECT_EQ(ctype.model.lp->problemtype, PROB_MINLP);

        QuadCall quad;
        quad.model.lp->problemtype = type;
        EXPECT_EQ(quad.run(), 1);
        EXPECT_EQ(quad.model.lp->problemtype, type);
    }
}

}  // namespace
}  // namespace tarnwick
