// Reports as comma-separated values, one record for each value:
//
//     section,name,field,value
//
// The section is the key of a group or table, the name that of a row, empty in a group. A value that
// does not exist is empty, infinite ones are inf and -inf, and numbers read back as they were.

#include <fmt/format.h>

#include "tools/report.h"

namespace tarnwick::tool {

namespace {

std::string quoted(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"') out += '"';
        out += c;
    }
    return out + '"';
}

std::string csv_value(const Cell& cell)
{
    if (const auto* whole = std::get_if<std::int64_t>(&cell)) return fmt::format("{}", *whole);
    if (const auto* real = std::get_if<double>(&cell))
        return fmt::format("{}", *real == 0.0 ? 0.0 : *real);
    if (const auto* text = std::get_if<std::string>(&cell)) return quoted(*text);
    return {};
}

}  // namespace

std::string as_csv(const Report& report)
{
    std::string out = "section,name,field,value\n";
    for (const Group& group : report.groups)
        for (const Fact& fact : group.facts)
            out += fmt::format("{},,{},{}\n", group.key, fact.key, csv_value(fact.value));

    for (const Table& table : report.tables)
        for (const auto& row : table.rows)
            for (std::size_t k = 1; k < row.size(); ++k)
                out += fmt::format("{},{},{},{}\n", table.key, csv_value(row.front()),
                                   table.columns[k - 1].key, csv_value(row[k]));
    return out;
}

}  // namespace tarnwick::tool
