#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "tests/interface/refusals.h"
#include "tests/support/functionmodel.h"

namespace tarnwick {
namespace {

// A call of testnltype on a loaded model.
struct LinearityCall : FunctionModel {
    Problem* model;
    std::int32_t numtests = 1, flag = -1;
    OleArray<double> testvals{1, 2};

    LinearityCall()
    {
        FunctionModel::run();
        model = lp;
        for (auto* letters : {&objtype, &matvaltype})
            letters->assign(std::vector<char>(letters->values().size(), '?'));
    }
    ~LinearityCall() { lp = model; }
    LinearityCall(const LinearityCall&) = delete;
    LinearityCall& operator=(const LinearityCall&) = delete;

    std::int32_t run()
    {
        const ArrayMode mode(is_ole);
        return testnltype(lp, numtests, testvals.pass(), &flag, objtype.pass(), matvaltype.pass());
    }
    bool is_untouched() const { return flag == -1 && objtype.values()[0] == '?'; }
};

struct OleLinearityCall : LinearityCall {
    OleLinearityCall() { is_ole = true; }
};

using C = LinearityCall;
using O = OleLinearityCall;

// clang-format off
constexpr Refused<C> REFUSALS[] = {
    {"null handle",      [](C& c) { c.lp = nullptr; },                    1, "lp pointer is NULL"},
    {"quadratic model",  [](C& c) { c.model->problemtype = PROB_QP; },    1, "testnltype is valid only for NLP problems"},
    {"too large",        [](C& c) { c.model->numrows = 201; },            1, "numcols or numrows is too large"},
    {"no tests",         [](C& c) { c.numtests = 0; },                    2, "numtests <= 0"},
};

constexpr Refused<O> OLE_REFUSALS[] = {
    {"testvals short",   [](O& c) { c.testvals.assign({1}); },            3, "testvals is not a valid OLE array"},
    {"objtype short",    [](O& c) { c.objtype.assign({'?'}); },           5, "objtype is not a valid OLE array"},
    {"matvaltype short", [](O& c) { c.matvaltype.assign({'?'}); },        6, "matvaltype is not a valid OLE array"},
};
// clang-format on

TEST(Linearity, refuses_each_argument_in_order)
{
    const MessageLog log;
    expect_refusals_in_order("testnltype", REFUSALS);
    expect_refusals_in_order("testnltype", OLE_REFUSALS);
}

double nan_of(double) { return std::numeric_limits<double>::quiet_NaN(); }

// One row g and the objective f of two variables; the matrix is dense. The columns tell the slopes
// of g and f, their letters and the verdict.
// clang-format off
constexpr struct {
    const char* what;
    double (*g)(double x, double y);
    double (*f)(double x, double y);
    std::vector<double> (*testvals)();  // none: drawn
    bool with_letters;
    double gx, gy, fx, fy;
    const char* matvaltype;
    const char* objtype;
    std::int32_t flag;
} CASES[] = {
    {"constants are linear",          [](double x, double y) { return 3 * x - y + 5; }, [](double x, double) { return 2 * x + 3; },
                                      nullptr, true, 3, -1, 2, 0, "LL", "LL", 0},
    {"a slope seen at 1000 only",     [](double x, double y) { return x / 65536 + y; }, [](double, double) { return 7.0; },
                                      nullptr, true, 1.0 / 65536, 1, 0, 0, "LL", "LL", 0},
    {"the objective is noticed, too", [](double, double y) { return y; }, [](double x, double) { return x / 64; },
                                      nullptr, true, 0, 1, 1.0 / 64, 0, "LL", "LL", 0},
    {"a square in the objective",     [](double x, double y) { return x + y; }, [](double x, double y) { return x * x + y; },
                                      nullptr, true, 1, 1, 1, 1, "LL", "NL", 1},
    {"a square in the row",           [](double, double y) { return y * y; }, [](double x, double y) { return x + y; },
                                      nullptr, true, 0, 1, 1, 1, "LN", "LL", 1},
    // The point of the probe is at x = 1 when y moves.
    {"a product shows in y",          [](double x, double y) { return x + x * y; }, [](double, double) { return 0.0; },
                                      nullptr, true, 1, 1, 0, 0, "LN", "LL", 1},
    // At x = 1 the product is nothing, and so it is on both axes.
    {"a product shows inside only",   [](double x, double y) { return x + y + x * (x - 1) * y * (x - 7.5); }, [](double, double) { return 0.0; },
                                      [] { return std::vector<double>{2, 1}; }, true, 1, 1, 0, 0, "LL", "LL", 1},
    // No change up to 100, 900 of 1000: a slope of 0.9, which fits at 1000.
    {"a bend beside the given point", [](double x, double) { return std::max(0.0, x - 100); }, [](double, double y) { return y; },
                                      [] { return std::vector<double>{1000, 5}; }, false, 0.9, 0, 0, 1, "??", "??", 0},
    {"a bend at the given point",     [](double x, double) { return std::max(0.0, x - 100); }, [](double, double y) { return y; },
                                      [] { return std::vector<double>{50, 5}; }, false, 0.9, 0, 0, 1, "??", "??", 1},
    {"marked as absent: drawn",       [](double x, double) { return x * x; }, [](double, double y) { return y; },
                                      [] { return std::vector<double>{-1, 0}; }, false, 1, 0, 0, 1, "??", "??", 1},
};
// clang-format on

TEST(Linearity, tells_slopes_letters_and_verdict)
{
    for (const auto& c : CASES)
        for (const bool is_ole : {false, true}) {
            SCOPED_TRACE(c.what);
            FunctionModel model;
            model.is_ole = is_ole;
            model.make_dense(1);
            model.lb.assign({-1e30, -9});
            ASSERT_EQ(model.run(), 0);
            FunctionModel::evaluate = [&c](const double* x, double* lhs) {
                EXPECT_EQ(lhs[0], 0.0);
                lhs[0] = c.g(x[0], x[1]);
                return c.f(x[0], x[1]);
            };
            const ArrayMode mode(is_ole);
            OleArray<double> testvals{0, 0};
            if (c.testvals) testvals.assign(c.testvals());
            OleArray<char> objtype{'?', '?'}, matvaltype{'?', '?'};
            std::int32_t flag = -1;
            EXPECT_EQ(testnltype(model.lp, 1, c.testvals ? testvals.pass() : nullptr, &flag,
                                 c.with_letters ? objtype.pass() : nullptr,
                                 c.with_letters ? matvaltype.pass() : nullptr),
                      0);
            EXPECT_EQ(flag, c.flag);
            EXPECT_EQ(model.matval.values(), (std::vector<double>{c.gx, c.gy}));
            EXPECT_EQ(model.obj.values(), (std::vector<double>{c.fx, c.fy}));
            EXPECT_EQ(std::string(matvaltype.values().data(), 2), c.matvaltype);
            EXPECT_EQ(std::string(objtype.values().data(), 2), c.objtype);
            EXPECT_EQ(model.lp->problemtype, PROB_NLP);
        }
}

TEST(Linearity, draws_points_between_the_bounds_or_as_far_as_the_steps_reach)
{
    FunctionModel model;
    model.make_dense(1);
    model.lb.assign({-1e30, 3});
    model.ub.assign({9, 1e30});
    ASSERT_EQ(model.run(), 0);
    std::vector<double> xs, ys;
    FunctionModel::evaluate = [&](const double* x, double*) {
        xs.push_back(x[0]);
        ys.push_back(x[1]);
        return x[0] + x[1] / 64;  // steps 1 and 1
    };
    constexpr int PROBES = 3, TESTS = 200;
    ASSERT_EQ(testnltype(model.lp, TESTS, nullptr, nullptr, nullptr, nullptr), 0);
    ASSERT_EQ(xs.size(), PROBES + TESTS);
    const auto [least_x, most_x] = std::minmax_element(xs.begin() + PROBES, xs.end());
    const auto [least_y, most_y] = std::minmax_element(ys.begin() + PROBES, ys.end());
    EXPECT_GE(*least_x, -7500.0);
    EXPECT_LT(*least_x, -6000.0);
    EXPECT_LE(*most_x, 9.001);
    EXPECT_GE(*least_y, 3.0);
    EXPECT_LT(*least_y, 1500.0);
    EXPECT_GT(*most_y, 6000.0);
    EXPECT_LE(*most_y, 7500.01);
}

// The n-th evaluation fails, for every n until none does; then the n-th allocation.
TEST(Linearity, ends_with_a_code_wherever_evaluations_and_memory_end)
{
    const MessageLog log;
    const long alive = blocks_alive();
    const auto expect_ended = [](std::int32_t code) {
        const auto messages = MessageLog::take();
        EXPECT_EQ(code, 1);
        ASSERT_EQ(messages.size(), 1U);
        EXPECT_EQ(messages[0].title, "testnltype");
        EXPECT_EQ(messages[0].text, "unable to diagnose linearity");
    };
    for (int good = 0, calls = 1; calls > good; ++good) {
        LinearityCall call;
        calls = 0;
        FunctionModel::evaluate = [&](const double* x, double* lhs) {
            FunctionModel::failure = calls++ < good ? 0 : 99;
            return lhs[0] = x[0];
        };
        const std::int32_t code = call.run();
        if (calls > good) expect_ended(code);
        EXPECT_TRUE(calls > good || code == 0);
        EXPECT_FALSE(call.model->running);
    }
    for (long allowed = 0; allowed < 9; ++allowed) {
        LinearityCall call;
        allow_allocations(allowed);
        const std::int32_t code = call.run();
        allow_all_allocations();
        expect_ended(code);
    }
    EXPECT_EQ(blocks_alive(), alive);
}

TEST(Linearity, takes_nan_and_infinity_for_signs_of_nonlinearity)
{
    for (const double odd : {nan_of(0), HUGE_VAL, -HUGE_VAL}) {
        LinearityCall call;
        FunctionModel::evaluate = [odd](const double*, double* lhs) { return lhs[0] = odd; };
        EXPECT_EQ(call.run(), 0);
        EXPECT_EQ(call.flag, 1);
        EXPECT_EQ(call.objtype.values(), (std::vector<char>{'N', 'N'}));
    }
}

}  // namespace
}  // namespace tarnwick
