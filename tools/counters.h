#pragma once

#include <cstdint>

#include "include/tarnwick.h"

namespace tarnwick::tool {

// Counters of a run, during it and after it.
template <class Value>
Value counter(Problem* lp, std::int32_t which)
{
    Value value{};
    getcallbackinfo(lp, nullptr, which, &value);
    return value;
}

inline std::int64_t all_iterations(Problem* lp)
{
    return std::int64_t{counter<std::int32_t>(lp, CB_ITERATIONS)} +
           counter<std::int32_t>(lp, CB_TOTALITERATIONS);
}

}  // namespace tarnwick::tool
