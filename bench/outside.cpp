// How much of the road from loadlp to unloadprob is not the simplex. The engine's entries are timed
// inside runs that are otherwise those of optimize(); whole runs, and runs that are cut up, take turns.
// Reading is a large part of it, so that both layouts of the matrix are measured: columns with
// indices, and dense.
//
// Counters, shares of the whole: init (reading, probing and scaling the model), simplex, check (the
// rest of the solve: scaling of the point, the answer held against an evaluation), finish (duals,
// ranges, results, release), host (load, driver, reading the results, unload), and outside, all but
// the simplex. Also the microseconds and pivots for an LP.

#include <benchmark/benchmark.h>

#include <cmath>
#include <iterator>
#include <string>
#include <vector>

#include "bench/enginerun.h"
#include "bench/rounds.h"
#include "bench/smalllp.h"
#include "linear/scaling.h"
#include "linear/simplex.h"

namespace bench {

namespace {

using tarnwick::LpEngine;
using tarnwick::SolveRun;

using Load = Problem* (*)(SmallLp&);

struct Size {
    Batch batch;
    int rounds;
};

// clang-format off
constexpr Size SIZES[] = {
    {{ 50, 300, 12651.1975642}, 31},  // where set-up and analysis still weigh as much as the pivots
    {{200,  20, 3089.60381002}, 61},  // the size for which the share is to be below a quarter
    {{500,   4, 1503.64973784}, 31},  // the share must go on falling
};
// clang-format on

enum : std::size_t { WHOLE, INIT, SOLVE, SIMPLEX, FINISH, PARTS };

// The seconds of each part in this round, and the work done. The entries are called through the
// driver, which takes no further argument.
double seconds[PARTS];
std::int64_t pivots;

template <std::size_t PART, tarnwick::EngineEntry ENTRY>
std::int32_t TARNWICK_CALL timed(SolveRun& run) noexcept
{
    const double start = processor_seconds();
    const std::int32_t result = ENTRY(run);
    seconds[PART] += processor_seconds() - start;
    return result;
}

// As lpsolve, with no check of the answer.
std::int32_t TARNWICK_CALL timed_simplex(SolveRun& run) noexcept
{
    LpEngine& lp = engine_of(run);
    tarnwick::scalecolumns(lp, {lp.x, lp.lower, lp.upper});
    const double start = processor_seconds();
    run.result = tarnwick::solvesimplex(lp);
    seconds[SIMPLEX] += processor_seconds() - start;
    pivots += lp.iterations;
    tarnwick::unscalecolumns(lp, {lp.x, lp.lower, lp.upper});
    return 1;
}

// The whole road; gives the objective.
double solve_whole(SmallLp& lp, Load load_it)
{
    const auto n = static_cast<std::size_t>(lp.n);
    static std::vector<double> x, duals, slacks, reducedcosts;
    for (auto* values : {&x, &duals, &slacks, &reducedcosts}) values->resize(n);
    double objective = 0.0;
    std::int32_t status = STAT_NONE;

    const double start = processor_seconds();
    Problem* problem = load_it(lp);
    optimize(problem);
    solution(problem, &status, &objective, x.data(), duals.data(), slacks.data(),
             reducedcosts.data());
    unloadprob(&problem);
    seconds[WHOLE] += processor_seconds() - start;
    return objective;
}

void solve_in_parts(SmallLp& lp, Load load_it)
{
    using namespace tarnwick;
    Problem* problem = load_it(lp);
    optimize(problem);
    run_entries(problem, timed<INIT, lpinit>, timed<SOLVE, lpsolve>, timed<FINISH, lpfinish>);
    run_entries(problem, lpinit, timed_simplex, lpfinish);
    unloadprob(&problem);
}

// False: a wrong answer.
bool run_round(const Batch& batch, Load load_it, std::vector<SmallLp>& lps, Rounds& rounds)
{
    std::fill(std::begin(seconds), std::end(seconds), 0.0);
    pivots = 0;
    double objectives = 0.0;
    for (SmallLp& lp : lps) {
        objectives += solve_whole(lp, load_it);
        solve_in_parts(lp, load_it);
    }
    for (std::size_t part = 0; part < PARTS; ++part) rounds.add(part, seconds[part]);
    return std::fabs(objectives - batch.objectives) <= 1e-9 * batch.objectives;
}

void report(benchmark::State& state, const Batch& batch, const Rounds& rounds)
{
    const auto share = [&rounds](std::size_t part) { return rounds.ratio(part, WHOLE); };
    state.counters["us"] = rounds.median_of(WHOLE) / batch.count * 1e6;
    state.counters["pivots"] = static_cast<double>(pivots) / batch.count;
    state.counters["init"] = share(INIT);
    state.counters["simplex"] = share(SIMPLEX);
    state.counters["check"] = share(SOLVE) - share(SIMPLEX);
    state.counters["finish"] = share(FINISH);
    state.counters["host"] = 1.0 - share(INIT) - share(SOLVE) - share(FINISH);
    state.counters["outside"] = 1.0 - share(SIMPLEX);
}

void outside(benchmark::State& state, Size size, Load load_it)
{
    const Batch& batch = size.batch;
    std::vector<SmallLp> lps = make_batch(batch);
    Rounds first(PARTS), rounds(PARTS);
    if (!run_round(batch, load_it, lps, first))
        state.SkipWithError("wrong objectives");  // warms up
    for (auto _ : state) {
        run_round(batch, load_it, lps, rounds);
        state.SetIterationTime(rounds.last(WHOLE));
    }
    report(state, batch, rounds);
}

void register_layout(const char* layout, Load load_it)
{
    for (const Size& size : SIZES) {
        const std::string name = "outside/" + std::to_string(size.batch.n) + "/" + layout;
        benchmark::RegisterBenchmark(name.c_str(), outside, size, load_it)
            ->Iterations(size.rounds)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    }
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    bench::register_layout("columns", bench::load);
    bench::register_layout("dense", bench::load_dense);
    benchmark::RunSpecifiedBenchmarks();
}
