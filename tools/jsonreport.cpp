// Reports as one JSON object: a member for each group, an object, and one for each table, an array
// of objects. What JSON has no number for is null.

#include <array>
#include <cmath>
#include <string_view>

#include <fmt/format.h>

#include "tools/report.h"

namespace tarnwick::tool {

namespace {

constexpr const char REPLACEMENT[] = "\\ufffd";  // for bytes that are no UTF-8

bool is_continuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// Length of the well-formed UTF-8 sequence of two to four bytes that starts here, else 0. The second
// byte rules out overlong forms, surrogates and what lies beyond the last character.
std::size_t sequence_length(std::string_view text)
{
    struct Lead {
        unsigned char first, last, second_first, second_last;
        std::size_t length;
    };
    static constexpr std::array<Lead, 8> LEADS = {
        {
         {0xC2, 0xDF, 0x80, 0xBF, 2},
         {0xE0, 0xE0, 0xA0, 0xBF, 3},
         {0xE1, 0xEC, 0x80, 0xBF, 3},
         {0xED, 0xED, 0x80, 0x9F, 3},
         {0xEE, 0xEF, 0x80, 0xBF, 3},
         {0xF0, 0xF0, 0x90, 0xBF, 4},
         {0xF1, 0xF3, 0x80, 0xBF, 4},
         {0xF4, 0xF4, 0x80, 0x8F, 4},
         }
    };
    const auto first = static_cast<unsigned char>(text[0]);
    for (const Lead& lead : LEADS) {
        if (first < lead.first || first > lead.last) continue;
        if (text.size() < lead.length) return 0;
        const auto second = static_cast<unsigned char>(text[1]);
        if (second < lead.second_first || second > lead.second_last) return 0;
        for (std::size_t k = 2; k < lead.length; ++k)
            if (!is_continuation(text[k])) return 0;
        return lead.length;
    }
    return 0;
}

std::string json_string(std::string_view text)
{
    constexpr char FIRST_PRINTED = ' ', LAST_ASCII = '\x7f';
    std::string out = "\"";
    while (!text.empty()) {
        const char c = text.front();
        std::size_t length = 1;
        if (c == '"' || c == '\\')
            out += {'\\', c};
        else if (c >= 0 && c < FIRST_PRINTED)
            out += fmt::format("\\u{:04x}", static_cast<int>(c));
        else if (c >= 0 && c <= LAST_ASCII)
            out += c;
        else if (const std::size_t sequence = sequence_length(text); sequence == 0)
            out += REPLACEMENT;
        else
            out += text.substr(0, length = sequence);
        text.remove_prefix(length);
    }
    return out + '"';
}

std::string json_value(const Cell& cell)
{
    if (const auto* whole = std::get_if<std::int64_t>(&cell)) return fmt::format("{}", *whole);
    if (const auto* real = std::get_if<double>(&cell); real && std::isfinite(*real))
        return fmt::format("{}", *real == 0.0 ? 0.0 : *real);
    if (const auto* text = std::get_if<std::string>(&cell)) return json_string(*text);
    return "null";
}

std::string group_object(const Group& group)
{
    std::string out = "{";
    for (const Fact& fact : group.facts)
        out += fmt::format("{}\n    {}: {}", out.size() > 1 ? "," : "", json_string(fact.key),
                           json_value(fact.value));
    return out + "\n  }";
}

std::string table_array(const Table& table)
{
    std::string out = "[";
    for (const auto& row : table.rows) {
        out += fmt::format("{}\n    {{\"name\": {}", out.size() > 1 ? "," : "",
                           json_value(row.front()));
        for (std::size_t k = 1; k < row.size(); ++k)
            out +=
                fmt::format(", {}: {}", json_string(table.columns[k - 1].key), json_value(row[k]));
        out += '}';
    }
    return out + (table.rows.empty() ? "]" : "\n  ]");
}

}  // namespace

std::string as_json(const Report& report)
{
    std::string out = "{";
    const auto add_member = [&out](const std::string& key, const std::string& value) {
        out += fmt::format("{}\n  {}: {}", out.size() > 1 ? "," : "", json_string(key), value);
    };
    for (const Group& group : report.groups) add_member(group.key, group_object(group));
    for (const Table& table : report.tables) add_member(table.key, table_array(table));
    return out + "\n}\n";
}

}  // namespace tarnwick::tool
