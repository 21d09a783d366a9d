// What branch and bound adds to the solves of its nodes. A model with 0-1 variables is searched for a
// given number of nodes, and each solve of the search is then done once more on its own: the same
// bounds and the same point, in an engine that has just been set up. The two take turns.
//
// Counters: nodes in a second; microseconds and pivots for a solve; microseconds for the cold solve
// (lpsolve alone, without set-up); ratio, the whole search to the sum of its cold solves.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "bench/enginerun.h"
#include "bench/rounds.h"

namespace bench {

namespace {

using tarnwick::SolveRun;

constexpr int COLUMNS = 50, ROWS = 20;  // a tableau that lies in the nearest cache
constexpr int NODES = 800;              // of a search that would go on
constexpr int ROUNDS = 31;
constexpr int GROUP = 16;  // engines at a time: they fit into the second cache

// Knapsacks with common items: weights of 5 to 60, room for a third of them all, and a profit near
// the weights.
struct Knapsacks {
    std::vector<double> profit, room, weight, lower, upper;
    std::vector<char> sense, ctype;
    Problem* lp = nullptr;

    Knapsacks() : lower(COLUMNS, 0.0), upper(COLUMNS, 1.0), sense(ROWS, 'L'), ctype(COLUMNS, 'B')
    {
        std::mt19937 bits(50);
        const auto draw = [&bits](unsigned low, unsigned high) {
            return static_cast<double>(low + bits() % (high - low + 1));
        };
        room.assign(ROWS, 0.0);
        for (int j = 0; j < COLUMNS; ++j) {
            double sum = 0.0;
            for (double& of_row : room) {
                weight.push_back(draw(5, 60));
                of_row += weight.back() / 3.0;
                sum += weight.back();
            }
            profit.push_back(sum / ROWS + draw(0, 20));
        }
        lp = loadlp("knapsacks", COLUMNS, ROWS, -1, profit.data(), room.data(), sense.data(),
                    nullptr, nullptr, nullptr, weight.data(), lower.data(), upper.data(), nullptr,
                    0, 0, COLUMNS * ROWS);
        loadctype(lp, ctype.data());
        setintparam(lp, PARAM_NODELIMIT, NODES);
        mipoptimize(lp);
    }
    ~Knapsacks() { unloadprob(&lp); }
    Knapsacks(const Knapsacks&) = delete;
    Knapsacks& operator=(const Knapsacks&) = delete;
};

// What a solve starts from.
struct Start {
    std::vector<double> lower, upper, x;
};
std::vector<Start> starts;
std::int64_t pivots = 0;

std::int32_t TARNWICK_CALL noting_solve(SolveRun& run) noexcept
{
    const auto copy = [&run](const double* values) {
        return std::vector<double>(values, values + run.numvars);
    };
    starts.push_back({copy(run.lb), copy(run.ub), copy(run.x)});
    const std::int32_t result = tarnwick::lpsolve(run);
    pivots += engine_of(run).iterations;
    return result;
}

// From the end of set-up to the beginning of the finish lies the strategy.
double search_began, search_ended;

std::int32_t TARNWICK_CALL init_then_clock(SolveRun& run) noexcept
{
    const std::int32_t result = tarnwick::lpinit(run);
    search_began = processor_seconds();
    return result;
}

std::int32_t TARNWICK_CALL clock_then_finish(SolveRun& run) noexcept
{
    search_ended = processor_seconds();
    return tarnwick::lpfinish(run);
}

void prepare(SolveRun& run, tarnwick::SolveControl& control, const Start& start)
{
    run.control = &control;
    run.flags = tarnwick::RUN_DIRECT;
    tarnwick::lpinit(run);
    std::copy(start.lower.begin(), start.lower.end(), run.lb);
    std::copy(start.upper.begin(), start.upper.end(), run.ub);
    std::copy(start.x.begin(), start.x.end(), run.x);
}

double cold_solves(tarnwick::SolveControl& control)
{
    tarnwick::beginrun(&control, 0);  // the node limit has left its stop behind
    double seconds = 0.0;
    for (std::size_t first = 0; first < starts.size(); first += GROUP) {
        const std::size_t count = std::min<std::size_t>(GROUP, starts.size() - first);
        SolveRun runs[GROUP]{};
        for (std::size_t k = 0; k < count; ++k) prepare(runs[k], control, starts[first + k]);
        const double began = processor_seconds();
        for (std::size_t k = 0; k < count; ++k) tarnwick::lpsolve(runs[k]);
        seconds += processor_seconds() - began;
        for (std::size_t k = 0; k < count; ++k) tarnwick::lpfinish(runs[k]);
    }
    return seconds;
}

enum : std::size_t { SEARCH, COLD };

void nodes(benchmark::State& state)
{
    const Knapsacks model;
    model.lp->nodes = 0;  // the counters are optimize()'s business
    run_entries(model.lp, tarnwick::lpinit, noting_solve, tarnwick::lpfinish);
    Rounds rounds(2);
    for (auto _ : state) {
        model.lp->nodes = 0;
        run_entries(model.lp, init_then_clock, tarnwick::lpsolve, clock_then_finish);
        rounds.add(SEARCH, search_ended - search_began);
        rounds.add(COLD, cold_solves(model.lp->control));
        state.SetIterationTime(rounds.last(SEARCH));
    }
    const auto solves = static_cast<double>(starts.size());
    state.counters["nodes/s"] = NODES / rounds.median_of(SEARCH);
    state.counters["us"] = rounds.median_of(SEARCH) / solves * 1e6;
    state.counters["cold us"] = rounds.median_of(COLD) / solves * 1e6;
    state.counters["pivots"] = static_cast<double>(pivots) / solves;
    state.counters["solves"] = solves;
    state.counters["ratio"] = rounds.ratio(SEARCH, COLD);
}

BENCHMARK(nodes)->Iterations(ROUNDS)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace

}  // namespace bench

BENCHMARK_MAIN();
