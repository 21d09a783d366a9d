// The master problem: the best point in the convex hull of the vertices v[1..K], as weights w that are
// not negative and add up to 1. A quadratic is known from its values W[k][k] at the vertices and
// W[k][l] half-way between them:
//
//     f(sum of w[k] v[k]) = 4 * sum over k < l of w[k] w[l] W[k][l] + sum of (2 w[k] - 1) w[k] W[k][k]
//
// On the affine hull, with vertex K as the base, the weights of the others solve G w = b,
//
//     G[i][j] = s * (W[i][j] - W[i][K] - W[j][K] + W[K][K])
//     b[i]    = s * 0.25 * (W[i][i] - 4 W[i][K] + 3 W[K][K]),     s = -1 for a maximisation, else 1.
//
// G is a quarter of the Hessian along the directions from vertex K, b minus a quarter of the gradient.
// While a weight is negative, the vertex whose weight is the first to reach zero on the way from the
// old weights to the new ones is dropped: the method of von Hohenbalken.

#include "linear/master.h"

#include <algorithm>
#include <cmath>

#include "linear/ldl.h"
#include "linear/objective.h"

namespace tarnwick {

namespace {

constexpr double NO_WEIGHT = 1e-15;  // weights up to it are none

Vec<double> vertex(const LpEngine& lp, int k) noexcept { return {lp.vertices[k], lp.n}; }

double sense(const LpEngine& lp) noexcept { return lp.maximize ? -1.0 : 1.0; }

double without_noise(double weight) noexcept
{
    return std::fabs(weight) < NO_WEIGHT ? 0.0 : weight;
}

// ---- the weights of the affine hull

// The best point of the edge between two vertices, by the parabola through its ends and its middle.
void edge_weights(const LpEngine& lp, double* w) noexcept
{
    const double s = sense(lp);
    const double f1 = lp.midvalues[1][1], f2 = lp.midvalues[2][2], fm = lp.midvalues[1][2];
    const double curve = s * (f1 - 2.0 * fm + f2);
    const double slope = s * (0.25 * f1 - fm + 0.75 * f2);
    if (curve > 0.0 && slope >= 0.0 && slope <= curve) {
        w[1] = without_noise(slope / curve);
        if (std::fabs(w[1] - 1.0) < NO_WEIGHT) w[1] = 1.0;
    } else {
        w[1] = s * f1 <= s * f2 ? 1.0 : 0.0;
    }
    w[2] = 1.0 - w[1];
}

void build_system(const LpEngine& lp, int count, const Matrix& g, Vec<double> b) noexcept
{
    const double s = sense(lp);
    const Matrix& values = lp.midvalues;
    const double* const base = values[count];
    for (int i = 1; i < count; ++i) {
        const double* const row = values[i];
        for (int j = 1; j < count; ++j) g[i][j] = s * (row[j] - base[i] - base[j] + base[count]);
        b[i] = s * 0.25 * (row[i] - 4.0 * base[i] + 3.0 * base[count]);
    }
}

EngineResult masterweights(const LpEngine& lp, int count, double* w) noexcept
{
    if (count == 1) {
        w[1] = 1.0;
        return ENGINE_OPTIMAL;
    }
    if (count == 2) {
        edge_weights(lp, w);
        return ENGINE_OPTIMAL;
    }
    ArrayBlock memory;
    Matrix g;
    Vec<double> b;
    const int order = count - 1;
    if (!memory.create([&](auto& layout) {
            layout(g, order, order);
            layout(b, order);
        }))
        return ENGINE_NOMEMORY;

    build_system(lp, count, g, b);
    if (!factorldl(g, order)) return MASTER_INDEFINITE;
    solveldl(g, b);
    double sum = 0.0;
    for (int i = 1; i < count; ++i) {
        w[i] = without_noise(b[i]);
        sum += w[i];
    }
    w[count] = without_noise(1.0 - sum);
    return ENGINE_OPTIMAL;
}

// ---- the weights of the hull

void move_behind(double* values, int k, int last) noexcept
{
    std::rotate(values + k, values + k + 1, values + last + 1);
}

// Vertex k goes behind the others that are alive, where the next one will take its place.
void dropvertex(LpEngine& lp, int k) noexcept
{
    const int last = lp.hullsize--;
    lp.vertices.move_behind(k, last);
    lp.midvalues.move_behind(k, last);
    for (int l = 1; l <= last; ++l) move_behind(lp.midvalues[l], k, last);
}

bool has_negative(const double* w, int count) noexcept
{
    return std::any_of(w + 1, w + count + 1, [](double weight) { return weight < 0.0; });
}

// The first vertex whose weight reaches zero on the way from the old weights, which are not negative,
// to the new ones, of which one is.
int first_to_vanish(const double* before, const double* after, int count) noexcept
{
    int pick = 0;
    double best = 0.0;
    for (int k = 1; k <= count; ++k) {
        if (!(before[k] > after[k])) continue;
        const double ratio = before[k] / (before[k] - after[k]);
        if (pick != 0 && !(ratio < best)) continue;
        pick = k;
        best = ratio;
    }
    return pick;
}

EngineResult solvemaster(LpEngine& lp) noexcept
{
    double* const after = lp.midvalues[0];
    double* const before = lp.midvalues[lp.hullsize + 1];
    for (int k = 1; k <= lp.hullsize; ++k) before[k] = lp.vertices[k][0];

    EngineResult code = masterweights(lp, lp.hullsize, after);
    while (code == ENGINE_OPTIMAL && has_negative(after, lp.hullsize)) {
        const int k = first_to_vanish(before, after, lp.hullsize);
        move_behind(before, k, lp.hullsize);
        dropvertex(lp, k);
        code = masterweights(lp, lp.hullsize, after);
    }
    if (code != ENGINE_OPTIMAL) return code;

    for (int k = lp.hullsize; k >= 1; --k) {
        lp.vertices[k][0] = after[k];
        if (after[k] == 0.0) dropvertex(lp, k);
    }
    return ENGINE_OPTIMAL;
}

// ---- the hull

bool storevertex(LpEngine& lp, Vec<const double> point) noexcept
{
    const int added = lp.hullsize;
    const Vec<double> target = vertex(lp, added), middle = vertex(lp, lp.n + 3);
    std::copy_n(point.data() + 1, lp.n, target.first());
    target[0] = added == 1 ? 1.0 : 0.0;
    if (!objectiveat(lp, &lp.midvalues[added][added], {}, target)) return false;

    for (int l = 1; l < added; ++l) {
        const double* const other = lp.vertices[l];
        for (int j = 1; j <= lp.n; ++j) middle[j] = 0.5 * (other[j] + target[j]);
        double value = 0.0;
        if (!objectiveat(lp, &value, {}, middle)) return false;
        lp.midvalues[added][l] = lp.midvalues[l][added] = value;
    }
    return true;
}

double predicted_objective(const LpEngine& lp) noexcept
{
    double mixed = 0.0, own = 0.0;
    for (int k = 1; k <= lp.hullsize; ++k) {
        const double w = lp.vertices[k][0];
        const double* const values = lp.midvalues[k];
        for (int l = k + 1; l <= lp.hullsize; ++l) mixed += w * lp.vertices[l][0] * values[l];
        own += (2.0 * w - 1.0) * w * values[k];
    }
    return 4.0 * mixed + own;
}

void recombine(LpEngine& lp) noexcept
{
    const Vec<double> current = vertex(lp, 0);
    std::fill_n(current.first(), lp.n, 0.0);
    for (int k = 1; k <= lp.hullsize; ++k) {
        const double w = lp.vertices[k][0];
        if (w == 0.0) continue;
        for (int j = 1; j <= lp.n; ++j) current[j] += w * lp.vertices[k][j];
    }
    current[0] = predicted_objective(lp);
}

}  // namespace

EngineResult addvertex(LpEngine& lp, Vec<const double> point) noexcept
{
    if (lp.hullsize == lp.n + 2) {
        lp.hullsize = 0;
        if (const EngineResult code = addvertex(lp, vertex(lp, 0)); code != ENGINE_OPTIMAL)
            return code;
    }
    ++lp.hullsize;
    if (!storevertex(lp, point)) return ENGINE_EVALERROR;
    if (const EngineResult code = solvemaster(lp); code != ENGINE_OPTIMAL) return code;
    recombine(lp);
    return ENGINE_OPTIMAL;
}

double sizeofprediction(const LpEngine& lp) noexcept
{
    double size = 0.0;
    for (int k = 1; k <= lp.hullsize; ++k) {
        const double w = lp.vertices[k][0];
        const double* const values = lp.midvalues[k];
        size += w * std::fabs(values[k]);
        for (int l = k + 1; l <= lp.hullsize; ++l)
            size += 4.0 * w * lp.vertices[l][0] * std::fabs(values[l]);
    }
    return size;
}

int atvertex(const LpEngine& lp, Vec<const double> x) noexcept
{
    const double near = std::sqrt(lp.tol);  // absolute, scaled units
    for (int k = 1; k <= lp.hullsize; ++k) {
        const double* const v = lp.vertices[k];
        int j = 1;
        while (j <= lp.n && std::fabs(v[j] - x[j]) <= near) ++j;
        if (j > lp.n) return k;
    }
    return 0;
}

}  // namespace tarnwick
