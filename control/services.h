#pragma once

#include <cstdint>

#include "control/engine.h"
#include "include/tarnwick.h"

namespace tarnwick {

// The model services: the only road from an engine or a strategy to the model. All arrays are
// 0-based here; an engine that counts from 1 hands in the address of element 1. Elastic variables
// follow the model's own and look like any other variable.

// Selectors of getintinfo.
enum : std::int32_t {
    INFO_NUMVARS = 0,  // columns, elastic ones included
    INFO_NUMLHS = 1,   // rows plus one
    INFO_NUMELASTIC = 2,
    INFO_NUMROWS = 3,
    INFO_ELASTICMODE = 4,
    INFO_HASOBJECTIVE = 5,
    INFO_MAXIMIZE = 6,    // 1 if the objective is maximised
    INFO_SCALING = 8,     // PARAM_SCALING plus 1: 0 is off
    INFO_BRANCHING = 10,  // 1 if branching suits the engine class
};

// Selectors of getdblinfo.
enum : std::int32_t {
    INFO_FEASTOL = 0,
    INFO_MIPGAP = 1,
    INFO_CONVTOL = 2,
    INFO_MUTATION = 3,
    INFO_RESERVED1092 = 4,
    INFO_PIVOTTOL = 5,
    INFO_OPTTOL = 6,
    INFO_CUTOFF = 7,
    INFO_CONSTANT = 8,
};

// Selectors of getrunparam.
enum : std::int32_t {
    RUN_ITERLIMIT = 0,
    RUN_TIMELIMIT = 1,
    RUN_NODELIMIT = 2,
    RUN_INTSOLLIMIT = 3,
    RUN_POPSIZE = 4,
    RUN_STALLTIME = 5,
};

// Bits of the event word of reportprogress. The word 0 reads the stop code, as EVENT_POLL does.
enum : std::int32_t {
    EVENT_WORD = 0xFFFF,  // what counts of the argument
    EVENT_ITERATION = 4,
    EVENT_NODE = 8,
    EVENT_POLL = 32,
    EVENT_FINAL = 64,           // a final evaluation follows; no effect
    EVENT_FINAL_DONE = 128,     // in a node event: value is the incumbent's objective
    EVENT_INFEASIBILITY = 256,  // in an iteration event: value is the infeasibility
    EVENT_ELASTIC = 512,
};

// Flags of evaljacobian.
enum : std::int32_t {
    JACOBIAN_OBJECTIVE = 1,  // visit the objective as well
    JACOBIAN_MINIMISE = 4,   // negate the gradient of an objective that is maximised
};

// Called by a walk for each entry, in the order of the walk. 0 stops it.
using Visit = std::int32_t(TARNWICK_CALL*)(SolveControl* control, void* user, std::int32_t row,
                                           std::int32_t column, double value, void* data) noexcept;

// The point and the rows as an engine ends with them, in real units.
struct SolutionRecord {
    std::int32_t columns;
    const double* lower;
    const double* point;
    const double* upper;
    const double* reduced;  // reduced costs; non-smooth models: the mean of each variable
    std::int32_t rows;
    const double* rowlower;
    const double* rowvalue;
    const double* rowupper;
    const double* duals;  // non-smooth models: the mean of each row
};

// Ranges of a linear run, or the statistics of a non-smooth one. Members without a name here are
// an engine's own and read by nobody else.
struct SensitivityRecord {
    std::int32_t columns;
    const double* cost;      // objective coefficients; statistics: standard deviations
    const double* costup;    // allowed increase; statistics: maximum
    const double* costdown;  // allowed decrease; statistics: minimum
    const double* own[6];
    std::int32_t rows;
    const double* rhs;      // right-hand sides; statistics: standard deviations
    const double* rhsup;    // allowed increase; statistics: maximum
    const double* rhsdown;  // allowed decrease; statistics: minimum
};

// An engine that has ended its run and can still tell the ranges of it.
struct RangeSource {
    void* engine;
    SensitivityRecord (*read)(void* engine) noexcept;  // at most once
    void (*release)(void* engine) noexcept;
};

// The entries from here on are exported by number: C linkage, the interface's calling convention.
extern "C" {

// Starts the clock, clears the stop code and sets the elastic variables up. 0: no memory for them.
std::int32_t TARNWICK_CALL beginrun(SolveControl* control, std::int32_t reserved) noexcept;
// Ends elastic mode.
std::int32_t TARNWICK_CALL endrun(SolveControl* control) noexcept;

// 1 linear and quadratic, 0 smooth, 3 non-smooth.
std::int16_t TARNWICK_CALL getengineclass(SolveControl* control) noexcept;
// Switches of the engines as flag words, by selector.
std::uint32_t TARNWICK_CALL getcapability(SolveControl* control, std::int32_t selector) noexcept;
std::int16_t TARNWICK_CALL getintinfo(SolveControl* control, std::int32_t selector) noexcept;
// 0 and the value 1e-8 for a selector that doesn't exist.
std::int32_t TARNWICK_CALL getdblinfo(SolveControl* control, double* value,
                                      std::int32_t selector) noexcept;
std::int32_t TARNWICK_CALL getrunparam(SolveControl* control, std::int32_t selector) noexcept;

std::int32_t TARNWICK_CALL getbounds(SolveControl* control, double* lb, double* ub,
                                     double* rowlower, double* rowupper) noexcept;
std::int32_t TARNWICK_CALL getintflags(SolveControl* control, std::int32_t* flags) noexcept;
std::int32_t TARNWICK_CALL getstart(SolveControl* control, double* x) noexcept;

// The left-hand sides of all rows, then the objective: lhs has numrows + 1 elements. The point
// becomes the one stored in the Problem. 0: the caller's function failed.
std::int32_t TARNWICK_CALL evalfunctions(SolveControl* control, double* lhs,
                                         const double* x) noexcept;
// The same from the stored point, two variables or one of which move.
std::int32_t TARNWICK_CALL evalcolpair(SolveControl* control, double* lhs, std::int32_t varone,
                                       double xone, std::int32_t vartwo, double xtwo) noexcept;
std::int32_t TARNWICK_CALL evalcol(SolveControl* control, double* lhs, std::int32_t var,
                                   double value) noexcept;

// Visit every entry of the matrix, then of the objective (row numrows). 0: a visit said stop.
std::int32_t TARNWICK_CALL walkmatrix(SolveControl* control, void* user, Visit visit,
                                      void* data) noexcept;
// Visit every entry of Q, then the linear objective with row -1.
std::int32_t TARNWICK_CALL walkquad(SolveControl* control, void* user, Visit visit,
                                    void* data) noexcept;

// Calls the caller's derivative function at x and visits every nonzero derivative of the rows, then
// those of elastic variables and, if the flags say so, of the objective (row numrows). The data of a
// visit is a double, to which it writes what it expected when it answers 0: the entry is wrong. 0:
// no such function, it failed, or an entry was wrong and the user didn't pass over it; else the last
// visit's answer, 1 without any visit.
std::int32_t TARNWICK_CALL evaljacobian(SolveControl* control, void* user, Visit visit,
                                        void* reserved, double* x, std::int32_t flags) noexcept;

// Reports an event and asks whether to stop: the stop code, or 0.
std::int32_t TARNWICK_CALL reportprogress(SolveControl* control, std::int32_t event,
                                          std::int32_t count, double value) noexcept;
// Copies the results of a run to the Problem; in elastic mode the infeasible subset instead.
void TARNWICK_CALL storesolution(SolveControl* control, const SolutionRecord* solution,
                                 const SensitivityRecord* sensitivity) noexcept;
// Fixes and frees elastic variables. 1 if a bound in ub moved.
std::int32_t TARNWICK_CALL setelastic(SolveControl* control, std::int32_t var, std::int32_t row,
                                      std::int32_t action, double* ub) noexcept;

}  // extern "C"

// The ranges of the results just stored; the engine becomes the Problem's. Few hosts ask for ranges,
// which take a good part of a small run: there they are read when they are asked for, in a large one,
// whose memory is of more use elsewhere, at once.
void storeranges(SolveControl& control, const RangeSource& source) noexcept;
// Reads the ranges that wait to be read.
void readranges(Problem& problem) noexcept;
// Does without them.
void dropranges(Problem& problem) noexcept;

// True for a model given by arrays without a quadratic part and without elastic variables. Its
// functions are zero at the origin, and doubling the point doubles them to the last bit.
bool ishomogeneous(const SolveControl& control) noexcept;

// Whether a matrix with indices could do without: see matrixisfull.
bool hasfullmatrix(const Problem& problem) noexcept;

// What walkmatrix visits of a dense matrix or one that is as full, without a call for each entry:
// rows[i + 1][j + 1] becomes entry (i, j), and row numrows + 1 holds the objective. False, and
// nothing done, for any other model.
bool copymatrix(const SolveControl& control, double* const* rows) noexcept;

}  // namespace tarnwick
