#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "reducedgradient/factor.h"

namespace tarnwick {
namespace {

// Rows and columns are counted from 1.
struct Square : std::vector<std::vector<double>> {
    explicit Square(int n) : vector(index(n) + 1, std::vector<double>(index(n) + 1)) {}
    static std::size_t index(int i) { return static_cast<std::size_t>(i); }
    double& at(int i, int k) { return (*this)[index(i)][index(k)]; }
    double at(int i, int k) const { return (*this)[index(i)][index(k)]; }
};

// An engine with nothing but a factor of random entries.
class Factored {
  public:
    static constexpr int MOST = 6;

    explicit Factored(int superbasics, unsigned seed) : draw_(seed)
    {
        nlp.factorlimit = MOST;
        nlp.nsuper = superbasics;
        EXPECT_TRUE(nlp.factors.create([this](auto& layout) {
            layout(nlp.factor, factor_size(MOST));
            layout(nlp.refactor, factor_size(MOST));
            for (Vec<double>* v : {&nlp.direction, &nlp.prevredgrad, &nlp.gradchange, &nlp.work1})
                layout(*v, MOST);
        }));
        for (int i = 1; i <= superbasics; ++i) {
            for (int k = 1; k <= i; ++k) at(i, k) = draw();
            at(i, i) += i % 2 ? 3.0 : -3.0;  // either sign will do
            nlp.direction[i] = draw();
            nlp.prevredgrad[i] = draw();
            nlp.gradchange[i] = draw();
        }
    }
    double draw() { return std::uniform_real_distribution<>(-1, 1)(draw_); }
    double& at(int i, int k) { return nlp.factor[i * (i - 1) / 2 + k]; }

    // L L'.
    Square product()
    {
        Square b(nlp.nsuper);
        for (int i = 1; i <= nlp.nsuper; ++i)
            for (int k = 1; k <= nlp.nsuper; ++k)
                for (int j = 1; j <= std::min(i, k); ++j) b.at(i, k) += at(i, j) * at(k, j);
        return b;
    }

    NlpEngine nlp;

  private:
    std::mt19937 draw_;
};

void expect_equal(const Square& got, const Square& want)
{
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t i = 1; i < got.size(); ++i)
        for (std::size_t k = 1; k < got.size(); ++k)
            EXPECT_NEAR(got[i][k], want[i][k], 1e-10) << i << ' ' << k;
}

TEST(Factor, follows_the_bfgs_formula)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        Factored f(5, seed);
        Square b = f.product();
        const auto &d = f.nlp.direction, &g = f.nlp.prevredgrad, &y = f.nlp.gradchange;
        // g = -B d, as the direction was made, and y'd > 0.
        f.nlp.step = 0.7;
        double dy = 0.0, dg = 0.0;
        for (int i = 1; i <= 5; ++i) {
            g[i] = 0.0;
            for (int k = 1; k <= 5; ++k) g[i] -= b.at(i, k) * d[k];
            dy += d[i] * y[i];
            dg += d[i] * g[i];
        }
        for (int i = 1; i <= 5 && dy < 0.0; ++i) y[i] = -y[i];
        dy = std::fabs(dy);
        for (int i = 1; i <= 5; ++i)
            for (int k = 1; k <= 5; ++k)
                b.at(i, k) += y[i] * y[k] / (dy * f.nlp.step) + g[i] * g[k] / dg;
        nlp_bfgs_update(f.nlp, dy, dg);
        expect_equal(f.product(), b);
    }
}

TEST(Factor, loses_a_row_and_gains_one)
{
    for (int k = 1; k <= 5; ++k) {
        SCOPED_TRACE(k);
        Factored f(5, 7);
        Square b = f.product();
        b.erase(b.begin() + k);
        for (auto& row : b) row.erase(row.begin() + k);
        nlp_factor_delete(f.nlp, k);
        expect_equal(f.product(), b);

        ++f.nlp.nsuper;
        nlp_factor_append(f.nlp);
        for (auto& row : b) row.push_back(0.0);
        b.emplace_back(6, 0.0);
        b[5][5] = 1.0;
        expect_equal(f.product(), b);
    }
}

TEST(Factor, follows_a_new_order_of_the_superbasics)
{
    Factored f(5, 3);
    const Square b = f.product();
    std::int32_t order[] = {0, 4, 1, 5, 2, 3};
    const double first = f.nlp.direction[4], last = f.nlp.prevredgrad[3];
    ASSERT_TRUE(nlp_factor_permute(f.nlp, {order, 5}));
    Square want(5);
    for (int i = 1; i <= 5; ++i)
        for (int k = 1; k <= 5; ++k) want.at(i, k) = b.at(order[i], order[k]);
    expect_equal(f.product(), want);
    EXPECT_EQ(f.nlp.direction[1], first);
    EXPECT_EQ(f.nlp.prevredgrad[5], last);
}

TEST(Factor, solves_for_the_direction)
{
    Factored f(6, 11);
    const Square b = f.product();
    const std::vector<double> right(f.nlp.direction.data(), f.nlp.direction.data() + 7);
    nlp_factor_solve(f.nlp);
    for (int i = 1; i <= 6; ++i) {
        double sum = 0.0;
        for (int k = 1; k <= 6; ++k) sum += b.at(i, k) * f.nlp.direction[k];
        EXPECT_NEAR(sum, right[Square::index(i)], 1e-10);
    }
}

}  // namespace
}  // namespace tarnwick
