#include "platform/textfile.h"

#include <utility>

namespace tarnwick {

namespace {

constexpr int NO_BYTE = -1;

}  // namespace

TextInput::TextInput(const char* filename) noexcept : file_(std::fopen(filename, "rb"))
{
    // The chunk is the only buffer.
    if (file_) std::setvbuf(file_, nullptr, _IONBF, 0);
}

TextInput::~TextInput()
{
    if (file_) std::fclose(file_);
}

// The byte that comes next on disk, which stays where it is.
int TextInput::next_byte() noexcept
{
    if (taken_ == filled_) {
        filled_ = std::fread(chunk_, 1, CHUNK, file_);
        taken_ = 0;
    }
    return taken_ < filled_ ? static_cast<unsigned char>(chunk_[taken_]) : NO_BYTE;
}

std::size_t TextInput::read(char* text, std::size_t count) noexcept
{
    std::size_t done = 0;
    for (int byte = 0; done < count && (byte = next_byte()) != NO_BYTE; ++done) {
        ++taken_;
        if (byte == '\r' && next_byte() == '\n') {
            byte = '\n';
            ++taken_;
        }
        text[done] = static_cast<char>(byte);
    }
    return done;
}

TextOutput::~TextOutput() { close(); }

bool TextOutput::open(const char* filename) noexcept
{
    file_ = std::fopen(filename, "wb");
    return file_ != nullptr;
}

bool TextOutput::write(const char* text, std::size_t count) noexcept
{
    for (std::size_t k = 0; k < count; ++k) {
        if (text[k] == '\n' && std::fputc('\r', file_) == EOF) return false;
        if (std::fputc(text[k], file_) == EOF) return false;
    }
    return true;
}

bool TextOutput::close() noexcept
{
    return !file_ || std::fclose(std::exchange(file_, nullptr)) == 0;
}

}  // namespace tarnwick
