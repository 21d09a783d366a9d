// The bounded tableau simplex in two phases. Every nonbasic variable rests at a bound (a free one
// at zero); a step moves one of them until it meets its own other bound, which is a flip, or until
// a basic variable meets one of its bounds, which is a pivot.
//
// Signs are normalised first, so that every right-hand side is nonnegative. The logical variable of
// a row is then a slack in a < row, and an artificial one in the others, where the first phase
// drives
//
//     T[m+1][.] = sum of T[i][.] over the rows i that are not <
//
// to zero. An artificial of an = row that leaves is gone for good: its column goes behind
// activecols, where it is still updated, because the dual of the row is read from it. One of a > row
// turns into the row's surplus: its column changes sign and loses its share of the infeasibility.
//
// Pricing takes the largest coefficient; there is no refactorisation and no perturbation.

#include "linear/simplex.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "control/services.h"
#include "linear/certificate.h"
#include "linear/pivot.h"
#include "linear/ratio.h"
#include "linear/scaling.h"

namespace tarnwick {

// ---- placement

namespace {

bool is_finite_lower(double bound) noexcept { return bound > -INFINITE_BOUND; }
bool is_finite_upper(double bound) noexcept { return bound < INFINITE_BOUND; }

struct Rest {
    double value;
    ColumnState state;
};

// A variable with two bounds starts at the one nearer to the point it had, the lower on a tie.
Rest starting_rest(double lower, double upper, double x) noexcept
{
    if (lower == upper) return {lower, IS_FIXED};
    if (is_finite_lower(lower) && is_finite_upper(upper))
        return 2.0 * x > lower + upper ? Rest{upper, AT_UPPER} : Rest{lower, AT_LOWER};
    if (is_finite_lower(lower)) return {lower, AT_LOWER};
    if (is_finite_upper(upper)) return {upper, AT_UPPER};
    return {0.0, AT_ZERO};
}

// Moves the contributions of the nonbasic variables into column 0.
void rest_all(LpEngine& lp) noexcept
{
    bool all_at_zero = true;
    for (int j = 1; j <= lp.n; ++j) {
        const Rest rest = starting_rest(lp.lower[j], lp.upper[j], lp.x[j]);
        lp.x[j] = rest.value;
        lp.colstate[j] = rest.state;
        all_at_zero = all_at_zero && !(std::fabs(rest.value) > NEGLIGIBLE);
    }
    if (all_at_zero) return;

    for (int i = 0; i <= lp.m; ++i) {
        double* const row = lp.tableau[i];
        for (int j = 1; j <= lp.n; ++j)
            if (std::fabs(lp.x[j]) > NEGLIGIBLE && std::fabs(row[j]) > NEGLIGIBLE)
                row[0] -= row[j] * lp.x[j];
    }
}

void negate_row(double* row, int n) noexcept
{
    for (int j = 0; j <= n; ++j) row[j] = -row[j];
}

char mirrored(char sense) noexcept
{
    if (sense == '=') return '=';
    return sense == '<' ? '>' : '<';
}

void normalise_signs(LpEngine& lp) noexcept
{
    for (int i = 1; i <= lp.m; ++i) {
        if (!(lp.tableau[i][0] < 0.0)) continue;
        negate_row(lp.tableau[i], lp.n);
        lp.senses[i].sense = mirrored(lp.senses[i].sense);
        ++lp.senses[i].flips;
    }
}

void build_infeasibility_row(LpEngine& lp) noexcept
{
    double* const sum = lp.tableau[lp.m + 1];
    std::fill_n(sum, lp.n + 1, 0.0);
    for (int i = 1; i <= lp.m; ++i) {
        if (lp.senses[i].sense == '<') continue;
        const double* const row = lp.tableau[i];
        for (int j = 0; j <= lp.n; ++j) sum[j] += row[j];
    }
}

void placevariables(LpEngine& lp) noexcept
{
    rest_all(lp);
    normalise_signs(lp);
    build_infeasibility_row(lp);
}

// ---- pricing

// The column with the largest attractive entry of row s, the lowest on a tie; a free variable with
// any attraction comes before all others. 0: none is above opttol.
int price(const LpEngine& lp, int s) noexcept
{
    const double* const costs = lp.tableau[s];
    double best = 0.0;
    int pick = 0;
    for (int j = 1; j <= lp.activecols; ++j) {
        const double d = costs[j];
        switch (lp.colstate[j]) {
        case AT_LOWER:
            if (d > best) {
                best = d;
                pick = j;
            }
            break;
        case AT_UPPER:
            if (-d > best) {
                best = -d;
                pick = j;
            }
            break;
        case AT_ZERO:
            if (std::fabs(d) > lp.opttol) return j;
            break;
        default: break;
        }
    }
    return best > lp.opttol ? pick : 0;
}

// ---- reports

void refreshiterate(LpEngine& lp) noexcept
{
    for (int i = 1; i <= lp.m; ++i)
        if (lp.rowlabel[i] <= lp.n) lp.iterate[lp.rowlabel[i]] = lp.basicvalue[i];
    for (int j = 1; j <= lp.n; ++j)
        if (lp.collabel[j] <= lp.n) lp.iterate[lp.collabel[j]] = lp.x[lp.collabel[j]];
}

constexpr std::int32_t EVENT_STEP = EVENT_ITERATION | EVENT_POLL;

// The pivots of a subproblem do not count, but a subproblem without end must meet the time limit and
// the callback.
std::int32_t report_subproblem(const LpEngine& lp) noexcept
{
    constexpr std::int32_t SILENT_PIVOTS = 1000;
    if (lp.iterations % SILENT_PIVOTS != 0) return reportprogress(lp.control, EVENT_POLL, 0, 0.0);
    return reportprogress(lp.control, EVENT_STEP, lp.majors,
                          unscaleobjective(lp, lp.vertices[0][0]));
}

std::int32_t report_step(const LpEngine& lp) noexcept
{
    if (lp.mode == MODE_QUADRATIC) return report_subproblem(lp);
    const double infeasibility = lp.basicvalue[lp.m + 1];
    if (lp.tol < infeasibility)
        return reportprogress(lp.control, EVENT_STEP | EVENT_INFEASIBILITY, lp.iterations,
                              infeasibility);
    const double objective = unscaleobjective(lp, lp.basicvalue[0]);
    return reportprogress(lp.control, EVENT_STEP, lp.iterations,
                          lp.maximize ? -objective : objective);
}

EngineResult reportiterate(LpEngine& lp) noexcept
{
    if (report_step(lp) == STOP_NONE) return ENGINE_OPTIMAL;
    refreshiterate(lp);
    return stopatiterate(lp);
}

}  // namespace

EngineResult stopatiterate(LpEngine& lp) noexcept
{
    reportprogress(lp.control, EVENT_FINAL, 0, 0.0);
    unscalecolumns(lp, {lp.iterate});
    evalfunctions(lp.control, lp.rowprobe.first(), lp.iterate.first());
    scalecolumns(lp, {lp.iterate});
    scalerowvalues(lp, {lp.rowprobe});
    return stopresult(reportprogress(lp.control, EVENT_FINAL_DONE, 0, 0.0), ENGINE_OPTIMAL);
}

// ---- the phases

namespace {

// The row's first logical variable has just left the basis, into column c.
void fixrow(LpEngine& lp, int r, int c) noexcept
{
    if (lp.rowpending[r] == 0) return;
    lp.rowpending[r] = 0;
    switch (lp.senses[r].sense) {
    case '=':
        exchangecolumns(lp, c, lp.activecols);
        --lp.activecols;
        break;
    case '>':
        lp.tableau[lp.m + 1][c] += 1.0;
        negatecolumn(lp, c);
        break;
    default: break;
    }
}

// Steps, priced in row s, until no column is attractive: m+1 in the first phase, 0 in the second.
EngineResult run_phase(LpEngine& lp, int s,
                       std::int64_t most_steps = std::numeric_limits<std::int64_t>::max()) noexcept
{
    const bool is_first = s != 0;
    const int last = is_first ? lp.m + 1 : lp.m;
    for (std::int64_t step = 0; step < most_steps; ++step) {
        const int c = price(lp, s);
        if (c == 0) return ENGINE_OPTIMAL;

        fetchcolumn(lp, last, c);
        const StepChoice choice = ratiotest(lp, c, s);
        if (choice.step == Step::none) return ENGINE_UNBOUNDED;
        if (choice.step == Step::flip) {
            flipbound(lp, c);
        } else {
            pivot(lp, last, choice.row, c);
            if (is_first) fixrow(lp, choice.row, c);
        }
        if (const EngineResult stop = reportiterate(lp); stop != ENGINE_OPTIMAL) return stop;
    }
    return ENGINE_OPTIMAL;
}

// The open column with the largest entry of row i, the lowest on a tie; 0 if it is no pivot.
int largest_entry(LpEngine& lp, int i) noexcept
{
    refreshrow(lp, i);
    const double* const row = lp.tableau[i];
    double best = 0.0;
    int pick = 0;
    for (int j = 1; j <= lp.activecols; ++j) {
        if (!(std::fabs(row[j]) > best)) continue;
        best = std::fabs(row[j]);
        pick = j;
    }
    return best > lp.pivottol ? pick : 0;
}

// Drives the artificial of an = row, now at zero, out of the basis. A row without a pivot is
// redundant and keeps it.
EngineResult drive_out(LpEngine& lp, int i) noexcept
{
    const int c = largest_entry(lp, i);
    if (c == 0) return ENGINE_OPTIMAL;
    fetchcolumn(lp, lp.m + 1, c);
    pivot(lp, lp.m + 1, i, c);
    fixrow(lp, i, c);
    return reportiterate(lp);
}

// The artificial of a > row that is still basic is the row's surplus from now on.
void turn_into_surplus(LpEngine& lp, int i) noexcept
{
    refreshrow(lp, i);
    negate_row(lp.tableau[i], lp.n);
    lp.basicvalue[i] = -lp.basicvalue[i];
}

EngineResult transition(LpEngine& lp) noexcept
{
    for (int i = 1; i <= lp.m; ++i) {
        if (lp.rowpending[i] == 0) continue;
        const char sense = lp.senses[i].sense;
        if (sense == '=') {
            if (const EngineResult stop = drive_out(lp, i); stop != ENGINE_OPTIMAL) return stop;
            continue;
        }
        if (sense == '>') turn_into_surplus(lp, i);
        lp.rowpending[i] = 0;
    }
    return ENGINE_OPTIMAL;
}

void start_basis(LpEngine& lp) noexcept
{
    lp.iterations = 0;
    lp.activecols = lp.n;
    lp.waiting.count = 0;
    for (int j = 1; j <= lp.n; ++j) lp.collabel[j] = j;
    for (int i = 1; i <= lp.m; ++i) {
        lp.rowlabel[i] = lp.n + i;
        lp.rowpending[i] = 1;
    }
    loadbasis(lp);
}

bool has_artificial(const LpEngine& lp, int i) noexcept
{
    return lp.rowpending[i] != 0 && lp.senses[i].sense != '<';
}

// The infeasibility row as the sum that it stands for. The columns of artificials that have gone keep
// their cost.
void rebuild_infeasibility_row(LpEngine& lp) noexcept
{
    double* const sum = lp.tableau[lp.m + 1];
    std::fill_n(sum + 1, lp.activecols, 0.0);
    std::fill(sum + 1 + lp.activecols, sum + 1 + lp.n, 1.0);
    lp.basicvalue[lp.m + 1] = 0.0;
    for (int i = 1; i <= lp.m; ++i) {
        if (!has_artificial(lp, i)) continue;
        refreshrow(lp, i);
        const double* const row = lp.tableau[i];
        for (int j = 1; j <= lp.n; ++j) sum[j] += row[j];
        lp.basicvalue[lp.m + 1] += lp.basicvalue[i];
    }
}

// Whether what is left of the infeasibility says that no point is feasible. Row m+1 is updated from
// pivot to pivot: on a hard model its value can be nothing but the errors of many pivots. And columns
// that pricing has let pass may undo it, where their variables have far to go. So it is summed anew,
// those columns are tried, and the rows as read must bear out what is left.
EngineResult judge_infeasibility(LpEngine& lp) noexcept
{
    constexpr double SHARPEST_PRICING = 1e-9;
    const double& infeasibility = lp.basicvalue[lp.m + 1];
    if (infeasibility <= lp.feastol) return ENGINE_OPTIMAL;

    rebuild_infeasibility_row(lp);
    const double opttol = std::exchange(lp.opttol, std::min(lp.opttol, SHARPEST_PRICING));
    const EngineResult code = run_phase(lp, lp.m + 1, lp.n + lp.m);
    lp.opttol = opttol;
    // A column that meets no row is of no use.
    if (code != ENGINE_OPTIMAL && code != ENGINE_UNBOUNDED) return code;
    if (infeasibility <= lp.feastol) return ENGINE_OPTIMAL;

    refreshiterate(lp);
    return isinfeasible(lp) ? ENGINE_INFEASIBLE : ENGINE_MODELCHECK;
}

EngineResult run_phases(LpEngine& lp) noexcept
{
    if (const EngineResult code = run_phase(lp, lp.m + 1); code != ENGINE_OPTIMAL) return code;
    if (const EngineResult code = judge_infeasibility(lp); code != ENGINE_OPTIMAL) return code;
    if (const EngineResult code = transition(lp); code != ENGINE_OPTIMAL) return code;
    return run_phase(lp, 0);
}

// Leaves the point in x, the tableau whole, and no cost of the wrong sign that pricing let pass.
void finishpoint(LpEngine& lp) noexcept
{
    unloadbasis(lp);
    for (int i = 1; i <= lp.m; ++i)
        if (lp.rowlabel[i] <= lp.n) lp.x[lp.rowlabel[i]] = lp.tableau[i][0];

    double* const costs = lp.tableau[0];
    for (int j = 1; j <= lp.activecols; ++j) {
        const bool is_wrong = (lp.colstate[j] == AT_LOWER && costs[j] > 0.0) ||
                              (lp.colstate[j] == AT_UPPER && costs[j] < 0.0);
        if (is_wrong) costs[j] = 0.0;
    }
}

EngineResult solve_from_point(LpEngine& lp) noexcept
{
    placevariables(lp);
    start_basis(lp);
    const EngineResult code = run_phases(lp);
    finishpoint(lp);
    return code;
}

}  // namespace

EngineResult solvesimplex(LpEngine& lp) noexcept
{
    getdblinfo(lp.control, &lp.feastol, INFO_FEASTOL);
    getdblinfo(lp.control, &lp.opttol, INFO_OPTTOL);
    getdblinfo(lp.control, &lp.pivottol, INFO_PIVOTTOL);

    if (lp.n < 1 || lp.m < 0) return ENGINE_BADMODEL;
    const EngineResult code = solve_from_point(lp);
    const bool has_copy = lp.mode == MODE_LINEAR && lp.savedtableau;
    if (code != ENGINE_MODELCHECK || !has_copy) return code;

    // It is small pivots that errors grow by: the rows as read get a second chance without them.
    constexpr double SAFE_PIVOT = 1e-4;
    lp.pivottol = std::max(lp.pivottol, SAFE_PIVOT);
    restoretableau(lp);
    return solve_from_point(lp);
}

// ---- other costs, the same basis

namespace {

void rest_nonbasic(LpEngine& lp) noexcept
{
    for (int j = 1; j <= lp.n; ++j) {
        const int label = lp.collabel[j];
        if (label > lp.n) continue;
        switch (lp.colstate[j]) {
        case AT_UPPER: lp.x[label] = lp.upper[label]; break;
        case AT_ZERO: lp.x[label] = 0.0; break;
        default: lp.x[label] = lp.lower[label]; break;
        }
    }
}

// Row 0 = cost of the basis times the rows, less the cost of the column.
void rebuild_costs(LpEngine& lp, Vec<const double> cost) noexcept
{
    double* const costs = lp.tableau[0];
    costs[0] = cost[0];
    for (int j = 1; j <= lp.n; ++j) costs[j] = lp.collabel[j] > lp.n ? 0.0 : -cost[lp.collabel[j]];

    for (int i = 1; i <= lp.m; ++i) {
        if (lp.rowlabel[i] > lp.n) continue;
        const double g = cost[lp.rowlabel[i]];
        if (!(std::fabs(g) > NEGLIGIBLE)) continue;
        const double* const row = lp.tableau[i];
        for (int j = 1; j <= lp.n; ++j)
            if (std::fabs(row[j]) > NEGLIGIBLE) costs[j] += g * row[j];
    }
}

}  // namespace

EngineResult resolvesimplex(LpEngine& lp, Vec<const double> cost) noexcept
{
    if (lp.n < 1 || lp.m < 0 || !lp.tableau) return ENGINE_BADMODEL;
    for (int i = 1; i <= lp.m; ++i)
        if (lp.rowlabel[i] <= lp.n) lp.x[lp.rowlabel[i]] = lp.tableau[i][0];
    rest_nonbasic(lp);
    if (cost) rebuild_costs(lp, cost);

    loadbasis(lp);
    const EngineResult code = run_phase(lp, 0);
    finishpoint(lp);
    return code;
}

}  // namespace tarnwick
