#pragma once

#include <regex>
#include <string>

namespace tarnwick {

// Judges whether a text is one JSON value and nothing more: strings become s, the other scalars v,
// and then each innermost object or array a v, until one is left. Strings are looked at by the byte.
inline bool is_json(std::string text)
{
    const auto put = [&](const char* pattern, const char* by) {
        text = std::regex_replace(text, std::regex(pattern), by);
    };
    put(R"("([^"\\\x01-\x1f]|\\(["\\/bfnrt]|u[0-9a-fA-F]{4}))*")", "s");
    put(R"(-?(0|[1-9][0-9]*)(\.[0-9]+)?([eE][+-]?[0-9]+)?|null|true|false)", "v");
    put("[ \n\r\t]+", "");
    for (std::string before; before != text;) {
        before = text;
        put("s:[sv]", "m");
        put(R"(\{(m(,m)*)?\}|\[([sv](,[sv])*)?\])", "v");
    }
    return text == "s" || text == "v";
}

}  // namespace tarnwick
