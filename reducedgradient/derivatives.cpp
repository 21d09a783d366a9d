// The Jacobian, by differences or by the host's function.
//
//     forward   (g(x + h e_j) - g(x)) / h,   h = (|x_j| + 1) diffstep, turned at the upper bound
//     central   (g(x + p e_j) - g(x - q e_j)) / (p + q),   p, q = h, or less at a bound
//
// Entries are of single precision. A column that three refreshes in a row have found unchanged counts
// as constant, if such columns are to be recognised: it is kept from then on, and looked at once more
// at the final point.

#include "reducedgradient/derivatives.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "control/services.h"
#include "reducedgradient/evaluation.h"

namespace tarnwick {

namespace {

// Refreshes that must find a column unchanged.
constexpr int STABLE = 3;
// The host's derivatives may differ so much from the differences. Relative with 1, host's units.
constexpr double CHECK_TOL = 1e-4;

bool is_constant(const NlpEngine& nlp, int j) noexcept
{
    return nlp.recognise && nlp.stablecount[j] >= STABLE;
}

// ---- the account of the first Jacobian: evaluations are reported as iterations

bool report_first(NlpEngine& nlp, int count) noexcept
{
    if (nlp.firstjacobian) return true;
    nlp.iterations = count;
    if (nlp_report_iteration(nlp) == ENGINE_OPTIMAL) return true;
    nlp.iterations = 0;
    return false;
}

void end_refresh(NlpEngine& nlp) noexcept
{
    nlp.jacobianvalid = true;
    if (nlp.firstjacobian) return;
    nlp.iterations = 0;
    nlp.firstjacobian = true;
}

// ---- differences

double difference_step(const NlpEngine& nlp, double x) noexcept
{
    return (std::fabs(x) + 1.0) * nlp.diffstep;
}

// Where a column is evaluated, seen from the point; forward differences have nothing to do below.
struct Offsets {
    double plus, minus;
};

Offsets forward_offsets(const NlpEngine& nlp, int j) noexcept
{
    const double x = nlp.point[j], h = difference_step(nlp, x);
    return {x + h > nlp.upper[j] ? -h : h, 0.0};
}

Offsets central_offsets(const NlpEngine& nlp, int j) noexcept
{
    const double x = nlp.point[j], h = difference_step(nlp, x);
    double plus = h, minus = -h;
    if (x + plus > nlp.upper[j]) plus = std::max(nlp.upper[j] - x, 0.0);
    if (x + minus < nlp.lower[j]) minus = std::min(nlp.lower[j] - x, 0.0);
    return {plus, minus};
}

// The rows with variable j moved by `offset`. False: no values.
bool eval_beside(NlpEngine& nlp, Vec<double> values, double offset, int prev, int j) noexcept
{
    const double x = nlp.point[j];
    nlp.point[j] = x + offset;
    nlp_eval_column(nlp, values, nlp.point, prev, j);
    nlp.point[j] = x;
    return nlp.status == ENGINE_OPTIMAL;
}

// Slopes of all rows between the two offsets, from the values in rowplus and rowminus, to work1.
void find_slopes(NlpEngine& nlp, Offsets at) noexcept
{
    const double width = at.plus - at.minus;
    for (int i = 1; i <= nlp.rows; ++i)
        nlp.work1[i] = width == 0.0 ? 0.0 : (nlp.rowplus[i] - nlp.rowminus[i]) / width;
}

// Column j from the slopes. Rows ahead of the first that has changed keep their entries. False: an
// entry is beyond single precision, or no number.
bool store_column(NlpEngine& nlp, int j) noexcept
{
    const bool compares = nlp.recognise && nlp.jacobianvalid && nlp.stablecount[j] >= 0;
    bool same = compares;
    for (int i = 1; i <= nlp.rows; ++i) {
        const double a = nlp.work1[i];
        if (!(std::fabs(a) <= FLT_MAX)) return false;
        float& entry = nlp.jacobian[i][j];
        same = same && std::fabs(a - entry) <= nlp.diffstep;
        if (!same) entry = static_cast<float>(a);
    }
    if (compares) nlp.stablecount[j] = same ? nlp.stablecount[j] + 1 : -1;
    return true;
}

// False: the status says why.
bool difference(NlpEngine& nlp, bool central, Offsets at, int prev, int j) noexcept
{
    if (!eval_beside(nlp, nlp.rowplus, at.plus, prev, j)) return false;
    if (central && !eval_beside(nlp, nlp.rowminus, at.minus, prev, j)) return false;
    find_slopes(nlp, at);
    return true;
}

// Slopes between uneven offsets have an error of first order, too much to judge the host's function
// by. Half the offsets halve it: twice the new slopes less the old ones are free of it.
bool refine_slopes(NlpEngine& nlp, Offsets at, int j) noexcept
{
    for (int i = 1; i <= nlp.rows; ++i) nlp.work2[i] = nlp.work1[i];
    if (!difference(nlp, true, {0.5 * at.plus, 0.5 * at.minus}, j, j)) return false;
    for (int i = 1; i <= nlp.rows; ++i) nlp.work1[i] = 2.0 * nlp.work1[i] - nlp.work2[i];
    return true;
}

// False: the status says why.
bool difference_column(NlpEngine& nlp, bool central, int prev, int j) noexcept
{
    const Offsets at = central ? central_offsets(nlp, j) : forward_offsets(nlp, j);
    if (!difference(nlp, central, at, prev, j)) return false;
    const bool is_even = at.plus == -at.minus;
    if (nlp.derivmode == DERIVE_CHECKED && !is_even && !refine_slopes(nlp, at, j)) return false;
    if (store_column(nlp, j)) return true;
    nlp.status = ENGINE_EVALERROR;
    return false;
}

// Puts the objective's gradient back, which phase 1 may have overwritten, or forgets the columns of
// an earlier solve.
void prepare_recognition(NlpEngine& nlp) noexcept
{
    for (int j = 1; j <= nlp.variables; ++j) {
        if (nlp.jacobianvalid)
            nlp.jacobian[nlp.objrow][j] = static_cast<float>(nlp.objgradient[j]);
        else
            nlp.stablecount[j] = 0;
    }
}

bool all_constant(const NlpEngine& nlp) noexcept
{
    if (!nlp.jacobianvalid) return false;
    for (int j = 1; j <= nlp.variables; ++j)
        if (!is_constant(nlp, j)) return false;
    return true;
}

void clear_column(NlpEngine& nlp, int j) noexcept
{
    for (int i = 1; i <= nlp.rows; ++i) nlp.jacobian[i][j] = 0.0F;
}

void sweep(NlpEngine& nlp, bool central) noexcept
{
    if (nlp.recognise) prepare_recognition(nlp);
    if (!central && all_constant(nlp)) return;

    nlp_eval(nlp, nlp.rowminus, nlp.point);
    if (nlp.status != ENGINE_OPTIMAL) return;

    int prev = 1;
    for (int j = 1; j <= nlp.variables; ++j) {
        if (!report_first(nlp, nlp.rows * j)) return;
        if (nlp.fixed[j]) {
            clear_column(nlp, j);
        } else if (!is_constant(nlp, j)) {
            if (!difference_column(nlp, central, prev, j)) return;
            prev = j;
        }
        nlp.objgradient[j] = nlp.jacobian[nlp.objrow][j];
    }
    end_refresh(nlp);
}

void nlp_jacobian_forward(NlpEngine& nlp) noexcept { sweep(nlp, false); }
void nlp_jacobian_central(NlpEngine& nlp) noexcept { sweep(nlp, true); }

// ---- the host's derivatives

double unit_ratio(const NlpEngine& nlp, int row, int column) noexcept
{
    return nlp.scaled ? nlp.scale[nlp.variables + row] / nlp.scale[column] : 1.0;
}

// The host passes entries that aren't zero: all others are, unless differences stand there.
void nlp_jacobian_analytic(NlpEngine& nlp) noexcept
{
    if (!report_first(nlp, 1)) return;
    if (nlp.derivmode == DERIVE_ANALYTIC)
        for (int j = 1; j <= nlp.variables; ++j) clear_column(nlp, j);

    nlp_real_point(nlp, nlp.point);
    if (!evaljacobian(nlp.control, &nlp, nlpjacobianentry, nullptr, nlp.realpoint.first(),
                      JACOBIAN_OBJECTIVE | JACOBIAN_MINIMISE)) {
        nlp.status = ENGINE_EVALERROR;
        return;
    }
    for (int j = 1; j <= nlp.variables; ++j) nlp.objgradient[j] = nlp.jacobian[nlp.objrow][j];
    end_refresh(nlp);
}

}  // namespace

std::int32_t nlpjacobianentry(SolveControl*, void* engine, std::int32_t row, std::int32_t column,
                              double value, void* data) noexcept
{
    NlpEngine& nlp = *static_cast<NlpEngine*>(engine);
    const int r = row + 1, c = column + 1;
    float& entry = nlp.jacobian[r][c];
    const double unit = unit_ratio(nlp, r, c);

    const bool is_checked = nlp.derivmode == DERIVE_CHECKED && !nlp.fixed[c];
    if (double* const numeric = static_cast<double*>(data); is_checked && numeric) {
        *numeric = entry * unit;
        if (!(std::fabs(*numeric - value) / (std::fabs(value) + 1.0) <= CHECK_TOL)) return 0;
    }
    // Several entries for one place mean their sum.
    const double earlier = nlp.derivmode == DERIVE_ANALYTIC ? entry : 0.0;
    const double sum = earlier + value / unit;
    if (!(std::fabs(sum) <= FLT_MAX)) return 0;
    entry = static_cast<float>(sum);
    return 1;
}

void nlp_refresh_jacobian(NlpEngine& nlp) noexcept
{
    switch (nlp.derivmode) {
    case DERIVE_FORWARD: nlp_jacobian_forward(nlp); break;
    case DERIVE_CENTRAL: nlp_jacobian_central(nlp); break;
    case DERIVE_ANALYTIC: nlp_jacobian_analytic(nlp); break;
    default:
        nlp_jacobian_central(nlp);
        if (nlp.status == ENGINE_OPTIMAL) nlp_jacobian_analytic(nlp);
    }
}

// ---- the columns that were taken for constant

namespace {

// A step as forward differences take it, held within the bounds. 0: there is no room.
double step_within_bounds(const NlpEngine& nlp, int j) noexcept
{
    const double x = nlp.point[j], h = difference_step(nlp, x);
    const double above = nlp.varupper[j] - x, below = x - nlp.varlower[j];
    if (h <= above) return h;
    if (h <= below) return -h;
    return above >= below ? std::max(above, 0.0) : -std::max(below, 0.0);
}

// Entries are known as well as single precision tells them.
bool is_slope(const NlpEngine& nlp, int i, int j, double slope) noexcept
{
    const double entry = i == nlp.objrow ? nlp.objgradient[j] : nlp.jacobian[i][j];
    const double unit = nlp.scaling ? nlp.scale[nlp.variables + i] / nlp.scale[j] : 1.0;
    const double a = entry * unit;
    return std::fabs(slope - a) <= nlp.diffstep + std::fabs(a) * FLT_EPSILON;
}

}  // namespace

bool nlp_check_linear(NlpEngine& nlp) noexcept
{
    nlp_eval(nlp, nlp.rowminus, nlp.point);
    int prev = 1;
    for (int j = 1; j <= nlp.variables && nlp.status == ENGINE_OPTIMAL; ++j) {
        if (nlp.stablecount[j] < STABLE) continue;
        const double h = step_within_bounds(nlp, j);
        if (h == 0.0 || !eval_beside(nlp, nlp.rowplus, h, prev, j)) continue;
        prev = j;
        for (int i = 1; i <= nlp.rows; ++i)
            if (!is_slope(nlp, i, j, (nlp.rowplus[i] - nlp.rowminus[i]) / h)) return false;
    }
    return nlp.status == ENGINE_OPTIMAL;
}

}  // namespace tarnwick
