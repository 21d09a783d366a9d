#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "include/tarnwick.h"
#include "interface/problem.h"
#include "tests/interface/refusals.h"
#include "tests/interface/smallmodel.h"
#include "tests/support/memory.h"
#include "tests/support/messages.h"

namespace tarnwick {
namespace {

double reals[4];
std::int32_t whole;
char letters[] = {'C', 'C'};
TarnwickCallback callback;

// clang-format off
constexpr struct {
    const char* name;
    std::int32_t (*call)(Problem* lp);
} HANDLE_FUNCTIONS[] = {
    {"loadquad",           [](Problem* lp) { return loadquad(lp, nullptr, nullptr, nullptr, reals, 4, reals); }},
    {"loadctype",          [](Problem* lp) { return loadctype(lp, letters); }},
    {"unloadprob",         [](Problem* lp) { return unloadprob(&lp); }},
    {"optimize",           [](Problem* lp) { return optimize(lp); }},
    {"mipoptimize",        [](Problem* lp) { return mipoptimize(lp); }},
    {"solution",           [](Problem* lp) { return solution(lp, &whole, reals, reals, nullptr, nullptr, nullptr); }},
    {"objsa",              [](Problem* lp) { return objsa(lp, 0, 0, reals, reals); }},
    {"rhssa",              [](Problem* lp) { return rhssa(lp, 0, 0, reals, reals); }},
    {"varstat",            [](Problem* lp) { return varstat(lp, 0, 0, reals, reals, reals, reals); }},
    {"constat",            [](Problem* lp) { return constat(lp, 0, 0, reals, reals, reals, reals); }},
    {"getcallbackinfo",    [](Problem* lp) { return getcallbackinfo(lp, nullptr, CB_NODES, &whole); }},
    {"setlpcallbackfunc",  [](Problem* lp) { return setlpcallbackfunc(lp, nullptr); }},
    {"getlpcallbackfunc",  [](Problem* lp) { return getlpcallbackfunc(lp, &callback); }},
    {"setmipcallbackfunc", [](Problem* lp) { return setmipcallbackfunc(lp, nullptr); }},
    {"getmipcallbackfunc", [](Problem* lp) { return getmipcallbackfunc(lp, &callback); }},
    {"setintparam",        [](Problem* lp) { return setintparam(lp, PARAM_NODELIMIT, 1); }},
    {"getintparam",        [](Problem* lp) { return getintparam(lp, PARAM_NODELIMIT, &whole); }},
    {"setdblparam",        [](Problem* lp) { return setdblparam(lp, PARAM_MIPGAP, 0.5); }},
    {"getdblparam",        [](Problem* lp) { return getdblparam(lp, PARAM_MIPGAP, reals); }},
};
// clang-format on

TEST(Handle, every_function_refuses_what_is_none)
{
    const SmallModel model;
    alignas(Problem) static unsigned char foreign[sizeof(Problem)];
    std::memcpy(foreign, static_cast<const void*>(model.lp), sizeof foreign);  // a copy is none
    const auto address = reinterpret_cast<std::uintptr_t>(foreign);
    const std::pair<std::uintptr_t, const char*> handles[] = {
        {0,                  "lp pointer is NULL"   },
        {~std::uintptr_t{0}, "lp pointer is NULL"   },
        {0xFFFFFFFFU,        "lp pointer is NULL"   },
        {address,            "lp pointer is invalid"},
        {address + 1,        "lp pointer is invalid"},
    };
    const MessageLog log;
    for (const auto& function : HANDLE_FUNCTIONS)
        for (const auto& [handle, text] : handles) {
            SCOPED_TRACE(std::string(function.name) + ": " + std::to_string(handle));
            EXPECT_EQ(function.call(reinterpret_cast<Problem*>(handle)), 1);
            const auto messages = MessageLog::take();
            ASSERT_EQ(messages.size(), 1U);
            EXPECT_EQ(messages[0].text, text);
            EXPECT_EQ(messages[0].title, function.name);
        }
}

TEST(Unload, releases_everything_and_keeps_the_callers_variable)
{
    const long alive = blocks_alive();
    SmallModel model;
    EXPECT_GT(blocks_alive(), alive);
    Problem* lp = model.lp;
    EXPECT_EQ(unloadprob(&lp), 0);
    EXPECT_EQ(lp, model.lp);
    EXPECT_EQ(blocks_alive(), alive);
    model.lp = nullptr;

    const MessageLog log;
    EXPECT_EQ(unloadprob(nullptr), 1);
    EXPECT_EQ(MessageLog::take().at(0).text, "lp_p is not valid");
}

struct LimitsCall {
    std::int32_t type = PROB_LP;
    std::int32_t cols = -7, rows = -7, ints = -7;
    std::int32_t *numcols_p = &cols, *numrows_p = &rows, *numints_p = &ints;

    LimitsCall() = default;
    LimitsCall(const LimitsCall&) = delete;
    LimitsCall& operator=(const LimitsCall&) = delete;

    std::int32_t run() { return getproblimits(nullptr, type, numcols_p, numrows_p, numints_p); }
    bool is_untouched() const { return cols == -7 && rows == -7 && ints == -7; }
};

// clang-format off
constexpr Refused<LimitsCall> LIMITS_REFUSALS[] = {
    {"no numcols_p", [](LimitsCall& c) { c.numcols_p = nullptr; }, 2, "numcols_p is NULL"},
    {"no numrows_p", [](LimitsCall& c) { c.numrows_p = nullptr; }, 3, "numrows_p is NULL"},
    {"no numints_p", [](LimitsCall& c) { c.numints_p = nullptr; }, 4, "numints_p is NULL"},
    {"type 2",       [](LimitsCall& c) { c.type = 2; },            1, "problem type is invalid"},
    {"type 28",      [](LimitsCall& c) { c.type = 28; },           1, "problem type is invalid"},
};
// clang-format on

TEST(ProblemLimits, are_given_for_every_type)
{
    const MessageLog log;
    expect_refusals_in_order("getproblimits", LIMITS_REFUSALS);

    for (const std::int32_t type :
         {PROB_LP, PROB_MILP, PROB_QP, PROB_MIQP, PROB_NLP, PROB_MINLP, PROB_NSP, PROB_MINSP}) {
        SCOPED_TRACE(type);
        LimitsCall call;
        call.type = type;
        EXPECT_EQ(call.run(), 0);
        const bool is_linear = type <= PROB_MIQP;
        EXPECT_EQ(call.cols, is_linear ? 2000 : 400);
        EXPECT_EQ(call.rows, is_linear ? 8192 : 200);
        EXPECT_EQ(call.ints, is_linear ? 2000 : 400);
    }
}

}  // namespace
}  // namespace tarnwick
