#pragma once

#include <cstdint>

#include "interface/problem.h"

namespace tarnwick {

// One count for each column, the caller's: null if it isn't wanted. Outside OLE array mode the
// length is the caller's word; columns beyond it are not counted.
struct CountArray {
    std::int32_t* counts = nullptr;
    std::int64_t length = 0;
};

// Where the model of a file goes: into the arrays of a Problem, or, without one, into counts alone.
//
// Columns and rows have the numbers of the file, from 1; the arrays start at 0. The highest numbers
// seen are the size of the model. What names a column or row beyond the Problem, or one beyond 32
// bits, gives false and changes nothing.
class ModelStore {
  public:
    // With a Problem the counts are the lengths of the columns of Q, and are not written.
    ModelStore(Problem* problem, CountArray matcnt, CountArray qmatcnt) noexcept
        : problem_(problem), matcnt_(matcnt), qmatcnt_(qmatcnt)
    {
    }

    // Each section starts by giving what it covers its presets.
    void start_objective(std::int32_t objsen) noexcept;
    bool set_objective(std::int64_t column, double value) noexcept;

    bool start_quadratic() noexcept;  // false: the Problem has no place for Q
    // Adds value times the product of two variables, the same one for a square.
    bool add_product(std::int64_t column1, std::int64_t column2, double value) noexcept;

    void start_rows() noexcept;
    bool start_row(std::int64_t row) noexcept;
    bool add_entry(std::int64_t column, double value) noexcept;  // to the row that was started
    void end_row(char sense, double rhs) noexcept;

    void start_bounds() noexcept;
    bool set_bounds(std::int64_t column, double lower, double upper) noexcept;

    void start_integers() noexcept;
    bool set_integer(std::int64_t column) noexcept;

    std::int32_t objsen() const noexcept { return objsen_; }
    std::int32_t numcols() const noexcept { return numcols_; }
    std::int32_t numrows() const noexcept { return numrows_; }
    std::int32_t numctype() const noexcept { return has_integers_ ? numcols_ : 0; }

  private:
    bool is_column(std::int64_t column) const noexcept;
    void discover_column(std::int64_t column) noexcept;

    Problem* problem_;
    CountArray matcnt_, qmatcnt_;
    std::int32_t objsen_ = 1;
    std::int32_t numcols_ = 0, numrows_ = 0;  // highest numbers seen
    std::int32_t row_ = 0;                    // the row that was started last
    bool has_integers_ = false;
};

}  // namespace tarnwick
