// Evaluation of the loaded model, and the walks over its entries.
//
//     lhs = A x,   objective = c'x + x'Q x     (linear and quadratic models, from their arrays)
//
// Models known through the caller's functions are evaluated by them. With elastic variables e the rows
// become A x + S e, S the signed unit columns of elasticrows, and the objective sum(e).

#include <algorithm>
#include <cstdlib>

#include "control/callerfunctions.h"
#include "control/services.h"
#include "control/walks.h"
#include "interface/problem.h"
#include "platform/vectors.h"

namespace tarnwick {

namespace {

bool has_quadratic_part(const Problem& problem) noexcept
{
    const bool is_quadratic = problem.problemtype == PROB_QP || problem.problemtype == PROB_MIQP;
    return is_quadratic && problem.qmatval;
}

bool has_indices(const Problem& problem) noexcept
{
    return problem.matbeg && problem.matcnt && problem.matind;
}

bool is_sparse(const Problem& problem) noexcept
{
    return has_indices(problem) && !problem.control.matrixisfull;
}

bool is_q_sparse(const Problem& problem) noexcept
{
    return problem.qmatbeg && problem.qmatcnt && problem.qmatind;
}

void add_column(const Problem& problem, int j, double xj, double* lhs) noexcept
{
    const int end = problem.matbeg[j] + problem.matcnt[j];
    for (int k = problem.matbeg[j]; k < end; ++k) {
        const int i = problem.matind[k];
        if (0 <= i && i < problem.numrows) lhs[i] += xj * problem.matval[k];
    }
}

double linear_objective(const Problem& problem, const double* x) noexcept
{
    double sum = 0.0;
    for (int j = 0; j < problem.numcols; ++j) sum += problem.obj[j] * x[j];
    return sum;
}

// Adds x_i Q_ij x_j for every entry of column j.
double add_q_column(const Problem& problem, int j, const double* x, double sum) noexcept
{
    if (!is_q_sparse(problem)) {
        const double* column = problem.qmatval + static_cast<std::ptrdiff_t>(problem.numcols) * j;
        for (int i = 0; i < problem.numcols; ++i) sum += x[i] * column[i] * x[j];
        return sum;
    }
    const int end = problem.qmatbeg[j] + problem.qmatcnt[j];
    for (int k = problem.qmatbeg[j]; k < end; ++k) {
        const int i = problem.qmatind[k];
        if (0 <= i && i < problem.numcols) sum += x[i] * problem.qmatval[k] * x[j];
    }
    return sum;
}

void evaluate_arrays(Problem& problem, double* lhs, const double* x) noexcept
{
    if (is_sparse(problem)) {
        for (int j = 0; j < problem.numcols; ++j)
            if (x[j] != 0.0) add_column(problem, j, x[j], lhs);
    } else {
        add_columns(lhs, problem.matval, x, problem.numrows, problem.numcols);
    }

    double objective = linear_objective(problem, x);
    if (has_quadratic_part(problem))
        for (int j = 0; j < problem.numcols; ++j)
            if (x[j] != 0.0) objective = add_q_column(problem, j, x, objective);

    lhs[problem.numrows] = objective;
    problem.objval = objective;
}

void apply_elastic(const SolveControl& control, double* lhs) noexcept
{
    double sum = 0.0;
    for (std::size_t k = 0; k < control.elasticcount; ++k) {
        const double e = control.elasticvalues[k];
        const std::int32_t r = control.elasticrows[k];
        lhs[std::abs(r) - 1] += r > 0 ? e : -e;
        sum += e;
    }
    lhs[control.problem->numrows] = sum;
}

void move_variable(SolveControl& control, std::int32_t var, double value) noexcept
{
    const Problem& problem = *control.problem;
    if (var < 0) return;
    if (var < problem.numcols)
        problem.x[var] = value;
    else if (control.elasticmode != 0 && var - problem.numcols < control.elasticcount)
        control.elasticvalues[static_cast<std::size_t>(var - problem.numcols)] = value;
}

}  // namespace

std::int32_t evalfunctions(SolveControl* control, double* lhs, const double* x) noexcept
{
    Problem& problem = *control->problem;
    std::copy_n(x, problem.numcols, problem.x);
    std::fill_n(lhs, problem.numrows, 0.0);

    if (is_lp_family(problem.problemtype))
        evaluate_arrays(problem, lhs, x);
    else if (!callfunceval(problem, lhs, -1, -1))
        return 0;

    if (control->elasticmode != 0) {
        std::copy_n(x + problem.numcols, control->elasticcount, control->elasticvalues.data());
        apply_elastic(*control, lhs);
    }
    return 1;
}

std::int32_t evalcolpair(SolveControl* control, double* lhs, std::int32_t varone, double xone,
                         std::int32_t vartwo, double xtwo) noexcept
{
    Problem& problem = *control->problem;
    if (!problem.funceval) return 0;

    move_variable(*control, varone, xone);
    move_variable(*control, vartwo, xtwo);
    std::fill_n(lhs, problem.numrows, 0.0);
    // The caller's function knows nothing of elastic variables.
    const auto known_variable = [&](std::int32_t var) { return var < problem.numcols ? var : -1; };
    if (!callfunceval(problem, lhs, known_variable(varone), known_variable(vartwo))) return 0;
    if (control->elasticmode != 0) apply_elastic(*control, lhs);
    return 1;
}

std::int32_t evalcol(SolveControl* control, double* lhs, std::int32_t var, double value) noexcept
{
    return evalcolpair(control, lhs, var, value, var, value);
}

namespace {

// A visiting operation with its fixed arguments.
struct Visitor {
    SolveControl* control;
    void* user;
    Visit visit;
    void* data;

    bool operator()(std::int32_t row, std::int32_t column, double value) const noexcept
    {
        return visit(control, user, row, column, value, data) != 0;
    }
};

bool walk_linear_objective(const Problem& problem, std::int32_t row, const Visitor& visit) noexcept
{
    for (std::int32_t j = 0; j < problem.numcols; ++j)
        if (problem.obj[j] != 0.0 && !visit(row, j, problem.obj[j])) return false;
    return true;
}

}  // namespace

std::int32_t walkmatrix(SolveControl* control, void* user, Visit visit, void* data) noexcept
{
    const Problem& problem = *control->problem;
    const Visitor visitor{control, user, visit, data};
    if (!constraint_matrix(problem).walk(problem.numcols, visitor)) return 0;
    if (control->elasticmode == 0) return walk_linear_objective(problem, problem.numrows, visitor);
    return walk_elastic_rows(*control, visitor) && walk_elastic_objective(*control, visitor);
}

bool ishomogeneous(const SolveControl& control) noexcept
{
    const Problem& problem = *control.problem;
    return is_lp_family(problem.problemtype) && !has_quadratic_part(problem) &&
           control.elasticmode == 0;
}

bool hasfullmatrix(const Problem& problem) noexcept
{
    return has_indices(problem) && lists_all(problem.matbeg, problem.matcnt, problem.matind,
                                             problem.matnz, problem.numrows, problem.numcols);
}

bool copymatrix(const SolveControl& control, double* const* rows) noexcept
{
    const Problem& problem = *control.problem;
    const int m = problem.numrows, n = problem.numcols;
    if (control.elasticmode != 0 || is_sparse(problem)) return false;

    // A line of rows at a time, so that reading and writing both go by cache lines.
    for (int first = 0; first < m; first += LINE) {
        const int count = std::min(LINE, m - first);
        for (int j = 0; j < n; ++j) {
            const double* const from = problem.matval + std::ptrdiff_t{m} * j + first;
            for (int i = 0; i < count; ++i) rows[first + i + 1][j + 1] = from[i];
        }
    }
    std::copy_n(problem.obj, n, rows[m + 1] + 1);
    return true;
}

std::int32_t walkquad(SolveControl* control, void* user, Visit visit, void* data) noexcept
{
    constexpr std::int32_t LINEAR_TERM = -1;
    const Problem& problem = *control->problem;
    const Visitor visitor{control, user, visit, data};

    if (has_quadratic_part(problem)) {
        const ColumnMatrix matrix{problem.numcols, problem.qmatbeg, problem.qmatcnt,
                                  problem.qmatind, problem.qmatval};
        if (!matrix.walk(problem.numcols, visitor)) return 0;
    }
    return walk_linear_objective(problem, LINEAR_TERM, visitor);
}

}  // namespace tarnwick
