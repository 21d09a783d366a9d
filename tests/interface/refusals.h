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

template <class Call>
void expect_refusal(Call& call, const char* title, const Refused<Call>& row)
{
    MessageLog::take();
    EXPECT_EQ(call.run(), row.code);
    EXPECT_TRUE(call.is_untouched());

    const auto messages = MessageLog::take();
    ASSERT_EQ(messages.size(), row.text ? 1U : 0U);
    if (!row.text) return;
    EXPECT_EQ(messages[0].text, row.text);
    EXPECT_EQ(messages[0].title, title);
    EXPECT_EQ(messages[0].buttons, 0);
}

// The rows stand in the order of the tests. Each is refused on its own, and of any two at once the
// first is told.
template <class Call, std::size_t N>
void expect_refusals_in_order(const char* title, const Refused<Call> (&rows)[N])
{
    const long alive = blocks_alive();
    for (std::size_t first = 0; first < N; ++first)
        for (std::size_t second = first; second < N; ++second) {
            SCOPED_TRACE(std::string(rows[first].what) + ", then " + rows[second].what);
            Call call;
            rows[second].spoil(call);
            rows[first].spoil(call);
            expect_refusal(call, title, rows[first]);
        }
    EXPECT_EQ(blocks_alive(), alive);
}

// For rows of which each stands for itself.
template <class Call, std::size_t N>
void expect_refusals(const char* title, const Refused<Call> (&rows)[N])
{
    const long alive = blocks_alive();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Call call;
        row.spoil(call);
        expect_refusal(call, title, row);
    }
    EXPECT_EQ(blocks_alive(), alive);
}

}  // namespace tarnwick
