#include "tools/arguments.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "tools/failure.h"
#include "tools/help.h"

namespace tarnwick::tool {

namespace {

constexpr const char VERSION_LINE[] = "tarnwick " TARNWICK_VERSION "\n";

// What stands on the command line, before it is looked into.
struct Raw {
    std::vector<std::string> settings;
    std::string format = "text";
    bool prints_manual = false;
};

Format parsed_format(const std::string& name)
{
    if (name == "text") return Format::text;
    if (name == "csv") return Format::csv;
    if (name == "json") return Format::json;
    throw BadUsage(fmt::format("--format is text, csv or json, not '{}'", name));
}

CLI::App* add_command(CLI::App& app, const CommandText& text)
{
    CLI::App* const command = app.add_subcommand(text.name, text.summary);
    command->set_help_flag(OPTION_HELP.names, OPTION_HELP.text);
    return command;
}

CLI::App* add_report_command(CLI::App& app, const CommandText& text, Arguments& arguments, Raw& raw)
{
    CLI::App* const command = add_command(app, text);
    command->add_option(OPTION_FORMAT.names, raw.format)
        ->type_name(OPTION_FORMAT.value)
        ->take_last();
    command->add_option(OPTION_OUTPUT.names, arguments.output)
        ->type_name(OPTION_OUTPUT.value)
        ->take_last();
    return command;
}

void add_file(CLI::App& command, Arguments& arguments)
{
    command.add_option("FILE", arguments.file)->required();
}

void add_settings(CLI::App& command, Raw& raw)
{
    command.add_option(OPTION_SET.names, raw.settings)
        ->type_name(OPTION_SET.value)
        ->allow_extra_args(false);
}

void add_solve_options(CLI::App& command, Arguments& arguments, Raw& raw)
{
    add_settings(command, raw);
    command.add_flag(OPTION_SENSITIVITY.names, arguments.sensitivity);
    command.add_flag(OPTION_ALL.names, arguments.all);
    command.add_flag(OPTION_QUIET.names, arguments.quiet);
    add_file(command, arguments);
}

void add_iis_options(CLI::App& command, Arguments& arguments, Raw& raw)
{
    add_settings(command, raw);
    command.add_flag(OPTION_ROWS_ONLY.names, arguments.rows_only);
    add_file(command, arguments);
}

void add_rewrite_files(CLI::App& command, Arguments& arguments)
{
    command.add_option("IN", arguments.file)->required();
    command.add_option("OUT", arguments.target)->required();
}

// The help of the command that was named, or of the tool.
std::string help_for(const CLI::App& app)
{
    for (const CommandText* text : command_texts())
        if (app.got_subcommand(text->name)) return help_of(*text);
    return help_of(tool_text());
}

void parse(CLI::App& app, int argc, char** argv)
{
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        throw;
    } catch (const CLI::CallForVersion&) {
        throw;
    } catch (const CLI::ParseError& error) {
        throw BadUsage(fmt::format("{}\nTry 'tarnwick --help'.", error.what()));
    }
}

}  // namespace

std::optional<Arguments> parsed_arguments(int argc, char** argv, std::string& answer)
{
    Arguments arguments;
    Raw raw;
    CLI::App app;
    app.set_help_flag(OPTION_HELP.names, OPTION_HELP.text);
    app.set_version_flag(OPTION_VERSION.names, VERSION_LINE);
    app.add_flag("--print-man", raw.prints_manual);
    app.require_subcommand(0, 1);

    CLI::App* const solve = add_report_command(app, solve_text(), arguments, raw);
    add_solve_options(*solve, arguments, raw);
    CLI::App* const info = add_report_command(app, info_text(), arguments, raw);
    add_file(*info, arguments);
    CLI::App* const iis = add_report_command(app, iis_text(), arguments, raw);
    add_iis_options(*iis, arguments, raw);
    CLI::App* const rewrite = add_command(app, rewrite_text());
    add_rewrite_files(*rewrite, arguments);
    add_report_command(app, params_text(), arguments, raw);

    try {
        parse(app, argc, argv);
    } catch (const CLI::CallForHelp&) {
        answer = help_for(app);
        return {};
    } catch (const CLI::CallForVersion&) {
        answer = VERSION_LINE;
        return {};
    }
    if (raw.prints_manual) {
        answer = manual_page();
        return {};
    }
    if (app.get_subcommands().empty())
        throw BadUsage(
            "a command is needed: solve, info, iis, rewrite or params\nTry 'tarnwick --help'.");

    arguments.command = *solve     ? Command::solve
                        : *info    ? Command::info
                        : *iis     ? Command::iis
                        : *rewrite ? Command::rewrite
                                   : Command::params;
    arguments.format = parsed_format(raw.format);
    for (const std::string& setting : raw.settings)
        arguments.settings.push_back(parsed_setting(setting));
    return arguments;
}

}  // namespace tarnwick::tool
