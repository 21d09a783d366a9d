#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "control/services.h"
#include "tests/support/functionmodel.h"
#include "tests/support/messages.h"

namespace tarnwick {
namespace {

using Reals = std::vector<double>;
using Entry = std::tuple<std::int32_t, std::int32_t, double>;  // row, column, value

constexpr std::int32_t CANCEL = 2;
constexpr std::int32_t ALL = JACOBIAN_OBJECTIVE | JACOBIAN_MINIMISE;

// What the caller's derivative function was handed in its last call, and what it answers.
struct Handed {
    const void *obj, *matbeg, *matcnt, *matind, *matval, *objtype, *matvaltype;
    std::int32_t numcols, numrows, matnz;
    Reals x;
} handed;
Reals gradient, derivatives;
std::int32_t jacobian_result = 0;

std::int32_t TARNWICK_CALL give_derivatives(Problem* lp, std::int32_t numcols, std::int32_t numrows,
                                            std::int32_t matnz, double*, double* obj,
                                            std::int32_t* matbeg, std::int32_t* matcnt,
                                            std::int32_t* matind, double* matval, double* x,
                                            char* objtype, char* matvaltype)
{
    const double* const point = FunctionModel::data_of(x);
    handed = {obj,
              matbeg,
              matcnt,
              matind,
              matval,
              objtype,
              matvaltype,
              numcols,
              numrows,
              matnz,
              Reals(point, point + numcols)};
    std::copy(gradient.begin(), gradient.end(), lp->obj);
    std::copy(derivatives.begin(), derivatives.end(), lp->matval);
    return jacobian_result;
}

// What the visits were asked, and which of them is answered with 0.
std::vector<Entry> visited;
std::size_t wrong_visit = 99;

std::int32_t TARNWICK_CALL visit_entry(SolveControl*, void* user, std::int32_t row,
                                       std::int32_t column, double value, void* data) noexcept
{
    EXPECT_EQ(user, &visited);
    visited.emplace_back(row, column, value);
    if (visited.size() != wrong_visit) return 7;
    *static_cast<double*>(data) = -0.125;
    return 0;
}

struct DerivativeModel : FunctionModel {
    SolveControl* control = nullptr;
    Reals x{3, 4, 0, 0, 0, 0, 0};

    explicit DerivativeModel(bool ole = false)
    {
        is_ole = ole;
        jacobian = give_derivatives;
        gradient = {6, -1};
        derivatives = {1, 1, 4, 0, 2.5};
        jacobian_result = 0;
        wrong_visit = 99;
        run();
        control = &lp->control;
        lp->x = x.data();
    }
    std::int32_t ask(std::int32_t flags)
    {
        visited.clear();
        return evaljacobian(control, &visited, visit_entry, nullptr, x.data(), flags);
    }
};

const std::vector<Entry> ROWS{
    {0, 0, 1  },
    {1, 0, 1  },
    {3, 0, 4  },
    {2, 1, 2.5}
};

std::vector<Entry> rows_and(const std::vector<Entry>& more)
{
    std::vector<Entry> all = ROWS;
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

TEST(EvalFunctions, hands_out_arrays_as_the_mode_wants_them)
{
    static Reals seen;
    static std::uint16_t locks;
    DerivativeModel model;
    Reals lhs(5, 9.0);
    for (const bool is_ole : {false, true}) {
        const ArrayMode mode(is_ole);
        model.lp->funceval = [](Problem*, std::int32_t n, std::int32_t m, double* objval, double* g,
                                double* x, std::int32_t, std::int32_t) {
            const auto count = [&](double* array) {
                const SafeArray& a = **reinterpret_cast<OleReference>(array);
                locks = static_cast<std::uint16_t>(a.locks);
                EXPECT_EQ(a.dimensions, 1);
                EXPECT_EQ(a.elementsize, 8U);
                EXPECT_EQ(a.bound.lowerbound, 0);
                return static_cast<std::int32_t>(a.bound.elements);
            };
            if (ole_mode()) {
                EXPECT_EQ(count(g), m);
                EXPECT_EQ(count(x), n);
            }
            const double* const point = FunctionModel::data_of(x);
            seen.assign(point, point + n);
            FunctionModel::data_of(g)[m - 1] += 5.0;
            *objval = 2.0;
            return 0;
        };
        lhs.assign(5, 9.0);
        EXPECT_EQ(evalfunctions(model.control, lhs.data(), model.x.data()), 1);
        EXPECT_EQ(lhs, (Reals{0, 0, 0, 5, 2}));
        EXPECT_EQ(seen, (Reals{3, 4}));
    }
    EXPECT_EQ(locks, 1);
}

TEST(EvalJacobian, visits_nonzero_derivatives_in_order)
{
    DerivativeModel model;
    EXPECT_EQ(model.ask(0), 7);
    EXPECT_EQ(visited, ROWS);
    EXPECT_EQ(handed.x, (Reals{3, 4}));
    EXPECT_EQ(model.ask(ALL), 7);
    EXPECT_EQ(visited, rows_and({
                           {4, 0, 6 },
                           {4, 1, -1}
    }));
    model.lp->objsen = -1;
    EXPECT_EQ(model.ask(ALL), 7);
    EXPECT_EQ(visited, rows_and({
                           {4, 0, -6},
                           {4, 1, 1 }
    }));
    EXPECT_EQ(model.ask(JACOBIAN_OBJECTIVE), 7);
    EXPECT_EQ(visited, rows_and({
                           {4, 0, 6 },
                           {4, 1, -1}
    }));

    model.matind[4] = 4;  // names no row
    EXPECT_EQ(model.ask(0), 7);
    EXPECT_EQ(visited.size(), 3U);
    gradient = {0, 0}, derivatives.assign(5, 0.0);
    EXPECT_EQ(model.ask(ALL), 1) << "nothing was wrong";
    EXPECT_TRUE(visited.empty());
}

TEST(EvalJacobian, is_offered_where_the_mode_asks_for_it)
{
    DerivativeModel model;
    const std::uint32_t words[] = {0, 2, 16, 18};
    for (std::int32_t mode = 0; mode <= 3; ++mode) {
        model.control->nlpderivmode = mode;
        EXPECT_EQ(getcapability(model.control, 0), words[mode]);
    }
}

TEST(EvalJacobian, visits_elastic_variables_behind_the_columns)
{
    DerivativeModel model;  // rows L, G, E, R: elastic variables -1, +2, +3, -3, -4
    model.control->elasticmode = 1;
    ASSERT_EQ(beginrun(model.control, 0), 1);
    const std::vector<Entry> elastic = rows_and({
        {0, 2, -1},
        {1, 3, 1 },
        {2, 4, 1 },
        {2, 5, -1},
        {3, 6, -1}
    });
    EXPECT_EQ(model.ask(0), 7);
    EXPECT_EQ(visited, elastic);
    EXPECT_EQ(model.ask(ALL), 7);
    ASSERT_EQ(visited.size(), elastic.size() + 5);
    for (std::int32_t k = 0; k < 5; ++k)
        EXPECT_EQ(visited[elastic.size() + static_cast<std::size_t>(k)], Entry(4, 2 + k, 1.0));
    wrong_visit = 9;
    EXPECT_EQ(model.ask(ALL), 0);
    EXPECT_EQ(visited.size(), 9U);
    endrun(model.control);
}

TEST(EvalJacobian, hands_out_what_was_loaded_as_the_mode_wants_it)
{
    for (const bool is_ole : {false, true}) {
        DerivativeModel model(is_ole);
        const ArrayMode mode(is_ole);
        loadnltype(model.lp, model.objtype.pass(), model.matvaltype.pass());
        EXPECT_EQ(model.ask(0), 7);
        EXPECT_EQ(handed.obj, model.obj.pass());
        EXPECT_EQ(handed.matbeg, model.matbeg.pass());
        EXPECT_EQ(handed.matcnt, model.matcnt.pass());
        EXPECT_EQ(handed.matind, model.matind.pass());
        EXPECT_EQ(handed.matval, model.matval.pass());
        EXPECT_EQ(handed.objtype, model.objtype.pass());
        EXPECT_EQ(handed.matvaltype, model.matvaltype.pass());
        EXPECT_EQ(handed.x, (Reals{3, 4}));
        EXPECT_EQ(std::tie(handed.numcols, handed.numrows, handed.matnz), std::make_tuple(2, 4, 5));
    }
}

TEST(EvalJacobian, fails_without_derivatives)
{
    DerivativeModel model;
    jacobian_result = 5;
    EXPECT_EQ(model.ask(ALL), 0);
    jacobian_result = 0;
    {
        const ArrayMode mode(true);
        EXPECT_EQ(model.ask(ALL), 0) << "the model was loaded without references";
    }
    model.lp->jacobian = nullptr;
    EXPECT_EQ(model.ask(ALL), 0);
    EXPECT_TRUE(visited.empty());
}

// The check of the caller's derivatives: what is asked about the n-th visit, which is wrong, and how
// it goes on. All visits are six.
// clang-format off
constexpr struct {
    const char* what;
    std::int32_t derivmode;
    bool messages;
    std::size_t wrong;
    std::int32_t answer;
    const char* text;  // null: nothing is asked
    std::int32_t result;
    std::size_t visits;
} CHECKS[] = {
    {"passed over",             3, true,  4, 1,      "Jacobian [2, 1] = 2.5, should be -0.125",           7, 6},
    {"cancelled",               3, true,  4, CANCEL, "Jacobian [2, 1] = 2.5, should be -0.125",           0, 4},
    {"the objective",           3, true,  5, CANCEL, "Objective Gradient [0] = 6.0, should be -0.125",    0, 5},
    {"the last, passed over",   3, true,  6, 1,      "Objective Gradient [1] = -1.0, should be -0.125",   1, 6},
    {"messages off",            3, false, 4, 1,      nullptr,                                             0, 4},
    {"no check",                2, true,  4, 1,      nullptr,                                             0, 4},
};
// clang-format on

std::int32_t box_answer;
std::vector<Message> asked;
std::int32_t TARNWICK_CALL answer_box(const char* text, const char* title, std::int32_t buttons)
{
    asked.push_back({text, title, buttons});
    return box_answer;
}

TEST(EvalJacobian, asks_about_derivatives_that_differ)
{
    const MessageLog log;
    for (const auto& c : CHECKS) {
        SCOPED_TRACE(c.what);
        DerivativeModel model;
        setmessagebox(answer_box);
        setintparam(nullptr, PARAM_MESSAGES, c.messages);
        setintparam(model.lp, PARAM_NLPDERIVMODE, c.derivmode);
        wrong_visit = c.wrong;
        box_answer = c.answer;
        asked.clear();
        EXPECT_EQ(model.ask(ALL), c.result);
        EXPECT_EQ(visited.size(), c.visits);
        ASSERT_EQ(asked.size(), c.text ? 1U : 0U);
        if (!c.text) continue;
        EXPECT_EQ(asked[0].text, c.text);
        EXPECT_EQ(asked[0].title, "jacobian");
        EXPECT_EQ(asked[0].buttons, 1);
    }
}

// A function that calls back into the library: its own model is refused, another is solved.
TEST(CallerFunctions, may_solve_another_model_but_not_their_own)
{
    static std::int32_t calls;
    FunctionModel model;
    ASSERT_EQ(model.run(), 0);
    calls = 0;
    FunctionModel::evaluate = [&](const double* x, double* lhs) {
        if (calls++ == 0) {
            Problem* lp = model.lp;
            EXPECT_EQ(optimize(lp), 1);
            EXPECT_EQ(unloadprob(&lp), 1);
            EXPECT_EQ(loadnltype(lp, nullptr, nullptr), 1);
            EXPECT_EQ(testnltype(lp, 1, nullptr, nullptr, nullptr, nullptr), 1);

            double cost[] = {1}, rhs[] = {3}, one[] = {1}, lb[] = {0}, ub[] = {9}, best = 0;
            char sense[] = {'G'};
            Problem* other = loadlp("other", 1, 1, 1, cost, rhs, sense, nullptr, nullptr, nullptr,
                                    one, lb, ub, nullptr, 0, 0, 1);
            EXPECT_EQ(optimize(other), 0);
            solution(other, nullptr, &best, nullptr, nullptr, nullptr, nullptr);
            EXPECT_EQ(best, 3.0);
            unloadprob(&other);
        }
        return lhs[0] = x[0];
    };
    std::int32_t flag = -1;
    EXPECT_EQ(testnltype(model.lp, 1, nullptr, &flag, nullptr, nullptr), 0);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(model.lp->problemtype, PROB_NLP);
}

}  // namespace
}  // namespace tarnwick
