#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <regex>

#include "tests/tools/toolrun.h"

namespace tarnwick {

namespace {

// section and field, then the values by name, of a report in CSV.
using Fields = std::map<std::string, std::map<std::string, double>>;

Fields numbers_of(const std::string& csv)
{
    static const std::regex RECORD("([^,\n]*),([^,\n]*),([^,\n]*),([^\n]*)");
    Fields fields;
    for (std::sregex_iterator it(csv.begin(), csv.end(), RECORD), end; it != end; ++it)
        fields[it->str(1) + '.' + it->str(3)][it->str(2)] =
            std::strtod(it->str(4).c_str(), nullptr);
    return fields;
}

// Judges whether a text is one JSON value and nothing more: strings become s, the other scalars v,
// and then each innermost object or array a v, until one is left. Strings are looked at by the byte.
bool is_json(std::string text)
{
    const auto put = [&](const char* pattern, const char* by) {
        text = std::regex_replace(text, std::regex(pattern), by);
    };
    put(R"("([^"\\\x01-\x1f]|\\(["\\/bfnrt]|u[0-9a-fA-F]{4}))*")", "s");
    put(R"(-?(0|[1-9][0-9]*)(\.[0-9]+)?([eE][+-]?[0-9]+)?|null|true|false)", "v");
    put("[ \n\r\t]+", "");
    for (std::string before; before != text;) {
        before = text;
        put("s:[sv]", "m");
        put(R"(\{(m(,m)*)?\}|\[([sv](,[sv])*)?\])", "v");
    }
    return text == "s" || text == "v";
}

double sum_of_products(const std::map<std::string, double>& a,
                       const std::map<std::string, double>& b)
{
    double sum = 0.0;
    for (const auto& [name, value] : a) sum += value * b.at(name);
    return sum;
}

struct Example {
    const char* file;
    double optimum;
    std::size_t variables, rows;
};

// The collection's optima; the brewery's is found by hand where corn and hops are used up.
constexpr Example EXAMPLES[] = {
    {"afiro.txt",      -464.753142857, 32, 27},
    {"sc50a.txt",      -64.5750770586, 48, 50},
    {"blend.txt",      -30.8121498458, 83, 74},
    {"production.txt", 800.0,          2,  3 },
};

constexpr const char INFEASIBLE[] =
    "Minimize\n x1\nSubject To\n c1: x1 >= 5\nBounds\n 0 <= x1 <= 4\nEnd\n";
// x + x^2 is least at -1/2.
constexpr const char QUADRATIC[] =
    "Minimize\n x1 + [ x1^2 ]\nSubject To\n c1: x1 >= -5\nBounds\n -4 <= x1 <= 4\nEnd\n";

}  // namespace

// A reduced cost that is not 0 belongs to a variable at a bound, so its value stands for the bound:
// the dual objective is the sum of dual times right-hand side and of reduced cost times value.
TEST(Report, every_example_has_its_optimum_and_the_duals_to_prove_it)
{
    for (const auto& c : EXAMPLES) {
        SCOPED_TRACE(c.file);
        const ToolRun run = run_tool(std::string("solve --sensitivity -f csv ") + c.file);
        EXPECT_EQ(run.status, 0) << run.err;
        Fields fields = numbers_of(run.out);
        EXPECT_EQ(fields["result.status"][""], 1);
        EXPECT_NEAR(fields["result.objective"][""], c.optimum, 1e-6 * std::fabs(c.optimum));
        ASSERT_EQ(fields["variables.reduced_cost"].size(), c.variables);
        ASSERT_EQ(fields["rows.dual"].size(), c.rows);
        EXPECT_NEAR(
            sum_of_products(fields["rows.dual"], fields["rhs_ranges.rhs"]) +
                sum_of_products(fields["variables.reduced_cost"], fields["variables.value"]),
            c.optimum, 1e-6 * std::fabs(c.optimum));
    }
}

TEST(Report, json_is_valid_whatever_has_no_number)
{
    const Scratch scratch;
    const std::string infeasible = scratch.write("model.txt", INFEASIBLE);
    const std::string awkward = scratch.write("\"quote\\ \t\n\xff\xc3\xa4.txt", INFEASIBLE);
    struct {
        const char* name;
        std::string arguments;
        const char* member;
    } const cases[] = {
        {"optimum with ranges",     "solve afiro.txt --sensitivity",      "\"status\": 1"                                },
        {"infinite range",          "solve production.txt --sensitivity", "\"upper\": null}"                             },
        {"no point",                "solve " + infeasible,                "\"objective\": null"                          },
        {"no more than the status", "solve -q " + infeasible,             "\"status\": 2"                                },
        {"awkward name",            "solve '" + awkward + '\'',
         "\\\"quote\\\\ \\u0009\\u000a\\ufffd\xc3\xa4.txt\""                                                             },
        {"description",             "info afiro.txt",                     "\"nonzeros\": 83"                             },
        {"parameters",              "params",                             "\"name\": \"PARAM_FEASTOL\", \"number\": 1016"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string out = run_tool(c.arguments + " --format json").out;
        EXPECT_TRUE(is_json(out)) << out;
        EXPECT_NE(out.find(c.member), std::string::npos) << out;
    }
}

TEST(Report, csv_puts_a_name_with_commas_and_quotes_into_quotes)
{
    const Scratch scratch;
    const std::string file = scratch.write("a,\"b\".txt", INFEASIBLE);
    const std::string report = scratch.path("report");
    EXPECT_EQ(run_tool("solve -f csv --output " + report + " '" + file + '\'').out, "");
    const std::string out = content_of(report);
    EXPECT_NE(out.find("a,\"\"b\"\".txt\"\nmodel,,sense"), std::string::npos) << out;
}

TEST(Report, a_quadratic_model_has_its_optimum)
{
    const Scratch scratch;
    const ToolRun run = run_tool("solve --quiet " + scratch.write("model.txt", QUADRATIC));
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("objective  -0.25\n"), std::string::npos) << run.out;
}

// The program that the documentation shows is the one among the examples.
TEST(Report, readme_shows_the_example_as_it_is)
{
    const std::string readme = content_of(TARNWICK_SOURCE_DIR "/README.md");
    for (const char* file : {"production.c", "production.txt"})
        EXPECT_NE(
            readme.find(content_of(std::string(TARNWICK_SOURCE_DIR "/examples/") + file) + "```\n"),
            std::string::npos)
            << file;
}

}  // namespace tarnwick
