// The search for an irreducible infeasible subset of rows and bounds. Every row has an elastic
// variable that can take up its violation, and the least sum of these is what is solved for:
//
//     growth         rows whose elastic variable is in use lose it, until the rest can't mend them:
//                    the rows without elasticity are infeasible together
//     row filter     a row gets it back; if that makes the model feasible the row is needed
//     bound filter   a bound is dropped; if that makes the model feasible the bound is needed
//
// Filters go by index and every removal stands, so that what is left at the end cannot spare a member
// (the elastic and the deletion filter; J. W. Chinneck and E. W. Dravnieks, ORSA Journal on Computing
// 3, 1991).

#include "control/infeasible.h"

#include <algorithm>

#include "control/services.h"
#include "interface/problem.h"
#include "platform/floatcontrol.h"
#include "platform/olearray.h"

namespace tarnwick {

namespace {

constexpr std::int32_t MODE_ROWS_AND_BOUNDS = 1;

// Parts of a hundred, by which the reports tell how far the search is.
struct Milestones {
    std::int32_t grown, growing;
};

class IisSearch {
  public:
    IisSearch(EngineEntry engine_solve, SolveRun& run) noexcept
        : engine_solve_(engine_solve), run_(run), mode_(getintinfo(run.control, INFO_ELASTICMODE)),
          at_(mode_ == MODE_ROWS_AND_BOUNDS ? Milestones{33, 10} : Milestones{50, 20}),
          numcols_(run.numvars - getintinfo(run.control, INFO_NUMELASTIC)),
          numrows_(getintinfo(run.control, INFO_NUMROWS))
    {
    }

    // The search proper. Wherever it ends early, the last result in the run stands.
    void find() noexcept
    {
        if (!grow() || !filter_rows()) return;
        if (mode_ == MODE_ROWS_AND_BOUNDS && !filter_bounds()) return;
        run_.result = ENGINE_OPTIMAL;
    }

  private:
    enum Action : std::int32_t { FREE = 0, FIX = 1 };

    // The next solve starts where this one ends anyway, without the point that an engine attaches.
    void solve() noexcept
    {
        engine_solve_(run_);
        release_block(std::exchange(run_.nodedata, nullptr));
    }
    bool is_infeasible() const noexcept { return run_.result == ENGINE_INFEASIBLE; }
    bool is_feasible() const noexcept
    {
        return run_.result == ENGINE_OPTIMAL || run_.result == ENGINE_CONVERGED ||
               run_.result == ENGINE_UNBOUNDED;
    }

    // False: the search is to stop.
    bool goes_on(std::int32_t progress) const noexcept
    {
        return reportprogress(run_.control, EVENT_ELASTIC, progress, 0.0) == STOP_NONE;
    }

    // False: a failure, a stop, or a model that is feasible, where nothing is left to fix.
    bool grow() noexcept
    {
        std::int32_t progress = at_.growing;
        solve();
        if (!is_feasible() || !goes_on(progress)) return false;
        while (is_feasible()) {
            if (!fix_rows_in_need()) return false;
            solve();
            if (!is_feasible() && !is_infeasible()) return false;
            progress = std::min(progress + 1, at_.grown);
            if (!goes_on(progress)) return false;
        }
        return true;
    }

    // False: no elastic variable that is still free is in use.
    bool fix_rows_in_need() const noexcept
    {
        bool any = false;
        for (std::int32_t k = numcols_; k < run_.numvars; ++k) {
            if (run_.x[k] == 0.0) continue;
            any = any || run_.ub[k] != 0.0;
            setelastic(run_.control, k, 0, FIX, run_.ub);
        }
        return any;
    }

    bool filter_rows() noexcept
    {
        for (std::int32_t r = 0; r < numrows_; ++r) {
            if (setelastic(run_.control, -1, r, FREE, run_.ub) == 0) continue;
            if (!goes_on(at_.grown * r / numrows_ + at_.grown)) return false;
            solve();
            if (is_infeasible()) continue;
            if (!is_feasible()) return false;
            setelastic(run_.control, -1, r, FIX, run_.ub);
        }
        return true;
    }

    bool filter_bounds() noexcept
    {
        for (std::int32_t j = 0; j < numcols_; ++j) {
            const std::int32_t progress = at_.grown * j / numcols_ + 2 * at_.grown;
            double& lower = run_.lb[j];
            double& upper = run_.ub[j];
            if (lower > -INFINITE_BOUND && !filter_bound(lower, -INFINITE_BOUND, progress))
                return false;
            if (upper < INFINITE_BOUND &&
                !filter_bound(upper, INFINITE_BOUND, progress + at_.grown / (2 * numcols_)))
                return false;
        }
        return true;
    }

    bool filter_bound(double& bound, double none, std::int32_t progress) noexcept
    {
        const double kept = bound;
        bound = none;
        if (!goes_on(progress)) return false;
        solve();
        if (is_infeasible()) return true;
        // A function that can't be evaluated out there needs the bound as well.
        if (!is_feasible() && run_.result != ENGINE_EVALERROR) return false;
        bound = kept;
        return true;
    }

    EngineEntry engine_solve_;
    SolveRun& run_;
    std::int32_t mode_;
    Milestones at_;
    std::int32_t numcols_, numrows_;
};

}  // namespace

std::int32_t iissolve(EngineEntry engine_solve, SolveRun& run) noexcept
{
    IisSearch search(engine_solve, run);
    reportprogress(run.control, EVENT_ELASTIC, 1, 0.0);
    Array<double> start;
    if (!start.create(static_cast<std::size_t>(run.numvars))) return ENGINE_NOMEMORY;
    getstart(run.control, start.data());

    search.find();
    std::copy_n(start.data(), run.numvars, run.x);  // where the rows of the subset are judged
    return RESULT_STANDS;
}

// ---- exported

namespace {

// In OLE array mode an array that is present must be a reference to one of the size. A placeholder
// has no room: it becomes null, as an absent array does.
bool view_present(std::int32_t*& array, std::int32_t count) noexcept
{
    if (is_absent(array)) {
        array = nullptr;
        return true;
    }
    return view_required(array, count);
}

// False: memory ran out while the subset was stored.
bool is_complete(const Problem& problem) noexcept
{
    const bool has_rows = problem.iisnumrows == 0 || (problem.rowind && problem.rowbdstat);
    const bool has_columns = problem.iisnumcols == 0 || (problem.colind && problem.colbdstat);
    return has_rows && has_columns;
}

void give(const Array<std::int32_t>& from, std::int32_t count, std::int32_t* to) noexcept
{
    if (to && from) std::copy_n(from.data(), count, to);
}

void give(std::int32_t value, std::int32_t* to) noexcept
{
    if (to) *to = value;
}

}  // namespace

}  // namespace tarnwick

using namespace tarnwick;

extern "C" std::int32_t TARNWICK_CALL findiis(Problem* lp, std::int32_t* iisnumrows_p,
                                              std::int32_t* iisnumcols_p)
{
    set_float_control();
    if (!is_idle(lp, __func__)) return 1;
    if (lp->numrows == 0) return report(1, __func__, "problem has no constraints");
    if (!iisnumrows_p) return report(2, __func__, "iisnumrows_p is NULL");
    if (!iisnumcols_p) return report(3, __func__, "iisnumcols_p is NULL");

    SolveControl& control = lp->control;
    // A search that fails leaves no subset of an earlier model.
    lp->iisnumrows = lp->iisnumcols = 0;
    control.elasticmode = static_cast<std::uint16_t>(control.iismethod + 1);
    const bool has_run = optimize(lp) == 0;
    const bool is_found = has_run && (lp->status == STAT_OPTIMAL || lp->status == STAT_MIP_OPTIMAL);
    lp->iisstatus = is_found && is_complete(*lp) ? IIS_FOUND : IIS_NOT_FOUND;
    *iisnumrows_p = lp->iisnumrows;
    *iisnumcols_p = lp->iisnumcols;
    reportprogress(&control, EVENT_ELASTIC, 0, 0.0);
    return 0;
}

extern "C" std::int32_t TARNWICK_CALL getiis(Problem* lp, std::int32_t* iisstatus_p,
                                             std::int32_t* rowind, std::int32_t* rowbdstat,
                                             std::int32_t* iisnumrows_p, std::int32_t* colind,
                                             std::int32_t* colbdstat, std::int32_t* iisnumcols_p)
{
    set_float_control();
    if (!is_handle(lp, __func__)) return 1;
    const std::int32_t rows = lp->iisnumrows, columns = lp->iisnumcols;
    if (rows == 0 && columns == 0) return report(1, __func__, "findiis or iiswrite not called");
    if (ole_mode()) {
        if (!view_present(rowind, rows))
            return report(3, __func__, "rowind is not a valid OLE array");
        if (!view_present(rowbdstat, rows))
            return report(4, __func__, "rowbdstat is not a valid OLE array");
        if (!view_present(colind, columns))
            return report(5, __func__, "colind is not a valid OLE array");
        if (!view_present(colbdstat, columns))
            return report(6, __func__, "colbdstat is not a valid OLE array");
    }
    give(lp->iisstatus, iisstatus_p);
    give(lp->rowind, rows, rowind);
    give(lp->rowbdstat, rows, rowbdstat);
    give(rows, iisnumrows_p);
    give(lp->colind, columns, colind);
    give(lp->colbdstat, columns, colbdstat);
    give(columns, iisnumcols_p);
    return 0;
}
