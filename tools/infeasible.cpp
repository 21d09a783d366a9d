#include "tools/infeasible.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include <fmt/format.h>

#include "tools/counters.h"
#include "tools/failure.h"
#include "tools/progress.h"
#include "tools/statuses.h"

namespace tarnwick::tool {

namespace {

using Indices = std::vector<std::int32_t>;

constexpr double INFINITE_BOUND = 1e30;

std::size_t place(std::int32_t index) { return static_cast<std::size_t>(index); }

// ---- the search

void require_success(const Model& model, std::int32_t code, const Messages& messages)
{
    if (code != 0) throw Failure(fmt::format("{}: {}", model.file, messages.joined()));
}

std::int32_t last_status(const Model& model)
{
    std::int32_t status = 0;
    solution(model.lp.get(), &status, nullptr, nullptr, nullptr, nullptr, nullptr);
    return status;
}

// A lower bound above the upper one contradicts it without any row.
bool take_crossed_bounds(const Model& model, Subset& subset)
{
    for (std::int32_t j = 0; j < model.numcols; ++j)
        if (model.lb[place(j)] > model.ub[place(j)]) {
            subset.bounds = {
                {j, true, true}
            };
            return true;
        }
    return false;
}

bool is_feasible(std::int32_t status)
{
    return status == STAT_UNBOUNDED || status_of(status).point == Point::feasible;
}

// Only a variable with a term in a row of the subset can contradict it.
std::vector<bool> columns_in_rows(const Model& model, const Indices& rows)
{
    std::vector<bool> is_used(model.lb.size(), false);
    for (std::size_t j = 0; j < is_used.size(); ++j)
        for (std::int32_t k = 0; k < model.matrix.counts[j]; ++k) {
            const std::size_t entry = place(model.matrix.begins[j] + k);
            if (std::binary_search(rows.begin(), rows.end(), model.matrix.indices[entry]))
                is_used[j] = true;
        }
    return is_used;
}

// The library lists an equation twice.
void read_subset(const Model& model, std::int32_t numrows, std::int32_t numcols, Subset& subset)
{
    constexpr std::int32_t LOWER_ALONE = 0, UPPER_ALONE = 2;
    Indices rows(place(numrows)), columns(place(numcols)), stands(place(numcols));
    getiis(model.lp.get(), nullptr, rows.data(), nullptr, nullptr, columns.data(), stands.data(),
           nullptr);
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());

    const std::vector<bool> is_used = columns_in_rows(model, rows);
    for (std::size_t k = 0; k < columns.size(); ++k)
        if (is_used[place(columns[k])])
            subset.bounds.push_back(
                {columns[k], stands[k] != UPPER_ALONE, stands[k] != LOWER_ALONE});
    subset.rows = std::move(rows);
}

void search(const Model& model, Subset& subset, Messages& messages)
{
    std::int32_t numrows = 0, numcols = 0, outcome = 0;
    require_success(model, findiis(model.lp.get(), &numrows, &numcols), messages);
    subset.status = last_status(model);
    if (numrows == 0) return;
    getiis(model.lp.get(), &outcome, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    // Of an indefinite objective, which takes no part, the status can't say more than 65.
    if (outcome != IIS_FOUND && subset.status != STAT_CONVERGED) return;
    subset.outcome = Outcome::found;
    read_subset(model, numrows, numcols, subset);
}

// The rows of the subset, over all columns.
ColumnMatrix matrix_of(const Model& model, const Indices& rows)
{
    ColumnMatrix part;
    for (std::size_t j = 0; j < model.matrix.counts.size(); ++j) {
        part.begins.push_back(part.entries);
        for (std::int32_t k = 0; k < model.matrix.counts[j]; ++k) {
            const std::size_t entry = place(model.matrix.begins[j] + k);
            const auto row =
                std::lower_bound(rows.begin(), rows.end(), model.matrix.indices[entry]);
            if (row == rows.end() || *row != model.matrix.indices[entry]) continue;
            part.indices.push_back(static_cast<std::int32_t>(row - rows.begin()));
            part.values.push_back(model.matrix.values[entry]);
            ++part.entries;
        }
        part.counts.push_back(part.entries - part.begins.back());
    }
    part.indices.push_back(0);
    part.values.push_back(0.0);
    return part;
}

// A long search can be misled by rounding. The subset alone is a small model, without an objective
// and without elastic variables: that it is infeasible is a second opinion.
bool is_confirmed(const Model& model, const Subset& subset, const std::vector<Setting>& settings)
{
    Model part;
    part.matrix = matrix_of(model, subset.rows);
    part.obj.assign(model.obj.size(), 0.0);
    part.lb.assign(model.lb.size(), -INFINITE_BOUND);
    part.ub.assign(model.ub.size(), INFINITE_BOUND);
    for (const auto& [j, has_lower, has_upper] : subset.bounds) {
        if (has_lower) part.lb[place(j)] = model.lb[place(j)];
        if (has_upper) part.ub[place(j)] = model.ub[place(j)];
    }
    for (const std::int32_t i : subset.rows) {
        part.sense.push_back(model.sense[place(i)]);
        part.rhs.push_back(model.rhs[place(i)]);
    }
    ColumnMatrix& a = part.matrix;
    part.lp = Handle(loadlp(nullptr, static_cast<std::int32_t>(part.obj.size()),
                            static_cast<std::int32_t>(part.rhs.size()), 1, part.obj.data(),
                            part.rhs.data(), part.sense.data(), a.begins.data(), a.counts.data(),
                            a.indices.data(), a.values.data(), part.lb.data(), part.ub.data(),
                            nullptr, 0, 0, a.entries));
    if (!part.lp.get()) return false;
    for (const Setting& setting : settings) apply(setting, part.lp.get());
    return optimize(part.lp.get()) == 0 && last_status(part) == STAT_INFEASIBLE;
}

// What is known without a search: a feasible point, or bounds that leave none. False: neither.
bool is_settled(const Model& model, Subset& subset, Messages& messages)
{
    if (take_crossed_bounds(model, subset)) {
        subset.outcome = Outcome::found;
        return true;
    }
    require_success(model, optimize(model.lp.get()), messages);
    subset.iterations = all_iterations(model.lp.get());
    subset.status = last_status(model);
    if (is_feasible(subset.status)) subset.outcome = Outcome::feasible;
    return subset.outcome == Outcome::feasible;
}

}  // namespace

Subset find_subset(const Model& model, const std::vector<Setting>& settings, bool rows_only,
                   Messages& messages)
{
    Subset subset;
    subset.has_bounds_tested = !rows_only;
    for (const Setting& setting : settings) apply(setting, model.lp.get());
    setintparam(model.lp.get(), PARAM_RELAXINT, 1);
    setintparam(model.lp.get(), PARAM_IISMETHOD, rows_only ? 1 : 0);
    messages.clear();

    const auto start = std::chrono::steady_clock::now();
    const Watch watch(model.lp.get(), true);
    if (!is_settled(model, subset, messages)) {
        search(model, subset, messages);
        subset.iterations += all_iterations(model.lp.get());
        if (subset.outcome == Outcome::found && !is_confirmed(model, subset, settings))
            subset.outcome = Outcome::not_confirmed;
    }
    subset.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return subset;
}

// ---- the report

namespace {

std::string outcome_text(const Subset& subset)
{
    switch (subset.outcome) {
    case Outcome::feasible: return "the model has a feasible point";
    case Outcome::not_found:
        return fmt::format("the search ended early: {}", status_of(subset.status).text);
    case Outcome::not_confirmed:
        return "the search was misled by rounding: these rows and bounds may have a common point";
    case Outcome::found: break;
    }
    if (!subset.has_bounds_tested && !subset.rows.empty())
        return "these rows contradict each other within the bounds, and none can be spared";
    return "these rows and bounds contradict each other, and none can be spared";
}

const char* outcome_name(Outcome outcome)
{
    switch (outcome) {
    case Outcome::found: return "found";
    case Outcome::feasible: return "feasible";
    case Outcome::not_confirmed: return "not_confirmed";
    case Outcome::not_found: break;
    }
    return "not_found";
}

std::string term_text(double value, std::size_t j, bool is_first)
{
    const char* const sign = value < 0.0 ? (is_first ? "-" : " - ") : (is_first ? "" : " + ");
    const double magnitude = std::fabs(value);
    return magnitude == 1.0 ? fmt::format("{}x{}", sign, j + 1)
                            : fmt::format("{}{} x{}", sign, magnitude, j + 1);
}

std::string row_text(const Model& model, std::int32_t row)
{
    std::string terms;
    for (std::size_t j = 0; j < model.matrix.counts.size(); ++j) {
        double sum = 0.0;
        for (std::int32_t k = 0; k < model.matrix.counts[j]; ++k) {
            const std::size_t entry = place(model.matrix.begins[j] + k);
            if (model.matrix.indices[entry] == row) sum += model.matrix.values[entry];
        }
        if (sum != 0.0) terms += term_text(sum, j, terms.empty());
    }
    const char sense = model.sense[place(row)];
    return fmt::format("{} {} {}", terms.empty() ? "0" : terms,
                       sense == 'E'   ? "="
                       : sense == 'G' ? ">="
                                      : "<=",
                       model.rhs[place(row)]);
}

// What stays unknown of a bound that isn't in the subset, or is none.
Cell bound_cell(bool is_member, double bound)
{
    return is_member && std::fabs(bound) < INFINITE_BOUND ? Cell(bound) : Cell();
}

Table row_table(const Model& model, const Subset& subset)
{
    Table table{"subset_rows", "Rows", {{"row", "row"}}, {}};
    for (const std::int32_t i : subset.rows)
        table.rows.push_back({fmt::format("c{}", i + 1), row_text(model, i)});
    return table;
}

Table bound_table(const Model& model, const Subset& subset)
{
    const bool are_tested = subset.has_bounds_tested || subset.rows.empty();
    Table table{
        "subset_bounds",
        are_tested ? "Bounds" : "Bounds of the variables in these rows, not tested",
        {{"lower", "lower"}, {"upper", "upper"}},
        {                  }
    };
    for (const auto& [j, has_lower, has_upper] : subset.bounds)
        table.rows.push_back({fmt::format("x{}", j + 1), bound_cell(has_lower, model.lb[place(j)]),
                              bound_cell(has_upper, model.ub[place(j)])});
    return table;
}

}  // namespace

Report subset_report(const Model& model, const Subset& subset)
{
    constexpr double PER_SECOND = 1e4;
    std::int64_t bounds = 0;
    for (const auto& [j, has_lower, has_upper] : subset.bounds)
        bounds += (has_lower ? 1 : 0) + (has_upper ? 1 : 0);

    Group group{"subset", "Infeasible subset", {}};
    group.add("outcome", "outcome", std::string(outcome_name(subset.outcome)));
    group.add("outcome_text", "meaning", outcome_text(subset));
    group.add("rows", "rows", static_cast<std::int64_t>(subset.rows.size()));
    group.add("bounds", "bounds", bounds);
    group.add("iterations", "iterations", subset.iterations);
    group.add("seconds", "seconds", std::round(subset.seconds * PER_SECOND) / PER_SECOND);

    Report report;
    report.groups = {size_group(model), group};
    for (Table& table : std::vector{row_table(model, subset), bound_table(model, subset)})
        if (!table.rows.empty()) report.tables.push_back(std::move(table));
    return report;
}

void write_subset(const Model& model, const std::string& file, Messages& messages)
{
    messages.clear();
    if (iiswrite(model.lp.get(), file.c_str()) != 0)
        throw Failure(fmt::format("{}: {}", file, messages.joined()));
}

}  // namespace tarnwick::tool
