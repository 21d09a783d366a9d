#include "platform/messagebox.h"

#include <atomic>
#include <cstdio>

namespace tarnwick {

namespace {

std::int32_t TARNWICK_CALL write_to_stderr(const char* text, const char* title,
                                           std::int32_t) noexcept
{
    std::fprintf(stderr, "%s: %s\n", title, text);
    return ANSWER_OK;
}

std::atomic<TarnwickMessageBox> message_box{write_to_stderr};

}  // namespace

std::int32_t show_message(const char* text, const char* title, std::int32_t buttons) noexcept
{
    return message_box.load(std::memory_order_acquire)(text, title, buttons);
}

void set_message_box(TarnwickMessageBox function) noexcept
{
    message_box.store(function ? function : write_to_stderr, std::memory_order_release);
}

}  // namespace tarnwick
