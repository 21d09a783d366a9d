#pragma once

#include <algorithm>

#include "nonsmooth/population.h"
#include "tests/nonsmooth/hostmodel.h"

namespace tarnwick {

// An engine at the start of a search, without scales, that tolerates no infeasible candidate.
struct Engine {
    HostModel host;
    NspRun run;
    NspEngine& nsp = run.record();

    explicit Engine(NonSmooth model) : host(std::move(model)), run(unscaled(host))
    {
        run.run.control->iterlimit = 0;
        nspsolve(run.run);  // sets the accounts up and ends at its first report
        pop_release(nsp);
        reportprogress(run.run.control, EVENT_ITERATION, -1, 0.0);  // clears the stop
        nsp.infeasibletolerated = nsp.infeasibleinrow = 0;
    }
    static const HostModel& unscaled(const HostModel& host)
    {
        setintparam(host.lp, PARAM_SCALING, -1);
        return host;
    }
    NspMember* add(const Reals& point, double objective, double penalty = 0.0)
    {
        std::copy(point.begin(), point.end(), nsp.point.data());
        nsp.objective = objective;
        nsp.fitness = objective + penalty;
        EXPECT_EQ(nsp_new_member(nsp), CANDIDATE_STANDS);
        NspMember* const member = nsp.pending;
        pop_insert(nsp);
        return member;
    }
};

}  // namespace tarnwick
