#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "include/tarnwick.h"

namespace tarnwick {

struct Message {
    std::string text, title;
    std::int32_t buttons;
};

// Turns PARAM_MESSAGES on and records what the message box is asked to show, as long as it lives.
// One at a time; it ends with all process-wide parameters at their defaults.
class MessageLog {
  public:
    MessageLog()
    {
        shown_.clear();
        setmessagebox(record);
        setintparam(nullptr, PARAM_MESSAGES, 1);
    }
    ~MessageLog()
    {
        setdefaults(nullptr);
        setmessagebox(nullptr);
    }
    MessageLog(const MessageLog&) = delete;
    MessageLog& operator=(const MessageLog&) = delete;

    // What has been shown since the last call.
    static std::vector<Message> take() { return std::exchange(shown_, {}); }

  private:
    static std::int32_t TARNWICK_CALL record(const char* text, const char* title,
                                             std::int32_t buttons)
    {
        shown_.push_back({text, title, buttons});
        return 1;
    }
    static inline std::vector<Message> shown_;
};

// A refused call: it has returned `want`, and this alone has been told. A text that begins with a
// space goes on from the title.
inline void expect_told(std::int32_t code, std::int32_t want, const std::string& title,
                        const std::string& text)
{
    SCOPED_TRACE(title + ": " + text);
    const auto messages = MessageLog::take();
    EXPECT_EQ(code, want);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].title, title);
    EXPECT_EQ(messages[0].text, text[0] == ' ' ? title + text : text);
    EXPECT_EQ(messages[0].buttons, 0);
}

}  // namespace tarnwick
