#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/support/memory.h"
#include "tests/support/messages.h"

namespace tarnwick {

// One way to spoil the arguments of a call, and how it is then refused. A Call starts out with good
// arguments; run() makes the call, and is_untouched() says whether it left everything as it was.
template <class Call>
struct Refused {
    const char* what;
    void (*spoil)(Call&);
    std::int32_t code;
    const char* text;  // null: told by the code alone
};

// A call spoilt in two ways, or twice in the same, is refused for the first.
template <class Call>
void expect_refusal(const char* title, const Refused<Call>& first, const Refused<Call>& second)
{
    SCOPED_TRACE(std::string(first.what) + ", then " + second.what);
    const long alive = blocks_alive();
    {
        Call call;
        second.spoil(call);
        first.spoil(call);
        MessageLog::take();
        EXPECT_EQ(call.run(), first.code);
        EXPECT_TRUE(call.is_untouched());

        const auto messages = MessageLog::take();
        ASSERT_EQ(messages.size(), first.text ? 1U : 0U);
        if (first.text) {
            EXPECT_EQ(messages[0].text, first.text);
            EXPECT_EQ(messages[0].title, title);
            EXPECT_EQ(messages[0].buttons, 0);
        }
    }
    EXPECT_EQ(blocks_alive(), alive);
}

// The rows stand in the order of the tests. Each is refused on its own, and of any two at once the
// first is told.
template <class Call, std::size_t N>
void expect_refusals_in_order(const char* title, const Refused<Call> (&rows)[N])
{
    for (std::size_t first = 0; first < N; ++first)
        for (std::size_t second = first; second < N; ++second)
            expect_refusal(title, rows[first], rows[second]);
}

// For rows of which each stands for itself.
template <class Call, std::size_t N>
void expect_refusals(const char* title, const Refused<Call> (&rows)[N])
{
    for (const auto& row : rows) expect_refusal(title, row, row);
}

}  // namespace tarnwick
