// The reduced-gradient engine from set-up to finish:
//
//     nlpinit    sizes, settings, bounds, start point
//     nlpsolve   scale, solve, unscale, look at the columns that were taken for constant
//     nlpfinish  final evaluation, results to the Problem
//
// From one solve to the next the point carries over, and with it the bounds, which a strategy may
// change. A stop or a failed evaluation ends the run: later solves return at once. Only the search for
// an infeasible subset goes on after a failed evaluation: it speaks for the bound that was dropped.

#include <algorithm>
#include <new>

#include "control/services.h"
#include "reducedgradient/derivatives.h"
#include "reducedgradient/evaluation.h"
#include "reducedgradient/factor.h"
#include "reducedgradient/mainloop.h"
#include "reducedgradient/nlpengine.h"

namespace tarnwick {

namespace {

constexpr int MOST_VARIABLES = 400;
constexpr int MOST_ROWS = 201;  // with the objective
constexpr int MOST_FACTORED = 100;
constexpr std::int32_t LOW_WORD = 0xFFFF;

// Bits of the engine's capability word.
constexpr std::int32_t SMOOTH_CAPABILITY = 0;
enum : std::uint32_t {
    CAN_DIFFERENCE_CENTRALLY = 2,
    CAN_EXTRAPOLATE = 4,
    CONJUGATE_GRADIENTS_ONLY = 8,
    HAS_JACOBIAN = 16,
    RECOGNISES_CONSTANTS = 32,
};

NlpEngine* engine_of(const SolveRun& run) noexcept { return static_cast<NlpEngine*>(run.engine); }

NlpEngine* create_engine(SolveControl* control) noexcept
{
    void* const block = allocate_record(sizeof(NlpEngine));
    if (!block) return nullptr;
    auto* const nlp = new (block) NlpEngine;
    nlp->control = control;
    return nlp;
}

void release_engine(NlpEngine* nlp) noexcept
{
    nlp->~NlpEngine();
    release_block(nlp);
}

// ---- set-up

int word(SolveControl* control, std::int32_t selector) noexcept
{
    return getintinfo(control, selector) & LOW_WORD;
}

bool model_size_ok(SolveControl* control) noexcept
{
    return word(control, INFO_NUMVARS) <= MOST_VARIABLES && word(control, INFO_NUMLHS) <= MOST_ROWS;
}

void nlp_configure(NlpEngine& nlp) noexcept
{
    SolveControl* const control = nlp.control;
    const std::uint32_t can = getcapability(control, SMOOTH_CAPABILITY);
    const auto has = [can](std::uint32_t bit) { return (can & bit) != 0; };

    nlp.variables = word(control, INFO_NUMVARS);
    nlp.rows = nlp.objrow = word(control, INFO_NUMLHS);
    nlp.maximise = word(control, INFO_MAXIMIZE) != 0;
    nlp.factorlimit = has(CONJUGATE_GRADIENTS_ONLY) ? -1 : std::min(nlp.variables, MOST_FACTORED);
    nlp.recognise = has(RECOGNISES_CONSTANTS);
    nlp.quadratic = has(CAN_EXTRAPOLATE);
    nlp.derivmode = has(CAN_DIFFERENCE_CENTRALLY) ? DERIVE_CENTRAL : DERIVE_FORWARD;
    if (has(HAS_JACOBIAN)) nlp.derivmode += DERIVE_ANALYTIC;
    nlp.scaling = word(control, INFO_SCALING) != 0;
    getdblinfo(control, &nlp.feastol, INFO_FEASTOL);
    getdblinfo(control, &nlp.convergence, INFO_CONVTOL);
    getdblinfo(control, &nlp.diffstep, INFO_CONSTANT);
}

bool create_arrays(NlpEngine& nlp) noexcept
{
    const int n = nlp.variables, m = nlp.rows;
    return nlp.arrays.create([&nlp, n, m](auto& layout) {
        layout({&nlp.varlower, &nlp.varupper, &nlp.realvarlower, &nlp.realvarupper, &nlp.startpoint,
                &nlp.lastpoint, &nlp.objgradient, &nlp.realpoint, &nlp.maxpivot, &nlp.bounddistance,
                &nlp.redgrad, &nlp.prevredgrad, &nlp.gradchange, &nlp.direction, &nlp.superstart,
                &nlp.reducedcost},
               n);
        layout({&nlp.rowlower, &nlp.rowupper, &nlp.realrowlower, &nlp.realrowupper, &nlp.rowvalue,
                &nlp.startrowvalue, &nlp.rowplus, &nlp.rowminus, &nlp.beststate, &nlp.bestrowvalue,
                &nlp.rowdual},
               m + 2);
        layout({&nlp.scale, &nlp.point, &nlp.lower, &nlp.upper}, n + m + 3);
        const int work = std::max(n, m + 2);
        layout({&nlp.multiplier, &nlp.tangent, &nlp.work1, &nlp.work2, &nlp.work3,
                &nlp.extrap[0].value, &nlp.extrap[1].value, &nlp.extrap[2].value},
               work);

        layout({&nlp.fixed, &nlp.stablecount, &nlp.nonbasic, &nlp.boundside, &nlp.pivotrow}, n);
        layout(
            {&nlp.rowkind, &nlp.binding, &nlp.position, &nlp.inactive, &nlp.basic, &nlp.basisorder},
            m + 2);
        layout(nlp.previous, work);
        layout(nlp.columnmark, n + m + 3);
    });
}

bool create_matrices(NlpEngine& nlp) noexcept
{
    const int n = nlp.variables, m = nlp.rows;
    nlp.jacobian.width = n + 1;
    return nlp.matrices.create([&nlp, n, m](auto& layout) {
        layout(nlp.basisinverse, m, std::max(n, m));
        layout(nlp.jacobian.cells, (m + 1) * (n + 1) - 1);
    });
}

// Without its memory the engine runs on conjugate gradients alone.
void create_factor(NlpEngine& nlp) noexcept
{
    if (nlp.factorlimit < 0) return;
    const int size = factor_size(nlp.factorlimit);
    const bool created = nlp.factors.create([&nlp, size](auto& layout) {
        layout(nlp.factor, size);
        layout(nlp.refactor, size);
    });
    if (!created) nlp.factorlimit = -1;
}

bool nlp_allocate(NlpEngine& nlp) noexcept
{
    if (!create_arrays(nlp) || !create_matrices(nlp)) return false;
    create_factor(nlp);
    for (int k = 0; k <= nlp.scale.size(); ++k) nlp.scale[k] = 1.0;
    return true;
}

// Bounds beyond 1e30 become 1e30, so that one number is infinity. NaN stays.
void limit_bounds(Vec<double> bounds, int count) noexcept
{
    for (int k = 1; k <= count; ++k)
        bounds[k] = std::clamp(bounds[k], -INFINITE_BOUND, INFINITE_BOUND);
}

void read_model(NlpEngine& nlp) noexcept
{
    getstart(nlp.control, nlp.point.first());
    getbounds(nlp.control, nlp.varlower.first(), nlp.varupper.first(), nlp.rowlower.first(),
              nlp.rowupper.first());
    limit_bounds(nlp.rowlower, nlp.rows - 1);
    limit_bounds(nlp.rowupper, nlp.rows - 1);
}

EngineResult set_up(NlpEngine& nlp, const SolveRun& run) noexcept
{
    const bool is_elastic = (run.flags & RUN_ELASTIC) != 0;
    if (!is_elastic && !model_size_ok(nlp.control)) return ENGINE_BADMODEL;
    nlp_configure(nlp);
    if (nlp.variables < 1 || nlp.rows < 1) return ENGINE_BADMODEL;
    if (!nlp_allocate(nlp)) return ENGINE_NOMEMORY;
    read_model(nlp);
    return ENGINE_OPTIMAL;
}

}  // namespace

std::int32_t nlpinit(SolveRun& run) noexcept
{
    NlpEngine* const nlp = create_engine(run.control);
    run.engine = nlp;
    run.nodedata = nullptr;
    run.result = nlp ? set_up(*nlp, run) : ENGINE_NOMEMORY;
    if (run.result != ENGINE_OPTIMAL) return 0;

    run.numvars = nlp->variables;
    run.ub = nlp->varupper.first();
    run.lb = nlp->varlower.first();
    run.x = nlp->point.first();
    return 1;
}

// ---- one solve

namespace {

bool is_solution(EngineResult code) noexcept
{
    return code == ENGINE_OPTIMAL || code == ENGINE_CONVERGED;
}

void take_start(NlpEngine& nlp, SolveRun& run) noexcept
{
    const double* const block = std::exchange(run.nodedata, nullptr);
    if ((run.flags & RUN_REPEATED) != 0 && block)
        std::copy_n(block + 1, nlp.variables, nlp.point.first());
    if ((run.flags & RUN_ELASTIC) != 0 && nlp.status == ENGINE_EVALERROR)
        nlp.status = ENGINE_OPTIMAL;
    limit_bounds(nlp.varlower, nlp.variables);
    limit_bounds(nlp.varupper, nlp.variables);
    std::copy_n(nlp.point.first(), nlp.variables, nlp.startpoint.first());
    nlp.scaled = false;
}

EngineResult solve(NlpEngine& nlp) noexcept
{
    nlp_run(nlp);
    nlp_unscale_model(nlp);
    const EngineResult code = nlp.status != ENGINE_OPTIMAL ? nlp.status : nlp.finalcode;
    if (!is_solution(code) || !nlp.recognise || nlp_check_linear(nlp)) return code;
    return ENGINE_MODELCHECK;
}

// The point, for a later solve to start from. Without memory that one starts elsewhere.
void attach_point(const NlpEngine& nlp, SolveRun& run) noexcept
{
    const auto n = static_cast<std::size_t>(nlp.variables);
    run.nodedata = static_cast<double*>(allocate_block((n + 1) * sizeof(double)));
    if (run.nodedata) std::copy_n(nlp.point.first(), n, run.nodedata + 1);
}

}  // namespace

std::int32_t nlpsolve(SolveRun& run) noexcept
{
    NlpEngine& nlp = *engine_of(run);
    take_start(nlp, run);
    if (nlp.status != ENGINE_OPTIMAL || (nlp.scaling && !nlp_scale_model(nlp))) {
        run.result = nlp.status;
        return 0;
    }
    run.result = solve(nlp);
    run.objective = nlp.rowvalue[nlp.objrow];
    if (is_solution(run.result) && (run.flags & RUN_REPEATED) != 0) attach_point(nlp, run);
    return 1;
}

// ---- the end

namespace {

// Multipliers in the host's units and sense.
void fill_report(NlpEngine& nlp) noexcept
{
    const int n = nlp.variables;
    const double sign = nlp.maximise ? -1.0 : 1.0;
    const auto real_multiplier = [&nlp, n, sign](double value, int scaledby) {
        return sign * value * (nlp.scale[n + nlp.objrow] / nlp.scale[scaledby]);
    };
    for (int i = 1; i < nlp.rows; ++i) nlp.rowdual[i] = 0.0;
    for (int i = 1; i <= nlp.nbasic; ++i)
        nlp.rowdual[nlp.binding[i]] = real_multiplier(nlp.multiplier[i], n + nlp.binding[i]);
    for (int j = 1; j <= n; ++j) nlp.reducedcost[j] = 0.0;
    for (int k = 1; k <= n; ++k) {
        const int v = nlp.nonbasic[k];
        if (1 <= v && v <= n && nlp.boundside[k] != 0)
            nlp.reducedcost[v] = real_multiplier(nlp.redgrad[k], v);
    }
}

void nlp_store_results(NlpEngine& nlp) noexcept
{
    fill_report(nlp);
    const SolutionRecord solution = {
        .columns = nlp.variables,
        .lower = nlp.varlower.first(),
        .point = nlp.point.first(),
        .upper = nlp.varupper.first(),
        .reduced = nlp.reducedcost.first(),
        .rows = nlp.rows - 1,
        .rowlower = nlp.rowlower.first(),
        .rowvalue = nlp.rowvalue.first(),
        .rowupper = nlp.rowupper.first(),
        .duals = nlp.rowdual.first(),
    };
    storesolution(nlp.control, &solution, nullptr);
}

}  // namespace

std::int32_t nlpfinish(SolveRun& run) noexcept
{
    NlpEngine* const nlp = engine_of(run);
    if (!nlp) return 1;
    if (nlp->jacobian.cells) {
        reportprogress(nlp->control, EVENT_FINAL, 0, 0.0);
        nlp_eval(*nlp, nlp->rowvalue, nlp->point);
        reportprogress(nlp->control, EVENT_FINAL_DONE, 0, 0.0);
        nlp_store_results(*nlp);
    }
    release_engine(nlp);
    run.engine = nullptr;
    return 1;
}

}  // namespace tarnwick
