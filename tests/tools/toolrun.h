#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tarnwick {

// A directory of its own, which goes with the object.
class Scratch {
  public:
    Scratch()
    {
        std::string name = (std::filesystem::temp_directory_path() / "tarnwick-XXXXXX").string();
        if (mkdtemp(name.data())) path_ = name;
    }
    ~Scratch() { std::filesystem::remove_all(path_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string path(const std::string& name) const { return (path_ / name).string(); }
    std::string write(const std::string& name, const std::string& text) const
    {
        std::ofstream(path_ / name, std::ios::binary) << text;
        return path(name);
    }

  private:
    std::filesystem::path path_;
};

inline std::string content_of(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

struct ToolRun {
    int status = -1;  // -1: it did not end by itself
    std::string out, err;
};

// Runs the tool in the folder of the examples, with arguments as a shell takes them.
inline ToolRun run_tool(const std::string& arguments)
{
    const Scratch scratch;
    const std::string err = scratch.path("err");
    const std::string line = "cd '" TARNWICK_SOURCE_DIR "/examples' && '" TARNWICK_TOOL "' 2>'" +
                             err + "' </dev/null " + arguments;
    ToolRun run;
    std::FILE* const pipe = popen(line.c_str(), "r");
    if (!pipe) return run;
    for (int c = 0; (c = std::fgetc(pipe)) != EOF;) run.out += static_cast<char>(c);
    const int ended = pclose(pipe);
    if (WIFEXITED(ended)) run.status = WEXITSTATUS(ended);
    run.err = content_of(err);
    return run;
}

}  // namespace tarnwick
