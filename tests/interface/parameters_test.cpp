#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <sstream>
#include <string>

#include "include/tarnwick.h"
#include "interface/parameters.h"
#include "tests/interface/smallmodel.h"
#include "tests/support/messages.h"
#include "tests/support/printed.h"

namespace tarnwick {
namespace {

// One kind of parameter behind the same names.
struct Ints {
    using Value = std::int32_t;
    static auto table() { return int_parameters(); }
    static constexpr auto info = infointparam;
    static constexpr auto set = setintparam;
    static constexpr auto get = getintparam;
    static bool has_below(Value value) { return value != INT32_MIN; }
    static bool has_above(Value value) { return value != INT32_MAX; }
    static Value below(Value value) { return value - 1; }
    static Value above(Value value) { return value + 1; }
};

struct Doubles {
    using Value = double;
    static auto table() { return dbl_parameters(); }
    static constexpr auto info = infodblparam;
    static constexpr auto set = setdblparam;
    static constexpr auto get = getdblparam;
    static bool has_below(Value) { return true; }
    static bool has_above(Value) { return true; }
    static Value below(Value value) { return std::nextafter(value, -INFINITY); }
    static Value above(Value value) { return std::nextafter(value, INFINITY); }
};

template <class Kind>
class EveryParameter : public testing::Test {
};
using Kinds = testing::Types<Ints, Doubles>;
TYPED_TEST_SUITE(EveryParameter, Kinds);

TYPED_TEST(EveryParameter, starts_at_its_default_and_stays_in_its_range)
{
    using Value = typename TypeParam::Value;
    const MessageLog quiet;
    setdefaults(nullptr);
    for (const auto& row : TypeParam::table()) {
        SCOPED_TRACE(row.name);
        const SmallModel model;
        Problem* const lp = model.lp;
        Value initial{}, lowest{}, highest{}, value{};
        ASSERT_EQ(TypeParam::info(nullptr, row.number, &initial, &lowest, &highest), 0);
        EXPECT_EQ(TypeParam::get(lp, row.number, &value), 0);
        EXPECT_EQ(value, initial);

        for (const Value good : {lowest, highest}) {
            EXPECT_EQ(TypeParam::set(lp, row.number, good), 0);
            if (TypeParam::has_below(lowest)) {
                EXPECT_EQ(TypeParam::set(lp, row.number, TypeParam::below(lowest)), 2);
            }
            if (TypeParam::has_above(highest)) {
                EXPECT_EQ(TypeParam::set(lp, row.number, TypeParam::above(highest)), 2);
            }
            EXPECT_EQ(TypeParam::get(lp, row.number, &value), 0);
            EXPECT_EQ(value, good);
        }

        EXPECT_EQ(setdefaults(row.shared ? nullptr : lp), 0);
        EXPECT_EQ(TypeParam::get(lp, row.number, &value), 0);
        EXPECT_EQ(value, initial);
        EXPECT_EQ(TypeParam::info(nullptr, row.number, nullptr, nullptr, nullptr), 0);
        EXPECT_EQ(TypeParam::get(lp, row.number, nullptr), 0);
    }
}

TEST(Parameters, nan_is_out_of_every_range)
{
    const SmallModel model;
    for (const auto& row : dbl_parameters())
        EXPECT_EQ(setdblparam(model.lp, row.number, std::nan("")), 2) << row.name;
}

struct ParameterCall {
    const char* what;
    const char* title;
    std::int32_t (*call)(Problem* lp);
    std::int32_t code;
    const char* text;
};

TEST(Parameters, refusals_name_the_first_fault)
{
    static std::int32_t whole;
    static double real;
    constexpr ParameterCall CALLS[] = {
        {"a real parameter read as an integer", "infointparam",
         [](Problem* lp) { return infointparam(lp, PARAM_FEASTOL, &whole, &whole, &whole); },                            1,
         "whichparam is out of range"                                                                                                                   },
        {"an integer parameter read as a real", "infodblparam",
         [](Problem* lp) { return infodblparam(lp, PARAM_SCALING, &real, &real, &real); },                               1,
         "whichparam is out of range"                                                                                                                   },
        {"unknown number",                      "getintparam",  [](Problem* lp) { return getintparam(lp, 0, &whole); },  1,
         "whichparam is out of range"                                                                                                                   },
        {"unknown number",                      "getdblparam",  [](Problem* lp) { return getdblparam(lp, -1, &real); },  1,
         "whichparam is out of range"                                                                                                                   },
        {"unknown number before a bad value",   "setintparam",
         [](Problem* lp) { return setintparam(lp, 991, 99); },                                                           1, "whichparam is out of range"},
        {"unknown number before a bad value",   "setdblparam",
         [](Problem* lp) { return setdblparam(lp, 991, NAN); },                                                          1, "whichparam is out of range"},
        {"bad handle before an unknown number", "setintparam",
         [](Problem*) { return setintparam(nullptr, 991, 99); },                                                         1, "lp pointer is NULL"        },
        {"bad handle before an unknown number", "getdblparam",
         [](Problem*) { return getdblparam(nullptr, 991, &real); },                                                      1, "lp pointer is NULL"        },
        {"bad value",                           "setintparam",  [](Problem* lp) { return setintparam(lp, 999, 2); },     2,
         "newvalue is out of range"                                                                                                                     },
        {"bad value without a model",           "setintparam",
         [](Problem*) { return setintparam(nullptr, PARAM_RESERVED997, 3); },                                            2,
         "newvalue is out of range"                                                                                                                     },
        {"bad value",                           "setdblparam",  [](Problem* lp) { return setdblparam(lp, 1016, 1e-3); }, 2,
         "newvalue is out of range"                                                                                                                     },
    };
    const MessageLog log;
    const SmallModel model;
    for (const auto& c : CALLS) {
        SCOPED_TRACE(std::string(c.title) + ": " + c.what);
        EXPECT_EQ(c.call(model.lp), c.code);
        const auto messages = MessageLog::take();
        ASSERT_EQ(messages.size(), 1U);
        EXPECT_EQ(messages[0].text, c.text);
        EXPECT_EQ(messages[0].title, c.title);
    }
}

TEST(Parameters, belong_to_one_model_or_to_the_process)
{
    const SmallModel one, other;
    std::int32_t value = 0;
    EXPECT_EQ(setintparam(one.lp, PARAM_NODELIMIT, 5), 0);
    EXPECT_EQ(getintparam(other.lp, PARAM_NODELIMIT, &value), 0);
    EXPECT_EQ(value, INT32_MAX);

    Problem foreign{};
    EXPECT_EQ(setintparam(&foreign, PARAM_RESERVED997, 2), 0);
    EXPECT_EQ(getintparam(nullptr, PARAM_RESERVED997, &value), 0);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(setdefaults(nullptr), 0);
}

struct DefaultsCase {
    const char* what;
    Problem* lp;
    std::int32_t code;
    std::int32_t process_wide, of_the_model;  // what is left of 2 and of 5
    std::size_t messages;
};

TEST(SetDefaults, resets_the_model_or_the_process_and_says_nothing)
{
    const SmallModel model;
    Problem foreign{};
    const DefaultsCase cases[] = {
        {"the model", model.lp,                                       0, 2, INT32_MAX, 0},
        {"null",      nullptr,                                        0, 0, 5,         0},
        {"all ones",  reinterpret_cast<Problem*>(~std::uintptr_t{0}), 0, 2, 5,         0},
        {"no model",  &foreign,                                       1, 2, 5,         1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const MessageLog log;
        setintparam(nullptr, PARAM_RESERVED997, 2);
        setintparam(model.lp, PARAM_NODELIMIT, 5);
        EXPECT_EQ(setdefaults(c.lp), c.code);

        std::int32_t value = 0;
        getintparam(nullptr, PARAM_RESERVED997, &value);
        EXPECT_EQ(value, c.process_wide);
        getintparam(nullptr, PARAM_MESSAGES, &value);
        EXPECT_EQ(value, c.lp ? 1 : 0);
        getintparam(model.lp, PARAM_NODELIMIT, &value);
        EXPECT_EQ(value, c.of_the_model);
        EXPECT_EQ(MessageLog::take().size(), c.messages);
    }
}

// ---- the document

template <class Value>
std::string printed(Value value)
{
    char text[40];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

template <class Value>
void print_table(std::ostream& out, std::span<const Parameter<Value>> table)
{
    out << "| Number | Name | Default | Lowest | Highest | Belongs to | Meaning |\n"
           "| ---: | --- | ---: | ---: | ---: | --- | --- |\n";
    for (const auto& p : table)
        out << "| " << p.number << " | `" << p.name << "` | " << printed(p.initial) << " | "
            << printed(p.lowest) << " | " << printed(p.highest) << " | "
            << (p.shared ? "process" : "model") << " | " << p.meaning << " |\n";
}

std::string parameters_document()
{
    std::ostringstream out;
    out << "# Parameters\n"
           "\n"
           "All tuning goes through numbered parameters, read and set by the functions of\n"
           "`tarnwick.h`. A parameter that belongs to the process can be set before any model\n"
           "exists; all others belong to one model and start at their defaults when it is loaded.\n"
           "This page is printed from the tables in `interface/parameters.cpp`.\n"
           "\n"
           "## Integer parameters\n"
           "\n";
    print_table(out, int_parameters());
    out << "\n## Double parameters\n\n";
    print_table(out, dbl_parameters());
    return out.str();
}

TEST(Parameters, are_documented_as_they_are)
{
    expect_printed("docs/parameters.md", parameters_document());
}

}  // namespace
}  // namespace tarnwick
