#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "interface/problem.h"

namespace tarnwick {

// Walks over the entries of a model. A visit is called with row, column and value; false stops the
// walk, which then gives false.

// A matrix held by columns, whose rows are 0..rows-1; a row index beyond them names nothing.
struct ColumnMatrix {
    std::int32_t rows;
    const std::int32_t* beg;  // these three are null for the dense layout
    const std::int32_t* cnt;
    const std::int32_t* ind;
    const double* val;

    template <class Visitor>
    bool walk_column(std::int32_t j, Visitor& visit) const noexcept
    {
        if (!beg || !cnt || !ind) {
            const double* column = val + static_cast<std::ptrdiff_t>(rows) * j;
            for (std::int32_t i = 0; i < rows; ++i)
                if (!visit(i, j, column[i])) return false;
            return true;
        }
        const std::int32_t end = beg[j] + cnt[j];
        for (std::int32_t k = beg[j]; k < end; ++k)
            if (0 <= ind[k] && ind[k] < rows && !visit(ind[k], j, val[k])) return false;
        return true;
    }

    template <class Visitor>
    bool walk(std::int32_t columns, Visitor& visit) const noexcept
    {
        for (std::int32_t j = 0; j < columns; ++j)
            if (!walk_column(j, visit)) return false;
        return true;
    }
};

inline ColumnMatrix constraint_matrix(const Problem& problem) noexcept
{
    return {problem.numrows, problem.matbeg, problem.matcnt, problem.matind, problem.matval};
}

template <class Visitor>
bool walk_elastic_rows(const SolveControl& control, Visitor& visit) noexcept
{
    for (std::int32_t k = 0; k < control.elasticcount; ++k) {
        const std::int32_t r = control.elasticrows[static_cast<std::size_t>(k)];
        if (!visit(std::abs(r) - 1, control.problem->numcols + k, r > 0 ? 1.0 : -1.0)) return false;
    }
    return true;
}

template <class Visitor>
bool walk_elastic_objective(const SolveControl& control, Visitor& visit) noexcept
{
    const Problem& problem = *control.problem;
    for (std::int32_t k = 0; k < control.elasticcount; ++k)
        if (!visit(problem.numrows, problem.numcols + k, 1.0)) return false;
    return true;
}

}  // namespace tarnwick
