// Elastic variables: one unit column for each way in which a row can be violated, so that
//
//     A x + S e   meets every row for some e >= 0,
//
// and the least sum(e) measures the infeasibility. Elastic variable k is variable numcols + k; it
// stands in row |r| - 1 with the sign of r = elasticrows[k]. An equality has two, +r then -r, next
// to each other: partners, which are fixed and freed together.

#include "control/elastic.h"

#include <algorithm>
#include <cstdlib>

#include "control/services.h"
#include "interface/problem.h"

namespace tarnwick {

namespace {

bool has_lower(double lower) noexcept { return lower > -INFINITE_BOUND; }
bool has_upper(double upper) noexcept { return upper < INFINITE_BOUND; }

std::size_t count_elastic(const Problem& problem) noexcept
{
    const auto equalities = std::count(problem.sense, problem.sense + problem.numrows, 'E');
    return static_cast<std::size_t>(problem.numrows + equalities);
}

void list_rows(const Problem& problem, std::int32_t* rows) noexcept
{
    for (std::int32_t r = 1; r <= problem.numrows; ++r) {
        const char sense = problem.sense[r - 1];
        if (sense == 'E' || sense == 'G') *rows++ = r;
        if (sense != 'G') *rows++ = -r;
    }
}

// The other variable of an equality's pair, or -1.
int partner_of(const SolveControl& control, int k) noexcept
{
    const std::int32_t* rows = control.elasticrows.data();
    if (k > 0 && rows[k - 1] == -rows[k]) return k - 1;
    if (k + 1 < control.elasticcount && rows[k + 1] == -rows[k]) return k + 1;
    return -1;
}

void set_pair(const SolveControl& control, int k, double bound, double* ub) noexcept
{
    double* const elastic = ub + control.problem->numcols;
    elastic[k] = bound;
    const int partner = partner_of(control, k);
    if (partner >= 0) elastic[partner] = bound;
}

int first_of_row(const SolveControl& control, std::int32_t row) noexcept
{
    const std::int32_t* rows = control.elasticrows.data();
    for (int k = 0; k < control.elasticcount; ++k)
        if (std::abs(rows[k]) - 1 == row) return k;
    return -1;
}

}  // namespace

bool setupelastic(SolveControl& control) noexcept
{
    control.elasticcount = 0;
    if (control.elasticmode == 0) return true;

    const Problem& problem = *control.problem;
    const std::size_t count = count_elastic(problem);
    if (!control.elasticrows.create(count) || !control.elasticvalues.create(count)) return false;
    if (control.elasticrows) list_rows(problem, control.elasticrows.data());
    control.elasticcount = static_cast<std::uint16_t>(count);
    return true;
}

std::int32_t setelastic(SolveControl* control, std::int32_t var, std::int32_t row,
                        std::int32_t action, double* ub) noexcept
{
    constexpr std::int32_t FREE = 0;
    constexpr std::int32_t FIX = 1;
    const std::int32_t numcols = control->problem->numcols;

    if (var >= 0) {
        const std::int32_t k = var - numcols;
        if (k < 0 || k >= control->elasticcount) return 0;
        set_pair(*control, k, 0.0, ub);
        return 1;
    }

    const int k = first_of_row(*control, row);
    if (k < 0) return 0;
    if (action == FREE) {
        if (ub[numcols + k] != 0.0) return 0;
        set_pair(*control, k, INFINITE_BOUND, ub);
        return 1;
    }
    if (action == FIX) {
        set_pair(*control, k, 0.0, ub);
        return 1;
    }
    return 0;
}

namespace {

// Where the final point stands against the limits of a row in the subset.
std::int32_t row_stand(double activity, double lower, double upper) noexcept
{
    if (!(activity >= upper)) return 0;
    return activity > lower ? 2 : 1;
}

std::int32_t bound_stand(double lower, double upper) noexcept
{
    if (!has_upper(upper)) return 0;
    return has_lower(lower) ? 1 : 2;
}

bool is_bounded(const SolutionRecord& solution, int j) noexcept
{
    return has_lower(solution.lower[j]) || has_upper(solution.upper[j]);
}

// Two arrays of the size, or none. False: no memory.
bool create_pair(Array<std::int32_t>& index, Array<std::int32_t>& stand,
                 std::int32_t count) noexcept
{
    const auto size = static_cast<std::size_t>(count);
    if (index.create(size) && stand.create(size)) return true;
    index.release();
    return false;
}

bool store_rows(Problem& problem, const SolutionRecord& solution) noexcept
{
    const SolveControl& control = problem.control;
    const double* const elastic = solution.upper + problem.numcols;
    if (!create_pair(problem.rowind, problem.rowbdstat, problem.iisnumrows)) return false;

    std::size_t next = 0;
    for (int k = 0; k < control.elasticcount; ++k) {
        if (elastic[k] != 0.0) continue;
        const int i = std::abs(control.elasticrows[static_cast<std::size_t>(k)]) - 1;
        problem.rowind[next] = i;
        problem.rowbdstat[next++] =
            row_stand(solution.rowvalue[i], solution.rowlower[i], solution.rowupper[i]);
    }
    return true;
}

void store_columns(Problem& problem, const SolutionRecord& solution) noexcept
{
    if (!create_pair(problem.colind, problem.colbdstat, problem.iisnumcols)) return;

    std::size_t next = 0;
    for (int j = 0; j < problem.numcols; ++j) {
        if (!is_bounded(solution, j)) continue;
        problem.colind[next] = j;
        problem.colbdstat[next++] = bound_stand(solution.lower[j], solution.upper[j]);
    }
}

}  // namespace

void storesubset(Problem& problem, const SolutionRecord& solution) noexcept
{
    const double* const elastic = solution.upper + problem.numcols;
    problem.iisnumrows =
        static_cast<std::int32_t>(std::count(elastic, elastic + problem.control.elasticcount, 0.0));
    problem.iisnumcols = 0;
    for (int j = 0; j < problem.numcols; ++j) problem.iisnumcols += is_bounded(solution, j) ? 1 : 0;

    for (auto* list : {&problem.rowind, &problem.rowbdstat, &problem.colind, &problem.colbdstat})
        list->release();
    if (store_rows(problem, solution)) store_columns(problem, solution);
}

}  // namespace tarnwick
