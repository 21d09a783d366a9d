#include "tests/support/printed.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace tarnwick {

std::string source_text(const std::string& file)
{
    const std::ifstream stream(TARNWICK_SOURCE_DIR "/" + file);
    std::stringstream text;
    text << stream.rdbuf();
    return text.str();
}

void expect_printed(const std::string& file, const std::string& text)
{
    if (source_text(file) == text) return;
    const auto copy = testing::TempDir() + std::filesystem::path(file).filename().string();
    std::ofstream(copy) << text;
    ADD_FAILURE() << file << " is out of date; what it should be is in " << copy;
}

}  // namespace tarnwick
