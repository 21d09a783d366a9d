// The tableau in motion. A pivot on row r, column c takes the multiple T[i][c] of the divided pivot
// row from every other row i:
//
//     T[r][j] /= T[r][c],   T[i][j] -= T[r][j] * T[i][c],   T[i][c] = -T[i][c] / T[r][c]
//
// That update is all of the cost, and on a large tableau it is the memory that limits it. So the
// simplex doesn't wait for it: a step needs the cost row, one column and one row, and these are
// brought up to date on their own, while the other rows take several pivots in one pass, when the
// waiting list is full. Every element sees the same operations in the same order, so the numbers are
// those of an update at once.
//
// Column c needs no case of its own: its elements are set to zero, and the divided pivot row holds
// 1 / T[r][c] there.

#include "linear/pivot.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "linear/kernels.h"

namespace tarnwick {

namespace {

constexpr int MOST_WAITING = 16;

bool is_negligible(double value) noexcept { return !(std::fabs(value) > NEGLIGIBLE); }

}  // namespace

double lowerof(const LpEngine& lp, int label) noexcept
{
    return label > lp.n ? 0.0 : lp.lower[label];
}

double upperof(const LpEngine& lp, int label) noexcept
{
    return label > lp.n ? INFINITE_BOUND : lp.upper[label];
}

int waitingcapacity(int m, int n) noexcept
{
    constexpr double CACHED_CELLS = 4.0 * 1024;     // updating at once is as fast up to here
    constexpr double SHARED_CELLS = 2048.0 * 1024;  // beyond it main memory sets the pace
    const double cells = (m + 1.0) * (n + 1.0);
    if (cells <= CACHED_CELLS) return 0;
    return cells <= SHARED_CELLS ? 8 : MOST_WAITING;
}

// ---- column 0

void loadbasis(LpEngine& lp) noexcept
{
    for (int i = 0; i <= lp.m + 1; ++i) {
        lp.basicvalue[i] = lp.tableau[i][0];
        lp.tableau[i][0] = 0.0;
    }
    // What is no row sets no limit.
    std::fill_n(lp.basiclower.data(), whole_lines(lp.m + 1), -INFINITE_BOUND);
    std::fill_n(lp.basicupper.data(), whole_lines(lp.m + 1), INFINITE_BOUND);
    for (int i = 1; i <= lp.m; ++i) {
        lp.basiclower[i] = lowerof(lp, lp.rowlabel[i]);
        lp.basicupper[i] = upperof(lp, lp.rowlabel[i]);
    }
}

namespace {

// Applies the waiting pivots to the columns [first, first + count) of row i. False: none waits.
bool apply_to_row(LpEngine& lp, int i, int first, int count) noexcept
{
    double factors[MOST_WAITING];
    const double* rows[MOST_WAITING];
    int found = 0;
    for (int p = 0; p < lp.waiting.count; ++p) {
        const double factor = lp.waiting.columns[p][i];
        if (factor == 0.0) continue;
        factors[found] = factor;
        rows[found++] = lp.waiting.rows[p] + first;
    }
    if (found == 0) return false;
    subtract_rows(lp.tableau[i] + first, factors, rows, found, count);
    return true;
}

// A strip of columns at a time, so that the waiting pivot rows stay in the nearest cache.
void apply_waiting(LpEngine& lp) noexcept
{
    constexpr int STRIP = 512;
    if (lp.waiting.count == 0) return;
    const int width = lp.tableau.width();
    for (int first = 0; first < width; first += STRIP)
        for (int i = 1; i <= lp.m; ++i) apply_to_row(lp, i, first, std::min(STRIP, width - first));
    lp.waiting.count = 0;
}

}  // namespace

void unloadbasis(LpEngine& lp) noexcept
{
    apply_waiting(lp);
    for (int i = 0; i <= lp.m + 1; ++i) lp.tableau[i][0] = lp.basicvalue[i];
}

// ---- a column, a row

void fetchcolumn(LpEngine& lp, int last, int c) noexcept
{
    double* const column = lp.column.data();
    for (int i = 0; i <= last; ++i) column[i] = lp.tableau[i][c];
    if (last == lp.m) column[lp.m + 1] = 0.0;

    double entries[MOST_WAITING];
    const double* factors[MOST_WAITING];
    int found = 0;
    for (int p = 0; p < lp.waiting.count; ++p) {
        if (lp.waiting.rows[p][c] == 0.0) continue;
        entries[found] = lp.waiting.rows[p][c];
        factors[found++] = lp.waiting.columns[p];
    }
    if (found == 0) return;
    const double first_priced = column[0], last_priced = column[lp.m + 1];  // these never wait
    subtract_rows(column, entries, factors, found, whole_lines(lp.m + 1));
    column[0] = first_priced;
    column[lp.m + 1] = last_priced;
}

void refreshrow(LpEngine& lp, int i) noexcept
{
    if (!apply_to_row(lp, i, 0, lp.tableau.width())) return;
    for (int p = 0; p < lp.waiting.count; ++p) lp.waiting.columns[p][i] = 0.0;
}

// ---- moves

namespace {

// Puts the variable at the bound where it comes to rest, and gives that value.
double rest_at_leavebound(LpEngine& lp, int label, int c) noexcept
{
    lp.colstate[c] = lp.leavebound;
    lp.x[label] = lp.leavebound == AT_UPPER ? lp.upper[label] : lp.lower[label];
    return lp.x[label];
}

// column 0 += t * (fetched column).
void shift_values(LpEngine& lp, double t) noexcept
{
    if (is_negligible(t)) return;
    add_entries(lp.basicvalue.data(), t, lp.column.data(), whole_lines(lp.m + 1), NEGLIGIBLE);
}

double rest_value(const LpEngine& lp, int label, int c) noexcept
{
    if (label > lp.n || lp.colstate[c] == AT_ZERO) return 0.0;
    return lp.colstate[c] == AT_LOWER ? lp.lower[label] : lp.upper[label];
}

// The value that the leaving variable rests at.
double put_to_rest(LpEngine& lp, int label, int c) noexcept
{
    if (label <= lp.n) return rest_at_leavebound(lp, label, c);
    lp.colstate[c] = AT_LOWER;
    return 0.0;
}

// Row r over its pivot element, whose inverse takes its place, the entries of row and column to the
// next place of the waiting list, and what the update does to column 0. True: an infinity is among
// the entries.
bool prepare(LpEngine& lp, int r, int c) noexcept
{
    const double inverse = 1.0 / lp.column[r];
    const double old = lp.basicvalue[r];
    const double value = is_negligible(old) ? old : old * inverse;
    double* const p = lp.waiting.rows[lp.waiting.count];
    double* const factors = lp.waiting.columns[lp.waiting.count];
    const double largest = prepare_update({.row = lp.tableau[r],
                                           .divided = p,
                                           .column = lp.column.data(),
                                           .factors = factors,
                                           .values = lp.basicvalue.data(),
                                           .width = lp.tableau.width(),
                                           .height = whole_lines(lp.m + 1)},
                                          inverse, -value, NEGLIGIBLE);
    lp.tableau[r][c] = inverse;
    p[c] = inverse;
    factors[r] = 0.0;
    lp.basicvalue[r] = value;
    return std::isinf(largest);
}

// The rows first..last less the multiples of the pivot row p that `factors` gives, by the list of
// its entries: for a row that is nearly empty, and where an infinity must not meet a zero.
void subtract_listed(LpEngine& lp, const double* factors, int first, int last, const double* p,
                     int entries, int c) noexcept
{
    const std::int32_t* const list = lp.waiting.list.data();
    for (int i = first; i <= last; ++i) {
        const double factor = factors[i];
        if (factor == 0.0) continue;
        double* const row = lp.tableau[i];
        for (int k = 0; k < entries; ++k) row[list[k]] -= p[list[k]] * factor;
        row[c] = 0.0 - p[c] * factor;
    }
}

int list_entries(LpEngine& lp, const double* p) noexcept
{
    int next = 0;
    for (int j = 1; j <= lp.n; ++j)
        if (p[j] != 0.0) lp.waiting.list[next++] = j;
    return next;
}

// Lets the pivot wait for its pass over the rows 1..m. Column c is up to date, so that earlier
// pivots have nothing to do there.
void put_on_waiting_list(LpEngine& lp, const double* factors, int r, int c) noexcept
{
    WaitingPivots& waiting = lp.waiting;
    for (int p = 0; p < waiting.count; ++p) waiting.rows[p][c] = 0.0;
    for (int i = 1; i <= lp.m; ++i)
        if (i != r) lp.tableau[i][c] = factors[i] != 0.0 ? 0.0 : lp.column[i];
    if (++waiting.count == waiting.capacity) apply_waiting(lp);
}

// A pivot row with so few entries that going through their list is less work than whole rows.
bool is_sparse(const double* p, int width) noexcept
{
    constexpr int SHARE = 8;          // an entry by list costs this many times one of a whole row
    constexpr int SHORTEST_ROW = 64;  // below it a list isn't worth making
    return width >= SHORTEST_ROW && count_entries(p, width) * SHARE <= width;
}

// Takes the divided pivot row from the other rows: at once from the two that are priced, and from
// the rest at once or later. `infinite` says that an infinity is among the numbers.
void update_rows(LpEngine& lp, int last, int r, int c, bool infinite) noexcept
{
    WaitingPivots& waiting = lp.waiting;
    double* const p = waiting.rows[waiting.count];
    double* const factors = waiting.columns[waiting.count];
    if (infinite || (waiting.count == 0 && is_sparse(p, lp.tableau.width()))) {
        apply_waiting(lp);
        subtract_listed(lp, factors, 0, last, p, list_entries(lp, p), c);
        return;
    }
    double* const* const rows = lp.tableau.rows();
    const int width = lp.tableau.width();
    if (waiting.capacity == 0) {
        subtract_outer(rows, factors, 0, last, p, width, c);
        return;
    }
    subtract_outer(rows, factors, 0, 0, p, width, c);
    if (last > lp.m) subtract_outer(rows, factors, last, last, p, width, c);
    put_on_waiting_list(lp, factors, r, c);
}

}  // namespace

void flipbound(LpEngine& lp, int c) noexcept
{
    ++lp.iterations;
    const int label = lp.collabel[c];
    const double old = lp.x[label];
    const double step = rest_at_leavebound(lp, label, c) - old;
    shift_values(lp, -step);
}

void pivot(LpEngine& lp, int last, int r, int c) noexcept
{
    ++lp.iterations;
    const int entering = lp.collabel[c];
    const int leaving = lp.rowlabel[r];

    // Out of column 0 with the entering variable, in with the leaving one.
    shift_values(lp, rest_value(lp, entering, c));
    lp.basicvalue[r] -= put_to_rest(lp, leaving, c);

    refreshrow(lp, r);
    const bool has_infinity = prepare(lp, r, c);
    update_rows(lp, last, r, c, has_infinity);

    lp.collabel[c] = leaving;
    lp.rowlabel[r] = entering;
    lp.basiclower[r] = lowerof(lp, entering);
    lp.basicupper[r] = upperof(lp, entering);
}

// ---- columns of artificial variables

void exchangecolumns(LpEngine& lp, int c, int d) noexcept
{
    const auto exchange = [c, d](double* row) {
        const double entry = row[c];
        row[c] = row[d];
        row[d] = -entry;
    };
    for (int i = 0; i <= lp.m + 1; ++i) exchange(lp.tableau[i]);
    for (int p = 0; p < lp.waiting.count; ++p) exchange(lp.waiting.rows[p]);
    std::swap(lp.collabel[c], lp.collabel[d]);
    std::swap(lp.colstate[c], lp.colstate[d]);
}

void negatecolumn(LpEngine& lp, int c) noexcept
{
    for (int i = 0; i <= lp.m + 1; ++i) lp.tableau[i][c] = -lp.tableau[i][c];
    for (int p = 0; p < lp.waiting.count; ++p) lp.waiting.rows[p][c] = -lp.waiting.rows[p][c];
}

}  // namespace tarnwick
