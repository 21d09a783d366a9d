#pragma once

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "control/solvecontrol.h"
#include "linear/lpengine.h"

namespace tarnwick {

// An array that is counted as the engine counts, by int.
template <class T>
struct Numbered : std::vector<T> {
    using std::vector<T>::vector;
    T& operator[](int k) { return this->data()[k]; }
    const T& operator[](int k) const { return this->data()[k]; }
};

// The simplex of the textbook, on a plain matrix: each pivot updates every element at once, element
// by element, with each comparison written out where it is made. It starts from an engine that has
// been set up and scaled, and must then agree with that engine bit for bit. Fields are named as in
// LpEngine.
class ReferenceSimplex {
  public:
    ReferenceSimplex(const LpEngine& lp, int limit)
        : n(lp.n), m(lp.m), feastol(lp.control->feastol), opttol(lp.control->opttol),
          pivottol(lp.control->pivottol), iterlimit(limit)
    {
        for (int i = 0; i <= m + 1; ++i) T.emplace_back(lp.tableau[i], lp.tableau[i] + n + 1);
        x.assign(lp.x.data(), lp.x.data() + n + 1);
        lower.assign(lp.lower.data(), lp.lower.data() + n + 1);
        upper.assign(lp.upper.data(), lp.upper.data() + n + 1);
        lower.resize(static_cast<std::size_t>(n + m) + 1, 0.0);
        upper.resize(lower.size(), 1e30);
        for (int j = 0; j <= n; ++j) collabel.push_back(j);
        for (int i = 0; i <= m; ++i) rowlabel.push_back(n + i);
        for (int i = 0; i <= m; ++i) sense.push_back(i > 0 ? lp.senses[i].sense : '\0');
        colstate.resize(collabel.size());
        flips.resize(rowlabel.size());
        pending.resize(rowlabel.size(), 1);
    }

    EngineResult solve()
    {
        place();
        activecols = n;
        EngineResult code = phase(m + 1);
        if (code == ENGINE_OPTIMAL && !(T[m + 1][0] <= feastol)) code = ENGINE_INFEASIBLE;
        if (code == ENGINE_OPTIMAL) code = transition();
        if (code == ENGINE_OPTIMAL) code = phase(0);

        for (int i = 1; i <= m; ++i)
            if (rowlabel[i] <= n) x[rowlabel[i]] = T[i][0];
        for (int j = 1; j <= activecols; ++j)
            if (colstate[j] == 'L' ? T[0][j] > 0.0 : colstate[j] == 'U' && T[0][j] < 0.0)
                T[0][j] = 0.0;
        return code;
    }

    int n, m;
    Numbered<Numbered<double>> T;      // rows 0..m+1, columns 0..n
    Numbered<double> x;                // n
    Numbered<char> sense;              // m
    Numbered<int> flips, rowlabel;     // m
    Numbered<int> colstate, collabel;  // n
    int activecols = 0, iterations = 0;

  private:
    static bool counts(double value) { return std::fabs(value) > 1e-15; }

    void place()
    {
        for (int j = 1; j <= n; ++j) {
            const double lo = lower[j], up = upper[j];
            if (lo == up)
                colstate[j] = 'F';
            else if (up < 1e30 && lo > -1e30)
                colstate[j] = 2.0 * x[j] > lo + up ? 'U' : 'L';
            else
                colstate[j] = lo > -1e30 ? 'L' : up < 1e30 ? 'U' : 'X';
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
            T[m + 1][j] = 0.0;
            for (int i = 1; i <= m; ++i)
                if (sense[i] != '<') T[m + 1][j] += T[i][j];
        }
    }

    int price(int s) const
    {
        double best = 0.0;
        int pick = 0;
        for (int j = 1; j <= activecols; ++j) {
            const double d = T[s][j], a = std::fabs(d);
            if (colstate[j] == 'X' && a > opttol) return j;
            if (!(colstate[j] == 'L' ? d > 0.0 : colstate[j] == 'U' && d < 0.0)) continue;
            if (a > best) pick = j;
            best = std::max(best, a);
        }
        return best > opttol ? pick : 0;
    }

    // A basic variable falls when the entering one rises on a positive element or falls on a
    // negative one; a logical variable has no upper bound to rise to.
    void consider(int i, int c, bool rises, double& theta, int& r)
    {
        const bool basic_falls = rises == (T[i][c] > 0.0);
        const double limit = basic_falls ? lower[rowlabel[i]] : upper[rowlabel[i]];
        if (!(limit > -1e30 && limit < 1e30)) return;
        const double t = std::fabs((T[i][0] - limit) / T[i][c]);
        if (r != 0 && !(t < theta) && !(t == theta && tiebreak(r, i, c, rises) == i)) return;
        theta = t;
        r = i;
        leavebound = basic_falls ? 'L' : 'U';
    }

    // The row that leaves, minus the column for a flip, or 0.
    int ratiotest(int c, int s)
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

    bool sits_at_bound() const
    {
        for (int i = 1; i <= m; ++i)
            if (T[i][0] == lower[rowlabel[i]] || T[i][0] == upper[rowlabel[i]]) return true;
        return false;
    }

    int tiebreak(int r1, int r2, int c, bool rises) const
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

    void rest(int label, int c)
    {
        colstate[c] = leavebound;
        x[label] = leavebound == 'U' ? upper[label] : lower[label];
    }

    void shift(int last, int c, double t)
    {
        for (int i = 0; i <= last; ++i)
            if (counts(T[i][c])) T[i][0] += T[i][c] * t;
    }

    void flip(int last, int c)
    {
        const double old = x[collabel[c]];
        rest(collabel[c], c);
        const double d = x[collabel[c]] - old;
        if (counts(d)) shift(last, c, -d);
    }

    void pivot(int last, int r, int c)
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

        const double inv = 1.0 / row[c];
        for (int j = 0; j <= n; ++j)
            if (j != c && counts(row[j])) row[j] *= inv;
        for (int i = 0; i <= last; ++i) {
            const double f = T[i][c];
            if (i == r || !counts(f)) continue;
            double* const other = T[i].data();
            for (int j = 0; j <= n; ++j)
                if (j != c && counts(row[j])) other[j] -= row[j] * f;
            other[c] = -inv * f;
        }
        row[c] = inv;
        std::swap(collabel[c], rowlabel[r]);
    }

    void fixrow(int r, int c)
    {
        if (!std::exchange(pending[r], 0)) return;
        if (sense[r] == '=') {
            const int d = activecols--;
            for (auto& row : T) row[d] = -std::exchange(row[c], row[d]);
            std::swap(collabel[c], collabel[d]);
            std::swap(colstate[c], colstate[d]);
        } else if (sense[r] == '>') {
            T[m + 1][c] += 1.0;
            for (auto& row : T) row[c] = -row[c];
        }
    }

    EngineResult step_done()
    {
        return ++iterations > iterlimit ? ENGINE_ITERLIMIT : ENGINE_OPTIMAL;
    }

    EngineResult phase(int s)
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

    EngineResult transition()
    {
        for (int i = 1; i <= m; ++i) {
            if (!pending[i]) continue;
            if (sense[i] != '=') pending[i] = 0;
            if (sense[i] == '>')
                for (double& entry : T[i]) entry = -entry;
            if (sense[i] != '=') continue;

            int pick = 0;
            double best = pivottol;
            for (int j = 1; j <= activecols; ++j) {
                if (std::fabs(T[i][j]) > best) pick = j;
                best = std::max(best, std::fabs(T[i][j]));
            }
            if (pick == 0) continue;
            pivot(m + 1, i, pick);
            fixrow(i, pick);
            if (const EngineResult stop = step_done(); stop != ENGINE_OPTIMAL) return stop;
        }
        return ENGINE_OPTIMAL;
    }

    Numbered<double> lower, upper;  // n + m, logical variables included
    Numbered<int> pending;          // m
    int leavebound = 0;
    double feastol, opttol, pivottol;
    int iterlimit;
};

}  // namespace tarnwick
