#include "tools/progress.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
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
constexpr std::int32_t NODE_EVENT = 101;

// The library's callbacks carry no data of the host's.
struct State {
    bool shows_progress = false;
    bool has_line = false;  // something is on the terminal
    Clock::time_point start, last_update;
    std::optional<double> bound;  // of the objective with integer variables
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

std::string simplex_line(Problem* lp)
{
    const bool is_feasible = counter<std::int32_t>(lp, CB_FEASIBLE) != 0;
    return fmt::format("{} iterations, {} {:.9g}", all_iterations(lp),
                       is_feasible ? "objective" : "infeasibility",
                       counter<double>(lp, is_feasible ? CB_OBJECTIVE : CB_INFEASIBILITY));
}

// An objective of 0 can't be told from no integer solution at all.
std::string search_line(Problem* lp, std::int32_t nodes)
{
    std::string line = fmt::format("{} nodes, ", nodes);
    const auto best = counter<double>(lp, CB_BESTINTEGER);
    const std::optional<double>& bound = state().bound;
    if (best != 0.0) line += fmt::format("best {:.9g}, ", best);
    if (bound) line += fmt::format("bound {:.9g}, ", *bound);
    if (bound && best != 0.0)
        line += fmt::format("gap {:.2f}%, ",
                            100.0 * std::fabs(best - *bound) / (std::fabs(*bound) + 1.0));
    return line + fmt::format("{} iterations", all_iterations(lp));
}

std::string line_of(Problem* lp, Clock::duration elapsed)
{
    const auto nodes = counter<std::int32_t>(lp, CB_NODES);
    const std::string line = nodes > 0 ? search_line(lp, nodes) : simplex_line(lp);
    return fmt::format("{}, {:.1f} s", line, std::chrono::duration<double>(elapsed).count());
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

// The first node comes straight after the relaxation. Without an iteration it left no objective.
void note_bound(Problem* lp)
{
    if (counter<std::int32_t>(lp, CB_NODES) == 1 && all_iterations(lp) > 0)
        state().bound = counter<double>(lp, CB_OBJECTIVE);
}

std::int32_t TARNWICK_CALL on_report(Problem* lp, std::int32_t event)
{
    if (interrupted) return STOP;
    if (event == NODE_EVENT) note_bound(lp);
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
