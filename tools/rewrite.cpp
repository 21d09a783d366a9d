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

// A product of two variables lies in Q in two halves and is written as one number.
std::ptrdiff_t count_rounded_products(const ColumnMatrix& q)
{
    std::ptrdiff_t count = 0;
    for (std::size_t j = 0; j < q.counts.size(); ++j)
        for (std::int32_t k = 0; k < q.counts[j]; ++k) {
            const auto entry = static_cast<std::size_t>(q.begins[j]) + static_cast<std::size_t>(k);
            const auto i = static_cast<std::size_t>(q.indices[entry]);
            if (i <= j && is_rounded((i == j ? 1.0 : 2.0) * q.values[entry])) ++count;
        }
    return count;
}

}  // namespace

std::size_t count_rounded(const Model& model)
{
    std::ptrdiff_t count = count_rounded_products(model.quadratic);
    for (const auto* numbers : {&model.obj, &model.rhs, &model.lb, &model.ub, &model.matrix.values})
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
