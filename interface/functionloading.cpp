// Loading a model that is known through the caller's functions, and what of it is linear. The
// tests are those of a linear model, but for sizes that may be zero and arrays that then are not
// looked at.

#include "interface/loading.h"
#include "platform/floatcontrol.h"

namespace tarnwick {

namespace {

Refusal test_sizes(const ModelArguments& model) noexcept
{
    const SizeLimits limits = size_limits(PROB_NLP);
    const std::int32_t numcols = model.matrix.numcols, numrows = model.matrix.numrows;
    if (numcols < 1) return {1, "numcols <= 0"};
    if (numrows < 0) return {1, "numrows < 0"};
    if (numcols > limits.numcols || numrows > limits.numrows)
        return {1, "numcols or numrows is too large"};
    if (model.objsen != 1 && model.objsen != -1) return {1, "objsen is not -1 or 1"};
    return {};
}

Refusal test_presence(const ModelArguments& model) noexcept
{
    if (!model.obj) return {1, "obj is not a valid array"};
    if (model.matrix.numrows > 0) {
        if (!model.rhs) return {1, "rhs is not a valid array"};
        if (!model.sense) return {1, "sense is not a valid array"};
        if (!model.matrix.val) return CONSTRAINT_REFUSALS.val;
    }
    if (!model.var) return {1, "var is not a valid array"};
    if (!model.lb || !model.ub) return {1, "lb or ub is not a valid array"};
    return {};
}

Refusal view_rows(ModelArguments& model) noexcept
{
    const std::int32_t numrows = model.matrix.numrows;
    if (!view_required(model.rhs, numrows)) return {1, "rhs is not a valid OLE array"};
    if (!view_required(model.sense, numrows)) return {1, "sense is not a valid OLE array"};
    return {};
}

// Without rows the arrays of the rows and matval are no arrays that were viewed, and are dropped.
Refusal view_matrix_without_rows(ModelArguments& model) noexcept
{
    model.rhs = nullptr;
    model.sense = nullptr;
    model.matrix.val = nullptr;
    return view_indices(model.matrix, CONSTRAINT_REFUSALS);
}

Refusal view_model(ModelArguments& model) noexcept
{
    const std::int32_t numcols = model.matrix.numcols;
    const bool has_rows = model.matrix.numrows > 0;
    model.objref = reinterpret_cast<OleReference>(model.obj);
    if (!view_required(model.obj, numcols)) return {1, "obj is not a valid OLE array"};
    if (has_rows) {
        if (const Refusal refusal = view_rows(model)) return refusal;
        if (const Refusal refusal = view_matrix(model.matrix, CONSTRAINT_REFUSALS)) return refusal;
    } else if (const Refusal refusal = view_matrix_without_rows(model)) {
        return refusal;
    }
    if (!view_required(model.var, numcols)) return {1, "var is not a valid OLE array"};
    if (!view_required(model.lb, numcols)) return {1, "lb is not a valid OLE array"};
    if (!view_required(model.ub, numcols)) return {1, "ub is not a valid OLE array"};
    return {};
}

Refusal test_model(ModelArguments& model, TarnwickFuncEval funceval) noexcept
{
    if (const Refusal refusal = test_sizes(model)) return refusal;
    if (const Refusal refusal = test_presence(model)) return refusal;
    if (!funceval) return {1, "funceval is not a valid callback"};
    if (ole_mode()) {
        if (const Refusal refusal = view_model(model)) return refusal;
        if (const Refusal refusal = test_presence(model)) return refusal;
    }
    if (!has_only(model.sense, model.matrix.numrows, "LEGR"))
        return {1, "sense element not E, L, G or R"};
    return test_matrix(model.matrix, CONSTRAINT_REFUSALS);
}

bool is_smooth(const Problem& problem) noexcept
{
    return problem.objtype && problem.matvaltype &&
           has_only(problem.objtype, problem.numcols, "LN") &&
           has_only(problem.matvaltype, problem.matnz, "LN");
}

}  // namespace

}  // namespace tarnwick

using namespace tarnwick;

extern "C" Problem* TARNWICK_CALL loadnlp(const char* name, std::int32_t numcols,
                                          std::int32_t numrows, std::int32_t objsen, double* obj,
                                          double* rhs, char* sense, std::int32_t* matbeg,
                                          std::int32_t* matcnt, std::int32_t* matind,
                                          double* matval, double* var, double* lb, double* ub,
                                          double* rowrange, std::int32_t matnz,
                                          TarnwickFuncEval funceval, TarnwickJacobian jacobian)
{
    set_float_control();
    ModelArguments model{
        .objsen = objsen,
        .obj = obj,
        .rhs = rhs,
        .sense = sense,
        .matrix = {numcols, numrows, matbeg, matcnt, matind, matval, matnz},
        .var = var,
        .lb = lb,
        .ub = ub,
        .rowrange = rowrange,
    };
    if (const Refusal refusal = test_model(model, funceval)) {
        report(refusal, __func__);
        return nullptr;
    }
    Problem* const problem = create_problem(name);
    if (!problem) return nullptr;

    keep_model(*problem, PROB_NLP, model);
    problem->funceval = funceval;
    problem->jacobian = jacobian;
    return problem;
}

extern "C" std::int32_t TARNWICK_CALL loadnltype(Problem* lp, char* objtype, char* matvaltype)
{
    set_float_control();
    if (!is_idle(lp, __func__)) return 1;
    OleReference objref = nullptr, matvalref = nullptr;
    if (ole_mode() && !view_letters(objtype, lp->numcols, objref))
        return report(2, __func__, "objtype is not a valid OLE array");
    if (ole_mode() && !view_letters(matvaltype, lp->matnz, matvalref))
        return report(3, __func__, "matvaltype is not a valid OLE array");

    lp->objtype = objtype;
    lp->matvaltype = matvaltype;
    lp->oletypehandles[0] = objref;
    lp->oletypehandles[1] = matvalref;
    if (is_smooth(*lp)) return 0;

    const std::int32_t type = lp->problemtype;
    if (type == PROB_LP || type == PROB_MILP)
        return report(1, __func__, "loadnltype cannot be used with loadlp");
    if (type == PROB_NLP) lp->problemtype = PROB_NSP;
    if (type == PROB_MINLP) lp->problemtype = PROB_MINSP;
    return 0;
}
