// A model of the linear family as text, in the format that the reader takes.
//
// The arrays hold columns and the text goes by rows, so that a sparse matrix is turned over first. Of
// the quadratic part both halves go together:
//
//     x'Q x = sum of Q[i][i] x_i^2 + sum over i < j of (Q[i][j] + Q[j][i]) x_i x_j

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>

#include "interface/problem.h"
#include "platform/array.h"
#include "platform/floatcontrol.h"
#include "platform/textfile.h"
#include "textfile/realtext.h"

namespace tarnwick {

namespace {

const char* const WRITE_TITLE = "lpwrite";
const char* const NO_NAME = "filename is NULL";

enum : std::int32_t { WRITE_NOT_SUPPORTED = 1, WRITE_FAILED = 2 };

// ---- lines

// Builds one line at a time and writes it when it ends. A failure is kept and told at the end.
class LineWriter {
  public:
    explicit LineWriter(TextOutput& out) noexcept : out_(out) {}

    bool has_failed() const noexcept { return failed_; }
    int length() const noexcept { return length_; }

    void put(const char* text) noexcept
    {
        const auto count = static_cast<int>(std::strlen(text));
        std::copy_n(text, count, line_ + length_);
        length_ += count;
    }
    void put_number(std::int32_t number) noexcept
    {
        length_ =
            static_cast<int>(std::to_chars(line_ + length_, line_ + SIZE, number).ptr - line_);
    }
    void put_real(double value) noexcept
    {
        char text[REAL_TEXT_SIZE];
        put(format_real(value, text));
    }
    void put_variable(std::int32_t j) noexcept
    {
        put("x");
        put_number(j + 1);
    }

    void end_line() noexcept
    {
        put("\n");
        failed_ = failed_ || !out_.write(line_, static_cast<std::size_t>(length_));
        length_ = 0;
    }
    void end_line_with(const char* text) noexcept
    {
        put(text);
        end_line();
    }
    void continue_on_next_line() noexcept
    {
        end_line();
        put("      ");
    }
    void drop_line() noexcept { length_ = 0; }

    // Whole terms alone are wrapped, so that a line stays within the reader's.
    void wrap() noexcept
    {
        constexpr int LONG = 200;
        if (length_ >= LONG) continue_on_next_line();
    }

  private:
    static constexpr int SIZE = 252;

    TextOutput& out_;
    char line_[SIZE];
    int length_ = 0;
    bool failed_ = false;
};

// The terms of one objective, row or block.
class Terms {
  public:
    explicit Terms(LineWriter& out) noexcept : out_(out) {}

    bool any() const noexcept { return any_; }

    // Sign, magnitude and variable. False: nothing, because the value is 0.
    bool put(std::int32_t j, double value) noexcept
    {
        if (value == 0.0) return false;
        if (value < 0.0)
            out_.put(" - ");
        else if (any_)
            out_.put(" + ");
        any_ = true;

        const double magnitude = value < 0.0 ? -value : value;
        if (magnitude != 1.0) {
            out_.put_real(magnitude);
            out_.put(" ");
        }
        out_.put_variable(j);
        return true;
    }

  private:
    LineWriter& out_;
    bool any_ = false;
};

// ---- matrices by rows

// A matrix of the caller's by columns; beg, cnt and ind are null for the dense layout.
struct Columns {
    std::int32_t rows, columns;
    const std::int32_t *beg, *cnt, *ind;
    const double* val;

    bool is_dense() const noexcept { return !beg || !cnt || !ind; }
};

// Gives the columns of a matrix row by row. A sparse one is turned over: the entries of row i are
// start[i]..start[i + 1] - 1 of two lists.
class Rows {
  public:
    // False: no memory.
    bool create(const Columns& matrix) noexcept
    {
        matrix_ = matrix;
        if (matrix.is_dense()) return true;
        if (!start_.create(static_cast<std::size_t>(matrix.rows) + 1)) return false;
        count_entries();
        const auto entries =
            static_cast<std::size_t>(start_[static_cast<std::size_t>(matrix.rows)]);
        if (!column_.create(entries + 1) || !value_.create(entries + 1)) return false;
        fill();
        return true;
    }

    // values[j] += what row i has in column j.
    void add_row(std::int32_t i, double* values) const noexcept
    {
        if (matrix_.is_dense()) {
            const double* cell = matrix_.val + i;
            for (std::int32_t j = 0; j < matrix_.columns; ++j, cell += matrix_.rows)
                values[j] += *cell;
            return;
        }
        const auto row = static_cast<std::size_t>(i);
        for (std::size_t k = start_[row]; k < start_[row + 1]; ++k) values[column_[k]] += value_[k];
    }

    // values[i] += what column j has in row i.
    void add_column(std::int32_t j, double* values) const noexcept
    {
        if (matrix_.is_dense()) {
            const double* const column = matrix_.val + std::ptrdiff_t{matrix_.rows} * j;
            for (std::int32_t i = 0; i < matrix_.rows; ++i) values[i] += column[i];
            return;
        }
        for (std::int32_t k = matrix_.beg[j]; k < matrix_.beg[j] + matrix_.cnt[j]; ++k)
            if (names_row(k)) values[matrix_.ind[k]] += matrix_.val[k];
    }

  private:
    bool names_row(std::int32_t k) const noexcept
    {
        return 0 <= matrix_.ind[k] && matrix_.ind[k] < matrix_.rows;
    }

    template <class Take>
    void for_each_entry(Take take) const noexcept
    {
        for (std::int32_t j = 0; j < matrix_.columns; ++j)
            for (std::int32_t k = matrix_.beg[j]; k < matrix_.beg[j] + matrix_.cnt[j]; ++k)
                if (names_row(k)) take(static_cast<std::size_t>(matrix_.ind[k]), j, k);
    }

    void count_entries() noexcept
    {
        for_each_entry([this](std::size_t i, std::int32_t, std::int32_t) { ++start_[i + 1]; });
        for (std::size_t i = 0; i < static_cast<std::size_t>(matrix_.rows); ++i)
            start_[i + 1] += start_[i];
    }

    // Each start moves to the end of its row, which is the start of the next: then all move back.
    void fill() noexcept
    {
        for_each_entry([this](std::size_t i, std::int32_t j, std::int32_t k) {
            column_[start_[i]] = j;
            value_[start_[i]++] = matrix_.val[k];
        });
        for (auto i = static_cast<std::size_t>(matrix_.rows); i > 0; --i) start_[i] = start_[i - 1];
        start_[0] = 0;
    }

    Columns matrix_{};
    Array<std::size_t> start_;
    Array<std::int32_t> column_;
    Array<double> value_;
};

// ---- the model

enum class Extent : std::uint8_t { whole, infeasible_subset };

class ModelWriter {
  public:
    ModelWriter(const Problem& problem, Extent extent, TextOutput& out) noexcept
        : problem_(problem), extent_(extent), out_(out)
    {
    }

    // False: no memory.
    bool create() noexcept
    {
        const Problem& p = problem_;
        const Columns matrix{p.numrows, p.numcols, p.matbeg, p.matcnt, p.matind, p.matval};
        const Columns q{p.numcols, p.numcols, p.qmatbeg, p.qmatcnt, p.qmatind, p.qmatval};
        return values_.create(static_cast<std::size_t>(p.numcols)) && rows_.create(matrix) &&
               (!is_quadratic() || qrows_.create(q));
    }

    // False: writing has failed.
    bool write() noexcept
    {
        write_header();
        write_objective();
        if (is_quadratic()) write_quadratic();
        out_.end_line_with("Subject To");
        for (std::int32_t i = 0; i < problem_.numrows && !out_.has_failed(); ++i)
            if (is_wanted(problem_.rowind, problem_.iisnumrows, i)) write_row(i);
        out_.end_line_with("Bounds");
        for (std::int32_t j = 0; j < problem_.numcols; ++j)
            if (is_wanted(problem_.colind, problem_.iisnumcols, j)) write_bounds(j);
        if (is_mip(problem_) && extent_ == Extent::whole) write_integers();
        out_.end_line_with("End");
        return !out_.has_failed();
    }

  private:
    // Whether a row or column belongs to what is written; `members` is the subset, in their order.
    bool is_wanted(const Array<std::int32_t>& members, std::int32_t count,
                   std::int32_t index) const noexcept
    {
        if (extent_ == Extent::whole) return true;
        return members && std::binary_search(members.data(), members.data() + count, index);
    }

    bool is_quadratic() const noexcept { return problem_.control.qstate != Q_NONE; }

    void write_header() noexcept
    {
        out_.put(problem_.objsen == -1 ? "Maximize " : "Minimize ");
        out_.put(is_quadratic() ? "QP" : "LP");
        if (is_mip(problem_)) out_.put("/MIP");
        out_.end_line();
    }

    void write_objective() noexcept
    {
        constexpr int START = 7;
        out_.put("  obj: ");
        has_linear_ = put_terms(problem_.obj);
        if (out_.length() > START) out_.continue_on_next_line();
        if (!is_quadratic()) out_.drop_line();
    }

    bool put_terms(const double* values) noexcept
    {
        Terms terms(out_);
        for (std::int32_t j = 0; j < problem_.numcols; ++j) {
            terms.put(j, values[j]);
            out_.wrap();
        }
        return terms.any();
    }

    double* cleared_values() noexcept
    {
        std::fill_n(values_.data(), problem_.numcols, 0.0);
        return values_.data();
    }

    // The sums for the products with variable i, in the places from i on.
    const double* products_with(std::int32_t i) noexcept
    {
        double* const sums = cleared_values();
        qrows_.add_row(i, sums);
        const double square = sums[i];
        qrows_.add_column(i, sums);
        sums[i] = square;
        return sums;
    }

    void write_quadratic() noexcept
    {
        const std::int32_t n = problem_.numcols;
        out_.put(has_linear_ ? " + [ " : "[ ");
        Terms terms(out_);
        for (std::int32_t i = 0; i < n && !out_.has_failed(); ++i) {
            const double* const sums = products_with(i);
            for (std::int32_t j = i; j < n; ++j) {
                if (terms.put(i, sums[j])) put_second_factor(i, j);
                out_.wrap();
            }
            if (i + 1 < n) out_.continue_on_next_line();
        }
        out_.end_line_with(" ]");
    }

    void put_second_factor(std::int32_t i, std::int32_t j) noexcept
    {
        if (i == j) {
            out_.put("^2");
            return;
        }
        out_.put("*");
        out_.put_variable(j);
    }

    void write_row(std::int32_t i) noexcept
    {
        const char sense = problem_.sense[i];
        const double rhs = problem_.rhs[i];
        const double width =
            sense == 'R' && !is_absent(problem_.rowrange) ? problem_.rowrange[i] : 0.0;

        out_.put("  c");
        out_.put_number(i + 1);
        out_.put(":  ");
        if (sense == 'R') {
            out_.put_real(width >= 0.0 ? rhs : rhs + width);
            out_.put(" <= ");
        }
        double* const coefficients = cleared_values();
        rows_.add_row(i, coefficients);
        put_terms(coefficients);

        const char* const relation = sense == 'E' ? " = " : sense == 'G' ? " >= " : " <= ";
        out_.put(relation);
        out_.put_real(width > 0.0 ? rhs + width : rhs);
        out_.end_line();
    }

    void write_bounds(std::int32_t j) noexcept
    {
        const bool is_binary = problem_.ctype && problem_.ctype[j] == 'B';
        out_.put("  ");
        out_.put_real(is_binary ? 0.0 : problem_.lb[j]);
        out_.put(" <= ");
        out_.put_variable(j);
        out_.put(" <= ");
        out_.put_real(is_binary ? 1.0 : problem_.ub[j]);
        out_.end_line();
    }

    void write_integers() noexcept
    {
        out_.end_line_with("Integers");
        for (std::int32_t j = 0; j < problem_.numcols; ++j) {
            if (problem_.ctype[j] == 'C') continue;
            out_.put("  ");
            out_.put_variable(j);
            out_.end_line();
        }
    }

    const Problem& problem_;
    Extent extent_;
    LineWriter out_;
    Array<double> values_;  // numcols, of the row or group being written
    Rows rows_, qrows_;
    bool has_linear_ = false;
};

std::int32_t refuse(std::int32_t code, const char* text) noexcept
{
    return report(code, WRITE_TITLE, text);
}

std::int32_t write_model(const Problem& problem, Extent extent, const char* filename) noexcept
{
    const char* const FAILED = "Error writing to output file";
    TextOutput file;
    ModelWriter writer(problem, extent, file);
    if (!writer.create()) return refuse(WRITE_FAILED, FAILED);
    if (!file.open(filename)) return refuse(WRITE_FAILED, "Unable to open output file");
    if (!writer.write()) return refuse(WRITE_FAILED, FAILED);
    return file.close() ? 0 : refuse(WRITE_FAILED, FAILED);
}

std::int32_t test_and_write(Problem* lp, Extent extent, const char* filename) noexcept
{
    set_float_control();
    if (!is_handle(lp, WRITE_TITLE)) return 1;
    if (!filename) return refuse(WRITE_FAILED, NO_NAME);
    if (!is_lp_family(lp->problemtype))
        return refuse(WRITE_NOT_SUPPORTED, "lpwrite not supported for NLP/NSPs");
    return write_model(*lp, extent, filename);
}

}  // namespace

}  // namespace tarnwick

using namespace tarnwick;

extern "C" std::int32_t TARNWICK_CALL lpwrite(Problem* lp, const char* filename)
{
    return test_and_write(lp, Extent::whole, filename);
}

extern "C" std::int32_t TARNWICK_CALL lprewrite(Problem* lp, const char* filename)
{
    return lpwrite(lp, filename);
}

extern "C" std::int32_t TARNWICK_CALL iiswrite(Problem* lp, const char* filename)
{
    set_float_control();
    if (!is_handle(lp, __func__)) return 1;
    if (!filename) return report(WRITE_FAILED, __func__, NO_NAME);
    if (is_nlp_family(lp->problemtype))
        return report(WRITE_NOT_SUPPORTED, __func__, "iiswrite not supported for NLPs");

    if (lp->iisnumrows == 0 && lp->iisnumcols == 0) {
        std::int32_t rows = 0, columns = 0;
        if (const std::int32_t code = findiis(lp, &rows, &columns); code != 0) return code;
    }
    return test_and_write(lp, Extent::infeasible_subset, filename);
}
