#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace tarnwick {

// The content of a file of the source tree.
inline std::string source_text(const std::string& file)
{
    std::stringstream text;
    text << std::ifstream(TARNWICK_SOURCE_DIR "/" + file).rdbuf();
    return text.str();
}

// Holds a file of the source tree against the text that is printed from a table. If they differ,
// the text is left in the folder for temporary files, from where it can be copied into place.
inline void expect_printed(const std::string& file, const std::string& text)
{
    if (source_text(file) == text) return;
    const auto copy = testing::TempDir() + std::filesystem::path(file).filename().string();
    std::ofstream(copy) << text;
    ADD_FAILURE() << file << " is out of date; what it should be is in " << copy;
}

}  // namespace tarnwick
