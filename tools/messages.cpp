#include "tools/messages.h"

#include <cstdint>

#include "include/tarnwick.h"

namespace tarnwick::tool {

namespace {

constexpr std::int32_t ANSWER_OK = 1;

}  // namespace

std::vector<std::string>& Messages::texts()
{
    static std::vector<std::string> list;
    return list;
}

Messages::Messages()
{
    setmessagebox([](const char* text, const char*, std::int32_t) {
        texts().emplace_back(text);
        return ANSWER_OK;
    });
    setintparam(nullptr, PARAM_MESSAGES, 1);
}

Messages::~Messages()
{
    setintparam(nullptr, PARAM_MESSAGES, 0);
    setmessagebox(nullptr);
}

std::string Messages::joined() const
{
    std::string all;
    for (auto text = texts().rbegin(); text != texts().rend(); ++text) {
        const bool says_the_same = !all.empty() && all.substr(1) == text->substr(1);
        if (!says_the_same) all += (all.empty() ? "" : ": ") + *text;
    }
    return all;
}

}  // namespace tarnwick::tool
