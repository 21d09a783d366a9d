// Time of the engine for smooth models for each iteration, without that of the host's functions,
// which are timed inside the run and taken off. The models have half as many rows as variables, and
//
//     minimise  sum w_j (x_j - 1)^2 + sum (x_j - x_j+1)^4 / 10
//     rows      x_2i-1 + x_2i + sum cos(i j) x_j / (10 n) <= r_i
//
// r_i being 1 for a row that is to bind at the optimum, and 10 for one that is not. The derivatives
// are the host's, so that an iteration is one Jacobian, a step of the basis and the factor, and the
// evaluations of its line search.
//
// Counters: microseconds of the engine for an iteration, in the fastest run; iterations and
// evaluations of a run; rows that bind.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "include/tarnwick.h"

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

struct Size {
    int n;
    int binding;  // in hundredths of the rows
    int runs;
};

// clang-format off
constexpr Size SIZES[] = {
    { 10,   0, 201}, { 10,  50, 201}, { 10, 100, 201},  // what an iteration costs besides arithmetic
    {100,   0,  51}, {100,  50,  51}, {100, 100,  51},  // the widest factor of the quasi-Newton search
    {400,   0,  11}, {400,  50,  11}, {400, 100,  11},  // the widest model
};
// clang-format on

int n, m;
std::vector<double> coupling;  // m rows of n
Clock::duration in_host;
long evaluations;

double weight(int j) { return 1.0 + 9.0 * j / n; }

std::int32_t TARNWICK_CALL evaluate(Problem*, std::int32_t, std::int32_t, double* objval,
                                    double* lhs, double* x, std::int32_t, std::int32_t)
{
    const auto start = Clock::now();
    ++evaluations;
    double f = 0.0;
    for (int j = 0; j < n; ++j) f += weight(j) * (x[j] - 1) * (x[j] - 1);
    for (int j = 0; j + 1 < n; ++j) f += std::pow(x[j] - x[j + 1], 4) / 10;
    *objval = f;
    for (int i = 0; i < m; ++i) {
        const double* const row =
            &coupling[static_cast<std::size_t>(i) * static_cast<std::size_t>(n)];
        lhs[i] = 0.0;
        for (int j = 0; j < n; ++j) lhs[i] += row[j] * x[j];
    }
    in_host += Clock::now() - start;
    return 0;
}

std::int32_t TARNWICK_CALL differentiate(Problem*, std::int32_t, std::int32_t, std::int32_t,
                                         double*, double* obj, std::int32_t*, std::int32_t*,
                                         std::int32_t*, double* matval, double* x, char*, char*)
{
    const auto start = Clock::now();
    for (int j = 0; j < n; ++j) {
        obj[j] = 2 * weight(j) * (x[j] - 1);
        if (j + 1 < n) obj[j] += 0.4 * std::pow(x[j] - x[j + 1], 3);
        if (j > 0) obj[j] -= 0.4 * std::pow(x[j - 1] - x[j], 3);
        for (int i = 0; i < m; ++i) *matval++ = coupling[static_cast<std::size_t>(i * n + j)];
    }
    in_host += Clock::now() - start;
    return 0;
}

struct Run {
    double seconds = 0.0;  // of the engine
    std::int32_t status = STAT_NONE, iterations = 0;
    int binding = 0;
};

Run run_once(const Size& size)
{
    const auto columns = static_cast<std::size_t>(n), rows = static_cast<std::size_t>(m);
    std::vector<double> obj(columns), matval(columns * rows), rhs(rows), start(columns, 0.0);
    std::vector<double> lower(columns, -10.0), upper(columns, 10.0), slack(rows);
    std::vector<char> sense(rows, SENSE_LESS);
    for (int i = 0; i < m; ++i)
        rhs[static_cast<std::size_t>(i)] = (i + 1) * 100 <= size.binding * m ? 1.0 : 10.0;
    Problem* lp = loadnlp("steps", n, m, 1, obj.data(), rhs.data(), sense.data(), nullptr, nullptr,
                          nullptr, matval.data(), start.data(), lower.data(), upper.data(), nullptr,
                          n * m, evaluate, differentiate);
    setintparam(lp, PARAM_NLPDERIVMODE, 2);

    Run run;
    in_host = {};
    evaluations = 0;
    const auto begin = Clock::now();
    optimize(lp);
    run.seconds = std::chrono::duration<double>(Clock::now() - begin - in_host).count();
    solution(lp, &run.status, nullptr, nullptr, nullptr, slack.data(), nullptr);
    getcallbackinfo(lp, nullptr, CB_ITERATIONS, &run.iterations);
    for (const double s : slack) run.binding += s < 1e-4;
    unloadprob(&lp);
    return run;
}

void smoothsteps(benchmark::State& state, Size size)
{
    n = size.n;
    m = n / 2;
    coupling.clear();
    for (int i = 1; i <= m; ++i)
        for (int j = 1; j <= n; ++j)
            coupling.push_back(((j + 1) / 2 == i ? 1.0 : 0.0) + std::cos(i * j) / (10 * n));

    Run run = run_once(size);  // warms up
    const bool ended = run.status == STAT_OPTIMAL || run.status == STAT_CONVERGED;
    if (!ended || run.binding != size.binding * m / 100) state.SkipWithError("wrong answer");
    std::vector<double> seconds;
    for (auto _ : state) {
        run = run_once(size);
        seconds.push_back(run.seconds / run.iterations);
        state.SetIterationTime(seconds.back());
    }
    state.counters["us"] = *std::min_element(seconds.begin(), seconds.end()) * 1e6;
    state.counters["iterations"] = run.iterations;
    state.counters["evaluations"] = static_cast<double>(evaluations);
    state.counters["binding"] = run.binding;
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    for (const auto& size : bench::SIZES) {
        const std::string name =
            "smoothsteps/" + std::to_string(size.n) + "/" + std::to_string(size.binding);
        benchmark::RegisterBenchmark(name.c_str(), bench::smoothsteps, size)
            ->Iterations(size.runs)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    }
    benchmark::RunSpecifiedBenchmarks();
}
