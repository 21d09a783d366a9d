#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarnwick {

struct Message {
    std::string text, title;
    std::int32_t buttons;
};

// Turns PARAM_MESSAGES on and records what the message box is asked to show, as long as it lives.
// One at a time; it ends with all process-wide parameters at their defaults.
class MessageLog {
  public:
    MessageLog();
    ~MessageLog();
    MessageLog(const MessageLog&) = delete;
    MessageLog& operator=(const MessageLog&) = delete;

    // What has been shown since the last call.
    static std::vector<Message> take();
};

// A refused call: it has returned `want`, and this alone has been told. A text that begins with a
// space goes on from the title.
void expect_told(std::int32_t code, std::int32_t want, const std::string& title,
                 const std::string& text);

}  // namespace tarnwick
