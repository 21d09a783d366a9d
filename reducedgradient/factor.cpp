// The quasi-Newton factor: a lower triangular L, packed by rows, whose entry (i, k) stands at
// i(i - 1)/2 + k. Its diagonal may carry either sign, for only L L' matters. Corrections of rank one
// are made by plane rotations:
//
//     L L' + q v v'   columns of L against v, from the first
//     L L' - q v v'   with L p = v: columns of L against (1 - p'p)^1/2, from the last
//
// after P. E. Gill, G. H. Golub, W. Murray and M. A. Saunders, Methods for modifying matrix
// factorizations, Mathematics of Computation 28, 1974.

#include "reducedgradient/factor.h"

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

int place_of(int i, int k) noexcept { return i * (i - 1) / 2 + k; }

double& entry(const NlpEngine& nlp, int i, int k) noexcept { return nlp.factor[place_of(i, k)]; }

// L p = v, in place.
void solve_forward(const NlpEngine& nlp, Vec<double> v) noexcept
{
    for (int i = 1; i <= nlp.nsuper; ++i) {
        double sum = v[i];
        for (int k = 1; k < i; ++k) sum -= entry(nlp, i, k) * v[k];
        v[i] = sum / entry(nlp, i, i);
    }
}

// L' d = v, in place.
void solve_backward(const NlpEngine& nlp, Vec<double> v) noexcept
{
    for (int k = nlp.nsuper; k >= 1; --k) {
        double sum = v[k];
        for (int i = k + 1; i <= nlp.nsuper; ++i) sum -= entry(nlp, i, k) * v[i];
        v[k] = sum / entry(nlp, k, k);
    }
}

// L L' + v v'.
void update(const NlpEngine& nlp, Vec<double> v) noexcept
{
    for (int k = 1; k <= nlp.nsuper; ++k) {
        const double d = entry(nlp, k, k), z = v[k];
        const double r = std::sqrt(z * z + d * d);
        const double c = d / r, s = z / r;
        if (!(std::fabs(s) > TINY)) continue;
        entry(nlp, k, k) = r;
        for (int i = k + 1; i <= nlp.nsuper; ++i) {
            const double l = entry(nlp, i, k);
            entry(nlp, i, k) = s * v[i] + c * l;
            v[i] = s * l - c * v[i];
        }
    }
}

// L L' - v v', or nothing where that would not be positive definite.
void downdate(const NlpEngine& nlp, Vec<double> v) noexcept
{
    solve_forward(nlp, v);
    double rho = 1.0;
    for (int i = 1; i <= nlp.nsuper; ++i) rho -= v[i] * v[i];
    if (!(rho > TINY)) return;

    double t = std::sqrt(rho), a = rho;
    for (int i = nlp.nsuper; i >= 1; --i) {
        const double t0 = t, z = std::exchange(v[i], 0.0);
        a += z * z;
        t = std::sqrt(a);
        const double c = t0 / t, s = z / t;
        if (!(std::fabs(s) > TINY)) continue;
        for (int j = i; j <= nlp.nsuper; ++j) {
            const double l = entry(nlp, j, i), w = v[j];
            v[j] = l * s + w * c;
            entry(nlp, j, i) = w * s - l * c;
        }
    }
}

// L L' + sigma v v'.
void nlp_rank_one(const NlpEngine& nlp, Vec<double> v, double sigma) noexcept
{
    double q = 0.0;
    for (int i = 1; i <= nlp.nsuper; ++i) {
        q += v[i] * v[i];
        v[i] *= std::sqrt(std::fabs(sigma));
    }
    q *= sigma;
    if (!(std::fabs(q) > TINY)) return;
    if (q > TINY)
        update(nlp, v);
    else
        downdate(nlp, v);
}

}  // namespace

void nlp_factor_reset(NlpEngine& nlp) noexcept
{
    if (nlp.nsuper == 0) return;
    const int k = std::min(nlp.nsuper, nlp.factorlimit);
    for (int place = 1; place <= place_of(k, k); ++place) nlp.factor[place] = 0.0;
    for (int i = 1; i <= k; ++i) entry(nlp, i, i) = 1.0;
    nlp.restarted = true;
}

// With s = step * direction and B direction = -prevredgrad
//
//     B + y y' / y's - B s s' B / s'B s = B + y y' / (dy step) + g g' / dg
void nlp_bfgs_update(NlpEngine& nlp, double dy, double dg) noexcept
{
    if (std::fabs(nlp.step) <= TINY || !(std::fabs(dy) >= TINY)) return;
    if (std::fabs(dg) < TINY) dg = TINY;
    nlp_rank_one(nlp, nlp.gradchange, 1.0 / (dy * nlp.step));
    nlp_rank_one(nlp, nlp.prevredgrad, 1.0 / dg);
}

void nlp_factor_solve(NlpEngine& nlp) noexcept
{
    solve_forward(nlp, nlp.direction);
    solve_backward(nlp, nlp.direction);
}

bool has_sound_diagonal(const NlpEngine& nlp) noexcept
{
    for (int k = 1; k <= nlp.nsuper; ++k)
        if (!(std::fabs(entry(nlp, k, k)) >= TINY)) return false;
    return true;
}

// Without row k the entries to the right of the diagonal are turned away, column by column.
void nlp_factor_delete(NlpEngine& nlp, int k) noexcept
{
    const int last = nlp.nsuper--;
    for (int r = k + 1; r <= last; ++r) {
        const double a = entry(nlp, r, r - 1), b = entry(nlp, r, r);
        const double root = std::sqrt(a * a + b * b);
        const double h = root == 0.0 ? TINY : root;
        entry(nlp, r, r - 1) = h;
        const double c = a / h, s = b / h;
        for (int i = r + 1; i <= last; ++i) {
            const double p = entry(nlp, i, r - 1), q = entry(nlp, i, r);
            entry(nlp, i, r - 1) = s * q + c * p;
            entry(nlp, i, r) = s * p - c * q;
        }
        for (int j = 1; j < r; ++j) entry(nlp, r - 1, j) = entry(nlp, r, j);
    }
}

void nlp_factor_append(NlpEngine& nlp) noexcept
{
    for (int k = 1; k < nlp.nsuper; ++k) entry(nlp, nlp.nsuper, k) = 0.0;
    entry(nlp, nlp.nsuper, nlp.nsuper) = 1.0;
}

// ---- a new order

namespace {

// Entry (i, k) of L L'.
double product_entry(const NlpEngine& nlp, int i, int k) noexcept
{
    double sum = 0.0;
    for (int j = 1; j <= std::min(i, k); ++j) sum += entry(nlp, i, j) * entry(nlp, k, j);
    return sum;
}

// The Cholesky factor of the matrix of which `factor` holds the lower part, in place.
bool factorise(const NlpEngine& nlp) noexcept
{
    for (int i = 1; i <= nlp.nsuper; ++i)
        for (int k = 1; k <= i; ++k) {
            double sum = entry(nlp, i, k);
            for (int j = 1; j < k; ++j) sum -= entry(nlp, i, j) * entry(nlp, k, j);
            if (i == k && !(sum > 0.0)) return false;
            entry(nlp, i, k) = i == k ? std::sqrt(sum) : sum / entry(nlp, k, k);
        }
    return true;
}

void permute(const NlpEngine& nlp, Vec<double> values, Vec<const std::int32_t> old) noexcept
{
    for (int k = 1; k <= nlp.nsuper; ++k) nlp.work1[k] = values[old[k]];
    for (int k = 1; k <= nlp.nsuper; ++k) values[k] = nlp.work1[k];
}

}  // namespace

bool nlp_factor_permute(NlpEngine& nlp, Vec<const std::int32_t> old) noexcept
{
    permute(nlp, nlp.prevredgrad, old);
    permute(nlp, nlp.direction, old);
    if (nlp.nsuper > nlp.factorlimit) return true;

    const int n = nlp.nsuper;
    for (int i = 1; i <= n; ++i)
        for (int k = 1; k <= i; ++k)
            nlp.refactor[place_of(i, k)] = product_entry(nlp, old[i], old[k]);
    for (int place = 1; place <= place_of(n, n); ++place) nlp.factor[place] = nlp.refactor[place];
    return factorise(nlp);
}

}  // namespace tarnwick
