#include "tools/output.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>

#include "tools/failure.h"

namespace tarnwick::tool {

namespace {

[[noreturn]] void fail(const std::string& name)
{
    throw Failure(fmt::format("{}: {}", name, std::strerror(errno)));
}

}  // namespace

void require_other_file(const std::string& output, const std::string& input)
{
    std::error_code error;
    if (std::filesystem::equivalent(output, input, error))
        throw Failure(fmt::format("{}: the output would overwrite the model", output));
}

Output::Output(const std::string& file, const std::string& input)
    : name_(file.empty() ? "standard output" : file)
{
    if (file.empty()) return;
    require_other_file(file, input);
    file_.reset(std::fopen(file.c_str(), "wb"));
    if (!file_) fail(name_);
}

void Output::write(const std::string& text)
{
    std::FILE* const file = file_ ? file_.get() : stdout;
    const bool is_written =
        std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
    if (!is_written) fail(name_);
    if (std::fclose(file_ ? file_.release() : stdout) != 0) fail(name_);
}

}  // namespace tarnwick::tool
