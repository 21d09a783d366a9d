#pragma once

#include <cstdint>

#include "include/tarnwick.h"

namespace tarnwick {

enum : std::int32_t { BUTTONS_OK = 0, BUTTONS_OK_CANCEL = 1 };
enum : std::int32_t { ANSWER_OK = 1, ANSWER_CANCEL = 2 };

// Shows a text in the host's message box, or writes "title: text" to standard error and answers OK.
std::int32_t show_message(const char* text, const char* title, std::int32_t buttons) noexcept;

// Replaces the box; null restores the default.
void set_message_box(TarnwickMessageBox function) noexcept;

}  // namespace tarnwick
