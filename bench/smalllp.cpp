#include "bench/smalllp.h"

namespace bench {

namespace {

constexpr double INFINITE = 1e30;

// A linear congruence modulo 2^64 (multiplier and increment of Knuth's MMIX); the upper 53 bits are
// a fraction from 0 to 1.
class Draws {
  public:
    explicit Draws(std::uint64_t seed) : state_(seed)
    {
        constexpr int RUN_IN = 8;  // neighbouring seeds start with neighbouring numbers
        for (int k = 0; k < RUN_IN; ++k) next();
    }
    double next()
    {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<double>(state_ >> 11) * 0x1p-53;
    }

  private:
    std::uint64_t state_;
};

// Fills in A by rows, b and c, in the order in which the numbers are drawn. A cost is about the mean
// of its column, so that no variable is much better than the others.
void draw_program(SmallLp& lp, Draws& draws)
{
    const int n = lp.n;
    for (int k = 0; k < n * n; ++k) lp.value_by_row.push_back(0.1 + draws.next());
    for (int i = 0; i < n; ++i) lp.rhs.push_back(n * (0.5 + draws.next()));
    for (int j = 0; j < n; ++j) {
        double sum = 0.0;
        for (int i = 0; i < n; ++i) sum += lp.value_by_row[place(lp, i, j)];
        lp.cost.push_back(sum / n + 0.2 * draws.next());
    }
}

void lay_out_columns(SmallLp& lp)
{
    const int n = lp.n;
    lp.triplet_row = lp.triplet_col = {0};
    lp.triplet_value = {0.0};
    for (int j = 0; j < n; ++j) {
        lp.begin.push_back(j * n);
        lp.count.push_back(n);
        lp.col_from_1.push_back(j + 1);
        for (int i = 0; i < n; ++i) {
            const double value = lp.value_by_row[place(lp, i, j)];
            lp.row.push_back(i);
            lp.value.push_back(value);
            lp.triplet_row.push_back(i + 1);
            lp.triplet_col.push_back(j + 1);
            lp.triplet_value.push_back(value);
        }
    }
    lp.begin.push_back(n * n);
}

}  // namespace

SmallLp make_small_lp(int n, int k)
{
    constexpr std::uint64_t SEEDS_OF_A_SIZE = 1000003;
    SmallLp lp;
    lp.n = n;
    Draws draws(SEEDS_OF_A_SIZE * static_cast<std::uint64_t>(n) + static_cast<std::uint64_t>(k));
    draw_program(lp, draws);
    lay_out_columns(lp);

    const auto size = static_cast<std::size_t>(n);
    lp.lower.assign(size, 0.0);
    lp.upper.assign(size, INFINITE);
    lp.sense.assign(size, 'L');
    return lp;
}

Problem* load(SmallLp& lp)
{
    return loadlp("small", lp.n, lp.n, -1, lp.cost.data(), lp.rhs.data(), lp.sense.data(),
                  lp.begin.data(), lp.count.data(), lp.row.data(), lp.value.data(), lp.lower.data(),
                  lp.upper.data(), nullptr, 0, 0, lp.n * lp.n);
}

Problem* load_dense(SmallLp& lp)
{
    return loadlp("small", lp.n, lp.n, -1, lp.cost.data(), lp.rhs.data(), lp.sense.data(), nullptr,
                  nullptr, nullptr, lp.value.data(), lp.lower.data(), lp.upper.data(), nullptr, 0,
                  0, lp.n * lp.n);
}

std::vector<SmallLp> make_batch(const Batch& batch)
{
    std::vector<SmallLp> lps;
    lps.reserve(static_cast<std::size_t>(batch.count));
    for (int k = 0; k < batch.count; ++k) lps.push_back(make_small_lp(batch.n, k));
    return lps;
}

}  // namespace bench
