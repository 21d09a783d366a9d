#pragma once

#include <string>

namespace tarnwick {

// The content of a file of the source tree.
std::string source_text(const std::string& file);

// Holds a file of the source tree against the text that is printed from a table. If they differ,
// the text is left in the folder for temporary files, from where it can be copied into place.
void expect_printed(const std::string& file, const std::string& text);

}  // namespace tarnwick
