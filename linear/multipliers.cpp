// Multipliers of a quadratic optimum. The point may lie inside a face, so that no basis tells them;
// they are fitted to the first-order conditions: over the columns j off their bounds and the rows i
// that are active,
//
//     minimise  sum over j of ( g[j] - sum over i of y[i] * T[i][j] )^2,
//
// g being the gradient and T the tableau as read. The reduced costs are what the rows leave of the
// gradient. The sense of the objective decides no sign.

#include "linear/multipliers.h"

#include <algorithm>
#include <cmath>

#include "linear/analysis.h"
#include "linear/ldl.h"
#include "linear/objective.h"
#include "linear/scaling.h"
#include "linear/svd.h"

namespace tarnwick {

namespace {

// Columns strictly inside their bounds, into collabel; the count stands in entry 0.
void list_free_columns(const LpEngine& lp) noexcept
{
    int count = 0;
    for (int j = 1; j <= lp.n; ++j) {
        const bool is_free =
            std::fabs(lp.x[j] - lp.lower[j]) > lp.tol && std::fabs(lp.x[j] - lp.upper[j]) > lp.tol;
        if (is_free) lp.collabel[++count] = j;
    }
    lp.collabel[0] = count;
}

// Rows at one of their bounds, into rowlabel, likewise.
void list_active_rows(const LpEngine& lp) noexcept
{
    int count = 0;
    for (int i = 1; i <= lp.m; ++i) {
        const bool is_active = std::fabs(lp.rowvalue[i] - lp.rowlower[i]) < lp.tol ||
                               std::fabs(lp.rowvalue[i] - lp.rowupper[i]) < lp.tol;
        if (is_active) lp.rowlabel[++count] = i;
    }
    lp.rowlabel[0] = count;
}

double product(const LpEngine& lp, const double* a, const double* b) noexcept
{
    double sum = 0.0;
    for (int k = 1; k <= lp.collabel[0]; ++k) sum += a[lp.collabel[k]] * b[lp.collabel[k]];
    return sum;
}

// ---- normal equations

// False: dependent rows, more rows than columns, or no memory.
bool fit_by_normal_equations(const LpEngine& lp) noexcept
{
    std::fill_n(lp.rowbase.first(), lp.m, 0.0);
    const int active = lp.rowlabel[0], free = lp.collabel[0];
    if (active == 0 || free == 0) return true;
    if (active > free) return false;

    ArrayBlock memory;
    Matrix a;
    Vec<double> b;
    if (!memory.create([&](auto& layout) {
            layout(a, active, active);
            layout(b, active);
        }))
        return false;
    for (int k = 1; k <= active; ++k) {
        const double* const row = lp.savedtableau[lp.rowlabel[k]];
        for (int l = 1; l <= k; ++l)
            a[k][l] = a[l][k] = product(lp, row, lp.savedtableau[lp.rowlabel[l]]);
        b[k] = product(lp, lp.grad.data(), row);
    }
    if (!factorldl(a, active)) return false;
    solveldl(a, b);
    for (int k = 1; k <= active; ++k) lp.rowbase[lp.rowlabel[k]] = b[k];
    return true;
}

// ---- decomposition

struct Fit {
    Matrix u, v;       // rows 1..size by columns 1..active; active by active
    Vec<double> b;     // size
    Vec<double> w, t;  // active: singular values, right-hand side in their directions
    ArrayBlock memory;
};

bool create_fit(Fit& fit, int size, int active) noexcept
{
    return fit.memory.create([&](auto& layout) {
        layout(fit.u, size, active);
        layout(fit.v, active, active);
        layout(fit.b, size);
        layout(fit.w, active);
        layout(fit.t, active);
    });
}

void fill_fit(const LpEngine& lp, const Fit& fit) noexcept
{
    for (int k = 1; k <= lp.collabel[0]; ++k) {
        const int j = lp.collabel[k];
        fit.b[k] = lp.grad[j];
        for (int l = 1; l <= lp.rowlabel[0]; ++l) fit.u[k][l] = lp.savedtableau[lp.rowlabel[l]][j];
    }
}

// t = U'b / w, without the directions that the rows do not span.
void divide_by_values(const Fit& fit, int size, int active) noexcept
{
    constexpr double RANK_SHARE = 1e-15;  // of the largest singular value
    const double largest = *std::max_element(fit.w.first(), fit.w.first() + active);
    for (int l = 1; l <= active; ++l) {
        double sum = 0.0;
        for (int k = 1; k <= size; ++k) sum += fit.u[k][l] * fit.b[k];
        fit.t[l] = fit.w[l] > RANK_SHARE * largest ? sum / fit.w[l] : 0.0;
    }
}

// The least-squares multipliers of minimum norm.
void fit_by_decomposition(LpEngine& lp) noexcept
{
    const int active = lp.rowlabel[0];
    const int size = std::max(active, static_cast<int>(lp.collabel[0]));
    Fit fit;
    if (!create_fit(fit, size, active)) return;
    fill_fit(lp, fit);
    if (!decompose(lp, fit.u, size, active, fit.w, fit.v, fit.t)) return;
    divide_by_values(fit, size, active);
    for (int l = 1; l <= active; ++l) {
        double y = 0.0;
        for (int k = 1; k <= active; ++k) y += fit.v[l][k] * fit.t[k];
        lp.rowbase[lp.rowlabel[l]] = y;
    }
}

// ---- reduced costs

void find_reduced_costs(const LpEngine& lp) noexcept
{
    for (int j = 1; j <= lp.n; ++j) {
        double d = lp.grad[j];
        for (int i = 1; i <= lp.m; ++i) d -= lp.savedtableau[i][j] * lp.rowbase[i];
        const bool is_zero = std::fabs(d) <= (std::fabs(lp.grad[j]) + 1.0) * lp.tol;
        lp.start[j] = is_zero ? 0.0 : d;
    }
}

}  // namespace

void finishquadratic(LpEngine& lp) noexcept
{
    scalecolumns(lp, {lp.x, lp.lower, lp.upper});
    scalerowvalues(lp, {lp.rowvalue});
    if (!objectiveat(lp, nullptr, lp.grad, lp.x)) return;

    list_free_columns(lp);
    list_active_rows(lp);
    if (!fit_by_normal_equations(lp)) fit_by_decomposition(lp);
    find_reduced_costs(lp);
    storeresults(lp, lp.start, lp.rowbase);
}

}  // namespace tarnwick
