// The manual page, in the man macros of roff, from the same texts as --help.

#include <string_view>

#include <fmt/format.h>

#include "tools/help.h"
#include "tools/statuses.h"

namespace tarnwick::tool {

namespace {

// A hyphen that is typed must stay one, and a line must not start a request.
std::string roff(std::string_view text)
{
    std::string out;
    if (text.starts_with('.') || text.starts_with('\'')) out += "\\&";
    for (const char c : text) {
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else
            out += c;
    }
    return out;
}

std::string section(std::string_view title) { return fmt::format(".SH {}\n", title); }

std::string item(std::string_view name, std::string_view text)
{
    return fmt::format(".TP\n.B {}\n{}\n", roff(name), roff(text));
}

std::string option(const OptionText& text)
{
    std::string names;
    for (const char c : roff(text.names)) names += c == ',' ? ", " : std::string(1, c);
    const std::string value =
        *text.value == '\0' ? "" : fmt::format(" \\fI{}\\fR", roff(text.value));
    return fmt::format(".TP\n\\fB{}\\fR{}\n{}\n", names, value, roff(text.text));
}

std::string synopsis()
{
    std::string out = section("SYNOPSIS");
    for (const CommandText* command : command_texts())
        out +=
            fmt::format("{}.B tarnwick {}\n{}\n", command == command_texts().front() ? "" : ".br\n",
                        command->name, roff(command->arguments));
    return out;
}

std::string commands()
{
    std::string out = section("COMMANDS");
    for (const CommandText* command : command_texts()) {
        out += fmt::format(".SS tarnwick {} {}\n{}\n{}\n", command->name, roff(command->arguments),
                           roff(command->summary), roff(command->text));
        for (const OptionText& each : command->options) out += option(each);
    }
    return out;
}

std::string status_codes()
{
    std::string out = section("STATUS");
    out += "The status of a run is one of these.\n";
    for (const Status& status : statuses())
        out += item(fmt::format("{} {}", status.number, status.name), status.text);
    return out;
}

}  // namespace

std::string manual_page()
{
    std::string out =
        fmt::format(".TH TARNWICK 1 \"\" \"tarnwick {}\" \"User Commands\"\n", TARNWICK_VERSION);
    out += section("NAME") + fmt::format("tarnwick \\- {}\n", roff(tool_text().summary));
    out += synopsis();
    out += section("DESCRIPTION") + roff(tool_text().text) + '\n';
    out += commands();
    out += section("OPTIONS");
    for (const OptionText& each : tool_text().options) out += option(each);

    out += section("REPORT FORMATS");
    for (const auto& [name, text] : format_texts()) out += item(name, text);
    out += section("REPORT SECTIONS");
    out += "What the sections of a report hold, in csv and json.\n";
    for (const auto& [name, text] : section_texts()) out += item(name, text);
    out += section("EXIT STATUS");
    for (const auto& [name, text] : exit_texts()) out += item(name, text);
    out += status_codes();
    out += section("EXAMPLES");
    for (const auto& [command, text] : example_texts()) out += item(command, text);
    return out;
}

}  // namespace tarnwick::tool
