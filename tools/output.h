#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace tarnwick::tool {

// Throws Failure if what is written would replace what is read.
void require_other_file(const std::string& output, const std::string& input);

// Where a report goes: standard output, or a file, which is opened at once, so that a run is not for
// nothing. Throws Failure.
class Output {
  public:
    // An empty name is standard output. The file must not be the one that is read.
    Output(const std::string& file, const std::string& input);

    // Writes all there is and closes; a disk may turn out to be full only then.
    void write(const std::string& text);

  private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::string name_;
    std::unique_ptr<std::FILE, Closer> file_;
};

}  // namespace tarnwick::tool
