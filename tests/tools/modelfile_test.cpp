#include <gtest/gtest.h>

#include <regex>
#include <vector>

#include "tests/tools/toolrun.h"

namespace tarnwick {

namespace {

constexpr const char ROWS[] = "Minimize\n obj: x1\nSubject To\n";
constexpr const char BOUNDS[] = " c1: x1 >= 1\nBounds\n";
constexpr const char END[] = " 0 <= x1 <= 4\nEnd\n";

struct BadFile {
    const char* name;
    std::string text;
    const char* message;  // behind the name of the file
};

std::vector<BadFile> bad_files()
{
    const std::string rows = ROWS, bounds = rows + BOUNDS, full = bounds + END;
    const std::string long_row = " c1:" + std::string(245, ' ') + "x1 >= 1\n";
    const std::string crlf =
        std::regex_replace(bounds + " 0 <= x1 <= 4 5\nEnd\n", std::regex("\n"), "\r\n");
    // clang-format off
    return {
        {"nothing in it", "", ": the file is empty"},
            {"no objective", "Minimize", ": error reading objective: Error reading input line (the file ends too early)"},
                {"wrong bound, carriage returns", crlf, ":6: error reading beyond bound"},
        {"wrong quadratic term, two lines down", "Minimize\n obj: [ x1^2\n + x1*x2\n + x1 ]\n" + full, ":4: error reading quadratic objective"},
        {"longest line and one more", rows + long_row + BOUNDS + END, ":4: error reading input line (the line is longer than 249 characters)"},
        {"empty line", rows + " c1: x1 >= 1\n\nBounds\n" + END, ":5: missing constraint name (the line is empty)"},
        {"variable beyond the limit", "Minimize\n obj: x2001\nSubject To\nBounds\nEnd\n", ": too many variables: they go up to x2001, the limit is 2000"},
            {"row beyond the limit", rows + " c8193: x1 >= 1\n" + BOUNDS + END, ": too many rows: they go up to c8193, the limit is 8192"},
        {"no variables", "Minimize\nSubject To\nBounds\nEnd\n", ": the model has no variables"},
        {"more terms than rows", rows + " c1: x1 + x1 >= 1\nBounds\n" + END, ": x1 has 2 row terms, with room for 1: some are repeated"},
    };
    // clang-format on
}

}  // namespace

TEST(ModelFile, a_bad_one_is_refused_by_name_line_and_reason)
{
    const Scratch scratch;
    for (const auto& c : bad_files()) {
        SCOPED_TRACE(c.name);
        const std::string file = scratch.write("model.txt", c.text);
        const ToolRun run = run_tool("solve " + file);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.err, file + c.message + '\n');
    }
}

TEST(ModelFile, info_counts_what_the_file_holds)
{
    const Scratch scratch;
    const std::string file = scratch.write(
        "model.txt",
        "Maximize\n obj: x1 + [ x1^2 + 4 x1*x2 ]\nSubject To\n c1: x1 + x2 <= 4\n"
        " c2: x1 = 1\n c4: x1 + x3 >= 1\nBounds\n 0 <= x1 <= 1\n -infinity <= x2 <= 4\n"
        " 2 <= x3 <= 2\n 3 <= x4 <= 2\n 0 <= x6 <= +infinity\nIntegers\n x1\n x3\nEnd\n");
    const std::string out = run_tool("info --format csv " + file).out;
    // clang-format off
    for (const char* record : {
             "model,,sense,maximise", "model,,rows,4", "model,,variables,6",
             "model,,nonzeros,5", "model,,integers,2", "model,,quadratic_nonzeros,3",
             "model,,density,0.20833333333333334", "row_kinds,,less_or_equal,1", "row_kinds,,equal,2",
             "row_kinds,,greater_or_equal,1", "row_kinds,,empty,1", "bound_kinds,,none,1",
             "bound_kinds,,lower,1", "bound_kinds,,upper,1", "bound_kinds,,both,1",
             "bound_kinds,,fixed,1", "bound_kinds,,crossed,1", "variable_kinds,,continuous,4",
             "variable_kinds,,binary,1", "variable_kinds,,integer,1", "variable_kinds,,in_objective,2",
             "variable_kinds,,without_row,3",
         })
        // clang-format on
        EXPECT_NE(out.find(record + std::string("\n")), std::string::npos) << record << '\n' << out;
}

// x1 + x2 >= 5 against x1 <= 4 and x2 <= 0.5; neither x1 >= 0 nor another row is needed for that.
TEST(ModelFile, iis_lists_and_writes_what_contradicts)
{
    const Scratch scratch;
    const std::string file = scratch.write(
        "model.txt", "Minimize\n x1\nSubject To\n c1: x1 + x2 >= 5\n c2: 2 x1 - x2 <= 99\n"
                     "Bounds\n 0 <= x1 <= 4\n 0 <= x2 <= 0.5\n 0 <= x3 <= 1\nIntegers\n x1\nEnd\n");
    const std::string subset = scratch.path("subset.txt");
    for (const bool filters_rows_only : {false, true}) {
        const std::string zero = filters_rows_only ? "0" : "";
        const ToolRun run =
            run_tool(std::string("iis -f csv ") + (filters_rows_only ? "--rows-only " : "") + file +
                     " -o " + subset);
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_TRUE(run.out.ends_with("subset_rows,c1,row,x1 + x2 >= 5\nsubset_bounds,x1,lower," +
                                      zero + "\nsubset_bounds,x1,upper,4\nsubset_bounds,x2,lower," +
                                      zero + "\nsubset_bounds,x2,upper,0.5\n"))
            << run.out;
    }
    EXPECT_EQ(run_tool("solve -q " + subset).out.find("status     2 "), 0U);

    const std::string crossed = std::string(ROWS) + BOUNDS + " 3 <= x1 <= 2\nEnd\n";
    EXPECT_TRUE(run_tool("iis -f csv " + scratch.write("crossed.txt", crossed))
                    .out.ends_with("subset_bounds,x1,lower,3\nsubset_bounds,x1,upper,2\n"));
}

TEST(ModelFile, rewriting_keeps_the_model_and_counts_what_it_rounds)
{
    const Scratch scratch;
    const std::string file =
        scratch.write("model.txt", "Maximize\n x2 + [ - x1^2 + 0.000001 x1*x2 ]\nSubject To\n c2: "
                                   "0.1 x1 + 0.1234567 x2 <= 2e10\n"
                                   "Bounds\n 0 <= x1 <= 1e-9\nIntegers\n x2\nEnd\n");
    const std::string first = scratch.path("first"), second = scratch.path("second");
    const ToolRun run = run_tool("rewrite " + file + ' ' + first);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, first + ": rounded to six decimals: 2 of the numbers\n");
    EXPECT_EQ(run_tool("rewrite " + first + ' ' + second).err, "");
    EXPECT_EQ(content_of(first), content_of(second));
    EXPECT_EQ(
        content_of(first),
        "Maximize QP/MIP\r\n  obj: x2\r\n       + [  - x1^2 + 0.000001 x1*x2\r\n       "
        "]\r\nSubject To\r\n"
        "  c1:   = 0.0\r\n  c2:  0.1 x1 + 0.123457 x2 <= 20000000000.0\r\nBounds\r\n"
        "  0.0 <= x1 <= 0.0\r\n  -infinity <= x2 <= +infinity\r\nIntegers\r\n  x2\r\nEnd\r\n");
}

}  // namespace tarnwick
