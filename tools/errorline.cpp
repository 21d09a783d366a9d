// The line of an error, found without a second reader of the format: the library reads beginnings of
// the file, each of some whole lines. It reads line by line and stops at the first error, so a
// beginning that holds the line in question is refused in the same words as the whole file, and a
// shorter one because it ends. The shortest of the former ends with the line.
//
// This holds as long as the lines are lines to the library. One that is too long for it, or empty,
// stops or misleads it, so only the lines in front of the first of these are searched.

#include "tools/errorline.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "include/tarnwick.h"

namespace tarnwick::tool {

namespace {

constexpr std::size_t LONGEST_LINE = 249;  // without its line feed
constexpr std::uintmax_t LARGEST_FILE =
    std::uintmax_t{16} * 1024 * 1024;  // beyond it the search takes too long

constexpr const char NO_LINE[] = "Error reading input line";

// A copy of the beginning of a file, removed with the object.
class Beginning {
  public:
    explicit Beginning(std::string_view text)
    {
        std::error_code error;
        path_ = (std::filesystem::temp_directory_path(error) / "tarnwick-XXXXXX").string();
        const int file = error ? -1 : mkstemp(path_.data());
        if (file < 0) return;
        exists_ = true;
        is_complete_ = write_all(file, text);
        is_complete_ = ::close(file) == 0 && is_complete_;
    }
    ~Beginning()
    {
        if (exists_) ::unlink(path_.c_str());
    }
    Beginning(const Beginning&) = delete;
    Beginning& operator=(const Beginning&) = delete;

    bool is_complete() const { return is_complete_; }
    const std::string& path() const { return path_; }

  private:
    static bool write_all(int file, std::string_view text)
    {
        while (!text.empty()) {
            const ssize_t written = ::write(file, text.data(), text.size());
            if (written <= 0) return false;
            text.remove_prefix(static_cast<std::size_t>(written));
        }
        return true;
    }

    std::string path_;
    bool exists_ = false;
    bool is_complete_ = false;
};

// A file by its lines.
class Lines {
  public:
    explicit Lines(std::string text) : text_(std::move(text))
    {
        for (std::size_t start = 0; start < text_.size();) {
            const std::size_t feed = text_.find('\n', start);
            start = feed == std::string::npos ? text_.size() : feed + 1;
            ends_.push_back(start);
        }
    }

    std::size_t count() const { return ends_.size(); }
    std::string_view beginning(std::size_t lines) const
    {
        return std::string_view(text_).substr(0, lines == 0 ? 0 : ends_[lines - 1]);
    }
    // Counted from 1, without its end.
    std::string_view line(std::size_t number) const
    {
        std::string_view text = beginning(number).substr(beginning(number - 1).size());
        if (!text.ends_with('\n')) return text;
        text.remove_suffix(1);
        if (text.ends_with('\r')) text.remove_suffix(1);
        return text;
    }

  private:
    std::string text_;
    std::vector<std::size_t> ends_;
};

bool is_readable(std::string_view line) { return !line.empty() && line.size() <= LONGEST_LINE; }

// What the library says to the first lines of a file. Nothing: it accepts them, or they could not be
// copied.
std::vector<std::string> refusal(const Lines& lines, std::size_t count, Messages& messages)
{
    messages.clear();
    const Beginning copy(lines.beginning(count));
    if (!copy.is_complete()) return {};
    lpread(nullptr, copy.path().c_str(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    return messages.list();
}

// The shortest beginning with this refusal, which the first `count` lines are known to have.
std::size_t shortest(const Lines& lines, std::size_t count, const std::vector<std::string>& wanted,
                     Messages& messages)
{
    std::size_t fewer = 0;
    while (count - fewer > 1) {
        const std::size_t middle = fewer + (count - fewer) / 2;
        if (refusal(lines, middle, messages) == wanted)
            count = middle;
        else
            fewer = middle;
    }
    return count;
}

ErrorPlace search(const Lines& lines, Messages& messages)
{
    const std::vector<std::string> wanted = messages.list();

    std::size_t sound = 0;  // so many lines are lines to the library as well
    while (sound < lines.count() && is_readable(lines.line(sound + 1))) ++sound;

    const std::vector<std::string> found = refusal(lines, sound, messages);
    const bool wants_more = sound == 0 || (!found.empty() && found.front() == NO_LINE);
    if (!wants_more) {
        if (found.empty() || found != wanted) return {};
        return {shortest(lines, sound, wanted, messages), ""};
    }
    if (sound == lines.count()) return {0, "the file ends too early"};
    const bool is_empty = lines.line(sound + 1).empty();
    return {sound + 1,
            is_empty ? "the line is empty"
                     : "the line is longer than " + std::to_string(LONGEST_LINE) + " characters"};
}

std::string content(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace

ErrorPlace find_error(const std::string& file, Messages& messages)
{
    std::error_code error;
    if (messages.list().empty() || std::filesystem::file_size(file, error) > LARGEST_FILE || error)
        return {};
    return search(Lines(content(file)), messages);
}

}  // namespace tarnwick::tool
