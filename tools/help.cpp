#include "tools/help.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

namespace tarnwick::tool {

namespace {

constexpr std::size_t WIDTH = 79;
constexpr std::size_t ITEM_INDENT = 2, TEXT_INDENT = 26;

// Breaks a text into lines, all but the first indented.
std::string wrapped(std::string_view text, std::size_t indent)
{
    std::string out;
    std::size_t column = indent;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find(' '), text.size());
        if (column > indent && column + 1 + length > WIDTH) {
            out += '\n' + std::string(indent, ' ');
            column = indent;
        }
        if (column > indent) {
            out += ' ';
            ++column;
        }
        out += text.substr(0, length);
        column += length;
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return out;
}

std::string item(const std::string& name, std::string_view text)
{
    const bool fits = ITEM_INDENT + name.size() + 1 < TEXT_INDENT;
    return fmt::format("  {:<{}}{}{}\n", name, fits ? TEXT_INDENT - ITEM_INDENT : 0,
                       fits ? "" : '\n' + std::string(TEXT_INDENT, ' '),
                       wrapped(text, TEXT_INDENT));
}

// Short names and long ones stand below each other.
std::string option_item(const OptionText& option)
{
    const std::string_view names = option.names;
    const std::size_t comma = names.find(',');
    const bool has_short = comma != std::string_view::npos;
    return item(fmt::format("{:<4}{}{}{}", has_short ? names.substr(0, comma + 1) : "",
                            names.substr(has_short ? comma + 1 : 0),
                            *option.value == '\0' ? "" : " ", option.value),
                option.text);
}

std::string items(const char* title, std::span<const ItemText> list)
{
    std::string out = fmt::format("\n{}:\n", title);
    for (const auto& [name, text] : list) out += item(name, text);
    return out;
}

std::string examples()
{
    std::string out = "\nExamples:\n";
    for (const auto& [command, text] : example_texts())
        out += fmt::format("  {}\n      {}\n", command, text);
    return out;
}

}  // namespace

std::string help_of(const CommandText& command)
{
    const bool is_tool = *command.name == '\0';
    std::string out = fmt::format("Usage: tarnwick {}{}{}\n\n{}\n", command.name,
                                  is_tool ? "" : " ", command.arguments, wrapped(command.text, 0));
    if (is_tool) {
        out += "\nCommands:\n";
        for (const CommandText* each : command_texts())
            out += item(fmt::format("{} {}", each->name, each->arguments), each->summary);
    }
    out += "\nOptions:\n";
    for (const OptionText& option : command.options) out += option_item(option);
    if (is_tool) out += items("Report formats", format_texts());
    out += items("Exit status", exit_texts());
    if (is_tool) out += examples();
    return out;
}

}  // namespace tarnwick::tool
