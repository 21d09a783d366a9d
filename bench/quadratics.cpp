// Whole solves of dense convex quadratic programs,
//
//     minimise x'Qx + c'x   subject to   A x <= b,   0 <= x <= 1,   Q = B'B + I,
//
// with as many columns as rows of B and a quarter as many rows of A. Half of the optimum lies inside
// the bounds, so that the hull grows to about as many vertices. Counter: major iterations.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "include/tarnwick.h"
#include "interface/problem.h"

namespace bench {

namespace {

using Reals = std::vector<double>;

struct QuadraticProgram {
    std::size_t n, m;
    Reals cost, rhs, lower, upper, matrix, q, start;  // matrix and q column by column
    std::vector<char> sense;
};

Reals uniform(std::mt19937& bits, std::size_t count, double low, double high)
{
    Reals values(count);
    for (double& value : values) value = low + (high - low) * static_cast<double>(bits()) * 0x1p-32;
    return values;
}

QuadraticProgram make_program(std::size_t n)
{
    constexpr unsigned SEED = 20;
    std::mt19937 bits(SEED);
    const std::size_t m = n / 4 + 1;
    const double size = static_cast<double>(n);
    QuadraticProgram program{n,
                             m,
                             uniform(bits, n, -0.7 * size, 0.0),
                             Reals(m, size / 4.0),
                             Reals(n),
                             Reals(n, 1.0),
                             uniform(bits, n * m, 0.0, 1.0),
                             Reals(n * n),
                             Reals(n),
                             std::vector<char>(m, 'L')};
    const Reals b = uniform(bits, n * n, -1.0, 1.0);
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < n; ++j) {
            double sum = i == j ? 1.0 : 0.0;
            for (std::size_t k = 0; k < n; ++k) sum += b[k * n + i] * b[k * n + j];
            program.q[j * n + i] = sum;
        }
    return program;
}

Problem* load(QuadraticProgram& p)
{
    const auto n = static_cast<std::int32_t>(p.n), m = static_cast<std::int32_t>(p.m);
    Problem* const lp =
        loadlp("quadratic", n, m, 1, p.cost.data(), p.rhs.data(), p.sense.data(), nullptr, nullptr,
               nullptr, p.matrix.data(), p.lower.data(), p.upper.data(), nullptr, 0, 0, n * m);
    loadquad(lp, nullptr, nullptr, nullptr, p.q.data(), n * n, p.start.data());
    return lp;
}

void solve(benchmark::State& state)
{
    QuadraticProgram program = make_program(static_cast<std::size_t>(state.range(0)));
    std::int32_t majors = 0, status = 0;
    for (auto _ : state) {
        Problem* lp = load(program);
        optimize(lp);
        solution(lp, &status, nullptr, nullptr, nullptr, nullptr, nullptr);
        majors = lp->iterations;
        unloadprob(&lp);
        if (status != STAT_OPTIMAL) state.SkipWithError("no optimum");
    }
    state.counters["majors"] = majors;
}

// Where calls still weigh, where the tableau and Q fit the nearest cache, and where they don't.
BENCHMARK(solve)->Arg(10)->Arg(50)->Arg(200)->Unit(benchmark::kMicrosecond);

}  // namespace

}  // namespace bench

BENCHMARK_MAIN();
