#include "tools/texts.h"

namespace tarnwick::tool {

namespace {

constexpr OptionText TOOL_OPTIONS[] = {OPTION_HELP, OPTION_VERSION};
constexpr OptionText SOLVE_OPTIONS[] = {OPTION_SET,    OPTION_SENSITIVITY, OPTION_ALL, OPTION_QUIET,
                                        OPTION_FORMAT, OPTION_OUTPUT,      OPTION_HELP};
constexpr OptionText REPORT_OPTIONS[] = {OPTION_FORMAT, OPTION_OUTPUT, OPTION_HELP};
constexpr OptionText IIS_OPTIONS[] = {OPTION_ROWS_ONLY, OPTION_SET, OPTION_FORMAT, OPTION_SUBSET,
                                      OPTION_HELP};
constexpr OptionText HELP_ALONE[] = {OPTION_HELP};

constexpr CommandText TOOL = {
    "", "COMMAND [OPTION]...", "solve linear, quadratic and integer programs from text files",
    "Reads a model in the plain-text format of the tarnwick library, solves it or describes it, "
    "and "
    "writes a report. What is solved are linear and convex quadratic objectives over linear rows, "
    "also with integer variables.",
    TOOL_OPTIONS};

constexpr CommandText SOLVE = {
    "solve", "[OPTION]... FILE", "Solve the model in FILE.",
    "Reports the sizes of the model, the status of the run, the objective, and for each variable "
    "its "
    "value and for each row its slack, the right-hand side minus the activity; at an optimum also "
    "reduced costs and duals. On a terminal a line on standard error shows the progress. An "
    "interrupt (Ctrl-C) stops the run and reports the best point so far; a second one ends the "
    "tool "
    "at once. With integer variables the line shows the nodes of the search, the best integer "
    "solution, the bound that the relaxation sets, and the gap between the two.",
    SOLVE_OPTIONS};

constexpr CommandText INFO = {"info", "[OPTION]... FILE", "Describe the model in FILE.",
                              "Reports sizes and density, of the rows and of the quadratic matrix "
                              "Q, and how many rows, bounds "
                              "and variables there are of each kind.",
                              REPORT_OPTIONS};

constexpr CommandText IIS = {
    "iis", "[OPTION]... FILE", "Find rows and bounds that contradict each other.",
    "For a model without a feasible point: searches for an irreducible infeasible subset, rows and "
    "bounds that no point can meet together, while without any one of them some point meets the "
    "rest. One search names one subset; a model may have others. Integer variables count as "
    "continuous. The model is solved first, and the search is made if it is not feasible. It "
    "needs room for a variable more for each row, two for an equation: at most 2000 in all. Where "
    "a "
    "check fails, --rows-only or --set FEASTOL=1e-6 may help. An interrupt (Ctrl-C) ends it "
    "without a subset.",
    IIS_OPTIONS};

constexpr CommandText REWRITE = {
    "rewrite", "[OPTION]... IN OUT", "Write the model in IN to OUT, in the form of the library.",
    "All rows and bounds stand in their order, the terms of a variable are added up, and numbers "
    "have six decimals at the most; how many were rounded is told on standard error. A model "
    "without rows gets one without terms.",
    HELP_ALONE};

constexpr CommandText PARAMS = {
    "params", "[OPTION]...", "List the parameters.",
    "Reports number, name, default, range and meaning of each parameter.", REPORT_OPTIONS};

constexpr const CommandText* COMMANDS[] = {&SOLVE, &INFO, &IIS, &REWRITE, &PARAMS};

// clang-format off
constexpr ItemText EXITS[] = {
    {"0", "An optimum: status 1, 101 or 102. For iis a subset, for rewrite a file, else a report."},
    {"1", "The run ended without a proved optimum. Status 65, converged, is one of these. For iis: the "
          "model is feasible, the search was stopped, or its subset was not confirmed."},
    {"2", "Bad usage, a file that can't be read or is no model, or a file that can't be "
          "written."},
};

constexpr ItemText FORMATS[] = {
    {"text", "For people. Tables show ten digits, and 0 for what is below 1e-10; a dash stands for what "
             "does not exist."},
    {"csv",  "One record for each value, with the fields section, name, field and value, and a heading. "
             "Infinite values are inf and -inf; what does not exist is empty."},
    {"json", "One object, with a member for each section: an object, or an array of objects with a name "
             "each. What is infinite or does not exist is null."},
};

constexpr ItemText SECTIONS[] = {
    {"model",            "file, sense (minimise or maximise), rows, variables, nonzeros, integers, "
                         "quadratic_nonzeros; info adds density and quadratic_density."},
    {"result",           "status, status_name, status_text, objective, iterations, seconds; with integer "
                         "variables nodes. The objective does not exist at a status without a point."},
    {"variables",        "By name, x1 and so on: value; at an optimum reduced_cost. Missing at a status "
                         "without a point, as is the next."},
    {"rows",             "By name, c1 and so on: slack; at an optimum dual."},
    {"objective_ranges", "By name, with --sensitivity at an optimum: coefficient, lower, upper."},
    {"rhs_ranges",       "By name, with --sensitivity at an optimum: rhs, lower, upper."},
    {"row_kinds",        "From info: less_or_equal, equal, greater_or_equal, empty."},
    {"bound_kinds",      "From info: none, lower, upper, both, fixed, crossed."},
    {"variable_kinds",   "From info: continuous, binary, integer, in_objective, without_row."},
    {"subset",           "From iis: outcome (found, feasible, not_confirmed or not_found), outcome_text, rows, bounds, "
                         "iterations, seconds."},
    {"subset_rows",      "From iis, by name: row, the text of it."},
    {"subset_bounds",    "From iis, by name: lower, upper, as far as they belong to the subset."},
    {"parameters",       "From params, by name: number, default, lowest, highest, meaning."},
};

constexpr ItemText EXAMPLES[] = {
    {"tarnwick solve model.txt", "Solve a model and show the solution."},
    {"tarnwick solve model.txt --sensitivity --all", "The same, with ranges and every zero."},
    {"tarnwick solve model.txt --set timelimit=60 --set SCALING=-1",
     "Stop after a minute, and leave the model unscaled."},
    {"tarnwick solve model.txt --format json --output result.json",
     "Write the solution for another program."},
    {"tarnwick info model.txt", "Look at a model without solving it."},
    {"tarnwick iis model.txt", "See why a model has no feasible point."},
    {"tarnwick iis model.txt --rows-only --output conflict.txt",
     "Look for contradicting rows alone, and write them to a model file."},
    {"tarnwick rewrite model.txt tidy.txt", "Write a model anew, every row and bound in its place."},
};
// clang-format on

}  // namespace

const CommandText& tool_text() { return TOOL; }
const CommandText& solve_text() { return SOLVE; }
const CommandText& info_text() { return INFO; }
const CommandText& iis_text() { return IIS; }
const CommandText& rewrite_text() { return REWRITE; }
const CommandText& params_text() { return PARAMS; }
std::span<const CommandText* const> command_texts() { return COMMANDS; }

std::span<const ItemText> exit_texts() { return EXITS; }
std::span<const ItemText> format_texts() { return FORMATS; }
std::span<const ItemText> section_texts() { return SECTIONS; }
std::span<const ItemText> example_texts() { return EXAMPLES; }

}  // namespace tarnwick::tool
