// Reports for people: aligned columns, ten digits in tables.

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "tools/report.h"

namespace tarnwick::tool {

namespace {

constexpr std::size_t SHORT_TABLE = 20;   // so many rows are shown with their zeros
constexpr double SMALLEST_SHOWN = 1e-10;  // in a table; what rounding leaves of a zero is below it

bool is_text(const Cell& cell) { return std::holds_alternative<std::string>(cell); }

double shown(double value) { return std::fabs(value) < SMALLEST_SHOWN ? 0.0 : value; }

std::string number_text(double value, bool is_limit, bool in_table)
{
    if (std::isinf(value) && is_limit) return "none";
    return in_table ? fmt::format("{:.10g}", shown(value))
                    : fmt::format("{}", value == 0.0 ? 0.0 : value);
}

std::string cell_text(const Cell& cell, bool is_limit, bool in_table)
{
    if (const auto* whole = std::get_if<std::int64_t>(&cell)) return fmt::format("{}", *whole);
    if (const auto* real = std::get_if<double>(&cell))
        return number_text(*real, is_limit, in_table);
    if (const auto* text = std::get_if<std::string>(&cell)) return *text;
    return "-";
}

bool is_zero(const Cell& cell)
{
    if (const auto* whole = std::get_if<std::int64_t>(&cell)) return *whole == 0;
    if (const auto* real = std::get_if<double>(&cell)) return *real == 0.0;
    return !is_text(cell);
}

bool holds_zeros(const std::vector<Cell>& row)
{
    return std::all_of(row.begin() + 1, row.end(), is_zero);
}

// ---- facts

void add_group(std::string& out, const Group& group, std::size_t label_width)
{
    const bool has_title = !group.title.empty();
    if (has_title) out += group.title + '\n';
    for (std::size_t k = 0; k < group.facts.size(); ++k) {
        const Fact& fact = group.facts[k];
        const std::string value = cell_text(fact.value, false, false);
        if (k > 0 && fact.label.empty())
            out += ' ' + value;
        else
            out += fmt::format("{}{}{:<{}}  {}", k > 0 ? "\n" : "", has_title ? "  " : "",
                               fact.label, label_width, value);
    }
    out += '\n';
}

// ---- tables

// What is printed of a table: the headings first, then its rows.
using Lines = std::vector<std::vector<std::string>>;

Lines printed_lines(const Table& table, bool leaves_out)
{
    Lines lines;
    auto& headings = lines.emplace_back(1, "name");
    for (const Column& column : table.columns) headings.push_back(column.title);

    for (const auto& row : table.rows) {
        if (leaves_out && holds_zeros(row)) continue;
        auto& line = lines.emplace_back();
        for (std::size_t k = 0; k < row.size(); ++k)
            line.push_back(cell_text(row[k], k > 0 && table.columns[k - 1].is_limit, true));
    }
    return lines;
}

std::vector<std::size_t> column_widths(const Lines& lines)
{
    std::vector<std::size_t> widths(lines.front().size(), 0);
    for (const auto& line : lines)
        for (std::size_t k = 0; k < line.size(); ++k)
            widths[k] = std::max(widths[k], line[k].size());
    return widths;
}

// Text goes to the left of its column, numbers to the right.
std::string aligned(const std::string& text, std::size_t width, bool to_left)
{
    return to_left ? fmt::format("  {:<{}}", text, width) : fmt::format("  {:>{}}", text, width);
}

void add_table(std::string& out, const Table& table)
{
    const bool leaves_out = table.leaves_out_zeros && table.rows.size() > SHORT_TABLE;
    const Lines lines = printed_lines(table, leaves_out);
    const std::vector<std::size_t> widths = column_widths(lines);

    out += table.title + '\n';
    for (const auto& line : lines) {
        std::string text;
        for (std::size_t k = 0; k < line.size(); ++k)
            text += aligned(line[k], widths[k],
                            k == 0 || (!table.rows.empty() && is_text(table.rows.front()[k])));
        text.erase(text.find_last_not_of(' ') + 1);
        out += text + '\n';
    }
    const std::size_t missing = table.rows.size() - (lines.size() - 1);
    if (missing > 0)
        out += fmt::format("  left out: {} of {}, which hold zeros alone (--all lists them)\n",
                           missing, table.rows.size());
}

}  // namespace

std::string as_text(const Report& report)
{
    std::size_t label_width = 0;
    for (const Group& group : report.groups)
        for (const Fact& fact : group.facts) label_width = std::max(label_width, fact.label.size());

    std::string out;
    const auto start_block = [&out] {
        if (!out.empty()) out += '\n';
    };
    for (const Group& group : report.groups) {
        start_block();
        add_group(out, group, label_width);
    }
    for (const Table& table : report.tables) {
        start_block();
        add_table(out, table);
    }
    return out;
}

std::string written(const Report& report, Format format)
{
    switch (format) {
    case Format::csv: return as_csv(report);
    case Format::json: return as_json(report);
    case Format::text: break;
    }
    return as_text(report);
}

}  // namespace tarnwick::tool
