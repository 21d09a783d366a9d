#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "tools/solve.h"
#include "tools/statuses.h"

namespace tarnwick::tool {

namespace {

constexpr double INFINITE_BOUND = 1e30;

double with_infinities(double value)
{
    constexpr double INFINITE = std::numeric_limits<double>::infinity();
    if (value >= INFINITE_BOUND) return INFINITE;
    return value <= -INFINITE_BOUND ? -INFINITE : value;
}

Group outcome(const char* title, const Solution& solution)
{
    const Status status = status_of(solution.status);
    Group group{"result", title, {}};
    group.add("status", "status", std::int64_t{status.number});
    group.add("status_name", "", std::string(status.name));
    group.add("status_text", "", std::string(status.text));
    const bool has_point = status.point != Point::none;
    group.add("objective", "objective", has_point ? Cell(solution.objective) : Cell());
    return group;
}

// A table whose rows are named by the letter and their number from 1.
Table named_rows(const char* key, const char* title, char letter, std::size_t count)
{
    Table table{key, title, {}, {}};
    for (std::size_t k = 1; k <= count; ++k) table.rows.push_back({fmt::format("{}{}", letter, k)});
    return table;
}

// Nothing, if the values do not exist.
void add_column(Table& table, const Column& column, const std::vector<double>& values)
{
    if (values.empty()) return;
    table.columns.push_back(column);
    for (std::size_t k = 0; k < table.rows.size(); ++k)
        table.rows[k].emplace_back(with_infinities(values[k]));
}

const char* title_of(Point point)
{
    switch (point) {
    case Point::infeasible: return "Variables, at a point that is not feasible";
    case Point::doubtful: return "Variables, at a point that failed a check";
    case Point::none:
    case Point::feasible: break;
    }
    return "Variables";
}

Table variable_table(const Solution& solution)
{
    const char* const title = title_of(status_of(solution.status).point);
    Table table = named_rows("variables", title, 'x', solution.x.size());
    add_column(table, {"value", "value"}, solution.x);
    add_column(table, {"reduced_cost", "reduced cost"}, solution.reduced_cost);
    table.leaves_out_zeros = true;
    return table;
}

Table row_table(const Solution& solution)
{
    Table table = named_rows("rows", "Rows", 'c', solution.slack.size());
    add_column(table, {"slack", "slack"}, solution.slack);
    add_column(table, {"dual", "dual"}, solution.dual);
    table.leaves_out_zeros = true;
    return table;
}

// Each range beside the number that it belongs to.
Table range_table(Table table, const Column& column, const std::vector<double>& values,
                  const Ranges& ranges)
{
    add_column(table, column, values);
    add_column(table, {"lower", "lower", true}, ranges.lower);
    add_column(table, {"upper", "upper", true}, ranges.upper);
    return table;
}

void add_tables(Report& report, const Model& model, const Solution& solution)
{
    const auto add = [&report](Table table) {
        if (!table.rows.empty()) report.tables.push_back(std::move(table));
    };
    const Ranges &costs = solution.objective_ranges, &rhs = solution.rhs_ranges;
    const auto cost_rows = named_rows("objective_ranges", "Ranges of the objective coefficients",
                                      'x', costs.lower.size());
    const auto rhs_rows =
        named_rows("rhs_ranges", "Ranges of the right-hand sides", 'c', rhs.lower.size());

    add(variable_table(solution));
    add(row_table(solution));
    add(range_table(cost_rows, {"coefficient", "coefficient"}, model.obj, costs));
    add(range_table(rhs_rows, {"rhs", "right-hand side"}, model.rhs, rhs));
}

}  // namespace

Report short_report(const Solution& solution)
{
    Report report;
    report.groups.push_back(outcome("", solution));
    return report;
}

Report solution_report(const Model& model, const Solution& solution)
{
    constexpr double PER_SECOND = 1e4;  // finer than this, times tell nothing
    Group result = outcome("Result", solution);
    result.add("iterations", "iterations", solution.iterations);
    if (model.integers > 0) result.add("nodes", "nodes", std::int64_t{solution.nodes});
    result.add("seconds", "seconds", std::round(solution.seconds * PER_SECOND) / PER_SECOND);

    Report report;
    report.groups = {size_group(model), result};
    add_tables(report, model, solution);
    return report;
}

}  // namespace tarnwick::tool
