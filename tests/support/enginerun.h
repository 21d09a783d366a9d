#pragma once

#include "control/engine.h"
#include "linear/lpengine.h"
#include "tests/support/models.h"

namespace tarnwick {

// What the driver does around the linear engine, with the engine in the open: set-up when it is
// made, as many solves as the test wants, lpfinish at the end.
class EngineRun {
  public:
    explicit EngineRun(Problem* lp, std::uint32_t flags = RUN_DIRECT);
    ~EngineRun();
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
