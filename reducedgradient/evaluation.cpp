// The model as the engine sees it: a scaled minimisation.
//
//     x' = x / s_j,   g' = g / s_n+i,   the objective's sign turned where it is maximised
//
// s_j and s_n+i are the magnitudes at the start point: coordinates and rows become 1 or -1 there.
// Infinite bounds stay as they are. Points keep their scaled values; the host gets a copy in its own
// units, in which a coordinate on a bound has exactly the bound's value.

#include "reducedgradient/evaluation.h"

#include <algorithm>
#include <cmath>

#include "control/services.h"

namespace tarnwick {

namespace {

// Smaller magnitudes are no units to scale by. Absolute, in the host's units.
constexpr double SCALE_FLOOR = 1e-5;

// Event words. A step of the first derivatives can't stop the run.
constexpr std::int32_t EVENT_SETUP = 2;
constexpr std::int32_t EVENT_SMOOTH = EVENT_ITERATION | 16 | 1;
constexpr std::int32_t EVENT_READ = 0;

EngineResult take_stop(NlpEngine& nlp, std::int32_t stop) noexcept
{
    return nlp.status = stopresult(stop, ENGINE_OPTIMAL);
}

double real_coordinate(const NlpEngine& nlp, int j, double x) noexcept
{
    if (!nlp.scaled) return x;
    if (x == nlp.varlower[j]) return nlp.realvarlower[j];
    if (x == nlp.varupper[j]) return nlp.realvarupper[j];
    return x * nlp.scale[j];
}

// What a service has left becomes the engine's.
void take_values(NlpEngine& nlp, Vec<double> values, bool evaluated) noexcept
{
    if (evaluated)
        nlp_poll_stop(nlp);
    else
        nlp.status = ENGINE_EVALERROR;

    if (nlp.scaled)
        for (int i = 1; i <= nlp.rows; ++i) values[i] /= nlp.scale[nlp.variables + i];
    if (nlp.maximise) values[nlp.objrow] = -values[nlp.objrow];
}

}  // namespace

EngineResult nlp_report_iteration(NlpEngine& nlp) noexcept
{
    if (nlp.status != ENGINE_OPTIMAL) return nlp.status;
    const std::int32_t event = nlp.firstjacobian ? EVENT_SMOOTH : EVENT_SETUP;
    return take_stop(nlp, reportprogress(nlp.control, event, nlp.iterations + 1, 0.0));
}

EngineResult nlp_poll_stop(NlpEngine& nlp) noexcept
{
    if (nlp.status != ENGINE_OPTIMAL) return nlp.status;
    return take_stop(nlp, reportprogress(nlp.control, EVENT_READ, 0, 0.0));
}

void nlp_real_point(NlpEngine& nlp, Vec<const double> x) noexcept
{
    for (int j = 1; j <= nlp.variables; ++j) nlp.realpoint[j] = real_coordinate(nlp, j, x[j]);
}

void nlp_eval(NlpEngine& nlp, Vec<double> values, Vec<const double> x) noexcept
{
    nlp_real_point(nlp, x);
    take_values(nlp, values,
                evalfunctions(nlp.control, values.first(), nlp.realpoint.first()) != 0);
}

void nlp_eval_column(NlpEngine& nlp, Vec<double> values, Vec<const double> x, int prev,
                     int col) noexcept
{
    const auto is_variable = [&nlp](int j) { return 1 <= j && j <= nlp.variables; };
    if (!is_variable(prev) || !is_variable(col)) {
        nlp.status = ENGINE_EVALERROR;
        return;
    }
    take_values(nlp, values,
                evalcolpair(nlp.control, values.first(), prev - 1,
                            real_coordinate(nlp, prev, x[prev]), col - 1,
                            real_coordinate(nlp, col, x[col])) != 0);
}

bool are_usable(const NlpEngine& nlp, Vec<const double> values) noexcept
{
    for (int i = 1; i < nlp.objrow; ++i)
        if (!std::isfinite(values[i])) return false;
    return !std::isnan(values[nlp.objrow]);
}

// ---- scaling

namespace {

double scale_factor(double value) noexcept
{
    const double s = std::fabs(value);
    return s >= SCALE_FLOOR && std::isfinite(s) ? s : 1.0;
}

void divide_bounds(double& lower, double& upper, double s) noexcept
{
    if (lower > -INFINITE_BOUND) lower /= s;
    if (upper < INFINITE_BOUND) upper /= s;
}

void copy(Vec<const double> from, Vec<double> to, int count) noexcept
{
    for (int k = 1; k <= count; ++k) to[k] = from[k];
}

}  // namespace

bool nlp_scale_model(NlpEngine& nlp) noexcept
{
    const int n = nlp.variables;
    nlp.scaled = false;
    nlp_eval(nlp, nlp.rowvalue, nlp.point);
    if (nlp.status != ENGINE_OPTIMAL) return false;

    copy(nlp.varlower, nlp.realvarlower, n);
    copy(nlp.varupper, nlp.realvarupper, n);
    copy(nlp.rowlower, nlp.realrowlower, nlp.rows);
    copy(nlp.rowupper, nlp.realrowupper, nlp.rows);
    nlp.scaled = true;
    for (int j = 1; j <= n; ++j) {
        const double s = nlp.scale[j] = scale_factor(nlp.point[j]);
        nlp.startpoint[j] = nlp.point[j] /= s;
        divide_bounds(nlp.varlower[j], nlp.varupper[j], s);
    }
    for (int i = 1; i <= nlp.rows; ++i) {
        const double s = nlp.scale[n + i] = scale_factor(nlp.rowvalue[i]);
        nlp.startrowvalue[i] = nlp.rowvalue[i] /= s;
        divide_bounds(nlp.rowlower[i], nlp.rowupper[i], s);
    }
    return true;
}

// Bounds come back as they were: what is divided and multiplied again may be rounded, or have left
// the range of finite bounds.
void nlp_unscale_model(NlpEngine& nlp) noexcept
{
    if (!nlp.scaled) return;
    const int n = nlp.variables;
    for (int j = 1; j <= n; ++j) {
        nlp.point[j] = real_coordinate(nlp, j, nlp.point[j]);
        nlp.startpoint[j] = real_coordinate(nlp, j, nlp.startpoint[j]);
    }
    for (int i = 1; i <= nlp.rows; ++i) {
        nlp.rowvalue[i] *= nlp.scale[n + i];
        nlp.startrowvalue[i] *= nlp.scale[n + i];
    }
    nlp.scaled = false;
    copy(nlp.realvarlower, nlp.varlower, n);
    copy(nlp.realvarupper, nlp.varupper, n);
    copy(nlp.realrowlower, nlp.rowlower, nlp.rows);
    copy(nlp.realrowupper, nlp.rowupper, nlp.rows);
}

}  // namespace tarnwick
