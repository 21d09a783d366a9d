// Small and middling dense LPs, of which some hosts solve thousands in a row, in the library and in
// other solvers. Each round solves the batch with one solver after the other, each in a process of
// its own: once to warm up, then five times, of which the median counts. What is timed is all that a
// host does for a model: load, solve, read the results, unload.
//
// Counters: microseconds and pivots for an LP with each solver. The table at the end holds them side
// by side, with the ratio of the fastest other solver to the library. A batch whose objectives do
// not sum to the known value fails, and so does the program.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>

#include "bench/contestant.h"
#include "bench/rounds.h"
#include "bench/smalllp.h"
#include "bench/worker.h"
#include "include/tarnwick.h"

namespace bench {

namespace {

// ---- the library, as a host uses it

Outcome solve_loaded(Problem* problem, Results& results)
{
    Outcome outcome;
    std::int32_t status = STAT_NONE;
    optimize(problem);
    solution(problem, &status, &outcome.objective, results.x.data(), results.duals.data(),
             results.slacks.data(), results.reducedcosts.data());
    getcallbackinfo(problem, nullptr, CB_ITERATIONS, &outcome.pivots);
    outcome.optimal = status == STAT_OPTIMAL;
    unloadprob(&problem);
    return outcome;
}

Outcome solve_columns(SmallLp& lp, Results& results) { return solve_loaded(load(lp), results); }

// The dense layout: the same matrix, and no indices at all.
Outcome solve_dense(SmallLp& lp, Results& results) { return solve_loaded(load_dense(lp), results); }

// ---- batches

struct Size {
    Batch batch;
    int rounds;
};

// clang-format off
constexpr Size SIZES[] = {
    {{  5, 2000, 9851.31001607}, 15},  // what a call costs; hardly any arithmetic
    {{ 10, 2000, 18818.9363455}, 15},  // the small model of a spreadsheet or a control loop
    {{ 20, 1000, 17939.1546700}, 15},  // a tableau of 4 kB, the largest part still set-up
    {{ 50,  300, 12651.1975642}, 11},  // 22 kB: in the nearest cache
    {{100,  100, 8133.58090616}, 11},  // 83 kB: in the second cache; pivots start to wait
    {{200,   20, 3089.60381002}, 11},  // 330 kB: still there, the pivots being most of the work
    {{500,    4, 1503.64973784},  5},  // 2 MB: beyond the second cache of most processors
};
// clang-format on

enum : std::size_t { LIBRARY, LIBRARY_DENSE, FIRST_PEER };

std::vector<Contestant> contestants()
{
    std::vector<Contestant> all = {
        {"Tarnwick",       solve_columns},
        {"Tarnwick dense", solve_dense  }
    };
    all.insert(all.end(), peers().begin(), peers().end());
    return all;
}

struct Sums {
    bool optimal = true;
    double objective = 0.0;
    int pivots = 0;
};

Sums solve_batch(SolveOne solve, std::vector<SmallLp>& lps, Results& results)
{
    Sums sums;
    for (SmallLp& lp : lps) {
        const Outcome outcome = solve(lp, results);
        sums.optimal = sums.optimal && outcome.optimal;
        sums.objective += outcome.objective;
        sums.pivots += outcome.pivots;
    }
    return sums;
}

// The library must give all digits of the check value; a peer, whose tolerances are its own, enough
// of them to have solved every LP.
bool is_right(const Sums& sums, std::size_t contestant, const Batch& batch)
{
    const double accuracy = contestant < FIRST_PEER ? 1e-9 : 1e-7;
    return sums.optimal &&
           std::fabs(sums.objective - batch.objectives) <= accuracy * batch.objectives;
}

struct Row {
    int n;
    std::vector<double> microseconds, pivots;  // for an LP, one for each contestant
    std::vector<double> ratios;                // of its time to the library's
};

std::vector<Row> table;
bool has_failed = false;

Row make_row(const Batch& batch, const Rounds& rounds, const std::vector<Sums>& sums)
{
    Row row{.n = batch.n, .microseconds = {}, .pivots = {}, .ratios = {}};
    for (std::size_t k = 0; k < sums.size(); ++k) {
        row.microseconds.push_back(rounds.median_of(k) / batch.count * 1e6);
        row.pivots.push_back(static_cast<double>(sums[k].pivots) / batch.count);
        row.ratios.push_back(rounds.ratio(k, LIBRARY));
    }
    return row;
}

// Of the fastest other solver; 0 if there is none.
double best_ratio(const Row& row)
{
    const auto first = row.ratios.begin() + FIRST_PEER;
    return first == row.ratios.end() ? 0.0 : *std::min_element(first, row.ratios.end());
}

void report(benchmark::State& state, const std::vector<Contestant>& all, const Row& row)
{
    for (std::size_t k = 0; k < all.size(); ++k) {
        const std::string name = all[k].name;
        state.counters[name + " us"] = row.microseconds[k];
        state.counters[name + " pivots"] = row.pivots[k];
    }
    state.counters["ratio"] = best_ratio(row);
}

constexpr int BATCHES = 5;

struct Answer {
    Sums sums;
    double seconds = 0.0;
};

std::unique_ptr<Worker<Answer>> start(const Contestant& contestant, const Batch& batch)
{
    return std::make_unique<Worker<Answer>>([&contestant, &batch] {
        return [lps = make_batch(batch), results = Results(batch.n),
                solve = contestant.solve]() mutable {
            // The others have had caches and branch predictors meanwhile.
            Answer answer{solve_batch(solve, lps, results), 0.0};
            Rounds batches(1);
            for (int k = 0; k < BATCHES; ++k)
                batches.time(0, [&] { answer.sums = solve_batch(solve, lps, results); });
            answer.seconds = batches.median_of(0);
            return answer;
        };
    });
}

void small_lps(benchmark::State& state, Size size)
{
    const Batch& batch = size.batch;
    const std::vector<Contestant> all = contestants();
    std::vector<std::unique_ptr<Worker<Answer>>> workers;
    std::vector<Sums> sums;
    Answer answer;

    for (const Contestant& each : all) {
        workers.push_back(start(each, batch));
        const bool has_answered = workers.back()->ask(answer);  // warms up
        sums.push_back(answer.sums);
        if (has_answered && is_right(answer.sums, sums.size() - 1, batch)) continue;
        has_failed = true;
        state.SkipWithError((std::string("wrong objectives: ") + each.name).c_str());
        return;
    }

    Rounds rounds(all.size());
    for (auto _ : state) {
        for (std::size_t k = 0; k < all.size(); ++k) {
            workers[k]->ask(answer);
            rounds.add(k, answer.seconds);
        }
        state.SetIterationTime(rounds.last(LIBRARY));
    }
    table.push_back(make_row(batch, rounds, sums));
    report(state, all, table.back());
}

void register_sizes()
{
    for (const Size& size : SIZES)
        benchmark::RegisterBenchmark(("small_lps/" + std::to_string(size.batch.n)).c_str(),
                                     small_lps, size)
            ->Iterations(size.rounds)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
}

void print_columns(const char* title, const std::vector<double> Row::*values)
{
    std::printf("\n%-9s", title);
    for (const Contestant& each : contestants()) std::printf("%16s", each.name);
    std::printf("\n");
    for (const Row& row : table) {
        std::printf("%4d     ", row.n);
        for (const double value : row.*values) std::printf("%16.2f", value);
        std::printf("\n");
    }
}

void print_table()
{
    print_columns("us", &Row::microseconds);
    print_columns("pivots", &Row::pivots);
    print_columns("ratio", &Row::ratios);
    if (peers().empty()) {
        std::printf("\nno other solver in this build\n");
        return;
    }
    std::printf("\nfastest other solver / Tarnwick:");
    for (const Row& row : table) std::printf("  %d: %.2f", row.n, best_ratio(row));
    std::printf("\n");
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    bench::register_sizes();
    benchmark::RunSpecifiedBenchmarks();
    bench::print_table();
    return bench::has_failed ? 1 : 0;
}
