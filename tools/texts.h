#pragma once

#include <span>

namespace tarnwick::tool {

// What --help and the manual page say, and how the options are called.
struct OptionText {
    const char* names;  // as in "-o,--output"
    const char* value;  // what follows the name, or empty
    const char* text;
};

struct CommandText {
    const char* name;  // empty for the tool itself
    const char* arguments;
    const char* summary;
    const char* text;
    std::span<const OptionText> options;
};

struct ItemText {
    const char* item;
    const char* text;
};

inline constexpr OptionText OPTION_HELP = {"-h,--help", "", "Show this help and exit."};
inline constexpr OptionText OPTION_VERSION = {"--version", "", "Show the version and exit."};
inline constexpr OptionText OPTION_FORMAT = {
    "-f,--format", "FORMAT", "Write the report as text (the default), csv or json."};
inline constexpr OptionText OPTION_OUTPUT = {"-o,--output", "FILE",
                                             "Write the report to FILE, not to standard output."};
inline constexpr OptionText OPTION_SET = {
    "-s,--set", "NAME=VALUE",
    "Set a parameter, by its number or its name in capital or small letters, with or without "
    "PARAM_. "
    "May be given more than once; the last value of a parameter counts."};
inline constexpr OptionText OPTION_SENSITIVITY = {
    "--sensitivity", "",
    "Add the ranges in which an objective coefficient or a right-hand side can move, alone, "
    "without "
    "another basis becoming the optimal one. For linear programs at an optimum."};
inline constexpr OptionText OPTION_ALL = {
    "-a,--all", "", "In text, list also what holds zeros alone. Short lists are always complete."};
inline constexpr OptionText OPTION_QUIET = {
    "-q,--quiet", "", "Report status and objective alone, and show no progress."};

inline constexpr OptionText OPTION_ROWS_ONLY = {
    "--rows-only", "",
    "Test rows alone. The search is shorter, and the bounds that take part stay unknown."};
inline constexpr OptionText OPTION_SUBSET = {
    "-o,--output", "FILE",
    "Write the subset to FILE as a model file, with the numbers of rows and variables kept."};

const CommandText& tool_text();
const CommandText& solve_text();
const CommandText& info_text();
const CommandText& iis_text();
const CommandText& rewrite_text();
const CommandText& params_text();
std::span<const CommandText* const> command_texts();

std::span<const ItemText> exit_texts();
std::span<const ItemText> format_texts();
std::span<const ItemText> section_texts();  // of a report, with their fields
std::span<const ItemText> example_texts();

}  // namespace tarnwick::tool
