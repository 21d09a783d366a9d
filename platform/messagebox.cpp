#include "platform/messagebox.h"

#include <atomic>
#include <cstdio>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace tarnwick {

namespace {

#if defined(_WIN32)

static_assert(BUTTONS_OK == MB_OK && BUTTONS_OK_CANCEL == MB_OKCANCEL);
static_assert(ANSWER_OK == IDOK && ANSWER_CANCEL == IDCANCEL);

std::int32_t TARNWICK_CALL default_box(const char* text, const char* title,
                                       std::int32_t buttons) noexcept
{
    return MessageBoxA(nullptr, text, title, static_cast<UINT>(buttons));
}

#else

std::int32_t TARNWICK_CALL default_box(const char* text, const char* title, std::int32_t) noexcept
{
    std::fprintf(stderr, "%s: %s\n", title, text);
    return ANSWER_OK;
}

#endif

std::atomic<TarnwickMessageBox> message_box{default_box};

}  // namespace

std::int32_t show_message(const char* text, const char* title, std::int32_t buttons) noexcept
{
    return message_box.load(std::memory_order_acquire)(text, title, buttons);
}

void set_message_box(TarnwickMessageBox function) noexcept
{
    message_box.store(function ? function : default_box, std::memory_order_release);
}

}  // namespace tarnwick
