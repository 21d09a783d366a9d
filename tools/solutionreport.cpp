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

std::vector<Fact> outcome_facts(const Solution& solution)
{
    const Status status = status_of(solution.status);
    std::vector<Fact> facts = {
        {"status",      "status", std::int64_t{status.number}},
        {"status_name", "",       std::string(status.name)   },
        {"status_text", "",       fmt::format("{}",            status.text)},
        {"objective",             "objective",           {}              },
    };
    if (status.point != Point::none) facts.back().value = solution.objective;
    return facts;
}

// A column of a table beside the array that it shows; columns without one are left out.
struct ShownColumn {
    Column column;
    const std::vector<double>& values;
};

// Rows are named by the letter and their number from 1.
Table table_of(const char* key, const char* title, char letter,
               const std::vector<ShownColumn>& shown)
{
    Table table{key, title, {}, {}};
    for (const auto& [column, values] : shown) {
        if (values.empty()) continue;
        if (table.rows.empty())
            for (std::size_t k = 0; k < values.size(); ++k)
                table.rows.push_back({fmt::format("{}{}", letter, k + 1)});
        for (std::size_t k = 0; k < values.size(); ++k)
            table.rows[k].emplace_back(with_infinities(values[k]));
        table.columns.push_back(column);
    }
    return table;
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

void add_tables(Report& report, const Model& model, const Solution& solution)
{
    const auto add = [&report](Table table, bool leaves_out_zeros) {
        if (table.rows.empty()) return;
        table.leaves_out_zeros = leaves_out_zeros;
        report.tables.push_back(std::move(table));
    };
    const char* const title = title_of(status_of(solution.status).point);
    add(table_of("variables", title, 'x',
                 {
                     {{"value", "value"},               solution.x           },
                     {{"reduced_cost", "reduced cost"}, solution.reduced_cost}
    }),
        true);
    add(table_of("rows", "Rows", 'c',
                 {
                     {{"slack", "slack"}, solution.slack},
                     {{"dual", "dual"},   solution.dual }
    }),
        true);

    const std::vector<double> costs(model.obj.begin(), model.obj.begin() + model.numcols);
    const std::vector<double> rhs(model.rhs.begin(), model.rhs.begin() + model.numrows);
    const Ranges &c = solution.objective_ranges, &b = solution.rhs_ranges;
    if (!c.lower.empty())
        add(table_of("objective_ranges", "Ranges of the objective coefficients", 'x',
                     {
                         {{"coefficient", "coefficient"}, costs  },
                         {{"lower", "lower", true},       c.lower},
                         {{"upper", "upper", true},       c.upper}
        }),
            false);
    if (!b.lower.empty())
        add(table_of("rhs_ranges", "Ranges of the right-hand sides", 'c',
                     {
                         {{"rhs", "right-hand side"}, rhs    },
                         {{"lower", "lower", true},   b.lower},
                         {{"upper", "upper", true},   b.upper}
        }),
            false);
}

}  // namespace

Report short_report(const Solution& solution)
{
    return {{{"result", "", outcome_facts(solution)}}, {}};
}

Report solution_report(const Model& model, const Solution& solution)
{
    Group result{"result", "Result", outcome_facts(solution)};
    result.facts.push_back({"iterations", "iterations", solution.iterations});
    if (model.integers > 0)
        result.facts.push_back({"nodes", "nodes", std::int64_t{solution.nodes}});
    constexpr double PER_SECOND = 1e4;  // finer than this, times tell nothing
    result.facts.push_back(
        {"seconds", "seconds", std::round(solution.seconds * PER_SECOND) / PER_SECOND});

    Report report{
        {size_group(model), std::move(result)},
        {                 }
    };
    add_tables(report, model, solution);
    return report;
}

}  // namespace tarnwick::tool
