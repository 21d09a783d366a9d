#include <glpk.h>

#include "bench/contestant.h"

// GLPK as it comes: primal simplex from the slack basis, no presolve, no scaling. With presolve it
// is slower on this family.

namespace bench {

namespace {

glp_prob* hand_over(const SmallLp& lp)
{
    glp_prob* const model = glp_create_prob();
    glp_set_obj_dir(model, GLP_MAX);
    glp_add_rows(model, lp.n);
    glp_add_cols(model, lp.n);
    for (int i = 1; i <= lp.n; ++i)
        glp_set_row_bnds(model, i, GLP_UP, 0.0, lp.rhs[static_cast<std::size_t>(i - 1)]);
    for (int j = 1; j <= lp.n; ++j) {
        glp_set_col_bnds(model, j, GLP_LO, 0.0, 0.0);
        glp_set_obj_coef(model, j, lp.cost[static_cast<std::size_t>(j - 1)]);
    }
    glp_load_matrix(model, lp.n * lp.n, lp.triplet_row.data(), lp.triplet_col.data(),
                    lp.triplet_value.data());
    return model;
}

void read_results(glp_prob* model, const SmallLp& lp, Results& results)
{
    for (int k = 1; k <= lp.n; ++k) {
        const auto to = static_cast<std::size_t>(k - 1);
        results.x[to] = glp_get_col_prim(model, k);
        results.reducedcosts[to] = glp_get_col_dual(model, k);
        results.duals[to] = glp_get_row_dual(model, k);
        results.slacks[to] = lp.rhs[to] - glp_get_row_prim(model, k);
    }
}

Outcome solve(SmallLp& lp, Results& results)
{
    glp_prob* const model = hand_over(lp);
    glp_smcp settings;
    glp_init_smcp(&settings);
    settings.msg_lev = GLP_MSG_OFF;
    const bool ended = glp_simplex(model, &settings) == 0;

    const Outcome outcome{.optimal = ended && glp_get_status(model) == GLP_OPT,
                          .objective = glp_get_obj_val(model),
                          .pivots = glp_get_it_cnt(model)};
    read_results(model, lp, results);
    glp_delete_prob(model);
    return outcome;
}

const AddPeer GLPK("GLPK", solve);

}  // namespace

}  // namespace bench
