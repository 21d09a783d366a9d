#include <gtest/gtest.h>

#include <csignal>
#include <pty.h>
#include <sstream>
#include <unistd.h>

#include "tests/tools/toolrun.h"

namespace tarnwick {

namespace {

// A covering model that takes the simplex some seconds.
std::string slow_model()
{
    constexpr std::int64_t COLUMNS = 2000, ROWS = 8000;
    std::ostringstream objective, rows, bounds;
    for (std::int64_t j = 0; j < COLUMNS; ++j) {
        objective << " + " << 1 + j * 7919 % 101 << " x" << j + 1 << '\n';
        bounds << " 0 <= x" << j + 1 << " <= 1000\n";
    }
    for (std::int64_t i = 1; i <= ROWS; ++i)
        rows << " c" << i << ": x" << 1 + i * 7 % COLUMNS << " + x" << 1 + i * i * 13 % COLUMNS
             << " + x" << 1 + i * i * i % COLUMNS * 17 % COLUMNS << " >= " << 1 + i % 5 << '\n';
    return "Minimize\n" + objective.str() + "Subject To\n" + rows.str() + "Bounds\n" +
           bounds.str() + "End\n";
}

// Runs the tool on a terminal and interrupts it when the first line of progress has come. Both
// output streams come as one. Status -2: the machine has no terminal to give.
ToolRun run_and_interrupt(const std::string& file)
{
    ToolRun run;
    int terminal = -1, ended = 0;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        setenv("TERM", "xterm", 1);
        execl(TARNWICK_TOOL, "tarnwick", "solve", file.c_str(), "-s", "timelimit=60", nullptr);
        _exit(127);
    }
    run.status = -2;
    if (child < 0) return run;

    bool has_interrupted = false;
    char text[4096];
    for (ssize_t count = 0; (count = read(terminal, text, sizeof text)) > 0;) {
        run.out.append(text, static_cast<std::size_t>(count));
        if (has_interrupted || run.out.find(" iterations, ") == std::string::npos) continue;
        has_interrupted = kill(child, SIGINT) == 0;
    }
    waitpid(child, &ended, 0);
    close(terminal);
    run.status = WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
    return run;
}

}  // namespace

TEST(Terminal, an_interrupt_ends_the_progress_and_reports_the_point_so_far)
{
    const Scratch scratch;
    const ToolRun run = run_and_interrupt(scratch.write("model.txt", slow_model()));
    if (run.status == -2) GTEST_SKIP() << "no pseudo-terminal here";
    EXPECT_EQ(run.status, 1);
    const std::size_t cleared = run.out.rfind("\r\033[K");
    ASSERT_NE(cleared, std::string::npos);
    const std::string report = run.out.substr(cleared);
    EXPECT_NE(report.find("STAT_USERSTOP_"), std::string::npos) << report.substr(0, 400);
    EXPECT_NE(report.find("\r\nVariables"), std::string::npos) << report.substr(0, 400);
    EXPECT_EQ(report.find(" iterations, "), std::string::npos);
}

}  // namespace tarnwick
