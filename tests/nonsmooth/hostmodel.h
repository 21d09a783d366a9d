#pragma once

#include "control/services.h"
#include "interface/problem.h"
#include "nonsmooth/nspengine.h"
#include "nonsmooth/population.h"
#include "tests/support/functionhost.h"

namespace tarnwick {

// A non-smooth model, loaded. Bounds that are left out are -10 and 10.
struct HostModel : FunctionHost {
    explicit HostModel(FunctionCase given) : FunctionHost(boxed(std::move(given)), false) {}

    static FunctionCase boxed(FunctionCase given)
    {
        const auto n = static_cast<std::size_t>(given.variables);
        if (given.lb.empty()) given.lb.assign(n, -10.0);
        if (given.ub.empty()) given.ub.assign(n, 10.0);
        return given;
    }
};

inline HostFunctions always(double objective)
{
    return [=](const Reals&, double& f, Reals&) {
        f = objective;
        return true;
    };
}

// What the driver does around the engine, with the engine in the open: set-up when it is made,
// nspfinish at the end. The first run, cut short, makes the arrays for the results.
class NspRun {
  public:
    explicit NspRun(const HostModel& host)
    {
        SolveControl& control = host.lp->control;
        const std::int32_t limit = std::exchange(control.iterlimit, 0);
        optimize(host.lp);
        control.iterlimit = limit;

        run.control = &control;
        run.flags = RUN_DIRECT;
        if (!host.model.ctype.empty()) {
            static_cast<void>(run.intflags.create(host.model.ctype.size()));
            getintflags(&control, run.intflags.data());
        }
        beginrun(&control, 0);
        EXPECT_EQ(nspinit(run), 1);
    }
    ~NspRun()
    {
        nspfinish(run);
        endrun(run.control);
    }
    NspRun(const NspRun&) = delete;
    NspRun& operator=(const NspRun&) = delete;

    NspEngine& record() { return *static_cast<NspEngine*>(run.engine); }

    SolveRun run{};
};

// Ranks a member with the given values. A penalty makes it infeasible.
inline NspMember* add_member(NspEngine& nsp, double objective, double penalty)
{
    nsp.objective = objective;
    nsp.fitness = objective + penalty;
    EXPECT_EQ(nsp_new_member(nsp), CANDIDATE_STANDS);
    NspMember* const member = nsp.pending;
    pop_insert(nsp);
    return member;
}

// An engine at the start of a search, without scales, that tolerates no infeasible candidate.
struct Engine {
    HostModel host;
    NspRun run;
    NspEngine& nsp = run.record();

    explicit Engine(FunctionCase model) : host(std::move(model)), run(host)
    {
        nsp.scaling = false;
        run.run.control->iterlimit = 0;
        nspsolve(run.run);  // sets the accounts up and ends at its first report
        pop_release(nsp);
        reportprogress(run.run.control, EVENT_ITERATION, -1, 0.0);  // clears the stop
        nsp.infeasibletolerated = nsp.infeasibleinrow = 0;
    }
    NspMember* add(const Reals& point, double objective, double penalty = 0.0)
    {
        std::copy(point.begin(), point.end(), nsp.point.data());
        return add_member(nsp, objective, penalty);
    }
};

}  // namespace tarnwick
