#pragma once

#include <cstddef>
#include <string>

#include "tools/messages.h"

namespace tarnwick::tool {

// Where and why a model file is refused. Line 0: it can't be told for certain.
struct ErrorPlace {
    std::size_t line = 0;
    std::string reason;  // more than the library's message says, or empty
};

// Finds the line at which the library gives up a file. The messages are those of that refusal.
ErrorPlace find_error(const std::string& file, Messages& messages);

}  // namespace tarnwick::tool
