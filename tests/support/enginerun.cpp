#include "tests/support/enginerun.h"

#include <utility>

#include "control/services.h"
#include "interface/problem.h"

namespace tarnwick {

EngineRun::EngineRun(Problem* lp, std::uint32_t flags)
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

EngineRun::~EngineRun()
{
    lpfinish(run);
    endrun(run.control);
}

}  // namespace tarnwick
