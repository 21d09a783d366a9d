// What an engine asks of the model and of the run: sizes, settings, bounds, and the report of
// progress, which watches the limits and asks the caller's callbacks.

#include "control/services.h"

#include <algorithm>
#include <limits>

#include "control/elastic.h"
#include "interface/problem.h"
#include "platform/clock.h"

namespace tarnwick {

namespace {

constexpr std::uint32_t TICKS_PER_SECOND = 1000;

std::uint32_t clock_seconds() noexcept { return tick_count() / TICKS_PER_SECOND; }

// A clock that stands before its start has wrapped: then the whole budget counts as used.
std::uint32_t time_left(const SolveControl& control) noexcept
{
    const std::uint32_t now = clock_seconds();
    const std::uint32_t budget = control.timebudget;
    const std::uint32_t elapsed = now < control.clockstart ? budget : now - control.clockstart;
    return elapsed >= budget ? 0 : budget - elapsed;
}

std::int32_t saturating_sum(std::int32_t a, std::int32_t b) noexcept
{
    const std::int64_t sum = std::int64_t{a} + b;
    constexpr std::int64_t HIGHEST = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(sum, HIGHEST));
}

}  // namespace

std::int32_t beginrun(SolveControl* control, std::int32_t) noexcept
{
    control->timebudget = static_cast<std::uint32_t>(control->timelimit);
    control->clockstart = clock_seconds();
    control->stopcode = STOP_NONE;
    control->matrixisfull = hasfullmatrix(*control->problem);
    return setupelastic(*control) ? 1 : 0;
}

std::int32_t endrun(SolveControl* control) noexcept
{
    control->matrixisfull = false;
    if (control->elasticmode != 0) {
        control->elasticrows.release();
        control->elasticvalues.release();
        control->elasticcount = 0;
        control->elasticmode = 0;
    }
    return 1;
}

// ---- settings

std::int16_t getengineclass(SolveControl* control) noexcept
{
    const std::int32_t type = control->problem->problemtype;
    if (is_lp_family(type)) return 1;
    return is_nsp_family(type) ? 3 : 0;
}

std::uint32_t getcapability(SolveControl* control, std::int32_t selector) noexcept
{
    const auto bit_if = [](bool is_set, std::uint32_t bit) { return is_set ? bit : 0u; };
    const std::int32_t mode = control->nlpderivmode;
    const bool has_derivatives = control->problem->jacobian != nullptr;
    switch (selector) {
    case 0:
        return bit_if(mode == 1 || mode == 3, 2) |
               bit_if(has_derivatives && (mode == 2 || mode == 3), 16) |
               bit_if(control->nlpquadext != 0, 4) | bit_if(control->nlpcgonly != 0, 8) |
               bit_if(control->nlprecoglin != 0, 32);
    case 1:
        return 1u | bit_if(control->binrowfix != 0, 256) | bit_if(control->bindualfix != 0, 512) |
               bit_if(control->binorder != 0, 1024) | bit_if(control->bintighten != 0, 2048);
    case 3: return bit_if(control->reqbounds != 0, 64);
    case 4: return control->reserved1007 != 0 ? 3 : 1;
    default: return 0;
    }
}

std::int16_t getintinfo(SolveControl* control, std::int32_t selector) noexcept
{
    const Problem& problem = *control->problem;
    const auto value = [&]() -> std::int32_t {
        switch (selector) {
        case INFO_NUMVARS: return problem.numcols + control->elasticcount;
        case INFO_NUMLHS: return problem.numrows + 1;
        case INFO_NUMELASTIC: return control->elasticcount;
        case INFO_NUMROWS: return problem.numrows;
        case INFO_ELASTICMODE: return control->elasticmode;
        case INFO_HASOBJECTIVE: return 1;
        case INFO_MAXIMIZE: return problem.objsen == -1 && control->elasticmode == 0;
        case INFO_SCALING: return control->scaling + 1;
        case 9: return 1;
        case INFO_BRANCHING: return is_nsp_family(problem.problemtype) ? 0 : 1;
        default: return 0;
        }
    };
    return static_cast<std::int16_t>(value());
}

std::int32_t getdblinfo(SolveControl* control, double* value, std::int32_t selector) noexcept
{
    constexpr double CONSTANT = 1e-4;
    constexpr double UNKNOWN = 1e-8;
    const Problem& problem = *control->problem;
    switch (selector) {
    case INFO_FEASTOL:
        *value = is_lp_family(problem.problemtype) ? control->feastol : control->nlpfeastol;
        return 1;
    case INFO_MIPGAP: *value = control->mipgap; return 1;
    case INFO_CONVTOL: *value = control->nlpconvtol; return 1;
    case INFO_MUTATION: *value = control->mutation; return 1;
    case INFO_RESERVED1092: *value = control->reserved1092; return 1;
    case INFO_PIVOTTOL: *value = control->pivottol; return 1;
    case INFO_OPTTOL: *value = control->opttol; return 1;
    case INFO_CUTOFF:
        *value = problem.objsen == -1 ? control->objlowercut : control->objuppercut;
        return 1;
    case INFO_CONSTANT: *value = CONSTANT; return 1;
    default: *value = UNKNOWN; return 0;
    }
}

std::int32_t getrunparam(SolveControl* control, std::int32_t selector) noexcept
{
    switch (selector) {
    case RUN_ITERLIMIT: return control->iterlimit;
    case RUN_TIMELIMIT: return static_cast<std::int32_t>(control->timelimit);
    case RUN_NODELIMIT: return control->nodelimit;
    case RUN_INTSOLLIMIT: return control->intsollimit;
    case RUN_POPSIZE: return control->popsize;
    case RUN_STALLTIME: return control->stalltime;
    default: return 0;
    }
}

// ---- bounds, integer flags, start

namespace {

struct RowLimits {
    double lower, upper;
};

RowLimits ranged_limits(double rhs, double width) noexcept
{
    return width >= 0.0 ? RowLimits{rhs, rhs + width} : RowLimits{rhs + width, rhs};
}

RowLimits row_limits(const Problem& problem, int i) noexcept
{
    const double rhs = problem.rhs[i];
    switch (problem.sense[i]) {
    case 'G': return {rhs, INFINITE_BOUND};
    case 'L': return {-INFINITE_BOUND, rhs};
    case 'R': return ranged_limits(rhs, is_absent(problem.rowrange) ? 0.0 : problem.rowrange[i]);
    default: return {rhs, rhs};
    }
}

}  // namespace

std::int32_t getbounds(SolveControl* control, double* lb, double* ub, double* rowlower,
                       double* rowupper) noexcept
{
    const Problem& problem = *control->problem;
    std::copy_n(problem.lb, problem.numcols, lb);
    std::copy_n(problem.ub, problem.numcols, ub);
    if (problem.ctype) {
        for (int j = 0; j < problem.numcols; ++j) {
            if (problem.ctype[j] != 'B') continue;
            lb[j] = 0.0;
            ub[j] = 1.0;
        }
    }
    std::fill_n(lb + problem.numcols, control->elasticcount, 0.0);
    std::fill_n(ub + problem.numcols, control->elasticcount, INFINITE_BOUND);

    for (int i = 0; i < problem.numrows; ++i) {
        const RowLimits limits = row_limits(problem, i);
        rowlower[i] = limits.lower;
        rowupper[i] = limits.upper;
    }
    return 1;
}

std::int32_t getintflags(SolveControl* control, std::int32_t* flags) noexcept
{
    const Problem& problem = *control->problem;
    std::fill_n(flags, problem.numcols + control->elasticcount, 0);
    if (problem.ctype && control->relaxint == 0 && control->elasticmode == 0)
        for (int j = 0; j < problem.numcols; ++j) flags[j] = problem.ctype[j] != 'C';
    return 1;
}

std::int32_t getstart(SolveControl* control, double* x) noexcept
{
    const Problem& problem = *control->problem;
    const bool is_linear = problem.problemtype == PROB_LP || problem.problemtype == PROB_MILP;
    if (!is_linear && problem.var)
        std::copy_n(problem.var, problem.numcols, x);
    else
        std::fill_n(x, problem.numcols, 0.0);
    std::fill_n(x + problem.numcols, control->elasticcount, 0.0);
    return 1;
}

// ---- progress

namespace {

constexpr std::int32_t CALLBACK_ITERATION = 1;
constexpr std::int32_t CALLBACK_NODE = 101;

StopCode stop_of_answer(std::int32_t answer) noexcept
{
    switch (answer) {
    case 0: return STOP_NONE;
    case STAT_ITERLIM_FEAS: return STOP_ITERLIMIT;
    case STAT_TIMELIM_FEAS:
    case STAT_MIP_TIMELIM_FEAS: return STOP_TIMELIMIT;
    case STAT_MIP_NODELIM_FEAS: return STOP_NODELIMIT;
    case STAT_MIP_INTLIMIT: return STOP_INTLIMIT;
    default: return STOP_USER;
    }
}

StopCode time_or_callback(SolveControl& control, TarnwickCallback callback,
                          std::int32_t event) noexcept
{
    if (time_left(control) == 0) return STOP_TIMELIMIT;
    return callback ? stop_of_answer(callback(control.problem, event)) : STOP_NONE;
}

void close_subproblem(Problem& problem) noexcept
{
    problem.totaliterations = saturating_sum(problem.totaliterations, problem.iterations);
    problem.iterations = 0;
}

std::int32_t elastic_event(SolveControl& control, std::int32_t count) noexcept
{
    constexpr std::uint32_t HIGHEST_MODE = 2;  // above it the count is a step of the search
    control.elasticmode = static_cast<std::uint16_t>(count);
    control.stopcode = STOP_NONE;
    if (static_cast<std::uint32_t>(count) <= HIGHEST_MODE) return STOP_NONE;

    close_subproblem(*control.problem);
    if (time_left(control) == 0) control.stopcode = STOP_TIMELIMIT;
    return control.stopcode;
}

StopCode node_event(SolveControl& control, std::int32_t count) noexcept
{
    Problem& problem = *control.problem;
    problem.nodes = saturating_sum(problem.nodes, 1);
    close_subproblem(problem);
    problem.intsolutions = count;

    if (problem.nodes > control.nodelimit) return STOP_NODELIMIT;
    if (count > control.intsollimit) return STOP_INTLIMIT;
    return time_or_callback(control, control.mipcallback, CALLBACK_NODE);
}

StopCode iteration_event(SolveControl& control, std::int32_t count, double value) noexcept
{
    Problem& problem = *control.problem;
    problem.iterations = count;
    problem.currentobj = is_lp_family(problem.problemtype) ? value : problem.objval;

    if (count > control.iterlimit) return STOP_ITERLIMIT;
    return time_or_callback(control, control.lpcallback, CALLBACK_ITERATION);
}

}  // namespace

std::int32_t reportprogress(SolveControl* control, std::int32_t event, std::int32_t count,
                            double value) noexcept
{
    Problem& problem = *control->problem;
    event &= EVENT_WORD;
    if (event & EVENT_ELASTIC) return elastic_event(*control, count);
    if (event & EVENT_NODE) {
        if (event & EVENT_FINAL_DONE) problem.bestinteger = value;
        return control->stopcode = node_event(*control, count);
    }
    if (event & EVENT_ITERATION) {
        if (event & EVENT_INFEASIBILITY) problem.infeasibility = value;
        return control->stopcode = iteration_event(*control, count, value);
    }
    const bool polls = event == 0 || (event & (EVENT_POLL | EVENT_FINAL_DONE)) != 0;
    return polls ? control->stopcode : STOP_NONE;
}

}  // namespace tarnwick
