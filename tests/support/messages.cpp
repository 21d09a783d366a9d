#include "tests/support/messages.h"

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

}  // namespace tarnwick
