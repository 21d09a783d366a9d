// The linear engine from set-up to finish. A run reads the model once, into a scaled tableau, and
// solves it once or, with changed bounds, many times:
//
//     lpinit    sizes, bounds, kind of model, tableau, scales
//     lpsolve   restore the tableau, scale the bounds, preprocess, simplex, check of the answer
//     lpfinish  final evaluation, analysis, results to the Problem
//
// From one solve to the next only the point carries over; every solve starts from the tableau as
// read, with all logical variables basic.

#include <algorithm>
#include <cstring>
#include <new>

#include "control/services.h"
#include "linear/analysis.h"
#include "linear/binaries.h"
#include "linear/lpengine.h"
#include "linear/multipliers.h"
#include "linear/pivot.h"
#include "linear/probe.h"
#include "linear/quadratic.h"
#include "linear/scaling.h"
#include "linear/simplex.h"

namespace tarnwick {

namespace {

constexpr int MOST_COLUMNS = 2000;
constexpr std::int32_t LOW_WORD = 0xFFFF;

LpEngine* engine_of(const SolveRun& run) noexcept { return static_cast<LpEngine*>(run.engine); }

// Larger blocks pass by the lists of recycled ones of a common allocator; a host of small models
// would notice.
static_assert(sizeof(LpEngine) <= 1032);

LpEngine* create_engine(SolveControl* control) noexcept
{
    void* const block = allocate_record(sizeof(LpEngine));
    if (!block) return nullptr;
    auto* const lp = new (block) LpEngine;
    lp->control = control;
    return lp;
}

void release_engine(LpEngine* lp) noexcept
{
    lp->~LpEngine();
    release_block(lp);
}

// ---- set-up

bool read_sizes(LpEngine& lp) noexcept
{
    lp.n = getintinfo(lp.control, INFO_NUMVARS) & LOW_WORD;
    lp.m = (getintinfo(lp.control, INFO_NUMLHS) & LOW_WORD) - 1;
    lp.maximize = getintinfo(lp.control, INFO_MAXIMIZE) != 0;
    getdblinfo(lp.control, &lp.tol, INFO_FEASTOL);
    return lp.n >= 1 && lp.m >= 0;
}

bool create_arrays(LpEngine& lp) noexcept
{
    const int n = lp.n, m = lp.m;
    return lp.arrays.create([&lp, n, m](auto& layout) {
        layout({&lp.start, &lp.grad, &lp.x, &lp.lower, &lp.upper, &lp.iterate, &lp.dj, &lp.objup,
                &lp.objdown, &lp.rise, &lp.fall, &lp.colup, &lp.coldown},
               n);
        layout({&lp.rowlower, &lp.rowupper, &lp.rhs, &lp.rowvalue, &lp.rowbase, &lp.rowprobe,
                &lp.basicvalue, &lp.basiclower, &lp.basicupper, &lp.column, &lp.pi, &lp.rhsup,
                &lp.rhsdown, &lp.rowup, &lp.rowdown, &lp.steps},
               m + 1);
        layout({&lp.colexp, &lp.colstate, &lp.collabel, &lp.waiting.list}, n);
        layout(lp.rowexp, m + 1);
        layout(lp.rowlabel, m);
        layout(lp.rowpending, m);
        layout(lp.senses, m);
        layout(lp.savedsenses, m);
    });
}

bool create_tableau(LpEngine& lp) noexcept
{
    lp.waiting.capacity = waitingcapacity(lp.m, lp.n);
    const int last_slot = std::max(lp.waiting.capacity, 1) - 1;
    return lp.matrices.create([&lp, last_slot](auto& layout) {
        layout(lp.tableau, lp.m + 1, lp.n);
        layout(lp.waiting.rows, last_slot, lp.n);
        layout(lp.waiting.columns, last_slot, lp.m + 1);
    });
}

// False for a pair out of order, NaN included.
bool in_order(Vec<const double> lower, Vec<const double> upper, int count) noexcept
{
    for (int k = 1; k <= count; ++k)
        if (!(lower[k] <= upper[k])) return false;
    return true;
}

bool bounds_in_order(const LpEngine& lp) noexcept
{
    return in_order(lp.rowlower, lp.rowupper, lp.m) && in_order(lp.lower, lp.upper, lp.n);
}

EngineResult read_model(LpEngine& lp) noexcept
{
    if (!create_arrays(lp)) return ENGINE_BADMODEL;
    const bool is_read = getbounds(lp.control, lp.lower.first(), lp.upper.first(),
                                   lp.rowlower.first(), lp.rowupper.first()) != 0 &&
                         getstart(lp.control, lp.start.first()) != 0;
    if (!is_read || !classify(lp)) return ENGINE_BADMODEL;
    if (lp.n > MOST_COLUMNS) return ENGINE_BADMODEL;
    if (!bounds_in_order(lp)) return ENGINE_INFEASIBLE;
    return ENGINE_OPTIMAL;
}

EngineResult read_tableau(LpEngine& lp) noexcept
{
    if (!create_tableau(lp)) return ENGINE_NOMEMORY;
    if (lp.mode == MODE_QUADRATIC)
        if (const EngineResult code = setupquadratic(lp); code != ENGINE_OPTIMAL) return code;
    if (!buildsenses(lp)) return ENGINE_BADMODEL;
    if (readmatrix(lp)) return ENGINE_OPTIMAL;
    const bool stopped = reportprogress(lp.control, EVENT_POLL, 0, 0.0) == STOP_USER;
    return stopped ? ENGINE_USERSTOP : ENGINE_EVALERROR;
}

void scale_model(LpEngine& lp) noexcept
{
    double* const costs = lp.tableau[0];
    if (lp.maximize)
        for (int j = 0; j <= lp.n; ++j) costs[j] = -costs[j];

    computescales(lp);
    scaletableau(lp);
    scalecolumns(lp, {lp.start});
    scalerowvalues(lp, {lp.rowlower, lp.rowupper, lp.rhs});
    scalegradient(lp, {lp.grad});
}

EngineResult set_up(LpEngine& lp, SolveRun& run) noexcept
{
    if (!read_sizes(lp)) return ENGINE_BADMODEL;
    if (const EngineResult code = read_model(lp); code != ENGINE_OPTIMAL) return code;
    if (const EngineResult code = read_tableau(lp); code != ENGINE_OPTIMAL) return code;
    scale_model(lp);
    // Only now, because the diagnosis of such a model reads the tableau.
    if (lp.mode == MODE_NONE) return ENGINE_MODELCHECK;
    return setupbinaries(lp, run) ? ENGINE_OPTIMAL : ENGINE_NOMEMORY;
}

}  // namespace

std::int32_t lpinit(SolveRun& run) noexcept
{
    LpEngine* const lp = create_engine(run.control);
    run.engine = lp;
    run.result = lp ? set_up(*lp, run) : ENGINE_NOMEMORY;
    if (run.result != ENGINE_OPTIMAL) return 0;

    run.numvars = lp->n;
    run.ub = lp->upper.first();
    run.lb = lp->lower.first();
    run.x = lp->x.first();
    return 1;
}

// ---- one solve

namespace {

void copy_tableau(const LpEngine& lp, const Matrix& to, const Matrix& from) noexcept
{
    const std::size_t bytes = (static_cast<std::size_t>(lp.n) + 1) * sizeof(double);
    for (int i = 0; i <= lp.m + 1; ++i) std::memcpy(to[i], from[i], bytes);
}

// Keeps the tableau as read before the first of several solves, and brings it back before the
// others. False: no memory for the copy.
bool restore_or_save(LpEngine& lp, const SolveRun& run) noexcept
{
    if ((run.flags & RUN_REPEATED) == 0 && lp.mode == MODE_LINEAR) return true;
    if (lp.savedtableau) {
        restoretableau(lp);
        return true;
    }
    if (!lp.savedmatrix.create([&lp](auto& layout) { layout(lp.savedtableau, lp.m + 1, lp.n); }))
        return false;
    std::copy_n(lp.senses.data(), lp.m + 1, lp.savedsenses.data());
    copy_tableau(lp, lp.savedtableau, lp.tableau);
    return true;
}

EngineResult solve_scaled(LpEngine& lp, double& objective) noexcept
{
    if (lp.mode == MODE_LINEAR) {
        const EngineResult code = solvesimplex(lp);
        objective = lp.tableau[0][0];
        return checkanswer(lp, code);
    }
    if (lp.mode != MODE_QUADRATIC) return ENGINE_BADMODEL;
    const EngineResult code = solveboxed(lp, objective);
    if (lp.maximize) objective = -objective;
    return checkanswer(lp, code);
}

bool is_direct(const SolveRun& run) noexcept { return (run.flags & RUN_DIRECT) != 0; }

// Nobody reads the point between the only solve of a run and the analysis, which works in scaled
// units too, when the check of the answer has just evaluated this very point.
bool goes_straight_to_analysis(const LpEngine& lp, const SolveRun& run) noexcept
{
    return lp.mode == MODE_LINEAR && is_direct(run) && run.result == ENGINE_OPTIMAL &&
           lp.rowsarecurrent;
}

bool may_go_on(EngineResult code) noexcept
{
    return code == ENGINE_OPTIMAL || code == ENGINE_UNBOUNDED || code == ENGINE_INFEASIBLE;
}

}  // namespace

void restoretableau(LpEngine& lp) noexcept
{
    std::copy_n(lp.savedsenses.data(), lp.m + 1, lp.senses.data());
    copy_tableau(lp, lp.tableau, lp.savedtableau);
}

std::int32_t lpsolve(SolveRun& run) noexcept
{
    LpEngine& lp = *engine_of(run);
    run.nodedata = nullptr;
    run.nodeaux = nullptr;
    lp.rowsarecurrent = false;
    if (!bounds_in_order(lp)) {
        run.result = ENGINE_INFEASIBLE;
        return 1;
    }
    if (!restore_or_save(lp, run)) {
        run.result = ENGINE_NOMEMORY;
        return 0;
    }

    scalecolumns(lp, {lp.x, lp.lower, lp.upper});
    const bool is_possible = preprocessbinaries(lp, run);
    run.result = is_possible ? solve_scaled(lp, run.objective) : ENGINE_INFEASIBLE;
    lp.pointisscaled = goes_straight_to_analysis(lp, run);
    if (!lp.pointisscaled) unscalecolumns(lp, {lp.x, lp.lower, lp.upper});
    run.objective = unscaleobjective(lp, run.objective);
    return may_go_on(run.result) ? 1 : 0;
}

// ---- the end

namespace {

// True: the results have ranges, which the tableau still holds.
bool store_results(LpEngine& lp, const SolveRun& run) noexcept
{
    reportprogress(lp.control, EVENT_FINAL, 0, 0.0);
    if (lp.pointisscaled)
        unscalerowvalues(lp, {lp.rowvalue});
    else
        evalfunctions(lp.control, lp.rowvalue.first(), lp.x.first());
    reportprogress(lp.control, EVENT_FINAL_DONE, 0, 0.0);

    // Without any solve there is no copy of a quadratic model's tableau, and nothing to analyse.
    const bool has_tableau = lp.mode == MODE_LINEAR || lp.savedtableau;
    if (run.result == ENGINE_OPTIMAL && is_direct(run) && has_tableau) {
        lp.mode == MODE_LINEAR ? finishlinear(lp) : finishquadratic(lp);
        return lp.mode == MODE_LINEAR;
    }
    // A linear run has consumed its tableau: there is nothing left to diagnose it by.
    finishplain(lp, run.result == ENGINE_MODELCHECK && lp.mode == MODE_NONE);
    return false;
}

SensitivityRecord read_ranges(void* engine) noexcept
{
    return readlinearranges(*static_cast<LpEngine*>(engine));
}

void release(void* engine) noexcept { release_engine(static_cast<LpEngine*>(engine)); }

}  // namespace

std::int32_t lpfinish(SolveRun& run) noexcept
{
    LpEngine* const lp = engine_of(run);
    if (!lp) return 1;
    const bool has_ranges = lp->x && store_results(*lp, run);
    releasebinaries(*lp, run);
    run.engine = nullptr;
    if (has_ranges)
        storeranges(*run.control, {lp, read_ranges, release});
    else
        release_engine(lp);
    return 1;
}

}  // namespace tarnwick
