#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/textfile.h"

namespace tarnwick {

// Titles the reports of every step of reading.
inline constexpr const char READ_TITLE[] = "lpread";

// The text of a file, line by line, and the elements of a line: spaces, words, labels, numbers.
//
// A buffer of 250 characters slides over the file. The current line starts at its front and ends
// with its first line feed, or before that at a zero byte, so a line must fit with its line feed.
// The step to the next line drops the current one, moves the rest to the front and fills up. A line
// feed at the very front stands for a buffer that is used up: this is how the first fill comes
// about, and how an empty line takes all that the buffer holds with it. A last line without a line
// feed is given one.
class LineReader {
  public:
    explicit LineReader(TextInput& input) noexcept : input_(input) {}
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    // Steps to the next line. False: there is none, or it can't be read; it has been reported.
    bool next_line() noexcept;
    std::int64_t line_number() const noexcept { return line_number_; }  // 1 is the first

    char peek() const noexcept { return *at_; }
    bool at_line_end() const noexcept { return *at_ == '\n' || *at_ == '\0'; }
    void skip_spaces() noexcept;
    // Back to the first character of the line that is no space.
    void restart_line() noexcept;

    // Each of these takes an element, or leaves things as they are when it doesn't stand here.
    bool take(char character) noexcept;
    bool take(const char* word) noexcept;
    // A letter with its decimal number, as in x12, which may be negative. 0: no such label, or its
    // number is 0. For one that doesn't fit 32 bits some number comes that doesn't either.
    std::int64_t take_label(char letter) noexcept;
    // A run of characters up to a space or the end of the line which starts with a number. One of
    // value 0 must start with the digit 0.
    bool take_number(double& value) noexcept;

    // Takes the run of characters up to a space or the end of the line, whatever it is, for a
    // number: 0 if it doesn't start with one.
    double take_value() noexcept;
    void skip_run() noexcept { at_ = run_end(); }

  private:
    static constexpr std::size_t SIZE = 250;

    const char* run_end() const noexcept;

    TextInput& input_;
    std::int64_t line_number_ = 0;
    std::size_t fill_ = SIZE;
    char buffer_[SIZE + 1] = "\n";  // a zero byte follows the text
    const char* at_ = buffer_;
};

}  // namespace tarnwick
