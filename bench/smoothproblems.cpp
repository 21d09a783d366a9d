// What the engine for smooth models makes of the collection, with its default settings, beside the
// sequential quadratic programming of NLopt (SLSQP) from the same starts, with forward differences of
// the same step.

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "bench/nloptpeer.h"
#include "bench/problems/loadedproblem.h"

namespace bench {

namespace {

using namespace tarnwick;

constexpr double STEP = 1e-4;
constexpr double FEASIBLE = 1e-5;  // relative to a row's limit and its value at the start

// Distance from the optimum, or from a known local one if that is nearer; relative to 1 + its size.
void print_outcome(const FunctionProblem& problem, const Reals& x)
{
    if (!(violation(problem, x) <= FEASIBLE)) {
        std::printf(" infeasible |");
        return;
    }
    const auto gap = [f = objective(problem, x)](double optimum) {
        return std::fabs(f - optimum) / (1 + std::fabs(optimum));
    };
    double nearest = gap(problem.optimum);
    const char* which = "";
    for (const double local : problem.local) {
        if (gap(local) < nearest) which = " (local)";
        nearest = std::min(nearest, gap(local));
    }
    std::printf(" %.1e%s |", nearest, which);
}

void print_row(const FunctionProblem& problem)
{
    LoadedProblem model(problem, Family::smooth);
    const Answer answer = model.solve();
    std::int32_t iterations = 0;
    getcallbackinfo(model.lp, nullptr, CB_ITERATIONS, &iterations);
    const PeerOutcome peer = solve_by_slsqp(problem, STEP);

    std::printf("| %s | %d | %d | %.10g | %d |", problem.name, problem.numcols(), problem.numrows(),
                problem.optimum, static_cast<int>(answer.status));
    print_outcome(problem, answer.x);
    std::printf(" %ld | %d |", model.evaluations, static_cast<int>(iterations));
    print_outcome(problem, peer.x);
    std::printf(" %ld | %ld |\n", peer.evaluations, peer.gradients);
}

}  // namespace

}  // namespace bench

int main()
{
    std::puts("| Problem | Variables | Rows | Optimum | Status | Gap | Evaluations | Iterations "
              "| SLSQP gap | Evaluations | Iterations |\n"
              "| --- | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: |");
    for (const auto& problem : tarnwick::smooth_problems())
        if (problem.status == STAT_NONE) bench::print_row(problem);
    return 0;
}
