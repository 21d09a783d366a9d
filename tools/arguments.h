#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/parameters.h"
#include "tools/report.h"

namespace tarnwick::tool {

enum class Command { solve, info, iis, rewrite, params };

struct Arguments {
    Command command = Command::solve;
    std::string file;
    std::string target;  // the model file that is written
    std::vector<Setting> settings;
    bool sensitivity = false, all = false, quiet = false, rows_only = false;
    Format format = Format::text;
    std::string output;  // empty: standard output; for iis the model file of the subset, or none
};

// Reads the command line. Nothing: it asked for a text, which `answer` then holds. Throws Failure.
std::optional<Arguments> parsed_arguments(int argc, char** argv, std::string& answer);

}  // namespace tarnwick::tool
