// The plain-text format, section by section.
//
//     Minimize                      or Maximize
//       obj:  2 x1 - x3 + [ x1^2 - 2 x1*x3 ]
//     Subject To
//       c1:  x1 + x3 >= 1           or <=, =
//     Bounds
//       0 <= x1 <= +infinity        -infinity on the left
//     Integers                      this section may be missing
//       x3
//     End
//
// Terms go on over any number of lines, all else is one line each. Every function here reads what
// its name says from the current line on; bool results are false when the text is refused, which
// has then been reported.

#include <cstdint>

#include "interface/problem.h"
#include "platform/floatcontrol.h"
#include "platform/olearray.h"
#include "textfile/linereader.h"
#include "textfile/modelstore.h"

namespace tarnwick {

namespace {

enum : std::int32_t { READ_NOT_SUPPORTED = 1, READ_REFUSED = 2, READ_INDEFINITE = 8 };
enum : std::int32_t { READ_BAD_MATCNT = 7, READ_BAD_QMATCNT = 8 };

bool refuse(const char* text) noexcept
{
    report(READ_REFUSED, READ_TITLE, text);
    return false;
}

// ---- header

bool read_header(LineReader& in, ModelStore& store) noexcept
{
    if (!in.next_line()) return refuse("error reading first input line");
    in.restart_line();
    if (in.take("Minimize"))
        store.start_objective(1);
    else if (in.take("Maximize"))
        store.start_objective(-1);
    else
        return refuse("missing Maximize/Minimize");
    return true;
}

// The line where a section has ended must open the next one.
bool require(LineReader& in, const char* keyword, const char* text) noexcept
{
    in.restart_line();
    return in.take(keyword) || refuse(text);
}

bool starts_with_one_of(LineReader& in, const char* letters) noexcept
{
    in.restart_line();
    for (; *letters != '\0'; ++letters)
        if (in.peek() == *letters) return true;
    return false;
}

// ---- terms

struct Term {
    double coefficient;
    std::int64_t column;  // from 1; not always one that exists
};

// Sign, number and variable, all but the last optional. False: no variable stands behind sign and
// number, which have been passed over.
bool take_term(LineReader& in, Term& term) noexcept
{
    in.skip_spaces();
    const bool is_negative = in.take('-');
    if (!is_negative) in.take('+');
    in.skip_spaces();

    double number = 1.0;
    in.take_number(number);
    in.skip_spaces();
    term.coefficient = is_negative ? -number : number;
    term.column = in.take_label('x');
    return term.column != 0;
}

// Terms over any number of lines, each handed to `store`, but for those with coefficient 0. Stops
// at what is neither a term nor the end of a line. False: the text ends here, or a variable is out
// of range; that has not been reported.
template <class Store>
bool read_terms(LineReader& in, const Store& store) noexcept
{
    for (;;) {
        for (Term term; take_term(in, term);) {
            if (term.column < 0) return false;
            if (term.coefficient != 0.0 && !store(term)) return false;
        }
        if (!in.at_line_end()) return true;
        if (!in.next_line()) return false;
    }
}

// ---- objective

// Behind the first variable of a product: the square, or a second variable. False: neither.
bool take_second_factor(LineReader& in, std::int64_t& column) noexcept
{
    in.skip_spaces();
    if (in.take('*')) {
        in.skip_spaces();
        column = in.take_label('x');
        return column > 0;
    }
    if (!in.take('^')) return false;
    in.skip_spaces();
    const bool is_square = in.take('2');
    return is_square && in.peek() != '.' && !('0' <= in.peek() && in.peek() <= '9');
}

bool read_product(LineReader& in, ModelStore& store, const Term& term) noexcept
{
    std::int64_t column2 = term.column;
    if (term.column < 0 || !take_second_factor(in, column2)) return false;
    return term.coefficient == 0.0 || store.add_product(term.column, column2, term.coefficient);
}

// From behind the bracket that opens the block to the line behind the one that closes it.
bool read_quadratic(LineReader& in, ModelStore& store) noexcept
{
    constexpr const char* MESSAGE = "error reading quadratic objective";
    if (!store.start_quadratic()) return refuse(MESSAGE);
    for (;;) {
        for (Term term; take_term(in, term);)
            if (!read_product(in, store, term)) return refuse(MESSAGE);
        if (in.peek() == ']') return in.next_line() || refuse("error reading objective");
        if (!in.at_line_end() || !in.next_line()) return refuse(MESSAGE);
    }
}

bool read_objective(LineReader& in, ModelStore& store) noexcept
{
    constexpr const char* MESSAGE = "error reading objective";
    if (!in.next_line()) return refuse(MESSAGE);
    in.restart_line();
    in.take("obj:");
    const auto set = [&store](const Term& term) {
        return store.set_objective(term.column, term.coefficient);
    };
    if (!read_terms(in, set)) return refuse(MESSAGE);
    return !in.take('[') || read_quadratic(in, store);
}

// ---- rows

// The sense, 0 if none stands here.
char take_sense(LineReader& in) noexcept
{
    char sense = '\0';
    if (in.take('<'))
        sense = 'L';
    else if (in.take('>'))
        sense = 'G';
    else
        return in.take('=') ? 'E' : '\0';
    in.take('=');
    return sense;
}

// Ends on the line behind the row. A row without a sense ends on its own line, or in front of the
// line that does not continue it.
bool read_row(LineReader& in, ModelStore& store) noexcept
{
    constexpr const char* MESSAGE = "error reading constraint";
    const std::int64_t row = in.take_label('c');
    if (row < 1) return refuse("missing constraint name");
    if (!store.start_row(row)) return refuse(MESSAGE);
    in.skip_run();

    const std::int64_t own_line = in.line_number();
    const auto add = [&store](const Term& term) {
        return store.add_entry(term.column, term.coefficient);
    };
    if (!read_terms(in, add)) return refuse(MESSAGE);

    if (const char sense = take_sense(in)) {
        in.skip_spaces();
        store.end_row(sense, in.take_value());
    } else if (in.line_number() != own_line) {
        return true;
    }
    return in.next_line() || refuse("error reading input line");
}

bool read_rows(LineReader& in, ModelStore& store) noexcept
{
    if (!require(in, "Subject To", "missing Subject To")) return false;
    store.start_rows();
    if (!in.next_line()) return refuse("error reading input line");
    while (!starts_with_one_of(in, "BIE"))
        if (!read_row(in, store)) return false;
    return true;
}

// ---- bounds

bool take_less_or_equal(LineReader& in) noexcept
{
    in.skip_spaces();
    if (!in.take("<=")) return false;
    in.skip_spaces();
    return true;
}

// Each end knows infinity in its own direction alone.
double take_bound(LineReader& in, const char* infinity, double infinite) noexcept
{
    return in.take(infinity) ? infinite : in.take_value();
}

bool read_bound(LineReader& in, ModelStore& store) noexcept
{
    const double lower = take_bound(in, "-infinity", -INFINITE_BOUND);
    if (!take_less_or_equal(in)) return refuse("error reading lower bound");

    const std::int64_t column = in.take_label('x');
    if (column < 1) return refuse("error reading variable bound");
    if (!take_less_or_equal(in)) return refuse("error reading upper bound");

    const double upper = take_bound(in, "+infinity", INFINITE_BOUND);
    in.skip_spaces();
    if (!in.at_line_end()) return refuse("error reading beyond bound");
    return store.set_bounds(column, lower, upper) || refuse("error reading bound");
}

bool read_bounds(LineReader& in, ModelStore& store) noexcept
{
    if (!require(in, "Bounds", "missing Bounds")) return false;
    store.start_bounds();
    for (;;) {
        if (!in.next_line()) return refuse("error reading bound");
        if (starts_with_one_of(in, "IE")) return true;
        if (!read_bound(in, store)) return false;
    }
}

// ---- integers

bool read_integer(LineReader& in, ModelStore& store) noexcept
{
    const std::int64_t column = in.take_label('x');
    if (column < 1) return refuse("error reading integer variable");
    in.skip_spaces();
    if (!in.at_line_end()) return refuse("error reading beyond integer");
    return store.set_integer(column) || refuse("error reading integer");
}

bool read_integers(LineReader& in, ModelStore& store) noexcept
{
    in.restart_line();
    if (!in.take("Integers")) return true;
    store.start_integers();
    for (;;) {
        if (!in.next_line()) return refuse("error reading integer");
        if (starts_with_one_of(in, "E")) return true;
        if (!read_integer(in, store)) return false;
    }
}

// ---- the file

std::int32_t read_file(const char* filename, ModelStore& store) noexcept
{
    TextInput file(filename);
    if (!file.is_open()) return report(READ_REFUSED, READ_TITLE, "Unable to open input file");

    LineReader in(file);
    const bool is_complete = read_header(in, store) && read_objective(in, store) &&
                             read_rows(in, store) && read_bounds(in, store) &&
                             read_integers(in, store) && require(in, "End", "missing End");
    return is_complete ? 0 : READ_REFUSED;
}

// ---- arguments

// In OLE array mode the array itself says how long it is. False: it is none.
bool view_counts(std::int32_t* argument, std::int64_t needed, CountArray& array) noexcept
{
    if (is_absent(argument)) return true;
    std::int64_t length = INT32_MAX;
    if (ole_mode()) {
        const auto reference = reinterpret_cast<OleReference>(argument);
        if (view_array(argument, needed) == View::failed) return false;
        length = (*reference)->bound.elements;
    }
    if (!is_absent(argument)) array = {argument, length};
    return true;
}

void give(std::int32_t* result_p, std::int32_t value) noexcept
{
    if (result_p) *result_p = value;
}

// A model whose type became quadratic without a Q has none to judge.
bool has_quadratic(const Problem& problem) noexcept
{
    return (problem.problemtype == PROB_QP || problem.problemtype == PROB_MIQP) && problem.qmatval;
}

}  // namespace

}  // namespace tarnwick

using namespace tarnwick;

extern "C" std::int32_t TARNWICK_CALL lpread(Problem* lp, const char* filename,
                                             std::int32_t* objsen_p, std::int32_t* numcols_p,
                                             std::int32_t* numrows_p, std::int32_t* numctype_p,
                                             std::int32_t* matcnt, std::int32_t* qmatcnt)
{
    set_float_control();
    if (is_null_handle(lp)) lp = nullptr;
    if (lp && !is_idle(lp, READ_TITLE)) return 1;
    if (lp && !is_lp_family(lp->problemtype))
        return report(READ_NOT_SUPPORTED, READ_TITLE, "lpread not supported for NLP/NSPs");
    if (!filename || *filename == '\0')
        return report(READ_REFUSED, READ_TITLE, "filename is NULL or empty");

    const std::int64_t needed = lp ? lp->numcols : 1;
    CountArray matcounts, qmatcounts;
    if (!view_counts(matcnt, needed, matcounts))
        return report(READ_BAD_MATCNT, READ_TITLE, "matcnt is not a valid OLE array");
    if (!view_counts(qmatcnt, needed, qmatcounts))
        return report(READ_BAD_QMATCNT, READ_TITLE, "qmatcnt is not a valid OLE array");

    ModelStore store(lp, matcounts, qmatcounts);
    if (const std::int32_t code = read_file(filename, store)) return code;
    give(objsen_p, store.objsen());
    give(numcols_p, store.numcols());
    give(numrows_p, store.numrows());
    give(numctype_p, store.numctype());

    if (!lp || !has_quadratic(*lp)) return 0;
    lp->control.qstate = is_semidefinite(*lp) ? Q_ACCEPTED : Q_INDEFINITE;
    if (lp->control.qstate == Q_ACCEPTED) return 0;
    return report(READ_INDEFINITE, READ_TITLE, "Q matrix is indefinite");
}
