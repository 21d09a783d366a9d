#pragma once

#include <cstdint>
#include <span>

namespace tarnwick::tool {

// What a status says about the point that solution() gives.
enum class Point { none, infeasible, doubtful, feasible };

struct Status {
    std::int32_t number;
    const char* name;
    const char* text;
    Point point;
};

std::span<const Status> statuses();
Status status_of(std::int32_t number);  // also for a number that is not in the table
bool is_optimum(std::int32_t number);

}  // namespace tarnwick::tool
