// tarnwick: solves and describes models in text files. A client of the public interface.

#include <cstdio>
#include <exception>
#include <new>

#include <fmt/format.h>

#include "tools/arguments.h"
#include "tools/failure.h"
#include "tools/infeasible.h"
#include "tools/messages.h"
#include "tools/model.h"
#include "tools/output.h"
#include "tools/rewrite.h"
#include "tools/solve.h"
#include "tools/statuses.h"

namespace tarnwick::tool {

namespace {

void tell(const std::string& text) { std::fputs((text + '\n').c_str(), stderr); }

int run_solve(const Arguments& arguments, Messages& messages)
{
    const Model model = read_model(arguments.file, messages);
    if (model.numcols == 0)
        throw Failure(fmt::format("{}: the model has no variables", arguments.file));
    for (const Setting& setting : arguments.settings) apply(setting, model.lp.get());
    Output output(arguments.output, arguments.file);

    const Solution solution = solve(model, arguments.sensitivity, !arguments.quiet, messages);
    if (arguments.sensitivity && !model.is_linear_program())
        tell(fmt::format("{}: ranges exist for linear programs alone", model.file));

    Report report = arguments.quiet ? short_report(solution) : solution_report(model, solution);
    if (arguments.all)
        for (Table& table : report.tables) table.leaves_out_zeros = false;
    output.write(written(report, arguments.format));
    return is_optimum(solution.status) ? EXIT_OPTIMUM : EXIT_NO_OPTIMUM;
}

int run_info(const Arguments& arguments, Messages& messages)
{
    const Model model = read_model(arguments.file, messages);
    Output(arguments.output, arguments.file).write(written(model_report(model), arguments.format));
    return EXIT_OPTIMUM;
}

int run_iis(const Arguments& arguments, Messages& messages)
{
    const Model model = read_model(arguments.file, messages);
    if (model.numcols == 0)
        throw Failure(fmt::format("{}: the model has no variables", arguments.file));
    require_other_file(arguments.output, arguments.file);

    const Subset subset = find_subset(model, arguments.settings, arguments.rows_only, messages);
    const bool is_found = subset.outcome == Outcome::found;
    if (is_found && !arguments.output.empty()) write_subset(model, arguments.output, messages);
    Output("", "").write(written(subset_report(model, subset), arguments.format));
    return is_found ? EXIT_OPTIMUM : EXIT_NO_OPTIMUM;
}

int run_rewrite(const Arguments& arguments, Messages& messages)
{
    const Model model = read_model(arguments.file, messages);
    if (model.numcols == 0)
        throw Failure(fmt::format("{}: the model has no variables", arguments.file));
    require_other_file(arguments.target, arguments.file);
    write_model(model, arguments.target, messages);
    if (const std::size_t count = count_rounded(model); count > 0)
        tell(
            fmt::format("{}: rounded to six decimals: {} of the numbers", arguments.target, count));
    return EXIT_OPTIMUM;
}

int run_params(const Arguments& arguments)
{
    Output(arguments.output, "").write(written(parameter_report(), arguments.format));
    return EXIT_OPTIMUM;
}

int run(int argc, char** argv)
{
    std::string answer;
    const auto arguments = parsed_arguments(argc, argv, answer);
    if (!arguments) {
        Output("", "").write(answer);
        return EXIT_OPTIMUM;
    }
    Messages messages;
    switch (arguments->command) {
    case Command::solve: return run_solve(*arguments, messages);
    case Command::info: return run_info(*arguments, messages);
    case Command::iis: return run_iis(*arguments, messages);
    case Command::rewrite: return run_rewrite(*arguments, messages);
    case Command::params: return run_params(*arguments);
    }
    return EXIT_FAILED;
}

}  // namespace

}  // namespace tarnwick::tool

int main(int argc, char** argv)
{
    using namespace tarnwick::tool;
    try {
        return run(argc, argv);
    } catch (const Failure& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
    } catch (const std::bad_alloc&) {
        std::fputs("tarnwick: not enough memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tarnwick: %s\n", error.what());
    }
    return EXIT_FAILED;
}
