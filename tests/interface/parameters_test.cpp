#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <span>
#include <sstream>
#include <string>

#include "include/tarnwick.h"
#include "interface/parameters.h"
#include "tests/interface/smallmodel.h"
#include "tests/support/messages.h"
#include "tests/support/printed.h"

namespace tarnwick {
namespace {

// The neighbour of a value; the value itself at the end of its type.
std::int32_t neighbour(std::int32_t value, int step)
{
    return value == (step < 0 ? INT32_MIN : INT32_MAX) ? value : value + step;
}
double neighbour(double value, int step) { return std::nextafter(value, step * HUGE_VAL); }

template <class Value, class Info, class Set, class Get>
void expect_kept_in_range(std::span<const Parameter<Value>> table, Info info, Set set, Get get)
{
    const MessageLog quiet;
    setdefaults(nullptr);
    for (const auto& row : table) {
        SCOPED_TRACE(row.name);
        const SmallModel model, other;
        Problem* const lp = model.lp;
        const auto expect_value = [&row, get](Problem* of, Value want) {
            Value value{};
            EXPECT_EQ(get(of, row.number, &value), 0);
            EXPECT_EQ(value, want);
        };
        Value initial{}, lowest{}, highest{};
        ASSERT_EQ(info(nullptr, row.number, &initial, &lowest, &highest), 0);
        expect_value(lp, initial);
        for (const Value good : {lowest, highest}) {
            EXPECT_EQ(set(lp, row.number, good), 0);
            for (const Value beyond : {neighbour(lowest, -1), neighbour(highest, 1)})
                EXPECT_EQ(set(lp, row.number, beyond), beyond < lowest || beyond > highest ? 2 : 0);
            EXPECT_EQ(set(lp, row.number, good), 0);
            expect_value(lp, good);
            expect_value(row.shared ? nullptr : other.lp, row.shared ? good : initial);
        }
        EXPECT_EQ(setdefaults(row.shared ? nullptr : lp), 0);
        expect_value(lp, initial);
        EXPECT_EQ(info(nullptr, row.number, nullptr, nullptr, nullptr), 0);
        EXPECT_EQ(get(lp, row.number, nullptr), 0);
    }
}

TEST(Parameters, start_at_their_defaults_and_stay_in_their_ranges)
{
    expect_kept_in_range(int_parameters(), infointparam, setintparam, getintparam);
    expect_kept_in_range(dbl_parameters(), infodblparam, setdblparam, getdblparam);
    const SmallModel model;
    for (const auto& row : dbl_parameters())
        EXPECT_EQ(setdblparam(model.lp, row.number, std::nan("")), 2) << row.name;
}

std::int32_t whole;
double real;
constexpr const char UNKNOWN[] = "whichparam is out of range", BAD[] = "newvalue is out of range";

// clang-format off
constexpr struct {
    const char* what;
    const char* title;
    std::int32_t (*call)(Problem* lp);
    std::int32_t code;
    const char* text;
} REFUSALS[] = {
    {"a real one as an integer", "infointparam", [](Problem* lp) { return infointparam(lp, PARAM_FEASTOL, &whole, &whole, &whole); }, 1, UNKNOWN},
    {"an integer as a real one", "infodblparam", [](Problem* lp) { return infodblparam(lp, PARAM_SCALING, &real, &real, &real); }, 1, UNKNOWN},
    {"unknown number",           "getintparam",  [](Problem* lp) { return getintparam(lp, 0, &whole); },               1, UNKNOWN},
    {"unknown number",           "getdblparam",  [](Problem* lp) { return getdblparam(lp, -1, &real); },               1, UNKNOWN},
    {"unknown before bad value", "setintparam",  [](Problem* lp) { return setintparam(lp, 991, 99); },                 1, UNKNOWN},
    {"unknown before bad value", "setdblparam",  [](Problem* lp) { return setdblparam(lp, 991, NAN); },                1, UNKNOWN},
    {"bad handle before all",    "setintparam",  [](Problem*) { return setintparam(nullptr, 991, 99); },               1, "lp pointer is NULL"},
    {"bad handle before all",    "getdblparam",  [](Problem*) { return getdblparam(nullptr, 991, &real); },            1, "lp pointer is NULL"},
    {"bad value",                "setintparam",  [](Problem* lp) { return setintparam(lp, 999, 2); },                  2, BAD},
    {"without a model",          "setintparam",  [](Problem*) { return setintparam(nullptr, PARAM_RESERVED997, 3); },  2, BAD},
    {"bad value",                "setdblparam",  [](Problem* lp) { return setdblparam(lp, 1016, 1e-3); },              2, BAD},
};
// clang-format on

TEST(Parameters, refusals_name_the_first_fault)
{
    const MessageLog log;
    const SmallModel model;
    for (const auto& c : REFUSALS) {
        SCOPED_TRACE(std::string(c.title) + ": " + c.what);
        EXPECT_EQ(c.call(model.lp), c.code);
        const auto messages = MessageLog::take();
        ASSERT_EQ(messages.size(), 1U);
        EXPECT_EQ(messages[0].text, c.text);
        EXPECT_EQ(messages[0].title, c.title);
    }
}

TEST(SetDefaults, resets_the_model_or_the_process_and_says_nothing)
{
    const SmallModel model;
    Problem foreign{};
    const struct {
        Problem* lp;
        std::int32_t code;
        std::int32_t process_wide, of_the_model;  // what is left of 2 and of 5
    } CASES[] = {
        {model.lp,                                       0, 2, INT32_MAX},
        {nullptr,                                        0, 0, 5        },
        {reinterpret_cast<Problem*>(~std::uintptr_t{0}), 0, 2, 5        },
        {&foreign,                                       1, 2, 5        },
    };
    const auto value = [](Problem* lp, std::int32_t number) {
        std::int32_t got = -1;
        EXPECT_EQ(getintparam(lp, number, &got), 0);
        return got;
    };
    for (const auto& c : CASES) {
        const MessageLog log;
        EXPECT_EQ(setintparam(&foreign, PARAM_RESERVED997, 2), 0) << "which belongs to no model";
        setintparam(model.lp, PARAM_NODELIMIT, 5);
        EXPECT_EQ(setdefaults(c.lp), c.code);
        EXPECT_EQ(value(nullptr, PARAM_RESERVED997), c.process_wide);
        EXPECT_EQ(value(nullptr, PARAM_MESSAGES), c.lp ? 1 : 0);
        EXPECT_EQ(value(model.lp, PARAM_NODELIMIT), c.of_the_model);
        EXPECT_EQ(MessageLog::take().size(), static_cast<std::size_t>(c.code));
    }
}

// ---- the document

template <class Value>
void print_table(std::ostream& out, std::span<const Parameter<Value>> table)
{
    const auto printed = [](Value value) {
        char text[40];
        return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
    };
    out << "| Number | Name | Default | Lowest | Highest | Belongs to | Meaning |\n"
           "| ---: | --- | ---: | ---: | ---: | --- | --- |\n";
    for (const auto& p : table)
        out << "| " << p.number << " | `" << p.name << "` | " << printed(p.initial) << " | "
            << printed(p.lowest) << " | " << printed(p.highest) << " | "
            << (p.shared ? "process" : "model") << " | " << p.meaning << " |\n";
}

TEST(Parameters, are_documented_as_they_are)
{
    std::ostringstream out;
    out << R"(# Parameters

All tuning goes through numbered parameters, read and set by the functions of
`tarnwick.h`. A parameter that belongs to the process can be set before any model
exists; all others belong to one model and start at their defaults when it is loaded.
This page is printed from the tables in `interface/parameters.cpp`.

## Integer parameters

)";
    print_table(out, int_parameters());
    out << "\n## Double parameters\n\n";
    print_table(out, dbl_parameters());
    expect_printed("docs/parameters.md", out.str());
}

}  // namespace
}  // namespace tarnwick
