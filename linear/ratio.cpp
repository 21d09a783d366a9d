// The ratio test. When the entering variable of column c moves by t in its direction, the basic
// variables move by -T[i][c] t or +T[i][c] t and the first to reach a bound leaves:
//
//     t[i] = |(B - bound) / T[i][c]|,   over the rows with |T[i][c]| > pivottol
//
// Shorter steps win. Of rows with exactly the same step the lexicographic rule decides: the rows,
// over their pivot elements, are compared on the variable of lowest label on which they differ.
// That orders all bases, so that a degenerate vertex cannot be walked round for ever.

#include "linear/ratio.h"

#include <algorithm>
#include <cmath>

#include "linear/kernels.h"
#include "linear/pivot.h"

namespace tarnwick {

namespace {

double normalised(const double* row, int j, double pivot) noexcept
{
    return std::fabs(row[j]) > NEGLIGIBLE ? row[j] / pivot : 0.0;
}

// The one of two rows with the same step that leaves. With a rising variable the smaller
// normalised row wins, with a falling one the larger.
int tiebreak(LpEngine& lp, int r1, int r2, int c, bool rises) noexcept
{
    refreshrow(lp, r1);
    refreshrow(lp, r2);
    const double* const row1 = lp.tableau[r1];
    const double* const row2 = lp.tableau[r2];
    const int larger = rises ? r2 : r1;   // the winner where row 1 is the larger
    const int smaller = rises ? r1 : r2;  // and where it is the smaller

    int low = std::min(lp.rowlabel[r1], lp.rowlabel[r2]);
    int winner = lp.rowlabel[r1] <= lp.rowlabel[r2] ? larger : smaller;
    for (int j = 1; j <= lp.n; ++j) {
        if (j == c || lp.collabel[j] >= low) continue;
        const double a1 = normalised(row1, j, lp.column[r1]);
        const double a2 = normalised(row2, j, lp.column[r2]);
        if (a1 == a2) continue;
        low = lp.collabel[j];
        winner = a1 > a2 ? larger : smaller;
    }
    return winner;
}

bool is_finite_limit(double bound) noexcept
{
    return bound > -INFINITE_BOUND && bound < INFINITE_BOUND;
}

bool is_positive(const LpEngine& lp, int i) noexcept { return lp.column[i] > 0.0; }

// The next row after i with exactly the given step, or 0.
int next_with(const LpEngine& lp, double step, int i) noexcept
{
    return find_value(lp.steps.data(), step, i + 1, lp.m);
}

// The rows with the shortest step, each against the winner so far; those with positive elements
// come first.
int settle_ties(LpEngine& lp, double step, int c, bool rises) noexcept
{
    int winner = 0;
    for (const bool positive : {true, false}) {
        for (int i = next_with(lp, step, 0); i != 0; i = next_with(lp, step, i)) {
            if (is_positive(lp, i) != positive) continue;
            winner = winner == 0 ? i : tiebreak(lp, winner, i, c, rises);
        }
    }
    return winner;
}

bool a_basic_sits_at_a_bound(const LpEngine& lp) noexcept
{
    for (int i = 1; i <= lp.m; ++i) {
        const double value = lp.basicvalue[i];
        if (value == lp.basiclower[i] || value == lp.basicupper[i]) return true;
    }
    return false;
}

// The entering variable's own range is shorter than the step to the first row; of equal ones the
// flip wins at a vertex that isn't degenerate.
bool flips(const LpEngine& lp, int label, double step) noexcept
{
    const double lower = lowerof(lp, label), upper = upperof(lp, label);
    if (!is_finite_limit(lower) || !is_finite_limit(upper)) return false;
    const double width = upper - lower;
    return width < step || (width == step && !a_basic_sits_at_a_bound(lp));
}

}  // namespace

StepChoice ratiotest(LpEngine& lp, int c, int s) noexcept
{
    const bool rises = lp.column[s] > 0.0;
    const Vec<double> positive = rises ? lp.basiclower : lp.basicupper;
    const Vec<double> negative = rises ? lp.basicupper : lp.basiclower;
    const LeastStep least =
        ratio_steps(lp.steps.data(), lp.column.data(), lp.basicvalue.data(), positive.data(),
                    negative.data(), whole_lines(lp.m + 1), lp.pivottol, INFINITE_BOUND);
    const int row = least.rows > 1 ? settle_ties(lp, least.step, c, rises) : least.row;

    if (flips(lp, lp.collabel[c], row != 0 ? least.step : INFINITE_BOUND)) {
        lp.leavebound = lp.colstate[c] == AT_LOWER ? AT_UPPER : AT_LOWER;
        return {Step::flip, 0};
    }
    if (row == 0) return {};
    lp.leavebound = is_positive(lp, row) == rises ? AT_LOWER : AT_UPPER;
    return {Step::pivot, row};
}

}  // namespace tarnwick
