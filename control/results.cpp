// Copies what an engine ends with into the Problem, where the queries of the interface read it.

#include <algorithm>
#include <cmath>

#include "control/elastic.h"
#include "control/services.h"
#include "interface/problem.h"

namespace tarnwick {

namespace {

// Integer models have no duals: the final subproblem's say nothing about the model.
void store_duals(Problem& problem, const SolutionRecord& solution) noexcept
{
    const std::int32_t type = problem.problemtype;
    if (type == PROB_MILP || type == PROB_MIQP || type == PROB_MINLP) {
        std::fill_n(problem.dj, problem.numcols, 0.0);
        std::fill_n(problem.piout, problem.numrows, 0.0);
        return;
    }
    std::copy_n(solution.reduced, problem.numcols, problem.dj);
    std::copy_n(solution.duals, problem.numrows, problem.piout);
}

double slack_of(char sense, double lower, double activity, double upper) noexcept
{
    const double below = upper - activity;
    const double above = lower - activity;
    if (sense == 'G') return above;
    if (sense == 'R') return std::fabs(below) <= std::fabs(above) ? below : above;
    return below;
}

void store_slacks(Problem& problem, const SolutionRecord& solution) noexcept
{
    for (int i = 0; i < problem.numrows; ++i)
        problem.slack[i] = slack_of(problem.sense[i], solution.rowlower[i], solution.rowvalue[i],
                                    solution.rowupper[i]);
}

// The three members of a sensitivity record that belong together, for columns or for rows.
struct Spread {
    const double* centre;
    const double* up;
    const double* down;
};

void store_ranges(int first, int last, const Spread& spread, const RangeArrays& ranges) noexcept
{
    for (int k = first; k <= last; ++k) {
        ranges.middle[k] = 0.0;
        ranges.lower[k] = spread.centre[k] - spread.down[k];
        ranges.upper[k] = spread.up[k] + spread.centre[k];
    }
}

void store_statistics(int first, int last, const Spread& spread, const RangeArrays& ranges) noexcept
{
    const int count = last - first + 1;
    std::copy_n(spread.centre + first, count, ranges.middle + first);
    std::copy_n(spread.down + first, count, ranges.lower + first);
    std::copy_n(spread.up + first, count, ranges.upper + first);
}

void clear_ranges(int first, int last, const RangeArrays& ranges) noexcept
{
    for (double* values : {ranges.middle, ranges.lower, ranges.upper})
        std::fill(values + first, values + last + 1, 0.0);
}

void store_sensitivity(Problem& problem, const SensitivityRecord* record) noexcept
{
    if (!record) {
        if (!problem.hasranges) return;
        clear_ranges(problem.firstcol, problem.lastcol, problem.colrange);
        clear_ranges(problem.firstrow, problem.lastrow, problem.rowrangeof);
        problem.hasranges = false;
        return;
    }
    problem.hasranges = true;
    const auto store = is_nsp_family(problem.problemtype) ? store_statistics : store_ranges;
    store(problem.firstcol, problem.lastcol, {record->cost, record->costup, record->costdown},
          problem.colrange);
    store(problem.firstrow, problem.lastrow, {record->rhs, record->rhsup, record->rhsdown},
          problem.rowrangeof);
}

}  // namespace

void storesolution(SolveControl* control, const SolutionRecord* solution,
                   const SensitivityRecord* sensitivity) noexcept
{
    Problem& problem = *control->problem;
    if (control->elasticmode != 0) {
        storesubset(problem, *solution);
        return;
    }
    dropranges(problem);
    std::copy_n(solution->point, problem.numcols, problem.x);
    store_duals(problem, *solution);
    store_slacks(problem, *solution);
    if (problem.problemtype == PROB_LP || is_nsp_family(problem.problemtype))
        store_sensitivity(problem, sensitivity);
    problem.hasresults = true;
}

void storeranges(SolveControl& control, const RangeSource& source) noexcept
{
    constexpr std::int64_t SMALL = 4096;  // entries of a matrix, 32 kB
    Problem& problem = *control.problem;
    if (problem.problemtype != PROB_LP) {
        source.release(source.engine);
        return;
    }
    problem.rangesource = source;
    if (std::int64_t{problem.numcols} * problem.numrows > SMALL) readranges(problem);
}

void readranges(Problem& problem) noexcept
{
    const RangeSource& source = problem.rangesource;
    if (!source.engine) return;
    const SensitivityRecord record = source.read(source.engine);
    store_sensitivity(problem, &record);
    dropranges(problem);
}

void dropranges(Problem& problem) noexcept
{
    RangeSource& source = problem.rangesource;
    if (source.engine) source.release(source.engine);
    source.engine = nullptr;
}

}  // namespace tarnwick
