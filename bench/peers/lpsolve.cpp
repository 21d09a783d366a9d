#include <lpsolve/lp_lib.h>

#include <algorithm>

#include "bench/contestant.h"

// lp_solve with all its defaults, filled row by row, which its manual calls the fastest way.

namespace bench {

namespace {

lprec* hand_over(SmallLp& lp)
{
    lprec* const model = make_lp(0, lp.n);
    set_verbose(model, NEUTRAL);
    resize_lp(model, lp.n, lp.n);
    set_add_rowmode(model, TRUE);
    set_obj_fnex(model, lp.n, lp.cost.data(), lp.col_from_1.data());
    for (int i = 0; i < lp.n; ++i)
        add_constraintex(model, lp.n,
                         lp.value_by_row.data() + static_cast<std::ptrdiff_t>(i) * lp.n,
                         lp.col_from_1.data(), LE, lp.rhs[static_cast<std::size_t>(i)]);
    set_add_rowmode(model, FALSE);
    set_maxim(model);
    return model;
}

void read_results(lprec* model, const SmallLp& lp, Results& results)
{
    get_variables(model, results.x.data());
    get_constraints(model, results.slacks.data());
    std::transform(lp.rhs.begin(), lp.rhs.end(), results.slacks.begin(), results.slacks.begin(),
                   [](double rhs, double activity) { return rhs - activity; });

    double* duals = nullptr;  // of the rows, then of the columns
    get_ptr_sensitivity_rhs(model, &duals, nullptr, nullptr);
    if (!duals) return;
    std::copy_n(duals, lp.n, results.duals.begin());
    std::copy_n(duals + lp.n, lp.n, results.reducedcosts.begin());
}

Outcome solve_by_default(SmallLp& lp, Results& results)
{
    lprec* const model = hand_over(lp);
    const bool optimal = solve(model) == OPTIMAL;
    const Outcome outcome{.optimal = optimal,
                          .objective = get_objective(model),
                          .pivots = static_cast<int>(get_total_iter(model))};
    read_results(model, lp, results);
    delete_lp(model);
    return outcome;
}

const AddPeer LPSOLVE("lp_solve", solve_by_default);

}  // namespace

}  // namespace bench
