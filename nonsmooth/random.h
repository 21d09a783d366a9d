#pragma once

#include <cstdint>

namespace tarnwick {

// Random deviates. The state of a stream is its seed and a table that the thread owns: a stream
// belongs to the thread that seeded it, and seeding another one in that thread mixes the two.

// Starts a stream. The same start gives the same numbers.
void rng_seed(std::int32_t& seed, std::int32_t start) noexcept;

// Uniform on (0, 1); at most 0.99999988.
double rng_uniform(std::int32_t& seed) noexcept;
// Exponential of mean 1.
double rng_exponential(std::int32_t& seed) noexcept;
// Gamma of the given shape and rate, both finite and above 0.
double rng_gamma(std::int32_t& seed, double shape, double rate) noexcept;
// Beta of the given shapes, both finite and above 0. NaN if both are so small that their gamma
// deviates are 0.
double rng_beta(std::int32_t& seed, double a, double b) noexcept;

}  // namespace tarnwick
