#pragma once

#include <utility>

#include "control/engine.h"
#include "control/services.h"
#include "interface/problem.h"
#include "linear/lpengine.h"
#include "tests/support/models.h"

namespace tarnwick {

// What the driver does around the linear engine, with the engine in the open: set-up when it is
// made, as many solves as the test wants, lpfinish at the end.
class EngineRun {
  public:
    explicit EngineRun(Problem* lp, std::uint32_t flags = RUN_DIRECT)
    {
        SolveControl& control = lp->control;
        // A run that ends at once: the driver makes the arrays in which every run leaves its results.
        const std::uint16_t elasticmode = std::exchange(control.elasticmode, std::uint16_t{0});
        const std::int32_t limit = std::exchange(control.iterlimit, 0);
        const TarnwickCallback callback = std::exchange(control.lpcallback, nullptr);
        optimize(lp);
        control.elasticmode = elasticmode;
        control.iterlimit = limit;
        control.lpcallback = callback;

        run.control = &control;
        run.flags = flags;
        beginrun(&control, 0);
        ready = lpinit(run);
    }
    ~EngineRun()
    {
        lpfinish(run);
        endrun(run.control);
    }
    EngineRun(const EngineRun&) = delete;
    EngineRun& operator=(const EngineRun&) = delete;

    EngineResult solve()
    {
        solved = lpsolve(run);
        return run.result;
    }
    LpEngine& record() { return *static_cast<LpEngine*>(run.engine); }

    SolveRun run{};
    std::int32_t ready = 0;   // what lpinit returned
    std::int32_t solved = 0;  // what the last lpsolve returned
};

}  // namespace tarnwick
