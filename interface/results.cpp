// How the caller reads a run: point and duals, ranges, statistics, counters, and the callbacks.
//
// The arrays of a Problem can be trusted once a run has stored them, unless the status says that an
// evaluation failed or that memory ran out. A query without trusted arrays tests its arguments all
// the same, and writes nothing into the caller's arrays.

#include <algorithm>
#include <cstring>

#include "interface/problem.h"
#include "platform/floatcontrol.h"
#include "platform/olearray.h"

namespace tarnwick {

namespace {

bool has_trusted_arrays(const Problem& problem) noexcept
{
    const std::int32_t status = problem.status;
    return problem.hasresults && status != STAT_EVALERROR && status != STAT_NOMEMORY &&
           status != STAT_RESERVED69;
}

void copy_unless_null(const double* from, std::int32_t count, double* to) noexcept
{
    if (count >= 1 && to) std::copy_n(from, count, to);
}

// ---- solution

struct SolutionArrays {
    double *x, *piout, *slack, *dj;
};

// A plain mark of absence is let pass in OLE array mode too: it is no reference to follow.
bool view_unless_absent(double*& array, std::int32_t count) noexcept
{
    return is_absent(array) || view_array(array, count) != View::failed;
}

// Absent arrays become null before anything is written: one cell may serve as a mark for several.
void drop_absent(SolutionArrays& out) noexcept
{
    for (double** array : {&out.x, &out.piout, &out.slack, &out.dj})
        if (is_absent(*array)) *array = nullptr;
}

// The point has no absent form in OLE array mode but the placeholder.
std::int32_t view_solution(const Problem& problem, SolutionArrays& out, const char* title) noexcept
{
    if (is_absent(out.x) || view_array(out.x, problem.numcols) == View::failed)
        return report(4, title, "x is not a valid OLE array");
    if (!view_unless_absent(out.piout, problem.numrows))
        return report(5, title, "piout is not a valid OLE array");
    if (!view_unless_absent(out.slack, problem.numrows))
        return report(6, title, "slack is not a valid OLE array");
    if (!view_unless_absent(out.dj, problem.numcols))
        return report(7, title, "dj is not a valid OLE array");
    return 0;
}

// Duals and reduced costs of a point that is an optimum of a smooth continuous model.
void give_duals(const Problem& problem, const SolutionArrays& out) noexcept
{
    if (!has_trusted_arrays(problem) || problem.status != STAT_OPTIMAL) return;
    copy_unless_null(problem.piout, problem.numrows, out.piout);
    copy_unless_null(problem.dj, problem.numcols, out.dj);
}

// ---- ranges and statistics

// What is stored of the columns, or of the rows, first to last.
struct Axis {
    std::int32_t first, last;
    const double* mean;
    RangeArrays values;
};

Axis columns_of(const Problem& problem) noexcept
{
    return {problem.firstcol, problem.lastcol, problem.dj, problem.colrange};
}

Axis rows_of(const Problem& problem) noexcept
{
    return {problem.firstrow, problem.lastrow, problem.piout, problem.rowrangeof};
}

// The columns or rows asked for, inclusive, and the caller's arrays; element 0 belongs to begin.
struct Extract {
    const char* title;
    std::int32_t begin, end;

    std::int32_t count() const noexcept { return end - begin + 1; }
    bool lies_in(const Axis& axis) const noexcept
    {
        return axis.first <= begin && begin <= end && end <= axis.last;
    }
    void give(const Axis& axis, const double* values, double* to) const noexcept
    {
        std::copy_n(values + (begin - axis.first), count(), to);
    }
};

struct RangeTexts {
    const char* only_lp;
    const char* not_mip;
};

std::int32_t give_ranges(Problem& problem, const Axis& axis, const Extract& extract,
                         const RangeTexts& texts, double* lower, double* upper) noexcept
{
    constexpr const char* IS_ABSENT = "lower or upper is not a valid array";
    const char* const title = extract.title;
    if (problem.problemtype != PROB_LP) return report(1, title, texts.only_lp);
    if (is_mip(problem)) return report(1, title, texts.not_mip);
    if (!extract.lies_in(axis)) return report(2, title, "begin or end is out of range");

    if (!lower || !upper) return report(4, title, IS_ABSENT);
    if (ole_mode()) {
        if (!view_required(lower, extract.count()))
            return report(4, title, "lower is not a valid OLE array");
        if (!view_required(upper, extract.count()))
            return report(5, title, "upper is not a valid OLE array");
        if (!lower || !upper) return report(4, title, IS_ABSENT);
    }
    if (!has_trusted_arrays(problem)) return 0;

    readranges(problem);
    extract.give(axis, axis.values.lower, lower);
    extract.give(axis, axis.values.upper, upper);
    return 0;
}

struct StatisticArrays {
    double *mid, *disp, *lower, *upper;
};

std::int32_t test_presence(const StatisticArrays& out, const char* title) noexcept
{
    if (!out.mid || !out.disp) return report(4, title, "mid or disp is not a valid array");
    if (!out.lower || !out.upper) return report(6, title, "lower or upper is not a valid array");
    return 0;
}

std::int32_t view_statistics(StatisticArrays& out, const Extract& extract) noexcept
{
    const char* const title = extract.title;
    const std::int32_t count = extract.count();
    if (!view_required(out.mid, count)) return report(4, title, "mid is not a valid OLE array");
    if (!view_required(out.disp, count)) return report(5, title, "disp is not a valid OLE array");
    if (!view_required(out.lower, count)) return report(6, title, "lower is not a valid OLE array");
    if (!view_required(out.upper, count)) return report(7, title, "upper is not a valid OLE array");
    return test_presence(out, title);
}

std::int32_t give_statistics(const Problem& problem, const Axis& axis, const Extract& extract,
                             const char* only_nsp, StatisticArrays out) noexcept
{
    const char* const title = extract.title;
    if (!is_nsp_family(problem.problemtype)) return report(1, title, only_nsp);
    if (!extract.lies_in(axis)) return report(2, title, "begin or end is out of range");
    if (const std::int32_t code = test_presence(out, title)) return code;
    if (ole_mode())
        if (const std::int32_t code = view_statistics(out, extract)) return code;
    if (!has_trusted_arrays(problem)) return 0;

    extract.give(axis, axis.mean, out.mid);
    extract.give(axis, axis.values.middle, out.disp);
    extract.give(axis, axis.values.lower, out.lower);
    extract.give(axis, axis.values.upper, out.upper);
    return 0;
}

// ---- counters and callbacks

// The result is of no declared type, so it is written byte by byte.
template <class Value>
std::int32_t give(void* result_p, Value value) noexcept
{
    if (result_p) std::memcpy(result_p, &value, sizeof value);
    return 0;
}

std::int32_t is_feasible(const Problem& problem) noexcept
{
    return problem.infeasibility <= problem.control.feastol ? 1 : 0;
}

}  // namespace

}  // namespace tarnwick

using namespace tarnwick;

extern "C" std::int32_t TARNWICK_CALL solution(Problem* lp, std::int32_t* stat_p, double* objval_p,
                                               double* x, double* piout, double* slack, double* dj)
{
    set_float_control();
    if (!is_handle(lp, __func__)) return 1;
    const std::int32_t type = lp->problemtype;
    if (!is_nsp_family(type) && is_too_large(*lp))
        return report(1, __func__, "numcols or numrows is too large");

    SolutionArrays out{x, piout, slack, dj};
    if (ole_mode())
        if (const std::int32_t code = view_solution(*lp, out, __func__)) return code;
    drop_absent(out);

    if (stat_p) *stat_p = lp->status;
    if (objval_p) *objval_p = lp->objval;
    if (has_trusted_arrays(*lp)) {
        copy_unless_null(lp->x, lp->numcols, out.x);
        copy_unless_null(lp->slack, lp->numrows, out.slack);
    }

    if (type == PROB_LP || type == PROB_QP || type == PROB_NLP) {
        give_duals(*lp, out);
        return 0;
    }
    if (out.piout) return report(5, __func__, "piout argument invalid for this problem type");
    if (out.dj) return report(7, __func__, "dj argument invalid for this problem type");
    return 0;
}

extern "C" std::int32_t TARNWICK_CALL objsa(Problem* lp, std::int32_t begin, std::int32_t end,
                                            double* lower, double* upper)
{
    constexpr RangeTexts TEXTS{"objsa is valid only for LP problems",
                               "objsa is not valid for MIP problems"};
    set_float_control();
    if (!is_handle(lp, __func__)) return 1;
    return give_ranges(*lp, columns_of(*lp), {__func__, begin, end}, TEXTS, lower, upper);
}

extern "C" std::int32_t TARNWICK_CALL rhssa(Problem* lp, std::int32_t begin, std::int32_t end,
                                            double* lower, double* upper)
{
    constexpr RangeTexts TEXTS{"rhssa is valid only for LP problems",
                               "rhssa is not valid for MIP problems"};
    set_float_control();
    if (!is_handle(lp, __func__)) return 1;
    return give_ranges(*lp, rows_of(*lp), {__func__, begin, end}, TEXTS, lower, upper);
}

extern "C" std::int32_t TARNWICK_CALL varstat(Problem* lp, std::int32_t begin, std::int32_t end,
                                              double* mid, double* disp, double* lower,
                                              double* upper)
{
    set_float_control();
    if (!is_handle(lp, __func__)) return 1;
    return give_statistics(*lp, columns_of(*lp), {__func__, begin, end},
                           "varsa is valid only for NSP problems", {mid, disp, lower, upper});
}

extern "C" std::int32_t TARNWICK_CALL constat(Problem* lp, std::int32_t begin, std::int32_t end,
                                              double* mid, double* disp, double* lower,
                                              double* upper)
{
    set_float_control();
    if (!is_handle(lp, __func__)) return 1;
    return give_statistics(*lp, rows_of(*lp), {__func__, begin, end},
                           "consa is valid only for NSP problems", {mid, disp, lower, upper});
}

extern "C" std::int32_t TARNWICK_CALL getcallbackinfo(Problem* lp, void*, std::int32_t whichinfo,
                                                      void* result_p)
{
    if (!is_handle(lp, __func__)) return 1;
    switch (whichinfo) {
    case CB_OBJECTIVE: return give(result_p, lp->currentobj);
    case CB_INFEASIBILITY: return give(result_p, lp->infeasibility);
    case CB_FEASIBLE: return give(result_p, is_feasible(*lp));
    case CB_ITERATIONS: return give(result_p, lp->iterations);
    case CB_BESTINTEGER: return give(result_p, lp->bestinteger);
    case CB_NODES: return give(result_p, lp->nodes);
    case CB_TOTALITERATIONS: return give(result_p, lp->totaliterations);
    default: return report(1, __func__, "whichinfo is out of range");
    }
}

extern "C" std::int32_t TARNWICK_CALL setlpcallbackfunc(Problem* lp, TarnwickCallback function)
{
    if (!is_handle(lp, __func__)) return 1;
    lp->control.lpcallback = function;
    return 0;
}

extern "C" std::int32_t TARNWICK_CALL getlpcallbackfunc(Problem* lp, TarnwickCallback* function_p)
{
    if (!is_handle(lp, __func__)) return 1;
    if (function_p) *function_p = lp->control.lpcallback;
    return 0;
}

extern "C" std::int32_t TARNWICK_CALL setmipcallbackfunc(Problem* lp, TarnwickCallback function)
{
    if (!is_handle(lp, __func__)) return 1;
    lp->control.mipcallback = function;
    return 0;
}

extern "C" std::int32_t TARNWICK_CALL getmipcallbackfunc(Problem* lp, TarnwickCallback* function_p)
{
    if (!is_handle(lp, __func__)) return 1;
    if (function_p) *function_p = lp->control.mipcallback;
    return 0;
}
