// Preprocessing of 0-1 variables by the activities of the rows. With the bounds of a solve, row i,
// its constant included, lies in
//
//     vmin = minrest + sum of min(0, a) over the free 0-1 variables + sum of a over those at one
//     vmax = maxrest + sum of max(0, a) over the free 0-1 variables + sum of a over those at one
//
// where minrest and maxrest are the share of all other columns. A row that vmin or vmax keeps from
// its bound proves that there is no point, or fixes the variable whose change would do that; one
// that can't be violated takes no part in judging a variable by its costs; and what is left of a
// row bounds its other variables. All in scaled units, in which a 0-1 variable is 0 or binone.

#include "linear/binaries.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "control/services.h"
#include "linear/scaling.h"

namespace tarnwick {

namespace {

constexpr char IS_FREE = '-', AT_0 = '0', AT_1 = '1';  // a 0-1 variable
constexpr char IS_REDUNDANT = '-';                     // a row; else blank

// Switches of the second word of capabilities.
enum : std::uint32_t { FIX_BY_ROW = 256, FIX_BY_COST = 512, ORDER = 1024, TIGHTEN = 2048 };
constexpr std::int32_t SWITCHES = 1;

// Coefficient of the variable at place k of the list, times its value of one.
double coefficient(const LpEngine& lp, const SolveRun& run, const double* row, int k) noexcept
{
    const int j = run.branchlist[k];
    return lp.binscaled ? row[j] * lp.binone[j] : row[j];
}

// ---- set-up

bool read_switches(LpEngine& lp) noexcept
{
    const std::uint32_t word = getcapability(lp.control, SWITCHES);
    lp.fixbyrow = (word & FIX_BY_ROW) != 0;
    // Costs alone say nothing when the objective has a quadratic part.
    lp.fixbycost = (word & FIX_BY_COST) != 0 && lp.mode == MODE_LINEAR;
    lp.orderbin = (word & ORDER) != 0;
    lp.tightenrest = (word & TIGHTEN) != 0;
    return (word & (FIX_BY_ROW | FIX_BY_COST | ORDER | TIGHTEN)) != 0;
}

bool is_integer(const SolveRun& run, int j) noexcept
{
    return run.intflags[static_cast<std::size_t>(j) - 1] != 0;
}

bool is_zero_or_one(double bound, double one) noexcept { return bound == 0.0 || bound == one; }

bool is_binary(const LpEngine& lp, const SolveRun& run, int j) noexcept
{
    const double one = lp.binone[j];
    return is_integer(run, j) && is_zero_or_one(lp.lower[j], one) &&
           is_zero_or_one(lp.upper[j], one);
}

void count_integers(LpEngine& lp, SolveRun& run) noexcept
{
    for (int j = 1; j <= lp.n; ++j) {
        run.branchcount += is_integer(run, j);
        lp.numbin += is_binary(lp, run, j);
    }
}

bool create_lists(LpEngine& lp, SolveRun& run) noexcept
{
    const auto count = static_cast<std::size_t>(run.branchcount);
    if (!lp.branchlist.create(count) || !lp.binarystate.create(count)) return false;
    run.branchlist = lp.branchlist.data();
    run.binarystate = lp.binarystate.data();
    return lp.binaryarrays.create([&lp](auto& layout) {
        layout(lp.rowmaxrest, lp.m);
        layout(lp.rowminrest, lp.m);
        layout(lp.rowstatus, lp.m + 1);
        layout(lp.restisopen, lp.m);
        layout(lp.isbinary, lp.n);
    });
}

// The 0-1 variables first, then the other integer ones, each in the order of the columns.
void fill_list(LpEngine& lp, const SolveRun& run) noexcept
{
    int next = 0, next_other = lp.numbin;
    for (int j = 1; j <= lp.n; ++j) {
        if (!is_integer(run, j)) continue;
        lp.isbinary[j] = is_binary(lp, run, j);
        run.branchlist[lp.isbinary[j] ? next++ : next_other++] = j;
    }
}

void scale_ones(LpEngine& lp) noexcept
{
    scalecolumns(lp, {lp.binone});
    const double* const first = lp.binone.first();
    lp.binscaled = std::any_of(first, first + lp.n, [](double one) { return one != 1.0; });
}

// ---- the order of branching

std::int32_t saturating_sum(std::int32_t score, double gain) noexcept
{
    constexpr std::int32_t HIGHEST = std::numeric_limits<std::int32_t>::max();
    if (!(gain < static_cast<double>(HIGHEST))) return HIGHEST;
    const std::int64_t sum = std::int64_t{score} + static_cast<std::int32_t>(gain);
    return static_cast<std::int32_t>(std::min<std::int64_t>(sum, HIGHEST));
}

// The variable with the largest coefficient of the row scores by how far it exceeds the mean of the
// others.
void score_row(const LpEngine& lp, const SolveRun& run, const double* row,
               std::int32_t* score) noexcept
{
    double big = 0.0, sum = 0.0;
    int count = 0, arg = -1;
    for (int k = 0; k < lp.numbin; ++k) {
        const double a = std::fabs(coefficient(lp, run, row, k));
        if (a == 0.0) continue;
        if (a <= big) {
            ++count;
            sum += a;
        } else {
            sum += big;
            big = a;
            arg = k;
        }
    }
    if (arg < 0) return;
    const double mean = count == 0 ? 1.0 : sum / count;
    score[arg] = saturating_sum(score[arg], big / mean);
}

// Shell's sort by descending score; equal scores change places.
void sort_list(std::int32_t* list, std::int32_t* score, int count) noexcept
{
    for (int gap = count / 2; gap >= 1; gap /= 2)
        for (int place = gap; place < count; ++place)
            for (int k = place - gap; k >= 0 && !(score[k] > score[k + gap]); k -= gap) {
                std::swap(score[k], score[k + gap]);
                std::swap(list[k], list[k + gap]);
            }
}

bool order_list(const LpEngine& lp, SolveRun& run) noexcept
{
    Array<std::int32_t> score;
    if (!score.create(static_cast<std::size_t>(lp.numbin))) return false;
    for (int i = 1; i <= lp.m; ++i) score_row(lp, run, lp.tableau[i], score.data());
    sort_list(run.branchlist, score.data(), lp.numbin);
    return true;
}

}  // namespace

bool setupbinaries(LpEngine& lp, SolveRun& run) noexcept
{
    run.branchcount = 0;
    run.branchlist = nullptr;
    run.binarystate = nullptr;
    if (!run.intflags || !read_switches(lp)) return true;

    if (!lp.onearray.create([&lp](auto& layout) { layout(lp.binone, lp.n); })) return false;
    std::fill_n(lp.binone.first(), lp.n, 1.0);
    count_integers(lp, run);
    if (lp.numbin == 0) return true;

    lp.pretol = lp.tol;
    if (!create_lists(lp, run)) return false;
    fill_list(lp, run);
    scale_ones(lp);
    return !lp.orderbin || order_list(lp, run);
}

void releasebinaries(LpEngine& lp, SolveRun& run) noexcept
{
    run.branchcount = 0;
    run.branchlist = nullptr;
    run.binarystate = nullptr;
    lp.branchlist.release();
    lp.binarystate.release();
}

// ---- activities

namespace {

struct Activity {
    double vmin, vmax;
};

bool is_infinite(double bound) noexcept { return !(std::fabs(bound) < INFINITE_BOUND); }

// The share of a column that lies between `lower` and `upper`. An infinite bound enters as 1e30,
// and is noted: it swallows what the sum would tell of the other columns.
void add_column(LpEngine& lp, int i, double a, double lower, double upper) noexcept
{
    const double at_most = a >= 0.0 ? upper : lower;
    const double at_least = a >= 0.0 ? lower : upper;
    lp.rowmaxrest[i] += a * at_most;
    lp.rowminrest[i] += a * at_least;
    if (is_infinite(at_most)) lp.restisopen[i] |= MAXREST_OPEN;
    if (is_infinite(at_least)) lp.restisopen[i] |= MINREST_OPEN;
}

// The constant of a row is its right-hand side less what the tableau, as read, holds of it.
double constant_of(const LpEngine& lp, int i) noexcept
{
    const double rhs = lp.rowlower[i] > -INFINITE_BOUND ? lp.rowlower[i] : lp.rowupper[i];
    return rhs - lp.tableau[i][0];
}

void computerest(LpEngine& lp) noexcept
{
    for (int i = 1; i <= lp.m; ++i) {
        const double* const row = lp.tableau[i];
        lp.rowmaxrest[i] = lp.rowminrest[i] = constant_of(lp, i);
        lp.restisopen[i] = 0;
        for (int j = 1; j <= lp.n; ++j)
            if (!lp.isbinary[j] && row[j] != 0.0)
                add_column(lp, i, row[j], lp.lower[j], lp.upper[j]);
    }
}

Activity activity(const LpEngine& lp, const SolveRun& run, int i) noexcept
{
    Activity range = {lp.rowminrest[i], lp.rowmaxrest[i]};
    const double* const row = lp.tableau[i];
    for (int k = 0; k < lp.numbin; ++k) {
        const char state = run.binarystate[k];
        if (state == AT_0) continue;
        const double a = coefficient(lp, run, row, k);
        if (state == AT_1 || a >= 0.0) range.vmax += a;
        if (state == AT_1 || a < 0.0) range.vmin += a;
    }
    return range;
}

// What a row demands. An equation demands both, and is neither at_most nor at_least.
struct Demand {
    double lo, up;
    bool at_most, at_least;

    bool lo_binds() const noexcept { return at_least || lo == up; }
    bool up_binds() const noexcept { return at_most || lo == up; }
};

Demand demand_of(const LpEngine& lp, int i) noexcept
{
    const double lo = lp.rowlower[i], up = lp.rowupper[i];
    return {lo, up, lo <= -INFINITE_BOUND, up >= INFINITE_BOUND};
}

// ---- fixing

bool is_impossible(const Demand& row, const Activity& range, double tol) noexcept
{
    return (row.up_binds() && range.vmin > row.up + tol) ||
           (row.lo_binds() && range.vmax < row.lo - tol);
}

bool is_redundant(const Demand& row, const Activity& range, double tol) noexcept
{
    return (row.at_most && range.vmax <= row.up + tol) ||
           (row.at_least && range.vmin >= row.lo - tol);
}

// The state that the row leaves to a free variable with coefficient a.
char state_by_row(const Demand& row, const Activity& range, double a, double tol) noexcept
{
    if (!(std::fabs(a) >= NEGLIGIBLE)) return IS_FREE;
    const double d = std::fabs(a);
    if (row.at_least) {
        if (range.vmax - d < row.lo - tol) return a > 0.0 ? AT_1 : AT_0;
    } else if (row.up_binds()) {
        if (range.vmin + d > row.up + tol) return a > 0.0 ? AT_0 : AT_1;
    }
    return IS_FREE;
}

bool fix_by_row(const LpEngine& lp, SolveRun& run, int i, const Demand& demand,
                const Activity& range) noexcept
{
    bool changed = false;
    for (int k = 0; k < lp.numbin; ++k) {
        if (run.binarystate[k] != IS_FREE) continue;
        const double a = coefficient(lp, run, lp.tableau[i], k);
        run.binarystate[k] = state_by_row(demand, range, a, lp.pretol);
        changed = changed || run.binarystate[k] != IS_FREE;
    }
    return changed;
}

enum class Scan { quiet, changed, infeasible };

Scan scan_rows(LpEngine& lp, SolveRun& run) noexcept
{
    Scan outcome = Scan::quiet;
    for (int i = 1; i <= lp.m; ++i) {
        const Demand demand = demand_of(lp, i);
        const Activity range = activity(lp, run, i);
        if (is_impossible(demand, range, lp.pretol)) return Scan::infeasible;
        if (is_redundant(demand, range, lp.pretol)) lp.rowstatus[i] = IS_REDUNDANT;
        if (lp.fixbyrow && fix_by_row(lp, run, i, demand, range)) outcome = Scan::changed;
    }
    return outcome;
}

// The state that costs nothing and loosens every row that matters.
char state_by_cost(const LpEngine& lp, int j) noexcept
{
    const double c = -lp.tableau[0][j];
    if (c == 0.0) return IS_FREE;
    bool can_be_0 = c >= 0.0, can_be_1 = c <= 0.0;
    for (int i = 1; i <= lp.m && (can_be_0 || can_be_1); ++i) {
        const double a = lp.tableau[i][j];
        if (lp.rowstatus[i] == IS_REDUNDANT || a == 0.0) continue;
        const Demand demand = demand_of(lp, i);
        can_be_0 = can_be_0 && ((demand.at_most && a >= 0.0) || (demand.at_least && a <= 0.0));
        can_be_1 = can_be_1 && ((demand.at_most && a <= 0.0) || (demand.at_least && a >= 0.0));
    }
    if (can_be_0) return AT_0;
    return can_be_1 ? AT_1 : IS_FREE;
}

bool fix_by_costs(const LpEngine& lp, SolveRun& run) noexcept
{
    bool changed = false;
    for (int k = 0; k < lp.numbin; ++k) {
        if (run.binarystate[k] != IS_FREE) continue;
        run.binarystate[k] = state_by_cost(lp, run.branchlist[k]);
        changed = changed || run.binarystate[k] != IS_FREE;
    }
    return changed;
}

// Scans until nothing is fixed any more. False: infeasible.
bool fix_binaries(LpEngine& lp, SolveRun& run) noexcept
{
    for (;;) {
        const Scan outcome = scan_rows(lp, run);
        if (outcome == Scan::infeasible) return false;
        const bool fixed_by_costs = lp.fixbycost && fix_by_costs(lp, run);
        if (outcome == Scan::quiet && !fixed_by_costs) return true;
    }
}

void read_states(const LpEngine& lp, SolveRun& run) noexcept
{
    for (int k = 0; k < lp.numbin; ++k) {
        const int j = run.branchlist[k];
        const double one = lp.binone[j];
        char& state = run.binarystate[k];
        state = IS_FREE;
        if (lp.lower[j] == 0.0 && lp.upper[j] == 0.0) state = AT_0;
        if (lp.lower[j] == one && lp.upper[j] == one) state = AT_1;
    }
}

void write_states(LpEngine& lp, const SolveRun& run) noexcept
{
    for (int k = 0; k < lp.numbin; ++k) {
        if (run.binarystate[k] == IS_FREE) continue;
        const int j = run.branchlist[k];
        lp.lower[j] = lp.upper[j] = run.binarystate[k] == AT_1 ? lp.binone[j] : 0.0;
    }
}

// ---- tightening

constexpr double SMALLEST_COEFFICIENT = 1e-4;  // absolute, scaled: what bounds a variable

// The upper bound that a <= row leaves to a variable, and the lower bound that a >= row does. A bound
// never passes its opposite: whether that is an error of rounding or a contradiction is for the rows
// to say.
bool tighten_column(LpEngine& lp, const Demand& demand, const Activity& range, int j,
                    double a) noexcept
{
    double& lower = lp.lower[j];
    double& upper = lp.upper[j];
    if (demand.at_most) {
        const double t = std::max((demand.up - range.vmin + a * lower) / a, lower);
        if (!(t < upper - lp.pretol)) return false;
        upper = t;
        return true;
    }
    const double t = std::min((demand.lo - range.vmax + a * upper) / a, upper);
    if (!(t > lower + lp.pretol)) return false;
    lower = t;
    return true;
}

// Whether the row bounds variables at all: it has one side, and no infinite share on that side.
bool can_tighten(const LpEngine& lp, int i, const Demand& demand) noexcept
{
    if (demand.at_most == demand.at_least) return false;
    return (lp.restisopen[i] & (demand.at_most ? MINREST_OPEN : MAXREST_OPEN)) == 0;
}

// One pass over the rows with the activities as they stood before it: a bound that moves in the
// meantime makes the next ones weaker, never wrong. For the same reason no row gives more when it
// is looked at again before the activities are renewed.
bool tighten_rest(LpEngine& lp, const SolveRun& run) noexcept
{
    bool changed = false;
    for (int i = 1; i <= lp.m; ++i) {
        const Demand demand = demand_of(lp, i);
        if (!can_tighten(lp, i, demand)) continue;
        const Activity range = activity(lp, run, i);
        const double* const row = lp.tableau[i];
        for (int j = 1; j <= lp.n; ++j)
            if (!lp.isbinary[j] && row[j] >= SMALLEST_COEFFICIENT)
                changed = tighten_column(lp, demand, range, j, row[j]) || changed;
    }
    return changed;
}

}  // namespace

bool preprocessbinaries(LpEngine& lp, SolveRun& run) noexcept
{
    if (lp.numbin == 0) return true;
    read_states(lp, run);
    std::fill_n(lp.rowstatus.first(), lp.m, ' ');

    // Bounds that creep towards each other could go on for a very long time.
    constexpr int MOST_PASSES = 100;
    for (int pass = 0; pass < MOST_PASSES; ++pass) {
        computerest(lp);
        if (!fix_binaries(lp, run)) return false;
        write_states(lp, run);
        if (!lp.tightenrest || lp.n == lp.numbin || !tighten_rest(lp, run)) break;
    }
    return true;
}

}  // namespace tarnwick
