#pragma once

#include <cstddef>
#include <cstdio>

namespace tarnwick {

// A file that is read as text: carriage return and line feed on disk are one line feed, on every
// platform. A bare line feed is one too; a carriage return alone is an ordinary character.
class TextInput {
  public:
    explicit TextInput(const char* filename) noexcept;
    TextInput(const TextInput&) = delete;
    TextInput& operator=(const TextInput&) = delete;
    ~TextInput();

    bool is_open() const noexcept { return file_ != nullptr; }

    // Puts the next characters of the text into the places given. Fewer than `count`: the text has
    // ended, or reading has failed.
    std::size_t read(char* text, std::size_t count) noexcept;
    bool has_failed() const noexcept { return std::ferror(file_) != 0; }

  private:
    static constexpr std::size_t CHUNK = 4096;

    int next_byte() noexcept;

    std::FILE* file_;
    std::size_t taken_ = 0, filled_ = 0;  // of the chunk
    char chunk_[CHUNK];
};

// A file that is written as text: a line feed becomes carriage return and line feed on disk, on every
// platform. An earlier file of the name is replaced.
class TextOutput {
  public:
    TextOutput() noexcept = default;
    TextOutput(const TextOutput&) = delete;
    TextOutput& operator=(const TextOutput&) = delete;
    ~TextOutput();

    bool open(const char* filename) noexcept;
    // False: writing has failed.
    bool write(const char* text, std::size_t count) noexcept;
    // Ends the file. False: what was still on its way didn't arrive, as on a full disk.
    bool close() noexcept;

  private:
    std::FILE* file_ = nullptr;
};

}  // namespace tarnwick
