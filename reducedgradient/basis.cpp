// The partition of the variables at a point, and the inverse of the basis.
//
// The basis matrix has a row for each binding row and a column for each basic variable: the column of
// the Jacobian for a structural one, -e for a slack, which stays basic only in its own position. Gauss-
// Jordan elimination runs in place over the binding rows of the Jacobian: a pivot in row r and column
// c leaves in column c what the elimination makes of the unit column e_r,
//
//     row r /= p,   row i -= a_ic * row r,   column c: 1/p and -a_ic/p
//
// so that in the end the inverse stands in the columns that were pivoted in. Pivots are large enough
// and, among those, of variables clear of their bounds.

#include "reducedgradient/basis.h"

#include <algorithm>
#include <cmath>

#include "reducedgradient/derivatives.h"
#include "reducedgradient/evaluation.h"
#include "reducedgradient/factor.h"

namespace tarnwick {

namespace {

// No distance from a bound counts for more. Scaled units.
constexpr double FAR = 1e10;
// Variables at least so many times feastol from their bounds are clear of them.
constexpr double CLEARANCE = 10.0;
// Below it the first pivot is none at all. Absolute, scaled units.
constexpr double SMALLEST_PIVOT = 1e-10;
// Pivots beyond this share of the largest compete by the distance from the bounds.
constexpr double USABLE_SHARE = 0.01;

// ---- the rows that bind

// The bound on which row i stands: 1 upper, -1 lower, 0 neither.
int binding_side(const NlpEngine& nlp, int i) noexcept
{
    const int s = nlp.variables + i;
    const double g = nlp.rowvalue[i];
    const auto is_near = [&nlp, g](double bound) { return std::fabs(g - bound) < nlp.feastol; };
    if (nlp.rowkind[i] == ROW_BOUNDED && is_near(nlp.upper[s])) return 1;
    return is_near(nlp.lower[s]) ? -1 : 0;
}

void classify_row(NlpEngine& nlp, int i) noexcept
{
    nlp.position[i] = 0;
    if (nlp.rowkind[i] == ROW_FREE) return;
    const int s = nlp.variables + i, side = binding_side(nlp, i);
    if (side == 0) {
        nlp.inactive[++nlp.ninactive] = i;
        return;
    }
    nlp.binding[++nlp.nbasic] = i;
    nlp.position[i] = nlp.nbasic;
    nlp.point[s] = side > 0 ? nlp.upper[s] : nlp.lower[s];
}

// True: the basis is to be chosen afresh. The old one is offered again only after a step that ended
// clear of all bounds, with the same rows binding.
bool classify_rows(NlpEngine& nlp) noexcept
{
    const int before = nlp.nbasic;
    for (int k = 1; k <= before; ++k) nlp.previous[k] = nlp.binding[k];
    nlp.superchanged = false;
    nlp.nbasic = nlp.ninactive = 0;
    for (int i = 1; i <= nlp.rows; ++i) classify_row(nlp, i);

    if (nlp.nowfeasible || nlp.iterations == 0 || nlp.nbasic != before || nlp.rebuildnext ||
        !nlp.interior)
        return true;
    for (int k = 1; k <= nlp.nbasic; ++k)
        if (nlp.binding[k] != nlp.previous[k]) return true;
    return false;
}

// Which columns may enter, and how far their variables are from the bounds.
void measure_columns(NlpEngine& nlp) noexcept
{
    for (int j = 1; j <= nlp.variables; ++j) {
        nlp.columnmark[j] = nlp.fixed[j] ? 0 : 1;
        const double d = std::min(nlp.point[j] - nlp.lower[j], nlp.upper[j] - nlp.point[j]);
        nlp.bounddistance[j] = d <= nlp.feastol ? 0.0 : std::min(d, FAR);
    }
}

// ---- the choice of pivots

class PivotChoice {
  public:
    PivotChoice(NlpEngine& nlp, bool rebuilds) noexcept : nlp_(nlp), rebuilds_(rebuilds) {}

    // The column of the next pivot; n + i is the slack of position i. The row is in pivotrow.
    int next() noexcept
    {
        int column = 0;
        if (!rebuilds_ && !fills_) column = reused_column();
        if (column == 0 && !fills_) column = fresh_column();
        if (column == 0) column = slack_column();
        is_first_ = false;
        return column;
    }

  private:
    // The largest entry in the columns of the old basis; the earlier of equal ones.
    int reused_column() noexcept
    {
        double largest = 0.0;
        int place = 0;
        for (int q = 1; q <= nlp_.nbasic; ++q) {
            const int c = nlp_.basisorder[q];
            if (c == 0 || is_slack(nlp_, c)) continue;
            for (int i = 1; i <= nlp_.nbasic; ++i) {
                if (nlp_.basic[i] != 0 || !(std::fabs(nlp_.basisinverse[i][c]) > largest)) continue;
                largest = std::fabs(nlp_.basisinverse[i][c]);
                nlp_.pivotrow[c] = i;
                place = q;
            }
        }
        if (is_first_) first_ = largest;
        if (!may_be_reused(largest)) {
            rebuilds_ = true;
            return 0;
        }
        return std::exchange(nlp_.basisorder[place], 0);
    }

    bool may_be_reused(double pivot) const noexcept
    {
        if (is_first_) return pivot > BASIS_PIVOT_TOL;
        return (nlp_.hitposition != 0 && pivot > TINY) || is_large_enough(pivot);
    }

    // NaN is not.
    bool is_large_enough(double pivot) const noexcept
    {
        return pivot > 0.0 && (pivot >= first_ * BASIS_PIVOT_TOL || pivot >= BASIS_PIVOT_TOL);
    }

    int fresh_column() noexcept
    {
        const double largest = measure_pivots();
        if (is_first_) first_ = largest;
        if (first_ < SMALLEST_PIVOT || !is_large_enough(largest)) return 0;

        const int clear = clear_column();
        const double pivot = clear == 0 ? 0.0 : nlp_.maxpivot[clear];
        if (clear != 0 && (pivot >= BASIS_PIVOT_TOL || pivot >= largest * BASIS_PIVOT_TOL))
            return clear;
        return farthest_column(largest);
    }

    // The best pivot of each column that may enter, in maxpivot and pivotrow; the later of equal
    // rows. The largest of all.
    double measure_pivots() const noexcept
    {
        const int n = nlp_.variables;
        for (int j = 1; j <= n; ++j) nlp_.maxpivot[j] = 0.0;
        for (int i = 1; i <= nlp_.nbasic; ++i) {
            if (nlp_.basic[i] != 0) continue;
            const double* const row = nlp_.basisinverse[i];
            for (int j = 1; j <= n; ++j) {
                if (!nlp_.columnmark[j] || !(std::fabs(row[j]) >= nlp_.maxpivot[j])) continue;
                nlp_.maxpivot[j] = std::fabs(row[j]);
                nlp_.pivotrow[j] = i;
            }
        }
        double largest = 0.0;
        for (int j = 1; j <= n; ++j) largest = std::max(largest, nlp_.maxpivot[j]);
        return largest;
    }

    // The largest pivot among the variables clear of their bounds; the earlier of equal ones.
    int clear_column() const noexcept
    {
        int best = 0;
        for (int j = 1; j <= nlp_.variables; ++j) {
            if (!nlp_.columnmark[j] || !(nlp_.bounddistance[j] >= CLEARANCE * nlp_.feastol))
                continue;
            if (best == 0 || nlp_.maxpivot[j] > nlp_.maxpivot[best]) best = j;
        }
        return best;
    }

    // The variable farthest from its bounds among those with a usable pivot; the later of equal ones.
    int farthest_column(double largest) const noexcept
    {
        int best = 0;
        for (int j = 1; j <= nlp_.variables; ++j) {
            if (!nlp_.columnmark[j] || !(nlp_.maxpivot[j] > USABLE_SHARE * largest)) continue;
            if (best == 0 || nlp_.bounddistance[j] >= nlp_.bounddistance[best]) best = j;
        }
        return best;
    }

    // From here on all positions keep their slacks.
    int slack_column() noexcept
    {
        fills_ = true;
        int i = 1;
        while (nlp_.basic[i] != 0) ++i;
        return nlp_.variables + i;
    }

    NlpEngine& nlp_;
    bool rebuilds_;
    bool fills_ = false;
    bool is_first_ = true;
    double first_ = 0.0;  // the largest pivot that there was for the first position
};

// ---- elimination

void load_tableau(NlpEngine& nlp) noexcept
{
    for (int i = 1; i <= nlp.nbasic; ++i) {
        nlp.basic[i] = 0;
        const float* const row = nlp.jacobian[nlp.binding[i]];
        for (int j = 1; j <= nlp.variables; ++j) nlp.basisinverse[i][j] = row[j];
    }
}

void keep_slack(NlpEngine& nlp, int i) noexcept
{
    double* const row = nlp.basisinverse[i];
    for (int j = 1; j <= nlp.variables; ++j) row[j] = -row[j];
    nlp.basic[i] = nlp.variables + i;
}

void eliminate(NlpEngine& nlp, int r, int c) noexcept
{
    const int n = nlp.variables;
    double* const pivotrow = nlp.basisinverse[r];
    const double p = std::exchange(pivotrow[c], 1.0);
    for (int j = 1; j <= n; ++j) pivotrow[j] /= p;
    for (int i = 1; i <= nlp.nbasic; ++i) {
        if (i == r) continue;
        double* const row = nlp.basisinverse[i];
        const double factor = std::exchange(row[c], 0.0);
        if (factor == 0.0) continue;
        for (int j = 1; j <= n; ++j) row[j] -= factor * pivotrow[j];
    }
    nlp.bounddistance[c] = 0.0;
    nlp.basic[r] = c;
    nlp.columnmark[c] = 0;
}

// The inverse column of each position stands in the column that was pivoted in there; that of a basic
// slack is -e.
void assemble_inverse(NlpEngine& nlp) noexcept
{
    const Vec<double> old = nlp.work1;
    for (int i = 1; i <= nlp.nbasic; ++i) {
        double* const row = nlp.basisinverse[i];
        std::copy_n(row + 1, nlp.variables, old.first());
        for (int k = 1; k <= nlp.nbasic; ++k) {
            const int c = nlp.basic[k];
            const double slack_entry = i == k ? -1.0 : 0.0;
            row[k] = is_slack(nlp, c) ? slack_entry : old[c];
        }
    }
}

// False: a stop.
bool invert_basis(NlpEngine& nlp, bool rebuilds) noexcept
{
    load_tableau(nlp);
    PivotChoice choice(nlp, rebuilds);
    for (int k = 1; k <= nlp.nbasic; ++k) {
        if (nlp_poll_stop(nlp) != ENGINE_OPTIMAL) return false;
        const int c = choice.next();
        if (is_slack(nlp, c))
            keep_slack(nlp, c - nlp.variables);
        else
            eliminate(nlp, nlp.pivotrow[c], c);
    }
    assemble_inverse(nlp);
    return true;
}

// ---- the lists

// Superbasics come first in rising order; what stands on a bound goes to the end, from the last place
// down: the slacks, then the variables.
void list_nonbasic(NlpEngine& nlp) noexcept
{
    const int n = nlp.variables;
    for (int j = 1; j <= n; ++j) nlp.columnmark[j] = 0;
    int tail = n;
    for (int i = 1; i <= nlp.nbasic; ++i) {
        const int c = nlp.basisorder[i] = nlp.basic[i];
        if (is_slack(nlp, c)) {
            nlp.basic[i] = n + nlp.binding[i];
        } else {
            nlp.columnmark[c] = 1;
            nlp.nonbasic[tail--] = n + nlp.binding[i];
        }
    }
    nlp.nsuper = 0;
    for (int j = 1; j <= n; ++j) {
        if (nlp.columnmark[j]) continue;
        if (nlp.bounddistance[j] <= 0.0)
            nlp.nonbasic[tail--] = j;
        else
            nlp.nonbasic[++nlp.nsuper] = j;
    }
}

// Where both bounds are near the lower one counts.
int side_of(const NlpEngine& nlp, int v) noexcept
{
    if (std::fabs(nlp.point[v] - nlp.lower[v]) <= nlp.feastol) return -1;
    return std::fabs(nlp.point[v] - nlp.upper[v]) <= nlp.feastol ? 1 : 0;
}

// Whether the superbasics are others than the `before` listed in previous. Where only their order has
// changed, all that goes by it follows.
bool superbasics_changed(NlpEngine& nlp, int before) noexcept
{
    if (nlp.nsuper != before || nlp.nsuper == 0) return true;
    const Vec<std::int32_t> place = nlp.columnmark;
    for (int v = 1; v <= nlp.variables + nlp.rows; ++v) place[v] = 0;
    for (int k = 1; k <= before; ++k) place[nlp.previous[k]] = k;

    bool in_order = true;
    for (int k = 1; k <= nlp.nsuper; ++k) {
        const int old = nlp.previous[k];
        const int v = nlp.nonbasic[k];
        if (place[v] == 0) return true;
        in_order = in_order && old == v;
    }
    if (in_order) return false;
    for (int k = 1; k <= nlp.nsuper; ++k) nlp.previous[k] = place[nlp.nonbasic[k]];
    return !nlp_factor_permute(nlp, nlp.previous);
}

}  // namespace

void nlp_refresh_basis(NlpEngine& nlp) noexcept
{
    const bool rebuilds = classify_rows(nlp);
    nlp_refresh_jacobian(nlp);
    if (nlp.status != ENGINE_OPTIMAL) return;

    measure_columns(nlp);
    if (nlp.nbasic > 0 && !invert_basis(nlp, rebuilds)) return;

    const int before = nlp.nsuper;
    for (int k = 1; k <= before; ++k) nlp.previous[k] = nlp.nonbasic[k];
    list_nonbasic(nlp);
    for (int k = 1; k <= nlp.variables; ++k) nlp.boundside[k] = side_of(nlp, nlp.nonbasic[k]);
    nlp.hitposition = 0;
    nlp.superchanged = superbasics_changed(nlp, before);
}

// ---- the exchange

namespace {

double distance_from_bounds(const NlpEngine& nlp, int v) noexcept
{
    return std::min(std::fabs(nlp.point[v] - nlp.lower[v]), std::fabs(nlp.point[v] - nlp.upper[v]));
}

// Entry of the pivot row of position p in the column of variable v.
double pivot_row_entry(const NlpEngine& nlp, int p, int v) noexcept
{
    double sum = 0.0;
    for (int i = 1; i <= nlp.nbasic; ++i) sum += column_entry(nlp, i, v) * nlp.basisinverse[p][i];
    return sum;
}

// The place of the superbasic that enters: of those with a pivot not much below the largest the one
// farthest from its bounds, the later of equal ones.
int entering_place(NlpEngine& nlp, int p) noexcept
{
    constexpr double SHARE = 0.1;
    if (nlp.nsuper == 1) return 1;
    int entering = 1;
    double largest = 0.0;
    for (int k = 1; k <= nlp.nsuper; ++k) {
        nlp.direction[k] = pivot_row_entry(nlp, p, nlp.nonbasic[k]);
        if (std::fabs(nlp.direction[k]) > largest) {
            largest = std::fabs(nlp.direction[k]);
            entering = k;
        }
    }
    double farthest = 0.0;
    for (int k = 1; k <= nlp.nsuper; ++k) {
        const double distance = distance_from_bounds(nlp, nlp.nonbasic[k]);
        if (!(std::fabs(nlp.direction[k]) >= SHARE * largest) || !(distance >= farthest)) continue;
        farthest = distance;
        entering = k;
    }
    return entering;
}

// Column of variable q through the inverse, to work3.
void transform_column(NlpEngine& nlp, int q) noexcept
{
    for (int i = 1; i <= nlp.nbasic; ++i) nlp.tangent[i] = column_entry(nlp, i, q);
    for (int i = 1; i <= nlp.nbasic; ++i) {
        double sum = 0.0;
        for (int k = 1; k <= nlp.nbasic; ++k) sum += nlp.basisinverse[i][k] * nlp.tangent[k];
        nlp.work3[i] = sum;
    }
}

void update_inverse(NlpEngine& nlp, int p) noexcept
{
    double* const pivotrow = nlp.basisinverse[p];
    const double t = 1.0 / nlp.work3[p];
    for (int k = 1; k <= nlp.nbasic; ++k) pivotrow[k] *= t;
    for (int i = 1; i <= nlp.nbasic; ++i) {
        if (i == p) continue;
        double* const row = nlp.basisinverse[i];
        for (int k = 1; k <= nlp.nbasic; ++k) row[k] -= nlp.work3[i] * pivotrow[k];
    }
}

}  // namespace

void nlp_exchange_basis(NlpEngine& nlp) noexcept
{
    const int p = nlp.hitposition;
    const int e = entering_place(nlp, p);
    const int q = nlp.nonbasic[e];
    transform_column(nlp, q);
    update_inverse(nlp, p);

    const int w = std::exchange(nlp.basic[p], q);
    nlp.basisorder[p] = is_slack(nlp, q) ? nlp.variables + nlp.position[q - nlp.variables] : q;
    for (int k = e; k < nlp.nsuper; ++k) {
        nlp.nonbasic[k] = nlp.nonbasic[k + 1];
        nlp.boundside[k] = nlp.boundside[k + 1];
    }
    nlp.nonbasic[nlp.nsuper] = w;
    nlp.boundside[nlp.nsuper] = side_of(nlp, w);
    if (nlp.boundside[nlp.nsuper] != 0) --nlp.nsuper;
}

}  // namespace tarnwick
