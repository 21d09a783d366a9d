#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "include/tarnwick.h"
#include "interface/problem.h"
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

TEST(ProblemLimits, are_given_for_every_type)
{
    const MessageLog log;
    std::int32_t n[] = {-7, -7, -7};
    const auto expect_refused = [&n](std::int32_t type, int missing, std::int32_t code) {
        static const char* const TEXTS[] = {"problem type is invalid", "numcols_p is NULL",
                                            "numrows_p is NULL", "numints_p is NULL"};
        std::int32_t* out[4] = {nullptr, n, n + 1, n + 2};
        out[missing] = nullptr;
        EXPECT_EQ(getproblimits(nullptr, type, out[1], out[2], out[3]), code);
        EXPECT_EQ(MessageLog::take().at(0).text, TEXTS[code - 1]);
        EXPECT_EQ(*std::max_element(n, n + 3), -7);
    };
    for (const std::int32_t type : {-1, 2, 28}) {
        for (const int missing : {1, 2, 3}) expect_refused(type, missing, missing + 1);
        expect_refused(type, 0, 1);
    }
    for (const std::int32_t type : {0, 1, 4, 8, 12, 16, 20, 24}) {
        EXPECT_EQ(getproblimits(nullptr, type, n, n + 1, n + 2), 0) << type;
        EXPECT_EQ(n[0], type <= PROB_MIQP ? 2000 : 400) << type;
        EXPECT_EQ(n[1], type <= PROB_MIQP ? 8192 : 200) << type;
        EXPECT_EQ(n[2], n[0]) << type;
    }
}

}  // namespace
}  // namespace tarnwick
