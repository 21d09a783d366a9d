#include "tests/support/messages.h"

#include <gtest/gtest.h>

#include <utility>

#include "include/tarnwick.h"

namespace tarnwick {

namespace {

std::vector<Message> shown;

std::int32_t TARNWICK_CALL record(const char* text, const char* title, std::int32_t buttons)
{
    shown.push_back({text, title, buttons});
    return 1;
}

}  // namespace

MessageLog::MessageLog()
{
    shown.clear();
    setmessagebox(record);
    setintparam(nullptr, PARAM_MESSAGES, 1);
}

MessageLog::~MessageLog()
{
    setdefaults(nullptr);
    setmessagebox(nullptr);
}

std::vector<Message> MessageLog::take() { return std::exchange(shown, {}); }

void expect_told(std::int32_t code, std::int32_t want, const std::string& title,
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
