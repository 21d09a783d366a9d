#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/messages.h"
#include "tools/model.h"
#include "tools/parameters.h"
#include "tools/report.h"

namespace tarnwick::tool {

enum class Outcome { found, feasible, not_confirmed, not_found };

struct SubsetBound {
    std::int32_t column;  // from 0
    bool has_lower, has_upper;
};

// Rows and bounds that contradict each other.
struct Subset {
    Outcome outcome = Outcome::not_found;
    std::int32_t status = 0;  // of the last run
    bool has_bounds_tested = true;
    std::vector<std::int32_t> rows;  // from 0, ascending
    std::vector<SubsetBound> bounds;
    std::int64_t iterations = 0;
    double seconds = 0.0;
};

// Solves a model that has variables and, if it turns out to be infeasible, searches for a subset, which
// is then solved as a model of its own.
Subset find_subset(const Model& model, const std::vector<Setting>& settings, bool rows_only,
                   Messages& messages);
Report subset_report(const Model& model, const Subset& subset);

// Writes the subset that was found last as a model file. Throws Failure.
void write_subset(const Model& model, const std::string& file, Messages& messages);

}  // namespace tarnwick::tool
