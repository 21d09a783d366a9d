// The row update of a pivot, which is nearly all of the cost of a large model:
//
//     T[i][j] -= f[i] * p[j]   for all rows i and columns j,
//
// 2 operations for 16 bytes read and written. The contestants work in turn on tableaus of one shape,
// and every time is for one pivot:
//
//     plain    the plain loop, compiled for this processor: what the memory and the compiler give
//     outer    subtract_outer, a pivot at once
//     rows8    subtract_rows, one pass for 8 pivots
//     rows16   subtract_rows, one pass for 16 pivots
//     step     the engine's whole step but for pricing and ratio test: fetchcolumn and pivot, with as
//              many pivots waiting as it chooses for the size
//
// Counters: pivots timed in a round; for each contestant the bytes that the plain loop would have
// moved in the same time, and how fast it is, 1 being the plain loop.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "bench/enginerun.h"
#include "bench/plainloop.h"
#include "bench/rounds.h"
#include "bench/smalllp.h"
#include "linear/kernels.h"
#include "linear/pivot.h"

namespace bench {

namespace {

using tarnwick::LpEngine;
using tarnwick::Matrix;
using tarnwick::SolveRun;

constexpr int MOST_WAITING = 16;

// A tableau of n rows and columns with random numbers, and as many pivots as can wait.
class Tableau {
  public:
    explicit Tableau(int n) : n_(n)
    {
        const bool made = block_.create([this, n](auto& layout) {
            layout(cells_, n + 1, n);
            layout(pivotrows_, MOST_WAITING - 1, n);
            layout(pivotcolumns_, MOST_WAITING - 1, n + 1);
        });
        if (!made) std::abort();
        const SmallLp numbers = make_small_lp(n, 0);
        const auto number = [&numbers, next = 0UL]() mutable {
            return numbers.value[next++ % numbers.value.size()] - 0.6;
        };
        for (int i = 0; i <= n; ++i) std::generate_n(cells_[i], width(), number);
        for (int p = 0; p < MOST_WAITING; ++p) {
            std::generate_n(pivotrows_[p], width(), number);
            std::generate_n(pivotcolumns_[p], n + 2, number);
        }
    }
    int width() const { return cells_.width(); }

    void plain(int p) const
    {
        plain_update(cells_.rows(), pivotcolumns_[p], pivotrows_[p], n_, width());
    }
    void outer(int p) const
    {
        tarnwick::subtract_outer(cells_.rows(), pivotcolumns_[p], 1, n_, pivotrows_[p], width(), 1);
    }
    // The pass of linear/pivot.cpp: strips of columns, and the factors of a row gathered first.
    void waiting(int pivots) const
    {
        constexpr int STRIP = 512;
        for (int first = 0; first < width(); first += STRIP)
            for (int i = 1; i <= n_; ++i)
                update_strip(pivots, i, first, std::min(STRIP, width() - first));
    }

  private:
    void update_strip(int pivots, int i, int first, int count) const
    {
        double factors[MOST_WAITING];
        const double* rows[MOST_WAITING];
        for (int p = 0; p < pivots; ++p) {
            factors[p] = pivotcolumns_[p][i];
            rows[p] = pivotrows_[p] + first;
        }
        tarnwick::subtract_rows(cells_[i] + first, factors, rows, pivots, count);
    }

    int n_;
    Matrix cells_, pivotrows_, pivotcolumns_;
    tarnwick::ArrayBlock block_;
};

void make_pivots(LpEngine& lp, int pivots)
{
    tarnwick::loadbasis(lp);
    for (int k = 0; k < pivots; ++k) {
        const int c = 1 + k % lp.n;
        tarnwick::fetchcolumn(lp, lp.m, c);
        tarnwick::pivot(lp, lp.m, c, c);
    }
    tarnwick::unloadbasis(lp);
}

struct Size {
    int n;
    int pivots;  // of a contestant in a round; a multiple of 16
    int rounds;
};

// clang-format off
constexpr Size SIZES[] = {
    {  50, 480, 201},  // 22 kB: in the nearest cache; the overhead of each row shows
    { 500,  48, 101},  // 2 MB: more than the second cache of most processors
    {2000,  48,  11},  // 32 MB: the widest model there is, at the mercy of the memory
};
// clang-format on

enum : std::size_t { PLAIN, OUTER, ROWS8, ROWS16, STEP, CONTESTANTS };
constexpr const char* NAMES[CONTESTANTS] = {"plain", "outer", "rows8", "rows16", "step"};

void run_round(const Tableau& tableau, LpEngine& lp, int pivots, Rounds& rounds)
{
    const auto repeat = [pivots](int at_a_time, const auto& work) {
        return [=] {
            for (int k = 0; k < pivots / at_a_time; ++k) work(k);
        };
    };
    rounds.time(PLAIN, repeat(1, [&](int k) { tableau.plain(k % MOST_WAITING); }));
    rounds.time(OUTER, repeat(1, [&](int k) { tableau.outer(k % MOST_WAITING); }));
    rounds.time(ROWS8, repeat(8, [&](int) { tableau.waiting(8); }));
    rounds.time(ROWS16, repeat(16, [&](int) { tableau.waiting(16); }));
    rounds.time(STEP, [&] { make_pivots(lp, pivots); });
}

void report(benchmark::State& state, const Size& size, int width, const Rounds& rounds)
{
    const double bytes = 16.0 * size.n * width * size.pivots;
    state.counters["pivots"] = size.pivots;
    for (std::size_t k = 0; k < CONTESTANTS; ++k) {
        const std::string name = NAMES[k];
        state.counters[name + "_GB/s"] = bytes / rounds.median_of(k) * 1e-9;
        if (k != PLAIN) state.counters[name + "_speed"] = rounds.ratio(PLAIN, k);
    }
}

// The engine calls back without a word about whose work it is.
struct {
    benchmark::State* state;
    Size size;
} current;

std::int32_t TARNWICK_CALL measure(SolveRun& run) noexcept
{
    const Size& size = current.size;
    LpEngine& lp = engine_of(run);
    const Tableau tableau(size.n);
    for (int j = 1; j <= lp.n; ++j) lp.collabel[j] = j;
    for (int i = 1; i <= lp.m; ++i) lp.rowlabel[i] = lp.n + i;

    Rounds first(CONTESTANTS), rounds(CONTESTANTS);
    run_round(tableau, lp, size.pivots, first);  // warms up
    for (auto _ : *current.state) {
        run_round(tableau, lp, size.pivots, rounds);
        current.state->SetIterationTime(rounds.last(STEP));
    }
    report(*current.state, size, tableau.width(), rounds);
    run.result = tarnwick::ENGINE_ITERLIMIT;
    return 0;
}

// A model whose optimum is the origin, so that its first run makes no pivot, and whose diagonal is
// so heavy that pivots on it, over and over, exchange the same numbers back and forth.
SmallLp make_heavy_diagonal(int n)
{
    SmallLp lp = make_small_lp(n, 0);
    std::fill(lp.cost.begin(), lp.cost.end(), -1.0);
    for (int j = 0; j < n; ++j) lp.value[place(lp, j, j)] += n;
    return lp;
}

void row_update(benchmark::State& state, Size size)
{
    SmallLp lp = make_heavy_diagonal(size.n);
    Problem* problem = load(lp);
    current = {&state, size};
    optimize(problem);
    run_entries(problem, tarnwick::lpinit, measure, tarnwick::lpfinish);
    unloadprob(&problem);
}

void register_sizes()
{
    for (const Size& size : SIZES)
        benchmark::RegisterBenchmark(("row_update/" + std::to_string(size.n)).c_str(), row_update,
                                     size)
            ->Iterations(size.rounds)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
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
