#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

#include "tests/support/printed.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

// Calls use(match) for every place where the pattern fits.
template <class Use>
void for_each_match(const std::string& text, const std::string& pattern, Use use)
{
    const std::regex regex(pattern);
    for (std::sregex_iterator it(text.begin(), text.end(), regex), end; it != end; ++it) use(*it);
}

TEST(Numerics, tables_tell_the_constants_of_the_code)
{
    static const char ROW[] = R"(\| `(\w+)` \| `(.+?)` \| `(.+?)` \|)";
    const auto check = [](const std::smatch& row) {
        const std::string source = source_text(row[3]);
        const auto holds = [&](const std::string& text) {
            return source.find(text) < source.size();
        };
        EXPECT_TRUE(holds(row.format(" $1 = $2;")) || holds(row.format(" $1$2;"))) << row[0];
    };
    for_each_match(source_text("docs/NUMERICS.md"), ROW, check);
}

TEST(Numerics, tables_lack_no_constant_of_type_double)
{
    const std::string document = source_text("docs/NUMERICS.md");
    const fs::path root(TARNWICK_SOURCE_DIR);
    for (const char* folder :
         {"linear", "nonsmooth", "reducedgradient", "control", "interface", "textfile"})
        for (const auto& entry : fs::directory_iterator(root / folder)) {
            const std::string file = entry.path().lexically_relative(root).generic_string();
            const auto check = [&](const std::smatch& constant) {
                const std::string row = constant.format("| `$1` | `$2` | `" + file + "` |");
                EXPECT_NE(document.find(row), std::string::npos) << "missing: " << row;
            };
            for_each_match(source_text(file), R"(constexpr double (\w+) = (-?\d[^;]*);)", check);
        }
}

TEST(Documents, name_files_that_exist)
{
    for (const char* document : {"docs/ARCHITECTURE.md", "docs/NUMERICS.md"})
        for_each_match(source_text(document), R"(`([a-z]+/[\w./]+)`)", [](const auto& name) {
            EXPECT_TRUE(fs::exists(fs::path(TARNWICK_SOURCE_DIR) / name[1].str())) << name[1];
        });
}

}  // namespace
}  // namespace tarnwick
