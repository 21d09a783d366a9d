#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "control/services.h"
#include "tests/support/functionmodel.h"
#include "tests/support/messages.h"

namespace tarnwick {
namespace {

using Reals = std::vector<double>;
using Entries = std::vector<std::tuple<std::int32_t, std::int32_t, double>>;  // row, column, value

constexpr std::int32_t ALL = JACOBIAN_OBJECTIVE | JACOBIAN_MINIMISE;

// The arrays that the caller's derivative function was handed in its last call, and the point.
std::vector<const void*> handed;
Reals point, gradient, derivatives;

std::int32_t TARNWICK_CALL give_derivatives(Problem* lp, std::int32_t numcols, std::int32_t numrows,
                                            std::int32_t matnz, double*, double* obj,
                                            std::int32_t* matbeg, std::int32_t* matcnt,
                                            std::int32_t* matind, double* matval, double* x,
                                            char* objtype, char* matvaltype)
{
    EXPECT_EQ(std::tie(numcols, numrows, matnz), std::make_tuple(2, 4, 5));
    handed = {obj, matbeg, matcnt, matind, matval, objtype, matvaltype};
    point.assign(FunctionModel::data_of(x), FunctionModel::data_of(x) + numcols);
    std::copy(gradient.begin(), gradient.end(), lp->obj);
    std::copy(derivatives.begin(), derivatives.end(), lp->matval);
    return 0;
}

// What the visits were asked, and which of them is answered with 0.
Entries visited;
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
    Reals x{3, 4, 0, 0, 0, 0, 0};  // the last are elastic

    explicit DerivativeModel(bool ole = false)
    {
        is_ole = ole;
        jacobian = give_derivatives;
        gradient = {6, -1};
        derivatives = {1, 1, 4, 0, 2.5};
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

TEST(EvalFunctions, hands_out_locked_arrays_of_the_right_size)
{
    DerivativeModel model;
    model.lp->funceval = [](Problem*, std::int32_t n, std::int32_t m, double*, double* g, double* x,
                            std::int32_t, std::int32_t) {
        for (const auto& [array, count] : {std::pair(g, m), std::pair(x, n)}) {
            const SafeArray& a = **reinterpret_cast<OleReference>(array);
            EXPECT_EQ(std::tie(a.dimensions, a.elementsize, a.locks), std::make_tuple(1, 8U, 1U));
            EXPECT_EQ(a.bound.elements, static_cast<std::uint32_t>(count));
            EXPECT_EQ(a.bound.lowerbound, 0);
        }
        return 0;
    };
    const ArrayMode mode(true);
    Reals lhs(5);
    EXPECT_EQ(evalfunctions(model.control, lhs.data(), model.x.data()), 1);
}

// clang-format off
const Entries ROWS{{0, 0, 1}, {1, 0, 1}, {3, 0, 4}, {2, 1, 2.5}};
const Entries WITH_ELASTIC{{0, 0, 1}, {1, 0, 1}, {3, 0, 4}, {2, 1, 2.5},
                           {0, 2, -1}, {1, 3, 1}, {2, 4, 1}, {2, 5, -1}, {3, 6, -1}};
// clang-format on

TEST(EvalJacobian, visits_nonzero_derivatives_in_order)
{
    DerivativeModel model;
    for (const std::int32_t flags : {0, std::int32_t{JACOBIAN_OBJECTIVE}, ALL})
        for (const std::int32_t sense : {1, -1}) {
            Entries want = ROWS;
            const double sign = flags == ALL ? sense : 1;
            if (flags != 0) {
                want.emplace_back(4, 0, 6 * sign);
                want.emplace_back(4, 1, -sign);
            }
            model.lp->objsen = sense;
            EXPECT_EQ(model.ask(flags), 7);
            EXPECT_EQ(visited, want);
        }
    model.matind[4] = 4;  // names no row
    EXPECT_EQ(model.ask(0), 7);
    EXPECT_EQ(visited.size(), 3U);
    gradient = {0, 0}, derivatives.assign(5, 0.0);
    EXPECT_EQ(model.ask(ALL), 1) << "nothing was wrong";
}

TEST(EvalJacobian, visits_elastic_variables_behind_the_columns)
{
    DerivativeModel model;  // rows L, G, E, R: elastic variables -1, +2, +3, -3, -4
    model.control->elasticmode = 1;
    ASSERT_EQ(beginrun(model.control, 0), 1);
    Entries want = WITH_ELASTIC;
    EXPECT_EQ(model.ask(0), 7);
    EXPECT_EQ(visited, want);
    for (std::int32_t j = 2; j < 7; ++j) want.emplace_back(4, j, 1.0);
    EXPECT_EQ(model.ask(ALL), 7);
    EXPECT_EQ(visited, want);
    endrun(model.control);
}

TEST(EvalJacobian, fails_in_ole_array_mode_for_a_model_without_references)
{
    DerivativeModel model;
    const ArrayMode mode(true);
    EXPECT_EQ(model.ask(ALL), 0);
}

// The engine's tests show how a run goes on, or ends where nobody is asked.
TEST(EvalJacobian, asks_about_a_derivative_that_differs_and_fails_when_that_is_cancelled)
{
    const MessageLog log;
    DerivativeModel model;
    setintparam(model.lp, PARAM_NLPDERIVMODE, 3);
    wrong_visit = 6;
    EXPECT_EQ(model.ask(ALL), 1) << "the last one counts as passed";
    const auto shown = MessageLog::take();
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(shown[0].text, "Objective Gradient [1] = -1.0, should be -0.125");
    EXPECT_EQ(shown[0].title, "jacobian");
    EXPECT_EQ(shown[0].buttons, 1);

    setmessagebox([](const char*, const char*, std::int32_t) { return 2; });
    wrong_visit = 4;
    EXPECT_EQ(model.ask(ALL), 0);
    EXPECT_EQ(visited.size(), 4U);
}

}  // namespace
}  // namespace tarnwick
