#include "tests/support/referencesimplex.h"

#include <utility>

#include "control/solvecontrol.h"

namespace tarnwick {

namespace {

bool counts(double value) { return std::fabs(value) > 1e-15; }

template <class T>
Numbered<T> copy_of(const T* from, int last, std::size_t size, T rest)
{
    Numbered<T> copy(size, rest);
    for (int k = 0; k <= last; ++k) copy[k] = from[k];
    return copy;
}

}  // namespace

ReferenceSimplex::ReferenceSimplex(LpEngine& lp, std::int32_t limit)
    : n(lp.n), m(lp.m), feastol(lp.control->feastol), opttol(lp.control->opttol),
      pivottol(lp.control->pivottol), iterlimit(limit)
{
    const auto columns = static_cast<std::size_t>(n) + 1, rows = static_cast<std::size_t>(m) + 1;
    for (int i = 0; i <= m + 1; ++i) T.push_back(copy_of(lp.tableau[i], n, columns, 0.0));
    x = copy_of(lp.x.data(), n, columns, 0.0);
    lower = copy_of(lp.lower.data(), n, columns + rows, 0.0);
    upper = copy_of(lp.upper.data(), n, columns + rows, 1e30);
    colstate = Numbered<int>(columns);
    sense = Numbered<char>(rows);
    flips = Numbered<int>(rows);
    pending = Numbered<int>(rows, 1);
    for (int j = 0; j <= n; ++j) collabel.push_back(j);
    for (int i = 0; i <= m; ++i) rowlabel.push_back(n + i);
    for (int i = 1; i <= m; ++i) sense[i] = lp.senses[i].sense;
}

EngineResult ReferenceSimplex::solve()
{
    place();
    activecols = n;
    EngineResult code = phase(m + 1);
    if (code == ENGINE_OPTIMAL && !(T[m + 1][0] <= feastol)) code = ENGINE_INFEASIBLE;
    if (code == ENGINE_OPTIMAL) code = transition();
    if (code == ENGINE_OPTIMAL) code = phase(0);

    for (int i = 1; i <= m; ++i)
        if (rowlabel[i] <= n) x[rowlabel[i]] = T[i][0];
    for (int j = 1; j <= activecols; ++j) {
        if (colstate[j] == 'L' && T[0][j] > 0.0) T[0][j] = 0.0;
        if (colstate[j] == 'U' && T[0][j] < 0.0) T[0][j] = 0.0;
    }
    return code;
}

void ReferenceSimplex::place()
{
    for (int j = 1; j <= n; ++j) {
        const double lo = lower[j], up = upper[j];
        if (lo == up) {
            colstate[j] = 'F';
        } else if (up < 1e30 && lo > -1e30) {
            colstate[j] = 2.0 * x[j] > lo + up ? 'U' : 'L';
        } else {
            colstate[j] = lo > -1e30 ? 'L' : up < 1e30 ? 'U' : 'X';
        }
        x[j] = colstate[j] == 'X' ? 0.0 : colstate[j] == 'U' ? up : lo;
        if (counts(x[j])) shift(m, j, -x[j]);
    }
    for (int i = 1; i <= m; ++i) {
        if (!(T[i][0] < 0.0)) continue;
        for (double& entry : T[i]) entry = -entry;
        sense[i] = sense[i] == '<' ? '>' : sense[i] == '>' ? '<' : '=';
        ++flips[i];
    }
    for (int j = 0; j <= n; ++j) {
        double sum = 0.0;
        for (int i = 1; i <= m; ++i)
            if (sense[i] != '<') sum += T[i][j];
        T[m + 1][j] = sum;
    }
}

int ReferenceSimplex::price(int s) const
{
    double best = 0.0;
    int pick = 0;
    for (int j = 1; j <= activecols; ++j) {
        const double d = T[s][j], a = std::fabs(d);
        if (colstate[j] == 'X' && a > opttol) return j;
        const bool attracts = (colstate[j] == 'L' && d > 0.0) || (colstate[j] == 'U' && d < 0.0);
        if (!attracts || !(a > best)) continue;
        best = a;
        pick = j;
    }
    return best > opttol ? pick : 0;
}

// A basic variable falls when the entering one rises on a positive element or falls on a negative
// one; a logical variable has no upper bound to rise to.
void ReferenceSimplex::consider(int i, int c, bool rises, double& theta, int& r)
{
    const bool basic_falls = rises == (T[i][c] > 0.0);
    const double limit = basic_falls ? lower[rowlabel[i]] : upper[rowlabel[i]];
    if (!(limit > -1e30 && limit < 1e30)) return;
    const double t = std::fabs((T[i][0] - limit) / T[i][c]);
    const bool shorter = r == 0 ? t == t : t < theta;  // a NaN is no step
    if (!shorter && !(t == theta && tiebreak(r, i, c, rises) == i)) return;
    theta = t;
    r = i;
    leavebound = basic_falls ? 'L' : 'U';
}

// The row that leaves, minus the column for a flip, or 0.
int ReferenceSimplex::ratiotest(int c, int s)
{
    const bool rises = T[s][c] > 0.0;
    double theta = 1e30;
    int r = 0;
    for (int i = 1; i <= m; ++i)
        if (T[i][c] > pivottol) consider(i, c, rises, theta, r);
    for (int i = 1; i <= m; ++i)
        if (T[i][c] < -pivottol) consider(i, c, rises, theta, r);

    const double lo = lower[collabel[c]], up = upper[collabel[c]];
    if (!(lo > -1e30 && up < 1e30)) return r;
    const double width = up - lo;
    if (!(width < theta || (width == theta && !sits_at_bound()))) return r;
    leavebound = colstate[c] == 'L' ? 'U' : 'L';
    return -c;
}

bool ReferenceSimplex::sits_at_bound() const
{
    for (int i = 1; i <= m; ++i)
        if (T[i][0] == lower[rowlabel[i]] || T[i][0] == upper[rowlabel[i]]) return true;
    return false;
}

int ReferenceSimplex::tiebreak(int r1, int r2, int c, bool rises) const
{
    int low = std::min(rowlabel[r1], rowlabel[r2]);
    int win = (rowlabel[r1] <= rowlabel[r2]) == rises ? r2 : r1;
    for (int j = 1; j <= n; ++j) {
        if (j == c) continue;
        const double a1 = counts(T[r1][j]) ? T[r1][j] / T[r1][c] : 0.0;
        const double a2 = counts(T[r2][j]) ? T[r2][j] / T[r2][c] : 0.0;
        if (a1 == a2 || collabel[j] >= low) continue;
        low = collabel[j];
        win = (a1 > a2) == rises ? r2 : r1;
    }
    return win;
}

void ReferenceSimplex::rest(int label, int c)
{
    colstate[c] = leavebound;
    x[label] = leavebound == 'U' ? upper[label] : lower[label];
}

void ReferenceSimplex::shift(int last, int c, double t)
{
    for (int i = 0; i <= last; ++i)
        if (counts(T[i][c])) T[i][0] += T[i][c] * t;
}

void ReferenceSimplex::flip(int last, int c)
{
    const double old = x[collabel[c]];
    rest(collabel[c], c);
    const double d = x[collabel[c]] - old;
    if (counts(d)) shift(last, c, -d);
}

void ReferenceSimplex::pivot(int last, int r, int c)
{
    const int entering = collabel[c], leaving = rowlabel[r];
    const bool at_zero = entering > n || colstate[c] == 'X';
    const double v = at_zero ? 0.0 : colstate[c] == 'L' ? lower[entering] : upper[entering];
    if (counts(v)) shift(last, c, v);

    if (leaving > n)
        colstate[c] = 'L';
    else
        rest(leaving, c);
    Numbered<double>& row = T[r];
    row[0] -= leaving > n ? 0.0 : x[leaving];

    if (std::isinf(row[c])) infinitepivot = std::min(infinitepivot, iterations + 1);
    const double inv = 1.0 / row[c];
    for (int j = 0; j <= n; ++j)
        if (j != c && counts(row[j])) row[j] *= inv;
    for (int i = 0; i <= last; ++i) {
        double* const other = T[i].data();
        const double f = other[c];
        if (i == r || !counts(f)) continue;
        for (int j = 0; j <= n; ++j)
            if (j != c && counts(row[j])) other[j] -= row[j] * f;
        other[c] = -inv * f;
    }
    row[c] = inv;
    std::swap(collabel[c], rowlabel[r]);
}

void ReferenceSimplex::fixrow(int r, int c)
{
    if (!std::exchange(pending[r], 0)) return;
    if (sense[r] == '=') {
        const int d = activecols--;
        for (auto& row : T) {
            const double entry = row[c];
            row[c] = row[d];
            row[d] = -entry;
        }
        std::swap(collabel[c], collabel[d]);
        std::swap(colstate[c], colstate[d]);
    } else if (sense[r] == '>') {
        T[m + 1][c] += 1.0;
        for (auto& row : T) row[c] = -row[c];
    }
}

EngineResult ReferenceSimplex::step_done()
{
    ++iterations;
    trace.push_back(fingerprint(n, m, collabel, rowlabel, colstate, T[0][0]));
    return iterations > iterlimit ? ENGINE_ITERLIMIT : ENGINE_OPTIMAL;
}

EngineResult ReferenceSimplex::phase(int s)
{
    const int last = s == 0 ? m : m + 1;
    while (const int c = price(s)) {
        const int r = ratiotest(c, s);
        if (r == 0) return ENGINE_UNBOUNDED;
        if (r < 0)
            flip(last, c);
        else
            pivot(last, r, c);
        if (r > 0 && s != 0) fixrow(r, c);
        if (const EngineResult stop = step_done(); stop != ENGINE_OPTIMAL) return stop;
    }
    return ENGINE_OPTIMAL;
}

EngineResult ReferenceSimplex::transition()
{
    for (int i = 1; i <= m; ++i) {
        if (!pending[i]) continue;
        if (sense[i] != '=') pending[i] = 0;
        if (sense[i] == '>')
            for (double& entry : T[i]) entry = -entry;
        if (sense[i] != '=') continue;

        int pick = 0;
        double best = 0.0;
        for (int j = 1; j <= activecols; ++j) {
            if (!(std::fabs(T[i][j]) > best)) continue;
            best = std::fabs(T[i][j]);
            pick = j;
        }
        if (!(best > pivottol)) continue;
        pivot(m + 1, i, pick);
        fixrow(i, pick);
        if (const EngineResult stop = step_done(); stop != ENGINE_OPTIMAL) return stop;
    }
    return ENGINE_OPTIMAL;
}

}  // namespace tarnwick
