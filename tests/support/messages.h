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

}  // namespace tarnwick
