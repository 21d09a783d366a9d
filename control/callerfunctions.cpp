// The caller's functions: what they are handed, in plain and in OLE array mode, and the derivatives
// of the model that the second of them gives.
//
//     obj_j = df / dx_j,   matval_k = dg_i / dx_j   for the entry k in row i of column j
//
// Derivatives reach an engine one by one, as the entries of a linear model do; where there are
// several entries for one place they are visited one after the other and mean their sum.

#include "control/callerfunctions.h"

#include <cstdio>

#include "control/services.h"
#include "control/walks.h"
#include "platform/messagebox.h"
#include "platform/olearray.h"
#include "textfile/realtext.h"

namespace tarnwick {

namespace {

// An array of doubles in OLE array mode, made for one call of a function of the caller's. The lock
// keeps the caller from resizing what is ours.
class CallArray {
  public:
    CallArray(double* data, std::int32_t count) noexcept
        : array_{
              .dimensions = 1,
              .features = 0,
              .elementsize = sizeof(double),
              .locks = 1,
              .data = data,
              .bound = {static_cast<std::uint32_t>(count), 0}
    }
    {
    }
    CallArray(const CallArray&) = delete;
    CallArray& operator=(const CallArray&) = delete;

    double* argument() noexcept { return reinterpret_cast<double*>(&reference_); }

  private:
    SafeArray array_;
    SafeArray* reference_ = &array_;
};

// The reference that came at loading, as an argument of the type of its array.
template <class T>
T* as_argument(OleReference reference) noexcept
{
    return reinterpret_cast<T*>(reference);
}

}  // namespace

bool callfunceval(Problem& problem, double* lhs, std::int32_t varone, std::int32_t vartwo) noexcept
{
    const std::int32_t n = problem.numcols, m = problem.numrows;
    CallArray values(lhs, m), point(problem.x, n);
    const bool ole = ole_mode();
    const std::int32_t failure =
        problem.funceval(&problem, n, m, &problem.objval, ole ? values.argument() : lhs,
                         ole ? point.argument() : problem.x, varone, vartwo);
    lhs[m] = problem.objval;
    return failure == 0;
}

namespace {

bool call_jacobian(Problem& problem, double* x) noexcept
{
    return problem.jacobian(&problem, problem.numcols, problem.numrows, problem.matnz,
                            &problem.objval, problem.obj, problem.matbeg, problem.matcnt,
                            problem.matind, problem.matval, x, problem.objtype,
                            problem.matvaltype) == 0;
}

// A model that was loaded outside OLE array mode has no references to hand out.
bool call_jacobian_ole(Problem& problem, double* x) noexcept
{
    CallArray point(x, problem.numcols);
    OleReference const* const arrays = problem.olehandles;
    OleReference const* const types = problem.oletypehandles;
    if (!arrays[0]) return false;
    return problem.jacobian(
               &problem, problem.numcols, problem.numrows, problem.matnz, &problem.objval,
               as_argument<double>(arrays[0]), as_argument<std::int32_t>(arrays[1]),
               as_argument<std::int32_t>(arrays[2]), as_argument<std::int32_t>(arrays[3]),
               as_argument<double>(arrays[4]), point.argument(), as_argument<char>(types[0]),
               as_argument<char>(types[1])) == 0;
}

// ---- the derivatives, entry by entry

constexpr std::int32_t PASSED = 1;

// Hands derivatives to a visit, which may hold them against a value of its own. The user may pass
// over a difference when the check asks for one.
class DerivativeVisitor {
  public:
    DerivativeVisitor(SolveControl& control, void* user, Visit visit) noexcept
        : control_(control), user_(user), visit_(visit)
    {
    }

    // An entry of the caller's.
    bool derivative(std::int32_t row, std::int32_t column, double value) noexcept
    {
        return value == 0.0 || ask(row, column, value) || user_passes_over(row, column, value);
    }

    // An entry that is known.
    bool operator()(std::int32_t row, std::int32_t column, double value) noexcept
    {
        return ask(row, column, value);
    }

    std::int32_t last_answer() const noexcept { return answer_; }

  private:
    static constexpr std::int32_t CHECK_MODE = 3;  // of PARAM_NLPDERIVMODE

    bool ask(std::int32_t row, std::int32_t column, double value) noexcept
    {
        expected_ = 0.0;
        answer_ = visit_(&control_, user_, row, column, value, &expected_);
        return answer_ != 0;
    }

    // Tells of a wrong entry; an OK makes it count as passed.
    bool user_passes_over(std::int32_t row, std::int32_t column, double value) noexcept
    {
        constexpr int WORDS = 80;
        if (!messages_are_on() || control_.nlpderivmode != CHECK_MODE) return false;

        char given[REAL_TEXT_SIZE], expected[REAL_TEXT_SIZE], text[WORDS + 2 * REAL_TEXT_SIZE];
        format_real(value, given);
        format_real(expected_, expected);
        if (row == control_.problem->numrows)
            std::snprintf(text, sizeof text, "Objective Gradient [%d] = %s, should be %s", column,
                          given, expected);
        else
            std::snprintf(text, sizeof text, "Jacobian [%d, %d] = %s, should be %s", row, column,
                          given, expected);
        if (show_message(text, "jacobian", BUTTONS_OK_CANCEL) == ANSWER_CANCEL) return false;
        answer_ = PASSED;
        return true;
    }

    SolveControl& control_;
    void* user_;
    Visit visit_;
    double expected_ = 0.0;
    std::int32_t answer_ = PASSED;
};

bool visit_rows(const SolveControl& control, DerivativeVisitor& visitor) noexcept
{
    const Problem& problem = *control.problem;
    const auto visit = [&visitor](std::int32_t i, std::int32_t j, double value) {
        return visitor.derivative(i, j, value);
    };
    return constraint_matrix(problem).walk(problem.numcols, visit) &&
           (control.elasticmode == 0 || walk_elastic_rows(control, visitor));
}

bool visit_objective(const SolveControl& control, DerivativeVisitor& visitor) noexcept
{
    const Problem& problem = *control.problem;
    if (control.elasticmode != 0) return walk_elastic_objective(control, visitor);
    for (std::int32_t j = 0; j < problem.numcols; ++j)
        if (!visitor.derivative(problem.numrows, j, problem.obj[j])) return false;
    return true;
}

}  // namespace

std::int32_t evaljacobian(SolveControl* control, void* user, Visit visit, void*, double* x,
                          std::int32_t flags) noexcept
{
    Problem& problem = *control->problem;
    if (!problem.jacobian) return 0;
    if (!(ole_mode() ? call_jacobian_ole(problem, x) : call_jacobian(problem, x))) return 0;
    if ((flags & JACOBIAN_MINIMISE) && problem.objsen == -1)
        for (std::int32_t j = 0; j < problem.numcols; ++j) problem.obj[j] = -problem.obj[j];

    DerivativeVisitor visitor(*control, user, visit);
    if (!visit_rows(*control, visitor)) return 0;
    if ((flags & JACOBIAN_OBJECTIVE) && !visit_objective(*control, visitor)) return 0;
    return visitor.last_answer();
}

}  // namespace tarnwick
