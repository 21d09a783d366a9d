#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "interface/problem.h"
#include "tests/support/messages.h"
#include "tests/support/models.h"
#include "tests/support/olearrays.h"

namespace tarnwick {
namespace {

// A model of two columns and three rows as a run leaves it, and arrays for what a query gives.
struct SolvedModel : LoadedModel {
    Reals x{11, 12}, dj{13, 14}, piout{15, 16, 17}, slack{18, 19, 20};
    Reals colmid{21, 22}, collow{23, 24}, colup{25, 26};
    Reals rowmid{27, 28, 29}, rowlow{30, 31, 32}, rowup{33, 34, 35};
    OleArray<double> a{7, 7}, b{7, 7, 7}, c{7, 7, 7}, d{7, 7};

    explicit SolvedModel(std::int32_t type = PROB_LP, std::int32_t status = STAT_OPTIMAL)
        : LoadedModel({
              std::vector<Row>(3, {{1, 1}, 'L', 1}
               ), {0,      0        }
    })
    {
        lp->problemtype = type, lp->status = status, lp->objval = 3.0;
        lp->hasresults = status != STAT_NONE;
        lp->x = x.data(), lp->dj = dj.data(), lp->piout = piout.data(), lp->slack = slack.data();
        lp->colrange = {colmid.data(), collow.data(), colup.data()};
        lp->rowrangeof = {rowmid.data(), rowlow.data(), rowup.data()};
    }
    Problem* as(std::int32_t type, std::int32_t numcols = 2)
    {
        lp->problemtype = type;
        lp->numcols = numcols;
        return lp;
    }
    std::int32_t ask(std::int32_t* status = nullptr, double* objval = nullptr)
    {
        return solution(lp, status, objval, a.pass(), b.pass(), c.pass(), d.pass());
    }
};

// ---- refusals

// Later arguments are wrong, too, so that the order of the tests shows.
TEST(Queries, refuse_the_first_wrong_argument)
{
    const char* const size = "numcols or numrows is too large";
    const char* const range = "begin or end is out of range";
    const char* const ends = "lower or upper is not a valid array";
    const char* const mids = "mid or disp is not a valid array";
    const MessageLog log;
    SolvedModel m;
    char letters[] = {'I', 'C'};
    double v[] = {7, 7}, *const none = nullptr;

    expect_told(solution(m.as(PROB_LP, 2001), nullptr, nullptr, v, v, v, v), 1, "solution", size);
    expect_told(solution(m.as(PROB_NLP, 401), nullptr, nullptr, v, v, v, v), 1, "solution", size);
    EXPECT_EQ(solution(m.as(PROB_LP, 2000), nullptr, nullptr, none, none, none, none), 0);
    EXPECT_EQ(solution(m.as(PROB_NSP, 401), nullptr, nullptr, none, none, none, none), 0);

    expect_told(objsa(m.as(PROB_QP), 0, 2, v, v), 1, "objsa", " is valid only for LP problems");
    expect_told(rhssa(m.as(PROB_NSP), 0, 3, v, v), 1, "rhssa", " is valid only for LP problems");
    m.lp->ctype = letters;
    expect_told(objsa(m.as(PROB_LP), 0, 2, v, v), 1, "objsa", " is not valid for MIP problems");
    expect_told(rhssa(m.lp, 0, 3, v, v), 1, "rhssa", " is not valid for MIP problems");
    m.lp->ctype = nullptr;
    expect_told(objsa(m.lp, -1, 1, none, v), 2, "objsa", range);
    expect_told(objsa(m.lp, 0, 2, none, v), 2, "objsa", range);
    expect_told(objsa(m.lp, 1, 0, none, v), 2, "objsa", range);
    expect_told(objsa(m.lp, 0, 1, none, v), 4, "objsa", ends);
    expect_told(objsa(m.lp, 0, 1, v, none), 4, "objsa", ends);

    expect_told(varstat(m.as(PROB_NLP), 0, 2, v, v, v, v), 1, "varstat",
                "varsa is valid only for NSP problems");
    expect_told(constat(m.as(PROB_LP), 0, 3, v, v, v, v), 1, "constat",
                "consa is valid only for NSP problems");
    expect_told(varstat(m.as(PROB_NSP), 0, 2, none, v, v, v), 2, "varstat", range);
    expect_told(varstat(m.lp, 0, 1, none, v, none, v), 4, "varstat", mids);
    expect_told(varstat(m.lp, 0, 1, v, none, none, v), 4, "varstat", mids);
    expect_told(varstat(m.lp, 0, 1, v, v, none, v), 6, "varstat", ends);
    expect_told(varstat(m.lp, 0, 1, v, v, v, none), 6, "varstat", ends);
    EXPECT_EQ(Reals(v, v + 2), Reals(2, 7.0)) << "nothing is given";
}

TEST(Queries, refuse_the_first_short_ole_array)
{
    const auto not_ole = [](const char* name) {
        return name + std::string(" is not a valid OLE array");
    };
    const MessageLog log;
    SolvedModel m;
    OleArray<double> small{7}, placeholder{-1};
    double plain = -1.0;
    const ArrayMode mode(true);
    double *const a = m.a.pass(), *const b = m.b.pass(), *const s = small.pass(),
                  *const p = placeholder.pass();
    const auto ask = [&](double* x, double* piout, double* slack, double* dj) {
        return solution(m.lp, nullptr, nullptr, x, piout, slack, dj);
    };
    for (double* const x : {static_cast<double*>(nullptr), &plain, s})
        expect_told(ask(x, s, s, s), 4, "solution", not_ole("x"));
    expect_told(ask(a, s, s, s), 5, "solution", not_ole("piout"));
    expect_told(ask(a, b, a, s), 6, "solution", not_ole("slack"));
    expect_told(ask(a, b, b, s), 7, "solution", not_ole("dj"));

    expect_told(rhssa(m.lp, 0, 1, s, s), 4, "rhssa", not_ole("lower"));
    expect_told(rhssa(m.lp, 0, 1, a, s), 5, "rhssa", not_ole("upper"));
    expect_told(rhssa(m.lp, 0, 1, a, p), 4, "rhssa", "lower or upper is not a valid array");
    m.as(PROB_NSP);
    expect_told(varstat(m.lp, 0, 1, s, s, s, s), 4, "varstat", not_ole("mid"));
    expect_told(varstat(m.lp, 0, 1, a, s, s, s), 5, "varstat", not_ole("disp"));
    expect_told(varstat(m.lp, 0, 1, a, a, s, s), 6, "varstat", not_ole("lower"));
    expect_told(varstat(m.lp, 0, 1, a, a, a, s), 7, "varstat", not_ole("upper"));
    expect_told(varstat(m.lp, 0, 1, a, a, a, p), 6, "varstat",
                "lower or upper is not a valid array");
    EXPECT_EQ(m.a.values(), Reals(2, 7.0)) << "nothing is given";
}

// ---- what is given

// The point, and the duals; code 5: they are refused.
TEST(Solution, gives_what_type_and_status_allow)
{
    const std::tuple<const char*, std::int32_t, std::int32_t, bool, bool, std::int32_t> CASES[] = {
        {"LP optimum",        PROB_LP,   STAT_OPTIMAL,      true,  true,  0},
        {"QP optimum",        PROB_QP,   STAT_OPTIMAL,      true,  true,  0},
        {"NLP optimum",       PROB_NLP,  STAT_OPTIMAL,      true,  true,  0},
        {"iteration limit",   PROB_LP,   STAT_ITERLIM_FEAS, true,  false, 0},
        {"failed evaluation", PROB_LP,   STAT_EVALERROR,    false, false, 0},
        {"no memory",         PROB_LP,   STAT_NOMEMORY,     false, false, 0},
        {"status 69",         PROB_LP,   STAT_RESERVED69,   false, false, 0},
        {"before any run",    PROB_LP,   STAT_NONE,         false, false, 0},
        {"MIQP, status 1",    PROB_MIQP, STAT_OPTIMAL,      true,  false, 5},
        {"NSP",               PROB_NSP,  STAT_CONVERGED,    true,  false, 5},
    };
    const MessageLog log;
    const Reals blank2(2, 7.0), blank3(3, 7.0);
    for (const auto& [what, type, status, gives_point, gives_duals, want] : CASES) {
        SCOPED_TRACE(what);
        SolvedModel m(type, status);
        std::int32_t given = -1;
        double objval = -1.0;
        const std::int32_t code = m.ask(&given, &objval);
        if (want == 5)
            expect_told(code, 5, "solution", "piout argument invalid for this problem type");
        else
            EXPECT_EQ(code, 0);
        EXPECT_EQ(given, status);
        EXPECT_EQ(objval, 3.0);
        EXPECT_EQ(m.a.values(), gives_point ? m.x : blank2);
        EXPECT_EQ(m.b.values(), gives_duals ? m.piout : blank3);
        EXPECT_EQ(m.c.values(), gives_point ? m.slack : blank3);
        EXPECT_EQ(m.d.values(), gives_duals ? m.dj : blank2);
    }
}

TEST(Solution, passes_over_absent_arrays)
{
    for (const std::int32_t type : {PROB_LP, PROB_MILP}) {
        SolvedModel m(type);
        for (auto* array : {&m.a, &m.b, &m.c, &m.d}) (*array)[0] = -1.0;
        EXPECT_EQ(m.ask(), 0);
        for (auto* array : {&m.a, &m.b, &m.c, &m.d}) EXPECT_EQ((*array)[1], 7.0);
        m.d[0] = 7.0;
        EXPECT_EQ(m.ask(), type == PROB_MILP ? 7 : 0) << "dj is present";
    }
    SolvedModel m;
    const ArrayMode mode(true);
    m.b.assign({-1});
    EXPECT_EQ(m.ask(), 0);
    EXPECT_EQ(m.b.values(), Reals{-1});
    EXPECT_EQ(m.c.values(), m.slack);
}

// The last column or row alone: element 0 belongs to begin.
TEST(Queries, give_ranges_and_statistics_of_what_can_be_trusted)
{
    for (const std::int32_t status :
         {STAT_CONVERGED, STAT_EVALERROR, STAT_NOMEMORY, STAT_RESERVED69, STAT_NONE})
        for (const bool is_ole : {false, true}) {
            SolvedModel m(PROB_LP, status);
            const ArrayMode mode(is_ole);
            double *const a = m.a.pass(), *const b = m.b.pass(), *const c = m.c.pass(),
                          *const d = m.d.pass();
            const auto expect_given = [&](std::int32_t code, const Reals& want) {
                EXPECT_EQ(code, 0);
                EXPECT_EQ(Reals({m.a[0], m.b[0], m.c[0], m.d[0]}),
                          status == STAT_CONVERGED ? want : Reals(4, 7.0));
                EXPECT_EQ(Reals({m.a[1], m.b[1], m.c[1], m.d[1]}), Reals(4, 7.0));
            };
            expect_given(objsa(m.lp, 1, 1, c, d), {7, 7, 24, 26});
            expect_given(rhssa(m.lp, 2, 2, c, d), {7, 7, 32, 35});
            m.as(PROB_NSP);
            expect_given(varstat(m.lp, 1, 1, a, b, c, d), {14, 22, 24, 26});
            expect_given(constat(m.lp, 2, 2, a, b, c, d), {17, 29, 32, 35});
        }
}

// ---- counters and callbacks

TEST(CallbackInfo, gives_the_counters_of_the_run)
{
    const MessageLog log;
    const SolvedModel model;
    Problem& lp = *model.lp;
    lp.currentobj = 1.5, lp.infeasibility = 1e-8, lp.bestinteger = 3.5;
    lp.iterations = 4, lp.nodes = 5, lp.totaliterations = 6;
    const auto ask = [&lp](std::int32_t which, auto value) {
        EXPECT_EQ(getcallbackinfo(&lp, nullptr, which, nullptr), 0);
        EXPECT_EQ(getcallbackinfo(&lp, nullptr, which, &value), 0);
        return value;
    };
    EXPECT_EQ(ask(CB_OBJECTIVE, 0.0), 1.5);
    EXPECT_EQ(ask(CB_INFEASIBILITY, 0.0), 1e-8);
    EXPECT_EQ(ask(CB_BESTINTEGER, 0.0), 3.5);
    EXPECT_EQ(ask(CB_ITERATIONS, 0), 4);
    EXPECT_EQ(ask(CB_NODES, 0), 5);
    EXPECT_EQ(ask(CB_TOTALITERATIONS, 0), 6);
    EXPECT_EQ(ask(CB_FEASIBLE, 0), 1);
    for (const double infeasibility : {1.1e-8, std::nan("")}) {
        lp.infeasibility = infeasibility;
        EXPECT_EQ(ask(CB_FEASIBLE, 1), 0);
    }
    expect_told(getcallbackinfo(&lp, nullptr, 2, &lp.nodes), 1, "getcallbackinfo",
                "whichinfo is out of range");
}

TEST(Callbacks, are_stored_apart_and_removed_by_null)
{
    const SolvedModel model;
    const TarnwickCallback some = [](Problem*, std::int32_t) { return 0; };
    for (const TarnwickCallback first : {some, TarnwickCallback{}}) {
        TarnwickCallback second = first ? nullptr : some, given[2] = {};
        EXPECT_EQ(setlpcallbackfunc(model.lp, first) + setmipcallbackfunc(model.lp, second), 0);
        EXPECT_EQ(getlpcallbackfunc(model.lp, &given[0]), 0);
        EXPECT_EQ(getmipcallbackfunc(model.lp, &given[1]), 0);
        EXPECT_EQ(std::pair(given[0], given[1]), std::pair(first, second));
    }
    EXPECT_EQ(getlpcallbackfunc(model.lp, nullptr) + getmipcallbackfunc(model.lp, nullptr), 0);
}

}  // namespace
}  // namespace tarnwick
