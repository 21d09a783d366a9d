// Which parts of a model that is known through a function are linear, found by asking the function.
// Slopes come from moving one variable after the other:
//
//     a_ij = (g_i(x + s_j e_j) - g_i(x)) / s_j,   s_j = 1, 10, ..., 1e5: the first to move anything
//
// A linear model has g_i(x) = g_i(0) + sum_j a_ij x_j everywhere. An entry is tested on the axis of
// its variable, at 7.5 s_j, and the model as a whole at sample points. The objective is tested as
// one more row, the last. Rows, columns and entries are 0-based.

#include <algorithm>
#include <cmath>

#include "control/services.h"
#include "interface/loading.h"
#include "platform/clock.h"
#include "platform/floatcontrol.h"

namespace tarnwick {

namespace {

constexpr double INFINITE_BOUND = 1e30;
constexpr double STEP_LIMIT = 1e6;
constexpr double STEP_GROWTH = 10.0;
constexpr double NOTICED = 0.01;
constexpr double AXIS_FACTOR = 7.5;
constexpr double SAMPLE_REACH = 1000.0;
constexpr double LINEAR_TOL = 1e-6;
constexpr char LINEAR = 'L', NONLINEAR = 'N';

// Pseudo-random points: a linear congruence, of which bits 16 to 30 are drawn.
struct PointGenerator {
    std::uint32_t state;

    // 0 to 1, both included.
    double draw() noexcept
    {
        constexpr float UNIT = 3.051851e-5F;  // of 32767
        state = state * 214013U + 2531011U;
        return static_cast<double>(state >> 16 & 0x7FFFU) * static_cast<double>(UNIT);
    }
};

struct Diagnosis {
    Problem* problem;
    std::int32_t numtests;
    const double* testvals;  // numtests rows of numcols values, or null
    char* objtype;           // numcols, or null
    char* matvaltype;        // matnz, or null

    Array<double> x0{};      // numcols, the point of a probe
    Array<double> sample{};  // numcols
    Array<double> steps{};   // numcols, of the probe; then 7.5 times as long
    Array<double> lhs{};  // numrows + 1, this one and all below: values of the rows, the objective
    Array<double> saved{};      // before a step
    Array<double> samplerow{};  // at the sample point
    Array<double> predicted{};  // there, by a linear model
    Array<double> first{};      // at the origin
    PointGenerator generator{};
    bool is_nonlinear = false;

    bool create() noexcept
    {
        const auto n = static_cast<std::size_t>(problem->numcols);
        const auto rows = static_cast<std::size_t>(problem->numrows) + 1;
        return x0.create(n) && sample.create(n) && steps.create(n) && lhs.create(rows) &&
               saved.create(rows) && samplerow.create(rows) && predicted.create(rows) &&
               first.create(rows);
    }
    bool evaluate(const Array<double>& at, const Array<double>& values) const noexcept
    {
        return evalfunctions(&problem->control, values.data(), at.data()) != 0;
    }
    void copy_rows(const Array<double>& from, const Array<double>& to) const noexcept
    {
        std::copy_n(from.data(), problem->numrows + 1, to.data());
    }
};

// Calls visit(k, i) for each entry k of column j, in row i. An index that names no row is passed
// over.
template <class Visit>
void for_each_entry(const Problem& problem, std::int32_t j, Visit visit) noexcept
{
    if (!problem.matbeg) {
        const std::int32_t start = j * problem.numrows;
        for (std::int32_t i = 0; i < problem.numrows; ++i) visit(start + i, i);
        return;
    }
    const std::int32_t end = problem.matbeg[j] + problem.matcnt[j];
    for (std::int32_t k = problem.matbeg[j]; k < end; ++k) {
        const std::int32_t i = problem.matind[k];
        if (0 <= i && i < problem.numrows) visit(k, i);
    }
}

// ---- the probe

// Puts what the last step has changed into the column's entries and the objective. True: some
// change is large enough to measure a slope.
bool measure_changes(const Diagnosis& d, std::int32_t j) noexcept
{
    const Problem& problem = *d.problem;
    bool is_noticed = false;
    const auto change_of = [&](std::int32_t i) {
        const double change = d.lhs.data()[i] - d.saved.data()[i];
        if (!(std::fabs(change) <= NOTICED)) is_noticed = true;
        return change;
    };
    for_each_entry(problem, j,
                   [&](std::int32_t k, std::int32_t i) { problem.matval[k] = change_of(i); });
    problem.obj[j] = change_of(problem.numrows);
    return is_noticed;
}

void divide_changes(const Problem& problem, std::int32_t j, double step) noexcept
{
    if (step == 1.0) return;
    for_each_entry(problem, j, [&](std::int32_t k, std::int32_t) { problem.matval[k] /= step; });
    problem.obj[j] /= step;
}

// The point stays where the last step has put it: later columns start from there.
bool probe_column(const Diagnosis& d, std::int32_t j) noexcept
{
    d.copy_rows(d.lhs, d.saved);
    double step = 1.0;
    for (;;) {
        if (!evalcol(&d.problem->control, d.lhs.data(), j, step)) return false;
        if (measure_changes(d, j) || !(step * STEP_GROWTH < STEP_LIMIT)) break;
        step *= STEP_GROWTH;
    }
    divide_changes(*d.problem, j, step);
    d.steps.data()[j] = step;
    return true;
}

bool probe(const Diagnosis& d) noexcept
{
    if (!d.evaluate(d.x0, d.lhs)) return false;
    d.copy_rows(d.lhs, d.first);
    for (std::int32_t j = 0; j < d.problem->numcols; ++j)
        if (!probe_column(d, j)) return false;
    return true;
}

// ---- the test

bool agrees(double value, double prediction) noexcept
{
    return std::fabs(value - prediction) / (std::fabs(value) + 1.0) <= LINEAR_TOL;
}

void choose_sample(Diagnosis& d, std::int32_t t) noexcept
{
    const Problem& problem = *d.problem;
    const std::int32_t n = problem.numcols;
    if (d.testvals) {
        std::copy_n(d.testvals + std::ptrdiff_t{n} * t, n, d.sample.data());
        return;
    }
    for (std::int32_t j = 0; j < n; ++j) {
        const double reach = d.steps.data()[j] * SAMPLE_REACH;
        const double lo = problem.lb[j] <= -INFINITE_BOUND ? -reach : problem.lb[j];
        const double hi = problem.ub[j] >= INFINITE_BOUND ? reach : problem.ub[j];
        d.sample.data()[j] = d.generator.draw() * (hi - lo) + lo;
    }
}

void predict_column(const Diagnosis& d, std::int32_t j) noexcept
{
    const Problem& problem = *d.problem;
    const double x = d.sample.data()[j];
    double* const predicted = d.predicted.data();
    for_each_entry(problem, j,
                   [&](std::int32_t k, std::int32_t i) { predicted[i] += problem.matval[k] * x; });
    predicted[problem.numrows] += problem.obj[j] * x;
}

// Sets the letter of a part whose value on the axis isn't what its slope says.
void judge(Diagnosis& d, char& letter, std::int32_t i, double change) noexcept
{
    if (letter == NONLINEAR || agrees(d.lhs.data()[i], change + d.first.data()[i])) return;
    letter = NONLINEAR;
    d.is_nonlinear = true;
}

// Moves variable j alone from the origin, and back the one before.
bool test_axis(Diagnosis& d, std::int32_t j) noexcept
{
    const Problem& problem = *d.problem;
    if (!d.objtype && !d.matvaltype) return true;

    const double step = d.steps.data()[j];
    d.x0.data()[j] = step;
    if (j > 0) d.x0.data()[j - 1] = 0.0;
    if (!d.evaluate(d.x0, d.lhs)) return false;

    if (d.matvaltype)
        for_each_entry(problem, j, [&](std::int32_t k, std::int32_t i) {
            if (k < problem.matnz) judge(d, d.matvaltype[k], i, step * problem.matval[k]);
        });
    if (d.objtype) judge(d, d.objtype[j], problem.numrows, step * problem.obj[j]);
    return true;
}

bool is_sample_predicted(const Diagnosis& d) noexcept
{
    return std::equal(d.samplerow.data(), d.samplerow.data() + d.problem->numrows + 1,
                      d.predicted.data(), agrees);
}

bool test_sample(Diagnosis& d, std::int32_t t) noexcept
{
    const std::int32_t n = d.problem->numcols;
    choose_sample(d, t);
    if (!d.evaluate(d.sample, d.samplerow)) return false;

    d.copy_rows(d.first, d.predicted);
    for (std::int32_t j = 0; j < n; ++j) {
        predict_column(d, j);
        if (!test_axis(d, j)) return false;
    }
    d.x0.data()[n - 1] = 0.0;
    if (!d.is_nonlinear) d.is_nonlinear = !is_sample_predicted(d);
    return true;
}

bool test(Diagnosis& d) noexcept
{
    const Problem& problem = *d.problem;
    if (d.objtype) std::fill_n(d.objtype, problem.numcols, LINEAR);
    if (d.matvaltype) std::fill_n(d.matvaltype, problem.matnz, LINEAR);
    for (std::int32_t j = 0; j < problem.numcols; ++j) d.steps.data()[j] *= AXIS_FACTOR;
    d.generator.state = tick_count();

    for (std::int32_t t = 0; t < d.numtests; ++t)
        if (!test_sample(d, t)) return false;
    return true;
}

// False: no memory, or the caller's function failed.
bool diagnose(Diagnosis& d) noexcept
{
    Problem& problem = *d.problem;
    problem.running = true;
    beginrun(&problem.control, 0);
    const bool is_done = create_results(problem) && d.create() && probe(d) && test(d);
    endrun(&problem.control);
    problem.running = false;
    return is_done;
}

// ---- the arguments

std::int32_t test_model(const Problem& problem, std::int32_t numtests, const char* title) noexcept
{
    if (is_lp_family(problem.problemtype))
        return report(1, title, "testnltype is valid only for NLP problems");
    if (is_nlp_family(problem.problemtype) && is_too_large(problem))
        return report(1, title, "numcols or numrows is too large");
    if (numtests < 1) return report(2, title, "numtests <= 0");
    return 0;
}

std::int32_t view_arrays(Diagnosis& d, double*& testvals, const char* title) noexcept
{
    Problem& problem = *d.problem;
    const std::int64_t values = std::int64_t{problem.numcols} * d.numtests;
    if (!is_absent(testvals) && view_array(testvals, values) == View::failed)
        return report(3, title, "testvals is not a valid OLE array");
    OleReference objref = nullptr, matvalref = nullptr;
    if (!view_letters(d.objtype, problem.numcols, objref))
        return report(5, title, "objtype is not a valid OLE array");
    if (!view_letters(d.matvaltype, problem.matnz, matvalref))
        return report(6, title, "matvaltype is not a valid OLE array");
    if (objref) problem.oletypehandles[0] = objref;
    if (matvalref) problem.oletypehandles[1] = matvalref;
    return 0;
}

}  // namespace

}  // namespace tarnwick

using namespace tarnwick;

extern "C" std::int32_t TARNWICK_CALL testnltype(Problem* lp, std::int32_t numtests,
                                                 double* testvals, std::int32_t* nonlinear_p,
                                                 char* objtype, char* matvaltype)
{
    set_float_control();
    if (!is_idle(lp, __func__)) return 1;
    if (const std::int32_t code = test_model(*lp, numtests, __func__)) return code;

    Diagnosis diagnosis{.problem = lp,
                        .numtests = numtests,
                        .testvals = nullptr,
                        .objtype = objtype,
                        .matvaltype = matvaltype};
    if (ole_mode())
        if (const std::int32_t code = view_arrays(diagnosis, testvals, __func__)) return code;
    if (!is_absent(testvals)) diagnosis.testvals = testvals;

    if (!diagnose(diagnosis)) return report(1, __func__, "unable to diagnose linearity");
    if (nonlinear_p) *nonlinear_p = diagnosis.is_nonlinear ? 1 : 0;
    return 0;
}
