#include <gtest/gtest.h>

#include "tests/tools/toolrun.h"

namespace tarnwick {

namespace {

constexpr const char ITERATION_LIMIT[] = "STAT_ITERLIM_";

// clang-format off
constexpr struct {
    const char* name;
    const char* arguments;
    int status;
    const char* out;  // contained in what is written
    const char* err;
} LINES[] = {
    {"no command",                "",                                                2, "", "a command is needed"},
    {"no file",                   "solve",                                           2, "", "FILE is required"},
    {"help",                      "--help",                                          0, "Exit status:", ""},
    {"version",                   "--version",                                       0, "tarnwick 1.", ""},
    {"unknown format",            "solve production.txt -f xml",                     2, "", "text, csv or json, not 'xml'"},
    {"unknown parameter",         "solve production.txt --set SPEED=1",              2, "", "no parameter 'SPEED'"},
    {"name with its prefix",      "solve production.txt -q -s PARAM_ITERLIMIT=0",    1, ITERATION_LIMIT, ""},
    {"parameter by number",       "solve production.txt -q -s 1020=0",               1, ITERATION_LIMIT, ""},
    {"switches of the search",    "solve enigma.txt -q -s binrowfix=1 -s bintighten=1 -s binorder=1 -s bindualfix=1", 0, "objective  0\n", ""},
    {"parameter of the host's",   "solve production.txt -s OLEARRAYS=1",             2, "", "belongs to host programs"},
    {"no such file",              "solve missing.txt",                               2, "", "missing.txt: No such file"},
    {"device",                    "solve /dev/zero",                                 2, "", "/dev/zero: is no regular file"},
    {"output over the model",     "solve production.txt -o ./production.txt",        2, "", "would overwrite the model"},
    {"output to a full disk",     "solve production.txt -o /dev/full",               2, "", "/dev/full: No space left"},
    {"subset over the model",     "iis production.txt -o production.txt",            2, "", "would overwrite the model"},
    {"no subset to be found",     "iis production.txt",                              1, "outcome            feasible", ""},
    {"rewritten over the model",  "rewrite production.txt production.txt",           2, "", "would overwrite the model"},
    {"rewritten to nowhere",      "rewrite production.txt /no/where",                2, "", "/no/where: Unable to open output file"},
    {"standard output full",      "solve production.txt >/dev/full",                 2, "", "standard output: No space left"},
};
// clang-format on

}  // namespace

TEST(CommandLine, gives_each_line_its_status_and_its_texts)
{
    for (const auto& c : LINES) {
        SCOPED_TRACE(c.name);
        const ToolRun run = run_tool(c.arguments);
        EXPECT_EQ(run.status, c.status);
        EXPECT_NE(run.out.find(c.out), std::string::npos) << run.out;
        EXPECT_NE(run.err.find(c.err), std::string::npos) << run.err;
        EXPECT_EQ(run.err.empty(), c.status != 2) << run.err;
        EXPECT_EQ(run.out.empty(), c.status == 2) << run.out;
    }
}

TEST(CommandLine, manual_page_is_the_one_that_is_installed)
{
    EXPECT_EQ(run_tool("--print-man").out, content_of(TARNWICK_SOURCE_DIR "/docs/tarnwick.1"))
        << "print it anew with: tarnwick --print-man >docs/tarnwick.1";
}

}  // namespace tarnwick
