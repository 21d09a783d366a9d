#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/functionmodel.h"
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
    const char*
        text;  // null: told by the code alone; a text with a leading space goes on from what
};

inline constexpr char ABSENT[] = " is not a valid array", NOT_OLE[] = " is not a valid OLE array";
inline constexpr char INDICES[] = "matbeg, matcnt, matind are not all valid arrays";
inline constexpr char BEG[] = "matbeg element is invalid", CNT[] = "matcnt element is invalid";
inline constexpr char IND[] = "matind element is invalid";
inline constexpr char OBJSEN[] = "objsen is not -1 or 1",
                      SENSE[] = "sense element not E, L, G or R";
inline constexpr char TOO_LARGE[] = "numcols or numrows is too large";

// What spoils a call: an array that isn't there, is short or has one element; a field.
template <auto ARRAY, class Call>
void drop(Call& call)
{
    (call.*ARRAY).replace(nullptr);
}
template <auto ARRAY, int VALUE, class Call>
void fill(Call& call)
{
    (call.*ARRAY).assign({VALUE});
}
template <auto FIELD, auto VALUE, class Call>
void set(Call& call)
{
    call.*FIELD = VALUE;
}
template <auto ARRAY, class Call>
void cut(Call& call)
{
    auto values = (call.*ARRAY).values();
    values.pop_back();
    (call.*ARRAY).assign(values);
}

// A call in OLE array mode.
template <class Call>
struct Ole : Call {
    Ole() { this->is_ole = true; }
};

// A call spoilt in two ways, or in one when both are the same, is refused for the first.
template <class Call>
void expect_refusal(const char* title, const Refused<Call>& first, const Refused<Call>& second)
{
    SCOPED_TRACE(std::string(first.what) + ", then " + second.what);
    const long alive = blocks_alive();
    {
        Call call;
        if (&first != &second) second.spoil(call);
        first.spoil(call);
        const std::int32_t code = call.run();
        EXPECT_TRUE(call.is_untouched());
        const std::string text(first.text ? first.text : "");
        if (text.empty())
            EXPECT_EQ(code, first.code);
        else
            expect_told(code, first.code, title, text[0] == ' ' ? first.what + text : text);
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
