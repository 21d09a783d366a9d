#include "tools/rewrite.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "tools/failure.h"

namespace tarnwick::tool {

namespace {

// From 2^32 on numbers are written without decimals; from 1e30 on they are infinite.
bool is_rounded(double value)
{
    constexpr double MILLION = 1e6, WHOLE_ALONE = 4294967296.0, INFINITE = 1e30;
    const double magnitude = std::fabs(value);
    if (magnitude >= INFINITE) return false;
    if (magnitude >= WHOLE_ALONE) return value != std::trunc(value);
    return value != std::round(value * MILLION) / MILLION;
}

}  // namespace

std::size_t count_rounded(const Model& model)
{
    std::ptrdiff_t count = 0;
    for (const auto* numbers : {&model.obj, &model.rhs, &model.lb, &model.ub, &model.matrix.values,
                                &model.quadratic.values})
        count += std::count_if(numbers->begin(), numbers->end(), is_rounded);
    return static_cast<std::size_t>(count);
}

void write_model(const Model& model, const std::string& file, Messages& messages)
{
    messages.clear();
    if (lpwrite(model.lp.get(), file.c_str()) != 0)
        throw Failure(fmt::format("{}: {}", file, messages.joined()));
}

}  // namespace tarnwick::tool
