// Loading: the arguments of a load function are tested in a fixed order, and the first fault is
// told. From then on the library works through the caller's pointers, so that what passes here is
// all that keeps it inside the arrays as they were declared.

#include "interface/loading.h"

#include <algorithm>

#include "platform/floatcontrol.h"
#include "platform/prefetch.h"
#include "platform/vectors.h"

namespace tarnwick {

// clang-format off
constexpr MatrixRefusals CONSTRAINT_REFUSALS{
    .begview = {1, "matbeg is not a valid OLE array"},
    .cntview = {1, "matcnt is not a valid OLE array"},
    .indview = {1, "matind is not a valid OLE array"},
    .valview = {1, "matval is not a valid OLE array"},
    .arrays = {1, "matbeg, matcnt, matind are not all valid arrays"},
    .beg = {1, "matbeg element is invalid"},
    .cnt = {1, "matcnt element is invalid"},
    .ind = {1, "matind element is invalid"},
    .val = {1, "matval is not a valid array"},
};
// clang-format on

std::int32_t report(const Refusal& refusal, const char* title) noexcept
{
    return refusal.text ? report(refusal.code, title, refusal.text) : refusal.code;
}

// ---- the matrix

namespace {

// An index array that may be absent. One that says so as it stands is no reference and is not
// viewed; it holds a single element, as a placeholder does.
View view_optional(std::int32_t*& array, std::int64_t count, OleReference& reference) noexcept
{
    if (is_absent(array)) return View::placeholder;
    const auto handle = reinterpret_cast<OleReference>(array);
    const View view = view_array(array, count);
    if (view != View::failed) reference = handle;
    return view;
}

bool is_marked_dense(const MatrixArguments& matrix) noexcept
{
    return is_absent(matrix.beg) && is_absent(matrix.cnt) && is_absent(matrix.ind);
}

// True if val holds a dense matrix. Outside OLE array mode its length is the caller's word.
bool holds_dense(const MatrixArguments& matrix) noexcept
{
    if (!matrix.valref) return true;
    auto* val = reinterpret_cast<double*>(matrix.valref);
    const std::int64_t count = std::int64_t{matrix.numcols} * matrix.numrows;
    return view_array(val, count) == View::data;
}

// Without a branch, so that the loop takes several at a time: the sign of i or of numrows - i tells
// one that is out of range.
bool are_rows(const std::int32_t* ind, std::int64_t count, std::int32_t numrows) noexcept
{
    const auto last = static_cast<std::uint32_t>(numrows);
    std::uint32_t signs = 0;
    for (std::int64_t k = 0; k < count; ++k) {
        const auto i = static_cast<std::uint32_t>(ind[k]);
        signs |= i | (last - i);
    }
    return signs >> 31 == 0;
}

Refusal test_columns(const MatrixArguments& matrix, const MatrixRefusals& refusals) noexcept
{
    if (lists_all(matrix.beg, matrix.cnt, matrix.ind, matrix.length, matrix.numrows,
                  matrix.numcols))
        return {};

    const std::int64_t last_start = std::int64_t{matrix.numcols} * matrix.numrows;
    std::int64_t end = 0;
    for (std::int32_t j = 0; j < matrix.numcols; ++j) {
        const std::int64_t start = matrix.beg[j];
        if (start < end || start > last_start) return refusals.beg;

        const std::int64_t count = matrix.cnt[j];
        if (count < 0 || count > matrix.numrows) return refusals.cnt;
        end = start + count;
        if (count == 0) continue;
        if (end > matrix.length) return refusals.cnt;
        if (!are_rows(matrix.ind + start, count, matrix.numrows)) return refusals.ind;
    }
    return {};
}

}  // namespace

Refusal view_indices(MatrixArguments& matrix, const MatrixRefusals& refusals) noexcept
{
    if (view_optional(matrix.beg, matrix.numcols, matrix.begref) == View::failed)
        return refusals.begview;
    if (view_optional(matrix.cnt, matrix.numcols, matrix.cntref) == View::failed)
        return refusals.cntview;

    const View indview = view_optional(matrix.ind, matrix.length, matrix.indref);
    if (indview == View::failed) return refusals.indview;
    // A lone -1 in beg or cnt is refused as the first element; that of ind may never be looked at.
    if (indview == View::placeholder && !is_marked_dense(matrix)) matrix.ind = nullptr;
    return {};
}

Refusal view_matrix(MatrixArguments& matrix, const MatrixRefusals& refusals) noexcept
{
    if (const Refusal refusal = view_indices(matrix, refusals)) return refusal;
    const auto valref = reinterpret_cast<OleReference>(matrix.val);
    if (!view_required(matrix.val, matrix.length)) return refusals.valview;
    matrix.valref = valref;
    return {};
}

Refusal test_matrix(MatrixArguments& matrix, const MatrixRefusals& refusals) noexcept
{
    const bool has_some = matrix.beg || matrix.cnt || matrix.ind;
    const bool has_all = matrix.beg && matrix.cnt && matrix.ind;
    if (has_some && !has_all) return refusals.arrays;

    if (is_marked_dense(matrix)) {
        matrix.beg = matrix.cnt = matrix.ind = nullptr;
        return holds_dense(matrix) ? Refusal{} : refusals.val;
    }
    return test_columns(matrix, refusals);
}

// ---- a model

bool has_only(const char* letters, std::int32_t count, std::string_view named) noexcept
{
    const char* const end = letters + std::max(count, 0);
    return std::all_of(letters, end, [named](char letter) {
        return std::find(named.begin(), named.end(), letter) != named.end();
    });
}

bool view_letters(char*& letters, std::int64_t count, OleReference& reference) noexcept
{
    if (!letters) return true;
    const auto handle = reinterpret_cast<OleReference>(letters);
    if (view_array(letters, count) == View::failed) return false;
    reference = handle;
    return true;
}

void keep_model(Problem& problem, std::int32_t problemtype, const ModelArguments& model) noexcept
{
    const MatrixArguments& matrix = model.matrix;
    problem.problemtype = problemtype;
    problem.numcols = matrix.numcols;
    problem.numrows = matrix.numrows;
    problem.objsen = model.objsen;
    problem.obj = model.obj;
    problem.rhs = model.rhs;
    problem.sense = model.sense;
    problem.matbeg = matrix.beg;
    problem.matcnt = matrix.cnt;
    problem.matind = matrix.ind;
    problem.matval = matrix.val;
    problem.matnz = matrix.length;
    problem.var = model.var;
    problem.lb = model.lb;
    problem.ub = model.ub;
    problem.rowrange = model.rowrange;
    problem.lastcol = matrix.numcols - 1;
    problem.lastrow = matrix.numrows - 1;

    const OleReference handles[] = {model.objref, matrix.begref, matrix.cntref, matrix.indref,
                                    matrix.valref};
    std::copy(std::begin(handles), std::end(handles), problem.olehandles);
}

// ---- a linear model

namespace {

Refusal test_sizes(const ModelArguments& model) noexcept
{
    const SizeLimits limits = size_limits(PROB_LP);
    const std::int32_t numcols = model.matrix.numcols, numrows = model.matrix.numrows;
    if (numcols < 1 || numrows < 1) return {1, "numcols or numrows <= 0"};
    if (numcols > limits.numcols || numrows > limits.numrows)
        return {1, "numcols or numrows is too large"};
    if (model.objsen != 1 && model.objsen != -1) return {1, "objsen is not -1 or 1"};
    return {};
}

Refusal test_presence(const ModelArguments& model) noexcept
{
    if (!model.obj || !model.rhs) return {1, "obj or rhs is not a valid array"};
    if (!model.sense) return {1, "sense is not a valid array"};
    if (!model.matrix.val) return CONSTRAINT_REFUSALS.val;
    if (!model.lb || !model.ub) return {1, "lb or ub is not a valid array"};
    return {};
}

Refusal view_model(ModelArguments& model) noexcept
{
    const std::int32_t numcols = model.matrix.numcols, numrows = model.matrix.numrows;
    model.objref = reinterpret_cast<OleReference>(model.obj);
    if (!view_required(model.obj, numcols)) return {1, "obj is not a valid OLE array"};
    if (!view_required(model.rhs, numrows)) return {1, "rhs is not a valid OLE array"};
    if (!view_required(model.sense, numrows)) return {1, "sense is not a valid OLE array"};
    if (const Refusal refusal = view_matrix(model.matrix, CONSTRAINT_REFUSALS)) return refusal;
    if (!view_required(model.lb, numcols)) return {1, "lb is not a valid OLE array"};
    if (!view_required(model.ub, numcols)) return {1, "ub is not a valid OLE array"};
    return {};
}

// A host that solves one small model after the other has long lost their arrays from its caches.
void prefetch_model(const ModelArguments& model) noexcept
{
    const MatrixArguments& matrix = model.matrix;
    const auto n = static_cast<std::size_t>(matrix.numcols);
    const auto m = static_cast<std::size_t>(matrix.numrows);
    if (test_sizes(model)) return;
    prefetch(matrix.val, n * m * sizeof(double));
    for (const double* column : {model.obj, model.lb, model.ub})
        prefetch(column, n * sizeof(double));
    prefetch(model.rhs, m * sizeof(double));
    prefetch(model.sense, m);
    if (!matrix.ind) return;
    prefetch(matrix.ind, n * m * sizeof(std::int32_t));
    prefetch(matrix.beg, n * sizeof(std::int32_t));
    prefetch(matrix.cnt, n * sizeof(std::int32_t));
}

Refusal test_model(ModelArguments& model) noexcept
{
    if (const Refusal refusal = test_sizes(model)) return refusal;
    if (const Refusal refusal = test_presence(model)) return refusal;
    if (ole_mode()) {
        if (const Refusal refusal = view_model(model)) return refusal;
        if (const Refusal refusal = test_presence(model)) return refusal;
    }
    if (!has_only(model.sense, model.matrix.numrows, "LEG"))
        return {1, "sense element not E, L, G or R"};
    return test_matrix(model.matrix, CONSTRAINT_REFUSALS);
}

// ---- a quadratic part, integer letters

constexpr MatrixRefusals Q_REFUSALS{
    .begview = {2, "qmatbeg is not a valid OLE array"},
    .cntview = {3, "qmatcnt is not a valid OLE array"},
    .indview = {4, "qmatind is not a valid OLE array"},
    .valview = {5, "qmatval is not a valid OLE array"},
    .arrays = {1, nullptr                           },
    .beg = {2, "qmatbeg element is invalid"      },
    .cnt = {3, "qmatcnt element is invalid"      },
    .ind = {4, "qmatind element is invalid"      },
    .val = {5, "qmatval is not a valid array"    },
};

// The type that a model gets with a quadratic part, or with integer letters.
struct TypeMove {
    std::int32_t from, quadratic, integer;
};

// clang-format off
constexpr TypeMove TYPE_MOVES[] = {
    {PROB_LP,    PROB_QP,    PROB_MILP },
    {PROB_MILP,  PROB_MIQP,  PROB_MILP },
    {PROB_QP,    PROB_QP,    PROB_MIQP },
    {PROB_MIQP,  PROB_MIQP,  PROB_MIQP },
    {PROB_NLP,   PROB_NLP,   PROB_MINLP},
    {PROB_MINLP, PROB_MINLP, PROB_MINLP},
    {PROB_NSP,   PROB_NSP,   PROB_MINSP},
    {PROB_MINSP, PROB_MINSP, PROB_MINSP},
};
// clang-format on

void move_type(Problem& problem, std::int32_t TypeMove::*column) noexcept
{
    const auto* const move =
        std::find_if(std::begin(TYPE_MOVES), std::end(TYPE_MOVES),
                     [&](const TypeMove& row) { return row.from == problem.problemtype; });
    if (move != std::end(TYPE_MOVES)) problem.problemtype = move->*column;
}

Refusal test_q_presence(const MatrixArguments& q, const double* var) noexcept
{
    if (!q.val) return Q_REFUSALS.val;
    if (!var) return {7, "var is not a valid array"};
    return {};
}

Refusal test_q_arrays(MatrixArguments& q, double*& var) noexcept
{
    if (const Refusal refusal = test_q_presence(q, var)) return refusal;
    if (!ole_mode()) return {};
    if (const Refusal refusal = view_matrix(q, Q_REFUSALS)) return refusal;
    if (!view_required(var, q.numcols)) return {7, "var is not a valid OLE array"};
    return test_q_presence(q, var);
}

void keep_q(Problem& problem, const MatrixArguments& q, double* var) noexcept
{
    problem.qmatbeg = q.beg;
    problem.qmatcnt = q.cnt;
    problem.qmatind = q.ind;
    problem.qmatval = q.val;
    problem.qnz = q.length;
    problem.var = var;
    problem.control.qstate = is_semidefinite(problem) ? Q_ACCEPTED : Q_INDEFINITE;
}

}  // namespace

}  // namespace tarnwick

using namespace tarnwick;

extern "C" Problem* TARNWICK_CALL loadlp(const char* name, std::int32_t numcols,
                                         std::int32_t numrows, std::int32_t objsen, double* obj,
                                         double* rhs, char* sense, std::int32_t* matbeg,
                                         std::int32_t* matcnt, std::int32_t* matind, double* matval,
                                         double* lb, double* ub, double* rowrange,
                                         std::int32_t colspare, std::int32_t rowspare,
                                         std::int32_t matnz)
{
    set_float_control();
    ModelArguments model{
        .objsen = objsen,
        .obj = obj,
        .rhs = rhs,
        .sense = sense,
        .matrix = {numcols, numrows, matbeg, matcnt, matind, matval, matnz},
        .var = nullptr,
        .lb = lb,
        .ub = ub,
        .rowrange = rowrange,
    };
    prefetch_model(model);
    // Made first: meanwhile the model's arrays come from memory.
    Problem* const problem = create_problem(name);
    if (const Refusal refusal = test_model(model)) {
        report(refusal, __func__);
        release_problem(problem);
        return nullptr;
    }
    if (!problem) return nullptr;

    keep_model(*problem, PROB_LP, model);
    problem->colspare = colspare;
    problem->rowspare = rowspare;
    return problem;
}

extern "C" std::int32_t TARNWICK_CALL loadquad(Problem* lp, std::int32_t* qmatbeg,
                                               std::int32_t* qmatcnt, std::int32_t* qmatind,
                                               double* qmatval, std::int32_t qnz, double* var)
{
    set_float_control();
    if (!is_idle(lp, __func__)) return 1;

    MatrixArguments q{lp->numcols, lp->numcols, qmatbeg, qmatcnt, qmatind, qmatval, qnz};
    if (const Refusal refusal = test_q_arrays(q, var)) return report(refusal, __func__);
    if (is_nlp_family(lp->problemtype))
        return report(1, __func__, "loadquad cannot be used with loadnlp");
    move_type(*lp, &TypeMove::quadratic);
    if (const Refusal refusal = test_matrix(q, Q_REFUSALS)) return report(refusal, __func__);

    keep_q(*lp, q, var);
    if (lp->control.qstate == Q_INDEFINITE) return report(5, __func__, "Q matrix is indefinite");
    return 0;
}

extern "C" std::int32_t TARNWICK_CALL loadctype(Problem* lp, char* ctype)
{
    constexpr Refusal IS_ABSENT{2, "ctype is not a valid array"};
    set_float_control();
    if (!is_idle(lp, __func__)) return 1;
    if (!ctype) return report(IS_ABSENT, __func__);
    if (ole_mode() && !view_required(ctype, lp->numcols))
        return report(2, __func__, "ctype is not a valid OLE array");
    if (!ctype) return report(IS_ABSENT, __func__);

    move_type(*lp, &TypeMove::integer);
    if (!has_only(ctype, lp->numcols, "CIB"))
        return report(2, __func__, "ctype element is not C, I or B");
    lp->ctype = ctype;
    return 0;
}
