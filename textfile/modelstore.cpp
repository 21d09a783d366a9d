#include "textfile/modelstore.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <limits>

namespace tarnwick {

namespace {

constexpr std::int32_t LARGEST = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t NAMES_NOTHING = -1;  // row of a slot that is free

// ---- the matrix and Q by columns

struct Columns {
    std::int32_t numcols, numrows;
    const std::int32_t* beg;  // numcols; these three are null for the dense layout
    const std::int32_t* cnt;  // numcols
    std::int32_t* ind;
    double* val;

    bool is_sparse() const noexcept { return beg && cnt && ind; }
    std::size_t cells() const noexcept
    {
        return static_cast<std::size_t>(numcols) * static_cast<std::size_t>(numrows);
    }
};

Columns matrix_of(const Problem& problem) noexcept
{
    return {problem.numcols, problem.numrows, problem.matbeg,
            problem.matcnt,  problem.matind,  problem.matval};
}

Columns q_of(const Problem& problem) noexcept
{
    return {problem.numcols, problem.numcols, problem.qmatbeg,
            problem.qmatcnt, problem.qmatind, problem.qmatval};
}

// Frees every slot that a column owns; the gaps between columns are left alone.
void clear(const Columns& a) noexcept
{
    if (!a.is_sparse()) {
        std::fill_n(a.val, a.cells(), 0.0);
        return;
    }
    for (std::int32_t j = 0; j < a.numcols; ++j) {
        std::fill_n(a.ind + a.beg[j], a.cnt[j], NAMES_NOTHING);
        std::fill_n(a.val + a.beg[j], a.cnt[j], 0.0);
    }
}

// Row i, column j, from 0. A sparse column takes the entry in its first free slot, or drops it.
void put(const Columns& a, std::int32_t i, std::int32_t j, double value) noexcept
{
    if (!a.is_sparse()) {
        a.val[static_cast<std::size_t>(a.numrows) * static_cast<std::size_t>(j) +
              static_cast<std::size_t>(i)] = value;
        return;
    }
    const std::int32_t end = a.beg[j] + a.cnt[j];
    for (std::int32_t k = a.beg[j]; k < end; ++k) {
        if (a.val[k] != 0.0) continue;
        a.ind[k] = i;
        a.val[k] = value;
        return;
    }
}

// The number of entries as the Problem keeps it, held inside its type.
std::int32_t sum_of(const std::int32_t* counts, std::int32_t n) noexcept
{
    std::int64_t sum = 0;
    for (std::int32_t j = 0; j < n; ++j) sum += counts[j];
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(sum, 0, LARGEST));
}

template <class T>
void preset(T* array, std::int32_t n, T value) noexcept
{
    if (array) std::fill_n(array, n, value);
}

// ---- counts

void clear_counts(const CountArray& array, std::int64_t first, std::int64_t end) noexcept
{
    if (!array.counts) return;
    for (std::int64_t j = first; j < std::min(end, array.length); ++j) array.counts[j] = 0;
}

void count_entry(const CountArray& array, std::int64_t column) noexcept
{
    if (array.counts && column <= array.length) ++array.counts[column - 1];
}

}  // namespace

// ---- columns

bool ModelStore::is_column(std::int64_t column) const noexcept
{
    assert(column >= 1);
    return column <= (problem_ ? problem_->numcols : LARGEST);
}

void ModelStore::discover_column(std::int64_t column) noexcept
{
    if (column <= numcols_) return;
    if (!problem_) {
        clear_counts(matcnt_, numcols_, column);
        clear_counts(qmatcnt_, numcols_, column);
    }
    numcols_ = static_cast<std::int32_t>(column);
}

// ---- objective

void ModelStore::start_objective(std::int32_t objsen) noexcept
{
    objsen_ = objsen;
    if (!problem_) return;
    problem_->objsen = objsen;
    preset(problem_->obj, problem_->numcols, 0.0);
    if (!problem_->qmatval) return;

    const Columns q = q_of(*problem_);
    const bool has_lengths = problem_->qmatcnt && qmatcnt_.counts;
    problem_->qnz =
        has_lengths ? sum_of(qmatcnt_.counts, q.numcols) : static_cast<std::int32_t>(q.cells());
    clear(q);
}

bool ModelStore::set_objective(std::int64_t column, double value) noexcept
{
    if (!is_column(column)) return false;
    discover_column(column);
    if (problem_ && problem_->obj) problem_->obj[column - 1] = value;
    return true;
}

bool ModelStore::start_quadratic() noexcept
{
    if (!problem_) return true;
    if (!problem_->qmatval) return false;
    if (problem_->problemtype == PROB_LP) problem_->problemtype = PROB_QP;
    if (problem_->problemtype == PROB_MILP) problem_->problemtype = PROB_MIQP;
    return true;
}

// The form is x'Qx: a square stands on the diagonal, another product is halved between the two
// places that it owns.
bool ModelStore::add_product(std::int64_t column1, std::int64_t column2, double value) noexcept
{
    if (!is_column(column1) || !is_column(column2)) return false;
    discover_column(column1);
    discover_column(column2);

    const bool is_square = column1 == column2;
    if (!problem_) {
        count_entry(qmatcnt_, column1);
        if (!is_square) count_entry(qmatcnt_, column2);
        return true;
    }
    const Columns q = q_of(*problem_);
    const auto i = static_cast<std::int32_t>(column1 - 1);
    const auto j = static_cast<std::int32_t>(column2 - 1);
    put(q, i, j, is_square ? value : value / 2.0);
    if (!is_square) put(q, j, i, value / 2.0);
    return true;
}

// ---- rows

void ModelStore::start_rows() noexcept
{
    if (!problem_) return;
    preset(problem_->sense, problem_->numrows, 'E');
    preset(problem_->rhs, problem_->numrows, 0.0);
    if (!problem_->matval) return;

    const Columns matrix = matrix_of(*problem_);
    problem_->matnz = matrix.is_sparse() ? sum_of(matrix.cnt, matrix.numcols)
                                         : static_cast<std::int32_t>(matrix.cells());
    clear(matrix);
}

bool ModelStore::start_row(std::int64_t row) noexcept
{
    assert(row >= 1);
    if (row > (problem_ ? problem_->numrows : LARGEST)) return false;
    row_ = static_cast<std::int32_t>(row);
    numrows_ = std::max(numrows_, row_);
    return true;
}

bool ModelStore::add_entry(std::int64_t column, double value) noexcept
{
    if (!is_column(column)) return false;
    discover_column(column);
    if (!problem_)
        count_entry(matcnt_, column);
    else if (problem_->matval)
        put(matrix_of(*problem_), row_ - 1, static_cast<std::int32_t>(column - 1), value);
    return true;
}

void ModelStore::end_row(char sense, double rhs) noexcept
{
    if (!problem_) return;
    if (problem_->sense) problem_->sense[row_ - 1] = sense;
    if (problem_->rhs) problem_->rhs[row_ - 1] = rhs;
}

// ---- bounds and integers

void ModelStore::start_bounds() noexcept
{
    if (!problem_) return;
    preset(problem_->lb, problem_->numcols, -INFINITE_BOUND);
    preset(problem_->ub, problem_->numcols, INFINITE_BOUND);
}

bool ModelStore::set_bounds(std::int64_t column, double lower, double upper) noexcept
{
    if (!is_column(column)) return false;
    discover_column(column);
    if (problem_ && problem_->lb && problem_->ub) {
        problem_->lb[column - 1] = lower;
        problem_->ub[column - 1] = upper;
    }
    return true;
}

void ModelStore::start_integers() noexcept
{
    has_integers_ = true;
    if (problem_) preset(problem_->ctype, problem_->numcols, 'C');
}

bool ModelStore::set_integer(std::int64_t column) noexcept
{
    if (!is_column(column)) return false;
    discover_column(column);
    if (problem_ && problem_->ctype) problem_->ctype[column - 1] = 'I';
    return true;
}

}  // namespace tarnwick
