// The non-smooth engine from set-up to finish:
//
//     nspinit    sizes, settings, bounds, start point
//     nspsolve   scale, search, unscale
//     nspfinish  statistics of the population, final evaluation, results to the Problem
//
// Scales are the magnitudes at the start point: a coordinate or a row whose value there is as large
// as the convergence tolerance becomes 1 or -1. Each solve scales the bounds that it finds.

#include <algorithm>
#include <cmath>
#include <new>

#include "control/services.h"
#include "nonsmooth/candidate.h"
#include "nonsmooth/nspengine.h"
#include "nonsmooth/search.h"
#include "nonsmooth/statistics.h"

namespace tarnwick {

namespace {

constexpr int MOST_VARIABLES = 400;
constexpr int MOST_ROWS = 200;
constexpr int LEAST_POPULATION = 10;
constexpr int MEMBERS_PER_VARIABLE = 10;
constexpr int DEFAULT_POPULATION = 200;  // at the most
constexpr std::int32_t LOW_WORD = 0xFFFF;
constexpr std::int32_t BOUNDS_CAPABILITY = 3;
constexpr std::uint32_t BOUNDS_REQUIRED = 64;

NspEngine* engine_of(const SolveRun& run) noexcept { return static_cast<NspEngine*>(run.engine); }

NspEngine* create_engine(SolveControl* control) noexcept
{
    void* const block = allocate_record(sizeof(NspEngine));
    if (!block) return nullptr;
    auto* const nsp = new (block) NspEngine;
    nsp->control = control;
    return nsp;
}

void release_engine(NspEngine* nsp) noexcept
{
    nsp->~NspEngine();
    release_block(nsp);
}

// ---- set-up

int population_size(std::int32_t request, int variables) noexcept
{
    if (request >= LEAST_POPULATION) return request;
    return std::min(MEMBERS_PER_VARIABLE * variables, DEFAULT_POPULATION);
}

bool nsp_load_settings(NspEngine& nsp) noexcept
{
    SolveControl* const control = nsp.control;
    const auto info = [control](std::int32_t selector) {
        return getintinfo(control, selector) & LOW_WORD;
    };
    nsp.variables = info(INFO_NUMVARS);
    nsp.rows = info(INFO_NUMLHS) - 1;
    if (nsp.variables < 1 || nsp.rows < 0) return false;
    nsp.maximise = info(INFO_MAXIMIZE) != 0;
    nsp.scaling = info(INFO_SCALING) != 0;
    nsp.popsize = population_size(getrunparam(control, RUN_POPSIZE), nsp.variables);
    nsp.crossoverlimit = getrunparam(control, RUN_NODELIMIT);
    nsp.stallseconds = static_cast<std::uint32_t>(getrunparam(control, RUN_STALLTIME));
    nsp.requiresbounds = (getcapability(control, BOUNDS_CAPABILITY) & BOUNDS_REQUIRED) != 0;
    getdblinfo(control, &nsp.convergence, INFO_CONVTOL);
    getdblinfo(control, &nsp.feastol, INFO_FEASTOL);
    getdblinfo(control, &nsp.gap, INFO_MIPGAP);
    getdblinfo(control, &nsp.mutationrate, INFO_MUTATION);
    return true;
}

bool nsp_allocate(NspEngine& nsp) noexcept
{
    return nsp.arrays.create([&nsp](auto& layout) {
        layout({&nsp.rowvalue, &nsp.blendrowvalue, &nsp.rowlower, &nsp.rowupper, &nsp.bestrowvalue,
                &nsp.rowscale, &nsp.realrowlower, &nsp.realrowupper},
               nsp.rows);
        layout({&nsp.point, &nsp.startpoint, &nsp.blendpoint, &nsp.lower, &nsp.upper,
                &nsp.bestpoint, &nsp.varscale, &nsp.reallower, &nsp.realupper, &nsp.realpoint},
               nsp.variables - 1);
    });
}

// Bounds beyond 1e30 become 1e30, so that arithmetic on them stays finite. NaN stays.
void limit_bounds(Vec<double> bounds) noexcept
{
    for (int k = 0; k <= bounds.size(); ++k)
        bounds[k] = std::clamp(bounds[k], -INFINITE_BOUND, INFINITE_BOUND);
}

// A function made of comparisons has values at NaN too, and the search would clip such a start into
// the box: the model would be solved as if it were sound.
bool starts_at_numbers(const NspEngine& nsp) noexcept
{
    const double* const x = nsp.point.data();
    return std::none_of(x, x + nsp.variables, [](double v) { return std::isnan(v); });
}

bool read_model(NspEngine& nsp) noexcept
{
    if (!nsp_load_settings(nsp) || !nsp_allocate(nsp)) return false;
    if (!getbounds(nsp.control, nsp.lower.data(), nsp.upper.data(), nsp.rowlower.data(),
                   nsp.rowupper.data()))
        return false;
    limit_bounds(nsp.lower);
    limit_bounds(nsp.upper);
    return getstart(nsp.control, nsp.point.data()) && starts_at_numbers(nsp);
}

bool model_size_ok(const NspEngine& nsp) noexcept
{
    return nsp.variables <= MOST_VARIABLES && nsp.rows <= MOST_ROWS;
}

bool nsp_bounds_finite(const NspEngine& nsp) noexcept
{
    for (int i = 0; i < nsp.variables; ++i)
        if (nsp.lower[i] == -INFINITE_BOUND || nsp.lower[i] == INFINITE_BOUND ||
            nsp.upper[i] == -INFINITE_BOUND || nsp.upper[i] == INFINITE_BOUND)
            return false;
    return true;
}

// False for a pair out of order, NaN included.
bool in_order(Vec<const double> lower, Vec<const double> upper, int count) noexcept
{
    for (int k = 0; k < count; ++k)
        if (!(lower[k] <= upper[k])) return false;
    return true;
}

bool nsp_bounds_consistent(const NspEngine& nsp) noexcept
{
    return in_order(nsp.rowlower, nsp.rowupper, nsp.rows) &&
           in_order(nsp.lower, nsp.upper, nsp.variables);
}

EngineResult set_up(NspEngine& nsp, const SolveRun& run) noexcept
{
    if (!read_model(nsp)) return ENGINE_BADMODEL;
    const bool is_elastic = (run.flags & RUN_ELASTIC) != 0;
    if (!is_elastic && !model_size_ok(nsp)) return ENGINE_BADMODEL;
    if (nsp.requiresbounds && !nsp_bounds_finite(nsp)) return ENGINE_UNBOUNDED;
    if (!nsp_bounds_consistent(nsp)) return ENGINE_INFEASIBLE;
    return ENGINE_CONVERGED;
}

}  // namespace

std::int32_t nspinit(SolveRun& run) noexcept
{
    NspEngine* const nsp = create_engine(run.control);
    run.engine = nsp;
    run.result = nsp ? set_up(*nsp, run) : ENGINE_NOMEMORY;
    if (run.result != ENGINE_CONVERGED) return 0;

    run.numvars = nsp->variables;
    run.lb = nsp->lower.data();
    run.ub = nsp->upper.data();
    run.x = nsp->point.data();
    return 1;
}

// ---- scaling

namespace {

// The magnitude at the start point, or 1.0 where it is too small, not finite, or would make a bound
// infinite.
double scale_factor(double value, double lower, double upper, double smallest) noexcept
{
    const double s = std::fabs(value);
    if (smallest > s || s == 0.0 || !std::isfinite(s)) return 1.0;
    return std::isfinite(lower / s) && std::isfinite(upper / s) ? s : 1.0;
}

void divide_bounds(double& lower, double& upper, double s) noexcept
{
    if (lower > -INFINITE_BOUND) lower /= s;
    if (upper < INFINITE_BOUND) upper /= s;
}

// Keeps the bounds as they are: what is divided and multiplied again may come back rounded.
void keep_real_bounds(NspEngine& nsp) noexcept
{
    std::copy_n(nsp.lower.data(), nsp.variables, nsp.reallower.data());
    std::copy_n(nsp.upper.data(), nsp.variables, nsp.realupper.data());
    std::copy_n(nsp.rowlower.data(), nsp.rows, nsp.realrowlower.data());
    std::copy_n(nsp.rowupper.data(), nsp.rows, nsp.realrowupper.data());
}

void restore_real_bounds(NspEngine& nsp) noexcept
{
    std::copy_n(nsp.reallower.data(), nsp.variables, nsp.lower.data());
    std::copy_n(nsp.realupper.data(), nsp.variables, nsp.upper.data());
    std::copy_n(nsp.realrowlower.data(), nsp.rows, nsp.rowlower.data());
    std::copy_n(nsp.realrowupper.data(), nsp.rows, nsp.rowupper.data());
}

// A row without a limit on a side is violated there by no value.
void open_infinite_rows(NspEngine& nsp) noexcept
{
    for (int j = 0; j < nsp.rows; ++j) {
        if (nsp.realrowlower[j] <= -INFINITE_BOUND) nsp.rowlower[j] = -HUGE_VAL;
        if (nsp.realrowupper[j] >= INFINITE_BOUND) nsp.rowupper[j] = HUGE_VAL;
    }
}

void scale_variables(NspEngine& nsp) noexcept
{
    for (int i = 0; i < nsp.variables; ++i) {
        const double s = scale_factor(nsp.point[i], nsp.lower[i], nsp.upper[i], nsp.convergence);
        nsp.varscale[i] = s;
        nsp.point[i] /= s;
        nsp.startpoint[i] = nsp.point[i];
        divide_bounds(nsp.lower[i], nsp.upper[i], s);
    }
}

void scale_rows(NspEngine& nsp) noexcept
{
    for (int j = 0; j <= nsp.rows; ++j) {
        const double s =
            scale_factor(nsp.rowvalue[j], nsp.rowlower[j], nsp.rowupper[j], nsp.convergence);
        nsp.rowscale[j] = s;
        nsp.rowvalue[j] /= s;
        divide_bounds(nsp.rowlower[j], nsp.rowupper[j], s);
    }
}

// False: the model can't be evaluated at the start point, and nothing is scaled.
bool nsp_scale(NspEngine& nsp) noexcept
{
    std::fill_n(nsp.varscale.data(), nsp.variables, 1.0);
    std::fill_n(nsp.rowscale.data(), nsp.rows + 1, 1.0);
    keep_real_bounds(nsp);
    if (!nsp.scaling) {
        std::copy_n(nsp.point.data(), nsp.variables, nsp.startpoint.data());
    } else {
        if (!nsp_evaluate(nsp, nsp.rowvalue, nsp.point.data())) return false;
        nsp.scaled = true;
        scale_variables(nsp);
        scale_rows(nsp);
    }
    open_infinite_rows(nsp);
    return true;
}

void nsp_unscale(NspEngine& nsp) noexcept
{
    if (nsp.scaled) {
        nsp.scaled = false;
        for (int i = 0; i < nsp.variables; ++i) {
            nsp.point[i] = real_coordinate(nsp, i, nsp.point[i]);
            nsp.startpoint[i] *= nsp.varscale[i];
        }
        for (int j = 0; j <= nsp.rows; ++j) nsp.rowvalue[j] *= nsp.rowscale[j];
    }
    restore_real_bounds(nsp);
}

bool may_go_on(EngineResult code) noexcept
{
    return code == ENGINE_OPTIMAL || code == ENGINE_CONVERGED || code == ENGINE_STALLED ||
           code == ENGINE_UNBOUNDED || code == ENGINE_INFEASIBLE;
}

}  // namespace

// ---- one solve

std::int32_t nspsolve(SolveRun& run) noexcept
{
    NspEngine& nsp = *engine_of(run);
    run.nodedata = nullptr;
    run.nodeaux = nullptr;
    nsp.intflags = run.intflags.data();
    if (!nsp_bounds_consistent(nsp)) {
        run.result = ENGINE_INFEASIBLE;
        return 1;
    }
    if (!nsp_scale(nsp)) {
        run.result = ENGINE_EVALERROR;
        return 0;
    }
    const EngineResult code = nsp_search(nsp, run.objective);
    nsp_unscale(nsp);
    run.result = code == ENGINE_OPTIMAL ? ENGINE_CONVERGED : code;
    return may_go_on(run.result) ? 1 : 0;
}

// ---- the end

std::int32_t nspfinish(SolveRun& run) noexcept
{
    NspEngine* const nsp = engine_of(run);
    if (!nsp) return 1;
    if (nsp->point) {
        reportprogress(nsp->control, EVENT_FINAL, 0, 0.0);
        nsp_hand_back(*nsp);
        reportprogress(nsp->control, EVENT_FINAL_DONE, 0, 0.0);
    }
    release_engine(nsp);
    run.engine = nullptr;
    return 1;
}

}  // namespace tarnwick
