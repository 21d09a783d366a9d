// What the library hands out beside the functions of the public header: the entries that have a
// number and no name. Numbers are part of the interface and are never used again.

#include "interface/exports.h"

#include "control/branch.h"
#include "control/driver.h"
#include "control/infeasible.h"
#include "control/services.h"
#include "linear/lpengine.h"
#include "linear/objective.h"
#include "linear/probe.h"
#include "nonsmooth/nspengine.h"
#include "platform/messagebox.h"
#include "reducedgradient/nlpengine.h"

namespace tarnwick {

namespace {

// The cast stands in each row: through a function, the table would be filled when the library is
// loaded.
// clang-format off
const NumberedExport NUMBERED_EXPORTS[] = {
    {41, "solveproblem",   reinterpret_cast<TarnwickEntry>(solveproblem)},
    {42, "directsolve",    reinterpret_cast<TarnwickEntry>(directsolve)},
    {43, "branchsolve",    reinterpret_cast<TarnwickEntry>(branchsolve)},
    {44, "iissolve",       reinterpret_cast<TarnwickEntry>(iissolve)},
    {45, "lpinit",         reinterpret_cast<TarnwickEntry>(lpinit)},
    {46, "lpsolve",        reinterpret_cast<TarnwickEntry>(lpsolve)},
    {47, "lpfinish",       reinterpret_cast<TarnwickEntry>(lpfinish)},
    {48, "nlpinit",        reinterpret_cast<TarnwickEntry>(nlpinit)},
    {49, "nlpsolve",       reinterpret_cast<TarnwickEntry>(nlpsolve)},
    {50, "nlpfinish",      reinterpret_cast<TarnwickEntry>(nlpfinish)},
    {51, "nspinit",        reinterpret_cast<TarnwickEntry>(nspinit)},
    {52, "nspsolve",       reinterpret_cast<TarnwickEntry>(nspsolve)},
    {53, "nspfinish",      reinterpret_cast<TarnwickEntry>(nspfinish)},
    {54, "beginrun",       reinterpret_cast<TarnwickEntry>(beginrun)},
    {55, "endrun",         reinterpret_cast<TarnwickEntry>(endrun)},
    {56, "getengineclass", reinterpret_cast<TarnwickEntry>(getengineclass)},
    {57, "getcapability",  reinterpret_cast<TarnwickEntry>(getcapability)},
    {58, "evalfunctions",  reinterpret_cast<TarnwickEntry>(evalfunctions)},
    {59, "getbounds",      reinterpret_cast<TarnwickEntry>(getbounds)},
    {60, "getintflags",    reinterpret_cast<TarnwickEntry>(getintflags)},
    {61, "getstart",       reinterpret_cast<TarnwickEntry>(getstart)},
    {62, "getintinfo",     reinterpret_cast<TarnwickEntry>(getintinfo)},
    {63, "getdblinfo",     reinterpret_cast<TarnwickEntry>(getdblinfo)},
    {64, "reportprogress", reinterpret_cast<TarnwickEntry>(reportprogress)},
    {65, "storesolution",  reinterpret_cast<TarnwickEntry>(storesolution)},
    {66, "evalcolpair",    reinterpret_cast<TarnwickEntry>(evalcolpair)},
    {67, "evalcol",        reinterpret_cast<TarnwickEntry>(evalcol)},
    {68, "walkmatrix",     reinterpret_cast<TarnwickEntry>(walkmatrix)},
    {69, "walkquad",       reinterpret_cast<TarnwickEntry>(walkquad)},
    {70, "evaljacobian",   reinterpret_cast<TarnwickEntry>(evaljacobian)},
    {71, "getrunparam",    reinterpret_cast<TarnwickEntry>(getrunparam)},
    {72, "setelastic",     reinterpret_cast<TarnwickEntry>(setelastic)},
    {73, "visitmatrix",    reinterpret_cast<TarnwickEntry>(visitmatrix)},
    {74, "visitquad",      reinterpret_cast<TarnwickEntry>(visitquad)},
    {75, "nlpjacobianentry", reinterpret_cast<TarnwickEntry>(nlpjacobianentry)},
};
// clang-format on

}  // namespace

std::span<const NumberedExport> numbered_exports() noexcept { return NUMBERED_EXPORTS; }

}  // namespace tarnwick

using namespace tarnwick;

extern "C" void TARNWICK_CALL setmessagebox(TarnwickMessageBox function)
{
    set_message_box(function);
}

extern "C" TarnwickEntry TARNWICK_CALL getexport(std::int32_t number)
{
    for (const NumberedExport& row : NUMBERED_EXPORTS)
        if (row.number == number) return row.address;
    return nullptr;
}
