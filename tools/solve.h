#pragma once

#include <cstdint>
#include <vector>

#include "tools/model.h"
#include "tools/report.h"

namespace tarnwick::tool {

struct Ranges {
    std::vector<double> lower, upper;
};

// What a solve has given. Arrays that the library did not fill are empty.
struct Solution {
    std::int32_t status = 0;
    std::int64_t iterations = 0;
    std::int32_t nodes = 0;
    double objective = 0.0;
    double seconds = 0.0;
    std::vector<double> x, slack, dual, reduced_cost;
    Ranges objective_ranges, rhs_ranges;
};

// Solves a model that has variables. Ranges exist for linear programs at an optimum.
Solution solve(const Model& model, bool with_ranges, bool shows_progress, Messages& messages);

// The report of a solve: everything, or status and objective alone.
Report solution_report(const Model& model, const Solution& solution);
Report short_report(const Solution& solution);

}  // namespace tarnwick::tool
