#pragma once

#include "tests/support/models.h"

namespace tarnwick {

// The first takes two steps, both of phase two; the second begins with two of phase one.
// clang-format off
inline const LinearModel FEASIBLE_AT_ONCE{{{{1, 0}, 'L', 2}, {{0, 1}, 'L', 3}, {{1, 1}, 'L', 5}}, {-3, -2}};
inline const LinearModel TWO_PHASES{{{{1, 1, 0}, 'G', 2}, {{1, 0, 1}, 'E', 3}, {{1, 1, 1}, 'L', 9}}, {-1, -2, -3}};
// clang-format on

}  // namespace tarnwick
