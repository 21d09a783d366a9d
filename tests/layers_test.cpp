#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct Layer {
    const char* folder;
    std::vector<std::string> may_include;  // a name that ends in / is a whole folder
};

// interface -> control -> engines -> platform. The record of the Problem is shared by those who
// carry out a call; an engine knows the model through the services alone.
const Layer LAYERS[] = {
    {"platform",        {"platform/", "include/"}                                            },
    {"linear",          {"linear/", "control/engine.h", "control/services.h", "platform/"}   },
    {"nonsmooth",       {"nonsmooth/", "control/engine.h", "control/services.h", "platform/"}},
    {"reducedgradient",
     {"reducedgradient/", "control/engine.h", "control/services.h", "platform/"}             },
    {"textfile",        {"textfile/", "interface/problem.h", "platform/", "include/"}        },
    {"control",
     {"control/", "interface/problem.h", "linear/lpengine.h", "nonsmooth/nspengine.h",
      "reducedgradient/nlpengine.h", "textfile/realtext.h", "platform/", "include/"}         },
    {"interface",
     {"interface/", "control/", "linear/", "nonsmooth/", "reducedgradient/", "textfile/",
      "platform/", "include/"}                                                               },
    {"tools",           {"tools/", "include/"}                                               },
};

bool is_allowed(const std::string& included, const Layer& layer)
{
    return std::any_of(layer.may_include.begin(), layer.may_include.end(), [&](const auto& name) {
        return name.back() == '/' ? included.rfind(name, 0) == 0 : included == name;
    });
}

// Calls check(file, header) for every include of a header of ours by the sources in a folder.
template <class Check>
void for_each_include(const char* folder, Check check)
{
    static const std::string INCLUDE = "#include \"";
    const fs::path root = fs::path(TARNWICK_SOURCE_DIR) / folder;
    if (!fs::exists(root)) return;

    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const std::string extension = entry.path().extension();
        if (extension != ".cpp" && extension != ".h") continue;

        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) {
            if (line.rfind(INCLUDE, 0) != 0) continue;
            const std::size_t name = INCLUDE.size(), end = line.find('"', name);
            check(entry.path().string(), line.substr(name, end - name));
        }
    }
}

}  // namespace

TEST(Layers, a_folder_includes_only_what_lies_below_it)
{
    int includes = 0;
    for (const Layer& layer : LAYERS)
        for_each_include(layer.folder, [&](const auto& file, const auto& header) {
            ++includes;
            EXPECT_TRUE(is_allowed(header, layer)) << file << " includes " << header;
        });
    EXPECT_GT(includes, 0) << "no sources were read";
}
