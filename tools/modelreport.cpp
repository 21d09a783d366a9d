#include <algorithm>
#include <cmath>

#include "tools/model.h"

namespace tarnwick::tool {

namespace {

constexpr double INFINITE_BOUND = 1e30;

double density(std::int32_t entries, std::int32_t numrows, std::int32_t numcols)
{
    const double places = static_cast<double>(numrows) * numcols;
    return places > 0.0 ? entries / places : 0.0;
}

Group row_group(const Model& model)
{
    const auto count = [&model](char sense) -> std::int64_t {
        return std::count(model.sense.begin(), model.sense.begin() + model.numrows, sense);
    };
    std::vector<bool> is_used(model.rhs.size(), false);
    for (std::int32_t k = 0; k < model.matrix.entries; ++k)
        is_used[static_cast<std::size_t>(model.matrix.indices[static_cast<std::size_t>(k)])] = true;
    const auto empty = std::count(is_used.begin(), is_used.begin() + model.numrows, false);

    Group group{"row_kinds", "Rows", {}};
    group.add("less_or_equal", "<=", count('L'));
    group.add("equal", "=", count('E'));
    group.add("greater_or_equal", ">=", count('G'));
    group.add("empty", "empty", std::int64_t{empty});
    return group;
}

// The bounds of a variable fall into one of these.
struct BoundKinds {
    std::int64_t none = 0, lower = 0, upper = 0, both = 0, fixed = 0, crossed = 0;
};

BoundKinds count_bounds(const Model& model)
{
    BoundKinds kinds;
    for (std::size_t j = 0; j < static_cast<std::size_t>(model.numcols); ++j) {
        const double lower = model.lb[j], upper = model.ub[j];
        const bool has_lower = lower > -INFINITE_BOUND, has_upper = upper < INFINITE_BOUND;
        if (lower > upper)
            ++kinds.crossed;
        else if (lower == upper)
            ++kinds.fixed;
        else if (has_lower && has_upper)
            ++kinds.both;
        else if (has_lower)
            ++kinds.lower;
        else
            ++(has_upper ? kinds.upper : kinds.none);
    }
    return kinds;
}

Group bound_group(const Model& model)
{
    const BoundKinds kinds = count_bounds(model);
    Group group{"bound_kinds", "Bounds of the variables", {}};
    group.add("none", "free", kinds.none);
    group.add("lower", "lower bound alone", kinds.lower);
    group.add("upper", "upper bound alone", kinds.upper);
    group.add("both", "both bounds", kinds.both);
    group.add("fixed", "fixed", kinds.fixed);
    group.add("crossed", "lower above upper", kinds.crossed);
    return group;
}

Group variable_group(const Model& model)
{
    std::int64_t binary = 0, in_objective = 0, without_row = 0;
    for (std::size_t j = 0; j < static_cast<std::size_t>(model.numcols); ++j) {
        if (model.ctype[j] == 'I' && model.lb[j] == 0.0 && model.ub[j] == 1.0) ++binary;
        if (model.obj[j] != 0.0 || model.quadratic.counts[j] > 0) ++in_objective;
        if (model.matrix.counts[j] == 0) ++without_row;
    }
    Group group{"variable_kinds", "Variables", {}};
    group.add("continuous", "continuous", std::int64_t{model.numcols - model.integers});
    group.add("binary", "integer from 0 to 1", binary);
    group.add("integer", "other integers", std::int64_t{model.integers - binary});
    group.add("in_objective", "in the objective", in_objective);
    group.add("without_row", "in no row", without_row);
    return group;
}

}  // namespace

Group size_group(const Model& model)
{
    Group group{"model", "Model", {}};
    group.add("file", "file", model.file);
    group.add("sense", "sense", std::string(model.objsen == 1 ? "minimise" : "maximise"));
    group.add("rows", "rows", std::int64_t{model.numrows});
    group.add("variables", "variables", std::int64_t{model.numcols});
    group.add("nonzeros", "nonzeros", std::int64_t{model.matrix.entries});
    group.add("integers", "integer variables", std::int64_t{model.integers});
    group.add("quadratic_nonzeros", "nonzeros of Q", std::int64_t{model.quadratic.entries});
    return group;
}

Report model_report(const Model& model)
{
    const std::int32_t rows = model.numrows, cols = model.numcols;
    Group sizes = size_group(model);
    sizes.add("density", "density", density(model.matrix.entries, rows, cols));
    sizes.add("quadratic_density", "density of Q", density(model.quadratic.entries, cols, cols));
    Report report;
    report.groups = {sizes, row_group(model), bound_group(model), variable_group(model)};
    return report;
}

}  // namespace tarnwick::tool
