// The road of a run, from the exported function down to one strategy and one engine and back:
//
//     optimize -> beginrun -> solveproblem( engine_init, strategy, engine_finish ) -> endrun
//
// A stop that a report recorded outranks whatever the engine says, and the result becomes the
// external status through one table.

#include "control/driver.h"

#include <algorithm>

#include "control/branch.h"
#include "control/infeasible.h"
#include "control/services.h"
#include "interface/problem.h"
#include "linear/lpengine.h"
#include "nonsmooth/nspengine.h"
#include "platform/floatcontrol.h"
#include "reducedgradient/nlpengine.h"

namespace tarnwick {

EngineResult stopresult(std::int32_t stop, EngineResult otherwise) noexcept
{
    switch (stop) {
    case STOP_ITERLIMIT: return ENGINE_ITERLIMIT;
    case STOP_USER: return ENGINE_USERSTOP;
    case STOP_TIMELIMIT: return ENGINE_TIMELIMIT;
    case STOP_NODELIMIT: return ENGINE_NODELIMIT;
    case STOP_INTLIMIT: return ENGINE_INTLIMIT;
    default: return otherwise;
    }
}

// ---- statuses

namespace {

// The status of a result, with and without a feasible point at hand, for models without and with
// integer variables. The row is the code.
struct StatusRow {
    EngineResult result;
    std::int32_t feasible, infeasible;
    std::int32_t mip_feasible, mip_infeasible;
};

// clang-format off
constexpr StatusRow STATUS_TABLE[] = {
    {ENGINE_OPTIMAL,    STAT_OPTIMAL,      STAT_OPTIMAL,        STAT_MIP_OPTIMAL,      STAT_MIP_OPTIMAL},
    {ENGINE_CONVERGED,  STAT_CONVERGED,    STAT_CONVERGED,      STAT_CONVERGED,        STAT_CONVERGED},
    {ENGINE_STALLED,    STAT_STALLED,      STAT_STALLED,        STAT_STALLED,          STAT_STALLED},
    {ENGINE_ITERLIMIT,  STAT_ITERLIM_FEAS, STAT_ITERLIM_INFEAS, STAT_ITERLIM_FEAS,     STAT_ITERLIM_INFEAS},
    {ENGINE_UNBOUNDED,  STAT_UNBOUNDED,    STAT_UNBOUNDED,      STAT_UNBOUNDED,        STAT_UNBOUNDED},
    {ENGINE_INFEASIBLE, STAT_INFEASIBLE,   STAT_INFEASIBLE,     STAT_MIP_INFEASIBLE,   STAT_MIP_INFEASIBLE},
    {ENGINE_USERSTOP,   STAT_USERSTOP_FEAS, STAT_USERSTOP_INFEAS, STAT_USERSTOP_FEAS,  STAT_USERSTOP_INFEAS},
    {ENGINE_MODELCHECK, STAT_MODELCHECK,   STAT_MODELCHECK,     STAT_MODELCHECK,       STAT_MODELCHECK},
    {ENGINE_BADMODEL,   STAT_BADMODEL,     STAT_BADMODEL,       STAT_BADMODEL,         STAT_BADMODEL},
    {ENGINE_EVALERROR,  STAT_EVALERROR,    STAT_EVALERROR,      STAT_EVALERROR,        STAT_EVALERROR},
    {ENGINE_TIMELIMIT,  STAT_TIMELIM_FEAS, STAT_TIMELIM_INFEAS, STAT_MIP_TIMELIM_FEAS, STAT_MIP_TIMELIM_INFEAS},
    {ENGINE_NOMEMORY,   STAT_NOMEMORY,     STAT_NOMEMORY,       STAT_NOMEMORY,         STAT_NOMEMORY},
    {ENGINE_RESERVED12, STAT_RESERVED69,   STAT_RESERVED69,     STAT_RESERVED69,       STAT_RESERVED69},
    {ENGINE_INTERNAL,   STAT_INTERNAL,     STAT_INTERNAL,       STAT_INTERNAL,         STAT_INTERNAL},
    {ENGINE_GAPREACHED, STAT_MIP_OPTIMAL_TOL, STAT_MIP_OPTIMAL_TOL, STAT_MIP_OPTIMAL_TOL, STAT_MIP_OPTIMAL_TOL},
    {ENGINE_NODELIMIT,  STAT_MIP_NODELIM_FEAS, STAT_MIP_NODELIM_INFEAS, STAT_MIP_NODELIM_FEAS, STAT_MIP_NODELIM_INFEAS},
    {ENGINE_INTLIMIT,   STAT_MIP_INTLIMIT, STAT_MIP_INTLIMIT,   STAT_MIP_INTLIMIT,     STAT_MIP_INTLIMIT},
};
// clang-format on

consteval bool rows_are_codes()
{
    for (std::size_t k = 0; k < std::size(STATUS_TABLE); ++k)
        if (STATUS_TABLE[k].result != static_cast<EngineResult>(k)) return false;
    return true;
}
static_assert(rows_are_codes());

}  // namespace

std::int32_t external_status(const Problem& problem, std::int32_t result, bool is_mip) noexcept
{
    if (result < 0 || result >= static_cast<std::int32_t>(std::size(STATUS_TABLE)))
        return STAT_UNKNOWN;

    const SolveControl& control = problem.control;
    if (result == ENGINE_OPTIMAL && !is_mip && control.qstate == Q_INDEFINITE)
        return STAT_CONVERGED;
    if (result == ENGINE_GAPREACHED && control.mipgap == 0.0) return STAT_MIP_OPTIMAL;

    const StatusRow& row = STATUS_TABLE[result];
    if (is_mip) return problem.intsolutions >= 1 ? row.mip_feasible : row.mip_infeasible;
    return problem.infeasibility <= control.feastol ? row.feasible : row.infeasible;
}

// ---- one run

std::int32_t directsolve(EngineEntry engine_solve, SolveRun& run) noexcept
{
    engine_solve(run);
    return RESULT_STANDS;
}

namespace {

bool has_integer(const SolveRun& run) noexcept
{
    const std::int32_t* flags = run.intflags.data();
    return flags &&
           std::any_of(flags, flags + run.numvars, [](std::int32_t flag) { return flag != 0; });
}

void choose_strategy(SolveRun& run) noexcept
{
    SolveControl* const control = run.control;
    if (getintinfo(control, INFO_ELASTICMODE) != 0) {
        run.intflags.release();
        run.strategy = iissolve;
        run.flags = RUN_REPEATED | RUN_ELASTIC;
        return;
    }
    const bool branches = getintinfo(control, INFO_BRANCHING) != 0 && has_integer(run);
    run.strategy = branches ? branchsolve : directsolve;
    run.flags = branches ? RUN_REPEATED : RUN_DIRECT;
}

// Reads the integer flags of a model that has letters; without them there is nothing to flag.
bool read_intflags(SolveRun& run) noexcept
{
    if (!run.control->problem->ctype) return true;
    if (!run.intflags.create(static_cast<std::size_t>(run.numvars))) return false;
    getintflags(run.control, run.intflags.data());
    return true;
}

EngineResult prepare_run(SolveRun& run) noexcept
{
    run.numvars = getintinfo(run.control, INFO_NUMVARS);
    if (run.numvars < 1) return ENGINE_BADMODEL;
    if (!read_intflags(run)) return ENGINE_NOMEMORY;
    choose_strategy(run);
    return ENGINE_OPTIMAL;
}

}  // namespace

EngineResult solveproblem(EngineTable& engines) noexcept
{
    if (!engines.control) return ENGINE_BADMODEL;

    SolveRun run{};
    run.control = engines.control;
    if (const EngineResult failure = prepare_run(run); failure != ENGINE_OPTIMAL) return failure;

    std::int32_t outcome = RESULT_STANDS;
    if (engines.engine_init(run) != 0) outcome = run.strategy(engines.engine_solve, run);
    engines.engine_finish(run);
    if (outcome != RESULT_STANDS) run.result = static_cast<EngineResult>(outcome);

    return stopresult(reportprogress(run.control, 0, 0, 0.0), run.result);
}

// ---- exported

namespace {

const char* const TOO_LARGE = "numcols or numrows is too large";

void clear_counters(Problem& problem) noexcept
{
    problem.currentobj = 0.0;
    problem.infeasibility = 0.0;
    problem.bestinteger = 0.0;
    problem.iterations = 0;
    problem.nodes = 0;
    problem.totaliterations = 0;
    problem.intsolutions = 0;
}

// The engine of each family of models.
struct EngineRow {
    bool (*serves)(std::int32_t problemtype) noexcept;
    EngineEntry engine_init, engine_solve, engine_finish;
};

constexpr EngineRow ENGINES[] = {
    {is_lp_family,  lpinit,  lpsolve,  lpfinish },
    {is_nlp_family, nlpinit, nlpsolve, nlpfinish},
    {is_nsp_family, nspinit, nspsolve, nspfinish},
};

void fill_engines(EngineTable& engines, SolveControl& control) noexcept
{
    for (const EngineRow& row : ENGINES)
        if (row.serves(control.problem->problemtype))
            engines = {&control, row.engine_init, row.engine_solve, row.engine_finish};
}

EngineResult run_engine(Problem& problem) noexcept
{
    SolveControl& control = problem.control;
    clear_counters(problem);
    if (control.elasticmode == 0) {  // an elastic run replaces no results
        problem.hasresults = false;
        dropranges(problem);
    }
    if (!beginrun(&control, 0) || !create_results(problem)) return ENGINE_NOMEMORY;
    fill_engines(control.engines, control);
    return solveproblem(control.engines);
}

}  // namespace

}  // namespace tarnwick

using namespace tarnwick;

extern "C" std::int32_t TARNWICK_CALL optimize(Problem* lp)
{
    set_float_control();
    if (!is_idle(lp, __func__)) return 1;
    if (is_too_large(*lp)) return report(1, __func__, TOO_LARGE);

    // Callbacks may set parameters: what kind of run it is, is settled before it.
    const bool mip = is_mip(*lp);
    lp->running = true;
    lp->status = external_status(*lp, run_engine(*lp), mip);
    endrun(&lp->control);
    lp->running = false;
    return 0;
}

extern "C" std::int32_t TARNWICK_CALL mipoptimize(Problem* lp)
{
    set_float_control();
    if (!is_idle(lp, __func__)) return 1;

    const std::int32_t type = lp->problemtype;
    if (type == PROB_LP || type == PROB_QP || type == PROB_NLP)
        return report(1, __func__, "loadctype has not been called");
    if (!is_nsp_family(type) && is_too_large(*lp)) return report(1, __func__, TOO_LARGE);
    return optimize(lp);
}
