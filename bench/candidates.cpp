// What the search through a non-smooth model costs beside the host's function: the time of a run,
// divided by the candidates that the function was asked for, less the time of the function itself.
// The function sums the coordinates above 0 and gives one row; runs end at a fixed number of
// crossovers, on populations that are the smallest in use, the default for many variables, and a
// large one.
//
// Counters: nanoseconds for a candidate, those of them in the function, and evaluations of a run.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/rounds.h"
#include "include/tarnwick.h"

namespace bench {

namespace {

long evaluations = 0;

std::int32_t TARNWICK_CALL evaluate(Problem*, std::int32_t numcols, std::int32_t, double* objval,
                                    double* lhs, double* var, std::int32_t, std::int32_t)
{
    ++evaluations;
    double sum = 0.0;
    for (std::int32_t j = 0; j < numcols; ++j) sum += var[j] > 0.0 ? var[j] : 0.5 * var[j];
    *objval = sum;
    lhs[0] = var[0];
    return 0;
}

struct Size {
    std::int32_t variables, popsize, crossovers, rounds;
};

// clang-format off
constexpr Size SIZES[] = {
    {  2,   20, 30000, 21},
    {  2,  200, 30000, 21},
    {  2, 1000, 30000, 21},
    { 30,   20, 20000, 21},
    { 30,  200, 20000, 21},
    { 30, 1000, 20000, 21},
    {400,   20,  5000, 11},
    {400,  200,  5000, 11},
    {400, 1000,  5000, 11},
};
// clang-format on

// A model of one row that cuts half of the box off.
struct Model {
    std::vector<double> obj, rhs{0.0}, matval, start, lower, upper;
    std::vector<char> sense{'L'};
    Problem* lp = nullptr;

    explicit Model(const Size& size)
        : obj(static_cast<std::size_t>(size.variables)), matval(obj.size()),
          start(obj.size(), -3.0), lower(obj.size(), -10.0), upper(obj.size(), 10.0)
    {
        lp = loadnlp("candidates", size.variables, 1, 1, obj.data(), rhs.data(), sense.data(),
                     nullptr, nullptr, nullptr, matval.data(), start.data(), lower.data(),
                     upper.data(), nullptr, size.variables, evaluate, nullptr);
        loadnltype(lp, nullptr, nullptr);
        setintparam(lp, PARAM_NSPPOPSIZE, size.popsize);
        setintparam(lp, PARAM_NODELIMIT, size.crossovers);
        setdblparam(lp, PARAM_NLPCONVTOL, 0.0);
    }
    ~Model() { unloadprob(&lp); }
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;
};

double time_of_function(Model& model, long calls)
{
    double objective = 0.0, row = 0.0;
    const auto numcols = static_cast<std::int32_t>(model.start.size());
    const double before = processor_seconds();
    for (long k = 0; k < calls; ++k) {
        evaluate(model.lp, numcols, 1, &objective, &row, model.start.data(), -1, -1);
        benchmark::DoNotOptimize(objective);
    }
    return processor_seconds() - before;
}

void candidates(benchmark::State& state, Size size)
{
    Model model(size);
    optimize(model.lp);  // warms up
    std::vector<double> whole, function;
    for (auto _ : state) {
        evaluations = 0;
        const double before = processor_seconds();
        optimize(model.lp);
        const double seconds = processor_seconds() - before;
        const long calls = evaluations;
        whole.push_back(seconds / static_cast<double>(calls) * 1e9);
        function.push_back(time_of_function(model, calls) / static_cast<double>(calls) * 1e9);
        state.SetIterationTime(seconds);
        state.counters["evaluations"] = static_cast<double>(calls);
    }
    state.counters["ns_candidate"] = median(whole) - median(function);
    state.counters["ns_function"] = median(function);
}

void register_sizes()
{
    for (const Size& size : SIZES)
        benchmark::RegisterBenchmark(
            ("candidates/" + std::to_string(size.variables) + "/" + std::to_string(size.popsize))
                .c_str(),
            candidates, size)
            ->Iterations(size.rounds)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    bench::register_sizes();
    benchmark::RunSpecifiedBenchmarks();
}
