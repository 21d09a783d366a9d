#include "tools/progress.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <unistd.h>

#include <fmt/format.h>

#include "tools/counters.h"

namespace tarnwick::tool {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto BETWEEN_UPDATES = std::chrono::milliseconds(100);
constexpr const char CLEAR_LINE[] = "\r\033[K";
constexpr std::int32_t GO_ON = 0, STOP = 1;

// The library's callbacks carry no data of the host's.
struct State {
    bool shows_progress = false;
    bool has_line = false;  // something is on the terminal
    Clock::time_point start, last_update;
    struct sigaction old_action {};
};

State& state()
{
    static State only;
    return only;
}

volatile std::sig_atomic_t interrupted = 0;

void note_interrupt(int) { interrupted = 1; }

// ---- the line

bool is_terminal()
{
    const char* const kind = std::getenv("TERM");
    return ::isatty(STDERR_FILENO) != 0 && kind && std::string_view(kind) != "dumb";
}

std::string line_of(Problem* lp, Clock::duration elapsed)
{
    const bool is_feasible = counter<std::int32_t>(lp, CB_FEASIBLE) != 0;
    std::string line =
        fmt::format("{} iterations, {} {:.9g}, {:.1f} s", all_iterations(lp),
                    is_feasible ? "objective" : "infeasibility",
                    counter<double>(lp, is_feasible ? CB_OBJECTIVE : CB_INFEASIBILITY),
                    std::chrono::duration<double>(elapsed).count());
    if (const auto nodes = counter<std::int32_t>(lp, CB_NODES))
        line = fmt::format("{} nodes, {}", nodes, line);
    return line;
}

void update_line(Problem* lp)
{
    const Clock::time_point now = Clock::now();
    if (now - state().last_update < BETWEEN_UPDATES) return;
    state().last_update = now;
    state().has_line = true;
    const std::string line = CLEAR_LINE + line_of(lp, now - state().start);
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
}

std::int32_t TARNWICK_CALL on_report(Problem* lp, std::int32_t)
{
    if (interrupted) return STOP;
    if (state().shows_progress) update_line(lp);
    return GO_ON;
}

// ---- interrupts

// An interrupt that whoever started the tool wants ignored stays so. The next one after a stop has
// its usual effect.
void catch_interrupts()
{
    interrupted = 0;
    ::sigaction(SIGINT, nullptr, &state().old_action);
    if (state().old_action.sa_handler == SIG_IGN) return;
    struct sigaction action {};
    action.sa_handler = note_interrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(SIGINT, &action, nullptr);
}

}  // namespace

Watch::Watch(Problem* lp, bool shows_progress)
{
    const Clock::time_point now = Clock::now();
    state() = {};
    state().shows_progress = shows_progress && is_terminal();
    state().start = state().last_update = now;
    catch_interrupts();
    setlpcallbackfunc(lp, on_report);
    setmipcallbackfunc(lp, on_report);
}

Watch::~Watch()
{
    ::sigaction(SIGINT, &state().old_action, nullptr);
    if (state().has_line) std::fputs(CLEAR_LINE, stderr);
}

}  // namespace tarnwick::tool
