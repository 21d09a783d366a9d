#include "interface/parameters.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <sstream>

#include "interface/problem.h"
#include "tests/support/messages.h"
#include "tests/support/models.h"
#include "tests/support/printed.h"

namespace tarnwick {
namespace {

const LinearModel ANY{{{{1}, 'L', 1}}, {1}};

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
        const LoadedModel model(ANY), other(ANY);
        const auto expect_value = [&row, get](Problem* of, Value want) {
            Value value{};
            EXPECT_EQ(get(of, row.number, &value), 0);
            EXPECT_EQ(get(of, row.number, nullptr), 0);
            EXPECT_EQ(value, want);
        };
        Value initial{}, lowest{}, highest{};
        ASSERT_EQ(info(nullptr, row.number, &initial, &lowest, &highest), 0);
        EXPECT_EQ(info(nullptr, row.number, nullptr, nullptr, nullptr), 0);
        expect_value(model.lp, initial);
        for (const Value good : {lowest, highest}) {
            EXPECT_EQ(set(model.lp, row.number, good), 0);
            for (const Value beyond : {neighbour(lowest, -1), neighbour(highest, 1)})
                EXPECT_EQ(set(model.lp, row.number, beyond),
                          beyond < lowest || beyond > highest ? 2 : 0);
            EXPECT_EQ(set(model.lp, row.number, good), 0);
            expect_value(model.lp, good);
            expect_value(row.shared ? nullptr : other.lp, row.shared ? good : initial);
        }
        EXPECT_EQ(setdefaults(row.shared ? nullptr : model.lp), 0);
        expect_value(model.lp, initial);
    }
}

TEST(Parameters, start_at_their_defaults_and_stay_in_their_ranges)
{
    expect_kept_in_range(int_parameters(), infointparam, setintparam, getintparam);
    expect_kept_in_range(dbl_parameters(), infodblparam, setdblparam, getdblparam);
    const LoadedModel model(ANY);
    for (const auto& row : dbl_parameters())
        EXPECT_EQ(setdblparam(model.lp, row.number, std::nan("")), 2) << row.name;
}

TEST(Parameters, refusals_name_the_first_fault)
{
    const char* const unknown = "whichparam is out of range";
    const char* const bad = "newvalue is out of range";
    const MessageLog log;
    const LoadedModel model(ANY);
    Problem* const lp = model.lp;
    std::int32_t n = 0;
    double a = 0.0;
    expect_told(infointparam(lp, PARAM_FEASTOL, &n, &n, &n), 1, "infointparam", unknown);
    expect_told(infodblparam(lp, PARAM_SCALING, &a, &a, &a), 1, "infodblparam", unknown);
    expect_told(getintparam(lp, 0, &n), 1, "getintparam", unknown);
    expect_told(getdblparam(lp, -1, &a), 1, "getdblparam", unknown);
    expect_told(setintparam(lp, 991, 99), 1, "setintparam", unknown);
    expect_told(setdblparam(lp, 991, NAN), 1, "setdblparam", unknown);
    expect_told(setintparam(lp, PARAM_IISMETHOD, 2), 2, "setintparam", bad);
    expect_told(setdblparam(lp, PARAM_FEASTOL, 1e-3), 2, "setdblparam", bad);
}

TEST(SetDefaults, resets_the_model_or_the_process_and_says_nothing)
{
    const LoadedModel model(ANY);
    Problem foreign{};
    auto* const all_ones = reinterpret_cast<Problem*>(~std::uintptr_t{0});
    for (Problem* const lp : {model.lp, static_cast<Problem*>(nullptr), all_ones, &foreign}) {
        const MessageLog log;
        std::int32_t process_wide = -1, of_the_model = -1;
        EXPECT_EQ(setintparam(&foreign, PARAM_RESERVED997, 2), 0) << "which belongs to no model";
        setintparam(model.lp, PARAM_NODELIMIT, 5);
        EXPECT_EQ(setdefaults(lp), lp == &foreign ? 1 : 0);
        EXPECT_EQ(MessageLog::take().size(), lp == &foreign ? 1U : 0U);
        getintparam(nullptr, PARAM_RESERVED997, &process_wide);
        getintparam(model.lp, PARAM_NODELIMIT, &of_the_model);
        EXPECT_EQ(process_wide, lp ? 2 : 0);
        EXPECT_EQ(of_the_model, lp == model.lp ? INT32_MAX : 5);
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
