#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "tests/support/functionmodel.h"
#include "tests/support/memory.h"
#include "tests/support/messages.h"

namespace tarnwick {
namespace {

using Reals = std::vector<double>;

// The value of a row and of the objective.
using Values = std::pair<double, double>;

struct LinearityCall : FunctionModel {
    std::int32_t numtests = 1, flag = -1;
    OleArray<double> testvals{1, 2};

    // A model with one row and a dense matrix, and the function behind it.
    explicit LinearityCall(Values (*values)(double x, double y))
    {
        make_dense(1);
        lb.assign({-1e30, -9});
        objtype.assign({'?', '?'});
        matvaltype.assign({'?', '?'});
        FunctionModel::run();
        evaluate = [values](const double* x, double* lhs) {
            EXPECT_EQ(lhs[0], 0.0);
            const auto [row, objective] = values(x[0], x[1]);
            lhs[0] = row;
            return objective;
        };
    }
    std::int32_t run()
    {
        const ArrayMode mode(is_ole);
        return testnltype(lp, numtests, testvals.pass(), &flag, objtype.pass(), matvaltype.pass());
    }
    std::string letters() const
    {
        const auto &entries = matvaltype.values(), &costs = objtype.values();
        return std::string(entries.begin(), entries.end()) +
               std::string(costs.begin(), costs.end());
    }
};

Values linear(double x, double y) { return {3 * x - y + 5, 2 * x + 3}; }

TEST(Linearity, refuses_the_first_wrong_argument)
{
    const MessageLog log;
    LinearityCall call(linear), ole(linear);
    call.numtests = 0;
    expect_told(call.run(), 2, "testnltype", "numtests <= 0");
    call.lp->numrows = 201;
    expect_told(call.run(), 1, "testnltype", "numcols or numrows is too large");
    call.lp->problemtype = PROB_QP;
    expect_told(call.run(), 1, "testnltype", " is valid only for NLP problems");

    ole.is_ole = true;
    ole.matvaltype.assign({'?'});
    expect_told(ole.run(), 6, "testnltype", "matvaltype is not a valid OLE array");
    ole.objtype.assign({'?'});
    expect_told(ole.run(), 5, "testnltype", "objtype is not a valid OLE array");
    ole.testvals.assign({1});
    expect_told(ole.run(), 3, "testnltype", "testvals is not a valid OLE array");
}

// Slopes are those of the row and of the objective, as are the letters. Without letters, they are
// not asked for; without a sample point it is drawn between the bounds.
TEST(Linearity, tells_slopes_letters_and_verdict)
{
    using V = Values;
    // clang-format off
    const struct {
        const char* what;
        V (*values)(double x, double y);
        Reals row_slopes, obj_slopes;
        const char* letters;
        std::int32_t flag;
        Reals sample{};
    } CASES[] = {
        {"constants are linear", linear, {3, -1}, {2, 0}, "LLLL", 0},
        {"a slope seen at 1000 only", [](double x, double y) { return V(x / 65536 + y, 7); },
         {1.0 / 65536, 1}, {0, 0}, "LLLL", 0},
        {"the objective is noticed, too", [](double x, double y) { return V(y, std::min(x, 9.0)); },
         {0, 1}, {1, 0}, "LLLL", 0, {2, 1}},
        {"a square in the objective", [](double x, double y) { return V(x + y, x * x + y); },
         {1, 1}, {1, 1}, "LLNL", 1},
        {"a square in the row", [](double x, double y) { return V(y * y, x + y); },
         {0, 1}, {1, 1}, "LNLL", 1},
        {"a product, nothing on the axes and where x is 1",
         [](double x, double y) { return V(x + y + x * (x - 1) * y * (x - 7.5), 0); },
         {1, 1}, {0, 0}, "LLLL", 1, {2, 1}},
        // No change up to 100, 900 of 1000: a slope of 0.9, which fits at 1000.
        {"a bend beside the point", [](double x, double y) { return V(std::max(0.0, x - 100), y); },
         {0.9, 0}, {0, 1}, "", 0, {1000, 5}},
        {"a bend at the point", [](double x, double y) { return V(std::max(0.0, x - 100), y); },
         {0.9, 0}, {0, 1}, "", 1, {50, 5}},
    };
    // clang-format on
    for (const auto& c : CASES)
        for (const bool is_ole : {false, true}) {
            SCOPED_TRACE(c.what);
            LinearityCall call(c.values);
            call.is_ole = is_ole;
            call.testvals.assign(c.sample);
            if (c.sample.empty()) call.testvals.replace(nullptr);
            if (!*c.letters)
                for (auto* array : {&call.objtype, &call.matvaltype}) array->replace(nullptr);
            EXPECT_EQ(call.run(), 0);
            EXPECT_EQ(call.flag, c.flag);
            EXPECT_EQ(call.matval.values(), c.row_slopes);
            EXPECT_EQ(call.obj.values(), c.obj_slopes);
            EXPECT_EQ(call.letters(), *c.letters ? c.letters : "????");
        }
}

// Rows x, x + y, y, x y; the product shows nothing where y is 0. The objective is x^2 + y.
TEST(Linearity, of_a_sparse_model_goes_by_its_indices_and_nobody_else_may_use_it)
{
    FunctionModel model;
    ASSERT_EQ(model.run(), 0);
    FunctionModel::evaluate = [&, values = FunctionModel::evaluate](const double* x, double* lhs) {
        Problem* lp = model.lp;
        EXPECT_EQ(optimize(lp) + unloadprob(&lp) + loadnltype(lp, nullptr, nullptr), 3);
        return values(x, lhs);
    };
    double sample[] = {2, 3};
    std::int32_t flag = -1;
    EXPECT_EQ(testnltype(model.lp, 1, sample, &flag, model.objtype.pass(), model.matvaltype.pass()),
              0);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(model.matval.values(), (Reals{1, 1, 0, 1, 1}));
    EXPECT_EQ(model.matvaltype.values(), std::vector<char>(5, 'L'));
    EXPECT_EQ(model.objtype.values(), (std::vector<char>{'N', 'L'}));
}

// The n-th evaluation fails, for every n until none does; then the n-th allocation.
TEST(Linearity, ends_with_a_code_wherever_evaluations_and_memory_end)
{
    const MessageLog log;
    const long alive = blocks_alive();
    for (const bool is_memory : {false, true}) {
        bool fails = true;
        for (int good = 0; fails; ++good) {
            LinearityCall call(linear);
            int calls = 0;
            FunctionModel::evaluate = [&](const double* x, double* lhs) {
                FunctionModel::failure = is_memory || calls++ < good ? 0 : 99;
                return lhs[0] = x[0];
            };
            if (is_memory) allow_allocations(good);
            const std::int32_t code = call.run();
            fails = calls > good || allocation_failed();
            allow_all_allocations();
            if (fails) expect_told(code, 1, "testnltype", "unable to diagnose linearity");
            EXPECT_TRUE(fails || code == 0);
            EXPECT_FALSE(call.lp->running);
        }
    }
    EXPECT_EQ(blocks_alive(), alive);
}

TEST(Linearity, takes_nan_and_infinity_for_signs_of_nonlinearity)
{
    static double odd;
    for (const double value : {std::nan(""), HUGE_VAL}) {
        odd = value;
        LinearityCall call([](double, double) { return Values(odd, odd); });
        EXPECT_EQ(call.run(), 0);
        EXPECT_EQ(call.letters() + std::to_string(call.flag), "NNNN1");
    }
}

}  // namespace
}  // namespace tarnwick
