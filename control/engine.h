#pragma once

#include <cstdint>

#include "include/tarnwick.h"
#include "platform/array.h"

namespace tarnwick {

struct SolveControl;
struct SolveRun;

// A bound of this magnitude or more is none.
inline constexpr double INFINITE_BOUND = 1e30;

// How an engine or a strategy ends. The map to external statuses is a table of the driver.
enum EngineResult : std::int32_t {
    ENGINE_OPTIMAL = 0,
    ENGINE_CONVERGED = 1,
    ENGINE_STALLED = 2,
    ENGINE_ITERLIMIT = 3,
    ENGINE_UNBOUNDED = 4,
    ENGINE_INFEASIBLE = 5,
    ENGINE_USERSTOP = 6,
    ENGINE_MODELCHECK = 7,  // the model, or the answer, is not of the declared form
    ENGINE_BADMODEL = 8,
    ENGINE_EVALERROR = 9,
    ENGINE_TIMELIMIT = 10,
    ENGINE_NOMEMORY = 11,
    ENGINE_RESERVED12 = 12,
    ENGINE_INTERNAL = 13,
    ENGINE_GAPREACHED = 14,
    ENGINE_NODELIMIT = 15,
    ENGINE_INTLIMIT = 16,
};

// Why a report asks the run to end.
enum StopCode : std::int32_t {
    STOP_NONE = 0,
    STOP_ITERLIMIT = 1,
    STOP_USER = 2,
    STOP_TIMELIMIT = 3,
    STOP_NODELIMIT = 4,
    STOP_INTLIMIT = 5,
};

// The result with which a run ends that was stopped by `stop`; `otherwise` when it wasn't.
EngineResult stopresult(std::int32_t stop, EngineResult otherwise) noexcept;

// What an engine promises. All three entries leave a result code in the run.
//
//   engine_init    builds the engine, reads the model through the services, publishes numvars, x,
//                  lb and ub; 0: failed, only engine_finish follows
//   engine_solve   solves with the bounds now in lb and ub; nonzero: a strategy may go on
//   engine_finish  hands the results to storesolution and releases the engine, however little of
//                  it was built
using EngineEntry = std::int32_t(TARNWICK_CALL*)(SolveRun& run) noexcept;

// A strategy calls engine_solve once or many times. -1: the result in the run stands; any other
// value is a result code that replaces it.
using Strategy = std::int32_t(TARNWICK_CALL*)(EngineEntry engine_solve, SolveRun& run) noexcept;
inline constexpr std::int32_t RESULT_STANDS = -1;

struct EngineTable {
    SolveControl* control;
    EngineEntry engine_init;
    EngineEntry engine_solve;
    EngineEntry engine_finish;
};

// Bits of SolveRun.flags.
enum : std::uint32_t {
    RUN_REPEATED = 1,  // several solves follow, from changed bounds
    RUN_DIRECT = 2,    // one solve; the full analysis applies
    RUN_ELASTIC = 4,   // the model carries elastic variables
};

// One run, from engine_init to engine_finish. x, lb and ub are the engine's arrays, 0-based.
struct SolveRun {
    SolveControl* control;
    void* engine;
    Strategy strategy;
    std::int32_t numvars;  // elastic variables included
    EngineResult result;   // of the last step
    double objective;      // of the last solve, in the sense of minimisation
    std::uint32_t flags;   // RUN_...

    double* ub;  // numvars, may be changed between solves
    double* lb;  // numvars, likewise
    double* x;   // numvars, point of the last solve

    Array<std::int32_t> intflags;  // numvars, nonzero: integer; null: there are none

    double* nodedata;  // numvars + 1, a point attached to a node of the integer search
    void* nodeaux;

    std::int32_t branchcount;  // length of branchlist
    std::int32_t* branchlist;  // branching candidates from 1, or null: all variables in order
    char* binarystate;         // one per branchlist entry, or null
};

}  // namespace tarnwick
