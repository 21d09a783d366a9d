// How near the search for non-smooth models comes to the optima of the collection, in ten runs each,
// beside the evolution strategy ISRES of NLopt with the same number of evaluations. The clock is a
// fixed one, so that the table can be printed again. An argument sets the size of the population.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench/nloptpeer.h"
#include "bench/problems/loadedproblem.h"
#include "bench/rounds.h"
#include "tests/support/clock.h"

namespace bench {

namespace {

using namespace tarnwick;

constexpr int SEEDS = 10;

// What counts as feasible: the engine holds an equality in its square.
double allowance(const FunctionProblem& problem)
{
    return problem.sense.find(SENSE_EQUAL) == std::string::npos ? 1e-5 : 1.01e-3;
}

// The gaps of the feasible points of ten runs.
struct Gaps {
    std::vector<double> gaps;

    void add(const FunctionProblem& problem, const Reals& x)
    {
        if (!(violation(problem, x) <= allowance(problem))) return;
        const double gap = problem.objsen * (objective(problem, x) - problem.optimum);
        gaps.push_back(gap / (1 + std::fabs(problem.optimum)) + 0.0);  // no -0
    }
    void print() const
    {
        if (gaps.empty())
            std::printf(" 0 | | |");
        else
            std::printf(" %d | %.1e | %.1e |", static_cast<int>(gaps.size()),
                        *std::min_element(gaps.begin(), gaps.end()), median(gaps));
    }
};

void print_row(const FunctionProblem& problem, int population)
{
    Gaps own, peer;
    std::vector<double> evaluations;
    for (unsigned seed = 1; seed <= SEEDS; ++seed) {
        set_clock(seed * 7919, 1);
        LoadedProblem model(problem, Family::nonsmooth);
        setintparam(model.lp, PARAM_NSPPOPSIZE, population);
        own.add(problem, model.solve().x);
        evaluations.push_back(static_cast<double>(model.evaluations));
        peer.add(problem, search_by_isres(problem, model.evaluations, seed).x);
    }
    std::printf("| %s | %d | %d | %.0f |", problem.name, problem.numcols(), problem.numrows(),
                median(evaluations));
    own.print();
    peer.print();
    std::printf("\n");
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv)
{
    const int population = argc > 1 ? std::atoi(argv[1]) : 0;
    std::puts(
        "| Problem | Variables | Rows | Evaluations | Feasible | Best | Median | ISRES feasible "
        "| Best | Median |\n| --- | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | "
        "---: |");
    for (const auto& problem : tarnwick::nonsmooth_problems())
        if (problem.status == STAT_NONE) bench::print_row(problem, population);
    return 0;
}
