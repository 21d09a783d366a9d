#include <gtest/gtest.h>

#include <cmath>

#include "reducedgradient/factor.h"
#include "tests/support/models.h"

namespace tarnwick {
namespace {

// Counted from 1.
struct Square {
    int n = 5;
    double entries[7][7] = {};
    double* operator[](int i) { return entries[i]; }
    const double* operator[](int i) const { return entries[i]; }
};

// An engine with nothing but a factor of random entries.
struct Factored {
    static constexpr int SUPERBASICS = 5, MOST = 6;
    NlpEngine nlp;

    explicit Factored(unsigned seed)
    {
        nlp.factorlimit = MOST;
        nlp.nsuper = SUPERBASICS;
        EXPECT_TRUE(nlp.factors.create([this](auto& layout) {
            layout(nlp.factor, factor_size(MOST));
            layout(nlp.refactor, factor_size(MOST));
            layout({&nlp.direction, &nlp.prevredgrad, &nlp.gradchange, &nlp.work1}, MOST);
        }));
        Draw draw(seed);
        for (int i = 1; i <= SUPERBASICS; ++i) {
            for (int k = 1; k <= i; ++k) at(i, k) = draw.real(-1, 1);
            at(i, i) += i % 2 ? 3.0 : -3.0;  // either sign will do
            for (const auto& v : {nlp.direction, nlp.prevredgrad, nlp.gradchange})
                v[i] = draw.real(-1, 1);
        }
    }
    double& at(int i, int k) { return nlp.factor[i * (i - 1) / 2 + k]; }

    // L L'.
    Square product()
    {
        Square b{nlp.nsuper};
        for (int i = 1; i <= nlp.nsuper; ++i)
            for (int k = 1; k <= nlp.nsuper; ++k)
                for (int j = 1; j <= std::min(i, k); ++j) b[i][k] += at(i, j) * at(k, j);
        return b;
    }
};

void expect_equal(const Square& got, const Square& want)
{
    ASSERT_EQ(got.n, want.n);
    for (int i = 1; i <= got.n; ++i)
        for (int k = 1; k <= got.n; ++k) EXPECT_NEAR(got[i][k], want[i][k], 1e-10) << i << ' ' << k;
}

TEST(Factor, follows_the_bfgs_formula)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        Factored f(seed);
        Square b = f.product();
        const auto &d = f.nlp.direction, &g = f.nlp.prevredgrad, &y = f.nlp.gradchange;
        // g = -B d, as the direction was made, and y'd > 0.
        f.nlp.step = 0.7;
        double dy = 0.0, dg = 0.0;
        for (int i = 1; i <= 5; ++i) {
            g[i] = 0.0;
            for (int k = 1; k <= 5; ++k) g[i] -= b[i][k] * d[k];
            dy += d[i] * y[i];
            dg += d[i] * g[i];
        }
        for (int i = 1; i <= 5 && dy < 0.0; ++i) y[i] = -y[i];
        dy = std::fabs(dy);
        for (int i = 1; i <= 5; ++i)
            for (int k = 1; k <= 5; ++k)
                b[i][k] += y[i] * y[k] / (dy * f.nlp.step) + g[i] * g[k] / dg;
        nlp_bfgs_update(f.nlp, dy, dg);
        expect_equal(f.product(), b);
    }
}

TEST(Factor, follows_a_new_order_of_the_superbasics)
{
    Factored f(3);
    const Square b = f.product();
    std::int32_t order[] = {0, 4, 1, 5, 2, 3};
    const double first = f.nlp.direction[4], last = f.nlp.prevredgrad[3];
    ASSERT_TRUE(nlp_factor_permute(f.nlp, {order, 5}));
    Square want;
    for (int i = 1; i <= 5; ++i)
        for (int k = 1; k <= 5; ++k) want[i][k] = b[order[i]][order[k]];
    expect_equal(f.product(), want);
    EXPECT_EQ(f.nlp.direction[1], first);
    EXPECT_EQ(f.nlp.prevredgrad[5], last);
}

}  // namespace
}  // namespace tarnwick
