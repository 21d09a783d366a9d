// A model file is read three times: for its sizes, for the lengths of its columns, and, once the
// model is loaded with arrays of those lengths, into the arrays.

#include "tools/model.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <numeric>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "tools/errorline.h"
#include "tools/failure.h"

namespace tarnwick::tool {

namespace {

constexpr std::int32_t READ_INDEFINITE = 8;  // the file has been read all the same

struct Sizes {
    std::int32_t objsen = 1, numcols = 0, numrows = 0, numctype = 0;
};

[[noreturn]] void fail(const std::string& file, const std::string& text)
{
    throw Failure(fmt::format("{}: {}", file, text));
}

[[noreturn]] void fail_reading(const std::string& file, Messages& messages)
{
    const std::string message = messages.joined();
    const ErrorPlace place = find_error(file, messages);
    throw Failure(fmt::format("{}{}: {}{}", file,
                              place.line > 0 ? fmt::format(":{}", place.line) : "", message,
                              place.reason.empty() ? "" : fmt::format(" ({})", place.reason)));
}

// The library says no more than that it can't open a file.
void require_readable(const std::string& file)
{
    struct stat info {};
    const int handle = ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const bool is_known = handle >= 0 && ::fstat(handle, &info) == 0;
    const int error = errno;
    if (handle >= 0) ::close(handle);

    if (!is_known) fail(file, std::strerror(error));
    if (S_ISDIR(info.st_mode)) fail(file, "is a directory");
    if (!S_ISREG(info.st_mode)) fail(file, "is no regular file, which can be read more than once");
    if (info.st_size == 0) fail(file, "the file is empty");
}

// ---- sizes

void require_within_limits(const std::string& file, const Sizes& sizes)
{
    std::int32_t cols = 0, rows = 0, ints = 0;
    getproblimits(nullptr, PROB_MIQP, &cols, &rows, &ints);
    if (sizes.numcols > cols)
        fail(file, fmt::format("too many variables: they go up to x{}, the limit is {}",
                               sizes.numcols, cols));
    if (sizes.numrows > rows)
        fail(file,
             fmt::format("too many rows: they go up to c{}, the limit is {}", sizes.numrows, rows));
}

Sizes read_sizes(const std::string& file, Messages& messages)
{
    Sizes sizes;
    messages.clear();
    if (lpread(nullptr, file.c_str(), &sizes.objsen, &sizes.numcols, &sizes.numrows,
               &sizes.numctype, nullptr, nullptr) != 0)
        fail_reading(file, messages);
    require_within_limits(file, sizes);
    return sizes;
}

// ---- arrays

std::size_t at_least_one(std::int32_t count)
{
    return static_cast<std::size_t>(std::max<std::int32_t>(count, 1));
}

void size_arrays(Model& model)
{
    const std::size_t cols = at_least_one(model.numcols), rows = at_least_one(model.numrows);
    for (auto* array : {&model.obj, &model.lb, &model.ub, &model.start}) array->assign(cols, 0.0);
    model.rhs.assign(rows, 0.0);
    model.sense.assign(rows, 'L');
    model.ctype.assign(cols, 'C');
    for (auto* matrix : {&model.matrix, &model.quadratic}) {
        matrix->begins.assign(cols, 0);
        matrix->counts.assign(cols, 0);
    }
}

// Lays the columns out one behind the other.
void size_matrix(const std::string& file, ColumnMatrix& matrix)
{
    const auto total = std::accumulate(matrix.counts.begin(), matrix.counts.end(), std::int64_t{0});
    if (total > std::numeric_limits<std::int32_t>::max()) fail(file, "too many terms");
    std::exclusive_scan(matrix.counts.begin(), matrix.counts.end(), matrix.begins.begin(), 0);
    matrix.entries = static_cast<std::int32_t>(total);
    matrix.indices.assign(at_least_one(matrix.entries), 0);
    matrix.values.assign(at_least_one(matrix.entries), 0.0);
}

// The load functions take no column with more entries than the matrix has rows.
void require_column_lengths(const std::string& file, const ColumnMatrix& matrix,
                            std::int32_t longest, const char* kind)
{
    for (std::size_t j = 0; j < matrix.counts.size(); ++j)
        if (matrix.counts[j] > longest)
            fail(file, fmt::format("x{} has {} {} terms, with room for {}: some are repeated",
                                   j + 1, matrix.counts[j], kind, longest));
}

void read_column_lengths(Model& model, Messages& messages)
{
    messages.clear();
    if (lpread(nullptr, model.file.c_str(), nullptr, nullptr, nullptr, nullptr,
               model.matrix.counts.data(), model.quadratic.counts.data()) != 0)
        fail_reading(model.file, messages);
    require_column_lengths(model.file, model.matrix, model.numrows, "row");
    require_column_lengths(model.file, model.quadratic, model.numcols, "quadratic");
    size_matrix(model.file, model.matrix);
    size_matrix(model.file, model.quadratic);
}

// ---- loading

void load(Model& model, bool with_quadratic, bool with_integers, Messages& messages)
{
    messages.clear();
    ColumnMatrix& a = model.matrix;
    model.lp = Handle();
    model.lp = Handle(loadlp(model.file.c_str(), static_cast<std::int32_t>(model.obj.size()),
                             static_cast<std::int32_t>(model.rhs.size()), model.objsen,
                             model.obj.data(), model.rhs.data(), model.sense.data(),
                             a.begins.data(), a.counts.data(), a.indices.data(), a.values.data(),
                             model.lb.data(), model.ub.data(), nullptr, 0, 0, a.entries));
    if (!model.lp.get()) fail(model.file, messages.joined());

    // An indefinite Q is loaded too; the status of a solve then tells what was found.
    constexpr std::int32_t INDEFINITE = 5;
    ColumnMatrix& q = model.quadratic;
    if (with_quadratic) {
        const std::int32_t code =
            loadquad(model.lp.get(), q.begins.data(), q.counts.data(), q.indices.data(),
                     q.values.data(), q.entries, model.start.data());
        if (code != 0 && code != INDEFINITE) fail(model.file, messages.joined());
    }
    if (with_integers && loadctype(model.lp.get(), model.ctype.data()) != 0)
        fail(model.file, messages.joined());
}

bool fill(Model& model, Messages& messages)
{
    messages.clear();
    const std::int32_t code =
        lpread(model.lp.get(), model.file.c_str(), nullptr, nullptr, nullptr, nullptr,
               model.matrix.counts.data(), model.quadratic.counts.data());
    return code == 0 || code == READ_INDEFINITE;
}

double starting_value(double lower, double upper) { return std::max(lower, std::min(0.0, upper)); }

// The model is filled as what its sections promise, and then loaded as what it is: a quadratic block
// or a list of integers may be empty.
void load_and_fill(Model& model, bool lists_integers, Messages& messages)
{
    bool with_quadratic = model.quadratic.entries > 0;
    load(model, with_quadratic, lists_integers, messages);
    if (!fill(model, messages)) {
        if (with_quadratic) fail_reading(model.file, messages);
        with_quadratic = true;
        load(model, true, lists_integers, messages);
        if (!fill(model, messages)) fail_reading(model.file, messages);
    }
    if (model.numrows == 0) model.sense.front() = 'L';
    std::transform(model.lb.begin(), model.lb.end(), model.ub.begin(), model.start.begin(),
                   starting_value);

    model.has_quadratic = model.quadratic.entries > 0;
    model.integers =
        static_cast<std::int32_t>(std::count(model.ctype.begin(), model.ctype.end(), 'I'));
    if (with_quadratic != model.has_quadratic || lists_integers != (model.integers > 0))
        load(model, model.has_quadratic, model.integers > 0, messages);
}

}  // namespace

Model read_model(const std::string& file, Messages& messages)
{
    require_readable(file);
    const Sizes sizes = read_sizes(file, messages);

    Model model;
    model.file = file;
    model.objsen = sizes.objsen;
    model.numcols = sizes.numcols;
    model.numrows = sizes.numrows;
    size_arrays(model);
    read_column_lengths(model, messages);
    load_and_fill(model, sizes.numctype > 0, messages);
    return model;
}

}  // namespace tarnwick::tool
