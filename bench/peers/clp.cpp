#include <ClpSimplex.hpp>
#include <algorithm>

#include "bench/contestant.h"

// CLP by its C++ interface, primal and dual, with its default settings and no presolve: with
// presolve it is slower on this family.

namespace bench {

namespace {

void read_results(const ClpSimplex& model, const SmallLp& lp, Results& results)
{
    std::copy_n(model.primalColumnSolution(), lp.n, results.x.begin());
    std::copy_n(model.dualRowSolution(), lp.n, results.duals.begin());
    std::copy_n(model.dualColumnSolution(), lp.n, results.reducedcosts.begin());
    std::transform(lp.rhs.begin(), lp.rhs.end(), model.primalRowSolution(), results.slacks.begin(),
                   [](double rhs, double activity) { return rhs - activity; });
}

Outcome solve(SmallLp& lp, Results& results, bool by_dual)
{
    ClpSimplex model;
    model.setLogLevel(0);
    // Null stands for the bounds 0 and infinity, and for rows without a lower bound.
    model.loadProblem(lp.n, lp.n, lp.begin.data(), lp.row.data(), lp.value.data(), nullptr, nullptr,
                      lp.cost.data(), nullptr, lp.rhs.data());
    model.setOptimizationDirection(-1.0);
    if (by_dual)
        model.dual();
    else
        model.primal();
    read_results(model, lp, results);
    return {.optimal = model.status() == 0,
            .objective = model.objectiveValue(),
            .pivots = model.numberIterations()};
}

Outcome solve_by_primal(SmallLp& lp, Results& results) { return solve(lp, results, false); }
Outcome solve_by_dual(SmallLp& lp, Results& results) { return solve(lp, results, true); }

const AddPeer PRIMAL("CLP primal", solve_by_primal);
const AddPeer DUAL("CLP dual", solve_by_dual);

}  // namespace

}  // namespace bench
