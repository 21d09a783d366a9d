#include "nonsmooth/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <vector>

namespace tarnwick {
namespace {

constexpr int DRAWS = 20000;

TEST(Random, uniform_numbers_are_those_of_the_shuffled_generator)
{
    // The generator in 64 bits, with the published check: from 1, step 10000 gives 1043618065.
    const auto next = [](std::int64_t z) { return z * 16807 % 2147483647; };
    std::int64_t z = 1;
    for (int k = 0; k < 10000; ++k) z = next(z);
    ASSERT_EQ(z, 1043618065);

    for (const std::int32_t start : {-7, 7, 123456789, 0, 1, INT_MAX, INT_MIN}) {
        z = std::abs(std::int64_t{start});
        if (z == 0 || z >= 2147483647) z = 1;
        std::int64_t table[32];
        for (int k = 0; k < 8; ++k) z = next(z);
        for (int j = 31; j >= 0; --j) table[j] = z = next(z);
        std::int64_t output = table[0];

        std::int32_t seed;
        rng_seed(seed, start);
        for (int k = 0; k < 1000; ++k) {
            z = next(z);
            std::int64_t& entry = table[output * 32 / 2147483648];
            output = entry;
            entry = z;
            ASSERT_DOUBLE_EQ(rng_uniform(seed), static_cast<double>(output) / 2147483647.0);
        }
    }
}

// The largest distance between the distribution of a sample and the one it should have.
double distance(std::vector<double> sample, const std::function<double(double)>& distribution)
{
    std::sort(sample.begin(), sample.end());
    const auto n = static_cast<double>(sample.size());
    double largest = 0.0;
    for (std::size_t k = 0; k < sample.size(); ++k) {
        const double f = distribution(sample[k]), below = static_cast<double>(k) / n;
        largest = std::max({largest, std::fabs(f - below), std::fabs(f - below - 1.0 / n)});
    }
    return largest;
}

TEST(Random, deviates_have_their_distributions)
{
    using std::exp, std::sqrt;
    // clang-format off
    const struct {
        const char* name;
        std::function<double(std::int32_t&)> draw;
        std::function<double(double)> distribution;
    } CASES[] = {
        {"gamma of shape 1/2",   [](auto& s) { return rng_gamma(s, 0.5, 1.0); }, [](double x) { return std::erf(sqrt(x)); }},
        {"shape 1, rate 4",      [](auto& s) { return rng_gamma(s, 1.0, 4.0); }, [](double x) { return 1 - exp(-4 * x); }},
        {"shape 2, rate 3",      [](auto& s) { return rng_gamma(s, 2.0, 3.0); }, [](double x) { return 1 - exp(-3 * x) * (1 + 3 * x); }},
        {"nearly normal",        [](auto& s) { return (rng_gamma(s, 1e8, 1.0) - 1e8) / 1e4; }, [](double x) { return 0.5 * std::erfc(-x / sqrt(2)); }},
        {"beta of small shapes", [](auto& s) { return rng_beta(s, 0.5, 0.5); },  [](double x) { return 2 / M_PI * std::asin(sqrt(x)); }},
        {"a first shape of 1",   [](auto& s) { return rng_beta(s, 1.0, 40.0); }, [](double x) { return 1 - std::pow(1 - x, 40); }},
        {"beta of 2 and 2",      [](auto& s) { return rng_beta(s, 2.0, 2.0); },  [](double x) { return x * x * (3 - 2 * x); }},
    };
    // clang-format on
    for (const auto& c : CASES) {
        std::int32_t seed;
        rng_seed(seed, 4711);
        std::vector<double> sample(DRAWS);
        std::generate(sample.begin(), sample.end(), [&] { return c.draw(seed); });
        // Beyond this distance: less than one sample in a thousand.
        EXPECT_LT(distance(sample, c.distribution), 1.95 / std::sqrt(DRAWS)) << c.name;
    }
}

TEST(Random, extreme_shapes_end)
{
    std::int32_t seed;
    rng_seed(seed, 1);
    for (const double shape : {1e-300, 1e-3, 1.0 - 1e-16, 1.0 + 1e-15, 1e16, 1e20, 1e300})
        for (int k = 0; k < 100; ++k) ASSERT_GE(rng_gamma(seed, shape, 1.0), 0.0) << shape;
}

}  // namespace
}  // namespace tarnwick
