// The random numbers of the search. Uniform deviates come from the minimal standard generator of
// Park and Miller, z' = 16807 z mod (2^31 - 1), whose successive values are shuffled through a table
// of 32 in the way of Bays and Durham; the others are made of uniform ones.

#include "nonsmooth/random.h"

#include <cmath>

namespace tarnwick {

namespace {

constexpr std::int32_t MULTIPLIER = 16807;
constexpr std::int32_t MODULUS = 2147483647;
constexpr std::int32_t QUOTIENT = 127773;  // of modulus and multiplier
constexpr std::int32_t REMAINDER = 2836;
constexpr int TABLE_SIZE = 32;
constexpr int WARM_UP = 8;                      // values thrown away before the table is filled
constexpr std::int32_t PER_ENTRY = 67108864;    // 2^26: the top five bits of a value name an entry
constexpr double UNIT = 4.656612875245797e-10;  // 1 / modulus
constexpr double HIGHEST = 0.99999988;

thread_local std::int32_t table[TABLE_SIZE];
thread_local std::int32_t last_output = 0;

// The product by Schrage's decomposition, which stays within 32 bits.
std::int32_t next_value(std::int32_t z) noexcept
{
    const std::int32_t k = z / QUOTIENT;
    z = MULTIPLIER * (z - k * QUOTIENT) - REMAINDER * k;
    return z < 0 ? z + MODULUS : z;
}

// The modulus is a multiple of itself and would give nothing but zeros.
void fill_table(std::int32_t& seed) noexcept
{
    const std::int64_t start = -std::int64_t{seed};
    seed = start < 1 || start >= MODULUS ? 1 : static_cast<std::int32_t>(start);
    for (int j = TABLE_SIZE + WARM_UP - 1; j >= 0; --j) {
        seed = next_value(seed);
        if (j < TABLE_SIZE) table[j] = seed;
    }
    last_output = table[0];
}

}  // namespace

void rng_seed(std::int32_t& seed, std::int32_t start) noexcept
{
    seed = start > 0 ? -start : start;
}

double rng_uniform(std::int32_t& seed) noexcept
{
    if (seed < 1 || last_output == 0) fill_table(seed);
    seed = next_value(seed);
    std::int32_t& entry = table[last_output / PER_ENTRY];
    last_output = entry;
    entry = seed;
    const double u = last_output * UNIT;
    return u > HIGHEST ? HIGHEST : u;
}

double rng_exponential(std::int32_t& seed) noexcept { return -std::log(rng_uniform(seed)); }

namespace {

// Johnk's method, for a shape below 1.
double gamma_below_one(std::int32_t& seed, double a, double r) noexcept
{
    for (;;) {
        const double u = std::pow(rng_uniform(seed), 1.0 / (1.0 - a));
        const double v = std::pow(rng_uniform(seed), 1.0 / a);
        if (u + v <= 1.0) return v * rng_exponential(seed) / ((u + v) * r);
    }
}

// A Cauchy deviate: the slope of a point drawn in the half of a unit disc.
double draw_slope(std::int32_t& seed) noexcept
{
    for (;;) {
        const double d1 = 2.0 * rng_uniform(seed) - 1.0;
        const double d2 = 2.0 * rng_uniform(seed) - 1.0;
        if (d1 * d1 + d2 * d2 <= 1.0) return d1 / d2;
    }
}

// Rejection from a Cauchy envelope, for a shape above 1. A slope that is not finite fails the test.
double gamma_above_one(std::int32_t& seed, double a, double r) noexcept
{
    const double m = a - 1.0;
    const double s = std::sqrt(2.0 * a - 1.0);
    for (;;) {
        const double y = draw_slope(seed);
        const double x = s * y + m;
        if (x <= 0.0) continue;
        const double e = (1.0 + y * y) * std::exp(m * std::log(x / m) - s * y);
        if (rng_uniform(seed) <= e) return x / r;
    }
}

}  // namespace

double rng_gamma(std::int32_t& seed, double shape, double rate) noexcept
{
    if (shape < 1.0) return gamma_below_one(seed, shape, rate);
    if (shape == 1.0) return rng_exponential(seed) / rate;
    return gamma_above_one(seed, shape, rate);
}

double rng_beta(std::int32_t& seed, double a, double b) noexcept
{
    const double g1 = rng_gamma(seed, a, 1.0);
    const double g2 = rng_gamma(seed, b, 1.0);
    return g1 / (g2 + g1);
}

}  // namespace tarnwick
