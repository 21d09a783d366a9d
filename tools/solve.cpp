#include "tools/solve.h"

#include <chrono>

#include <fmt/format.h>

#include "tools/counters.h"
#include "tools/failure.h"
#include "tools/progress.h"
#include "tools/statuses.h"

namespace tarnwick::tool {

namespace {

void run(const Model& model, Messages& messages)
{
    messages.clear();
    Problem* const lp = model.lp.get();
    if ((model.integers > 0 ? mipoptimize(lp) : optimize(lp)) != 0)
        throw Failure(fmt::format("{}: {}", model.file, messages.joined()));
}

std::vector<double> zeros(std::int32_t count)
{
    return std::vector<double>(static_cast<std::size_t>(count), 0.0);
}

// The row that stands in for none takes part in the calls and is dropped here.
void read_solution(const Model& model, Solution& solution)
{
    Problem* const lp = model.lp.get();
    ::solution(lp, &solution.status, &solution.objective, nullptr, nullptr, nullptr, nullptr);
    if (status_of(solution.status).point == Point::none) return;

    const auto rows = static_cast<std::int32_t>(model.rhs.size());
    solution.x = zeros(model.numcols);
    solution.slack = zeros(rows);
    const bool has_duals = solution.status == STAT_OPTIMAL && model.integers == 0;
    if (has_duals) {
        solution.dual = zeros(rows);
        solution.reduced_cost = zeros(model.numcols);
    }
    ::solution(lp, nullptr, nullptr, solution.x.data(), has_duals ? solution.dual.data() : nullptr,
               solution.slack.data(), has_duals ? solution.reduced_cost.data() : nullptr);

    const auto numrows = static_cast<std::size_t>(model.numrows);
    solution.slack.resize(numrows);
    if (has_duals) solution.dual.resize(numrows);
}

void read_ranges(const Model& model, Solution& solution)
{
    Problem* const lp = model.lp.get();
    Ranges& costs = solution.objective_ranges;
    costs = {zeros(model.numcols), zeros(model.numcols)};
    if (objsa(lp, 0, model.numcols - 1, costs.lower.data(), costs.upper.data()) != 0) costs = {};

    if (model.numrows == 0) return;
    Ranges& rhs = solution.rhs_ranges;
    rhs = {zeros(model.numrows), zeros(model.numrows)};
    if (rhssa(lp, 0, model.numrows - 1, rhs.lower.data(), rhs.upper.data()) != 0) rhs = {};
}

}  // namespace

Solution solve(const Model& model, bool with_ranges, bool shows_progress, Messages& messages)
{
    Solution solution;
    {
        const auto start = std::chrono::steady_clock::now();
        const Watch watch(model.lp.get(), shows_progress);
        run(model, messages);
        solution.seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    solution.iterations = all_iterations(model.lp.get());
    solution.nodes = counter<std::int32_t>(model.lp.get(), CB_NODES);
    read_solution(model, solution);
    if (with_ranges && model.is_linear_program() && solution.status == STAT_OPTIMAL)
        read_ranges(model, solution);
    return solution;
}

}  // namespace tarnwick::tool
