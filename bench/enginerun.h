#pragma once

#include "control/driver.h"
#include "control/services.h"
#include "interface/problem.h"
#include "linear/lpengine.h"

namespace bench {

inline tarnwick::LpEngine& engine_of(const tarnwick::SolveRun& run)
{
    return *static_cast<tarnwick::LpEngine*>(run.engine);
}

// Runs a model as optimize() does, with the given entries in place of the engine's. The model must
// have been solved before: its first run makes the arrays of its results.
inline void run_entries(Problem* lp, tarnwick::EngineEntry init, tarnwick::EngineEntry solve,
                        tarnwick::EngineEntry finish)
{
    tarnwick::beginrun(&lp->control, 0);
    tarnwick::EngineTable entries{&lp->control, init, solve, finish};
    tarnwick::solveproblem(entries);
    tarnwick::endrun(&lp->control);
}

}  // namespace bench
