#pragma once

#include <string>
#include <variant>
#include <vector>

#include "include/tarnwick.h"
#include "tools/report.h"

namespace tarnwick::tool {

// One parameter of a solve, as NAME=VALUE gave it.
struct Setting {
    std::int32_t number;
    std::variant<std::int32_t, double> value;
};

// Reads NAME=VALUE and checks it against the library's ranges. Throws Failure.
Setting parsed_setting(const std::string& text);
void apply(const Setting& setting, Problem* lp);

// All parameters, with what the library says about them.
Report parameter_report();

}  // namespace tarnwick::tool
