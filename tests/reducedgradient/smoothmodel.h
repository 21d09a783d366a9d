#pragma once

#include "tests/support/functionhost.h"

namespace tarnwick {

using Smooth = FunctionCase;
using SmoothHost = FunctionHost;

inline bool is_good(std::int32_t status)
{
    return status == STAT_OPTIMAL || status == STAT_CONVERGED || status == STAT_MIP_OPTIMAL;
}

}  // namespace tarnwick
