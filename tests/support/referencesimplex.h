#pragma once

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

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
    ReferenceSimplex(LpEngine& lp, std::int32_t iterlimit);

    EngineResult solve();

    int n, m;
    Numbered<Numbered<double>> T;  // rows 0..m+1, columns 0..n
    Numbered<char> sense;          // m
    Numbered<int> flips;           // m
    Numbered<double> x;            // n
    Numbered<int> colstate;        // n
    Numbered<int> collabel;        // n
    Numbered<int> rowlabel;        // m
    int activecols = 0;
    int iterations = 0;
    std::vector<std::uint64_t> trace;  // one fingerprint for each iteration
    int infinitepivot = INT_MAX;       // the first iteration that divides by an infinity

  private:
    void place();
    int price(int s) const;
    int ratiotest(int c, int s);
    void consider(int i, int c, bool rises, double& theta, int& r);
    int tiebreak(int r1, int r2, int c, bool rises) const;
    bool sits_at_bound() const;
    void pivot(int last, int r, int c);
    void flip(int last, int c);
    void fixrow(int r, int c);
    EngineResult phase(int s);
    EngineResult transition();
    EngineResult step_done();
    void rest(int label, int c);
    void shift(int last, int c, double t);

    Numbered<double> lower, upper;  // n + m, logical variables included
    Numbered<int> pending;          // m
    int leavebound = 0;
    double feastol, opttol, pivottol;
    std::int32_t iterlimit;
};

// The same number, or both none.
inline bool is_same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

// A number for a basis and its objective: the same only if every label, every state and the
// objective are.
template <class Labels>
std::uint64_t fingerprint(int n, int m, const Labels& collabel, const Labels& rowlabel,
                          const Labels& colstate, double objective)
{
    std::uint64_t hash = 14695981039346656037U, bits = 0;
    const auto mix = [&hash](std::uint64_t value) { hash = (hash ^ value) * 1099511628211U; };
    for (int j = 1; j <= n; ++j) mix(static_cast<std::uint64_t>(collabel[j] * 256 + colstate[j]));
    for (int i = 1; i <= m; ++i) mix(static_cast<std::uint64_t>(rowlabel[i]));
    const double normal = std::isnan(objective) ? HUGE_VAL : objective + 0.0;  // one NaN, one zero
    std::memcpy(&bits, &normal, sizeof bits);
    mix(bits);
    return hash;
}

}  // namespace tarnwick
