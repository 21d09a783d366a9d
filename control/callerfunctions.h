#pragma once

#include <cstdint>

#include "interface/problem.h"

namespace tarnwick {

// Asks the caller's function for objective and rows at the stored point of the Problem. varone and
// vartwo are the variables that have changed, or -1. lhs, numrows + 1, gets the rows and then the
// objective. False: the function failed; lhs keeps what it wrote.
bool callfunceval(Problem& problem, double* lhs, std::int32_t varone, std::int32_t vartwo) noexcept;

}  // namespace tarnwick
