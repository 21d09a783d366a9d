#include "textfile/linereader.h"

#include <cstring>
#include <limits>

#include "interface/problem.h"
#include "textfile/numbers.h"

namespace tarnwick {

namespace {

constexpr std::int64_t LARGEST_LABEL = std::numeric_limits<std::int32_t>::max();

bool is_digit(char c) noexcept { return '0' <= c && c <= '9'; }

// The caller tells what could not be read, with a code of its own.
bool fail(const char* text) noexcept
{
    report(0, READ_TITLE, text);
    return false;
}

}  // namespace

bool LineReader::next_line() noexcept
{
    const char* const feed = static_cast<const char*>(std::memchr(buffer_, '\n', fill_));
    const std::size_t line = feed ? static_cast<std::size_t>(feed - buffer_) + 1 : fill_;
    const std::size_t used = feed == buffer_ ? fill_ : line;

    fill_ -= used;
    std::memmove(buffer_, buffer_ + used, fill_);
    fill_ += input_.read(buffer_ + fill_, SIZE - fill_);
    if (input_.has_failed()) return fail("Error reading input file");

    const bool ends_here = fill_ < SIZE;
    if (ends_here && fill_ > 0 && buffer_[fill_ - 1] != '\n') buffer_[fill_++] = '\n';
    buffer_[fill_] = '\0';
    at_ = buffer_;
    ++line_number_;
    return std::memchr(buffer_, '\n', fill_) || fail("Error reading input line");
}

void LineReader::skip_spaces() noexcept
{
    while (*at_ == ' ') ++at_;
}

void LineReader::restart_line() noexcept
{
    at_ = buffer_;
    skip_spaces();
}

bool LineReader::take(char character) noexcept
{
    if (*at_ != character) return false;
    ++at_;
    return true;
}

bool LineReader::take(const char* word) noexcept
{
    const std::size_t length = std::strlen(word);
    if (std::strncmp(at_, word, length) != 0) return false;
    at_ += length;
    return true;
}

std::int64_t LineReader::take_label(char letter) noexcept
{
    const char* end = at_;
    if (*end++ != letter) return 0;
    const bool is_negative = *end == '-';
    if (is_negative) ++end;

    std::int64_t number = 0;
    for (; is_digit(*end); ++end)
        if (number <= LARGEST_LABEL) number = 10 * number + (*end - '0');
    if (number != 0) at_ = end;
    return is_negative ? -number : number;
}

bool LineReader::take_number(double& value) noexcept
{
    const char* const end = run_end();
    const double number = leading_number(at_, end);
    if (number == 0.0 && *at_ != '0') return false;
    value = number;
    at_ = end;
    return true;
}

double LineReader::take_value() noexcept
{
    const char* const end = run_end();
    const double number = leading_number(at_, end);
    at_ = end;
    return number;
}

const char* LineReader::run_end() const noexcept
{
    const char* end = at_;
    while (*end != ' ' && *end != '\n' && *end != '\0') ++end;
    return end;
}

}  // namespace tarnwick
