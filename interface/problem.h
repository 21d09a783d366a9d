#pragma once

#include <cstdint>

#include "control/services.h"
#include "control/solvecontrol.h"
#include "include/tarnwick.h"
#include "platform/array.h"

namespace tarnwick {

struct SafeArray;

// Middle, lower and upper value of each column, or row.
struct RangeArrays {
    double* middle;
    double* lower;
    double* upper;
};

}  // namespace tarnwick

// The record behind the handle. Model arrays are the caller's; pointers into them are only read,
// but for the text reader, which fills them, and for obj and matval of a model that is known through
// the caller's functions: these are buffers for its derivatives. All arrays are 0-based.
struct Problem {
    Problem* self;             // its own address: what the handle test compares
    char* name;                // behind the record, in the same block
    std::int32_t problemtype;  // PROB_...
    std::int32_t numcols, numrows;
    std::int32_t objsen;  // 1 minimise, -1 maximise

    // The model, the caller's.
    double* obj;           // numcols
    double* rhs;           // numrows
    char* sense;           // numrows, L E G or R
    std::int32_t* matbeg;  // numcols; these three are null for the dense layout
    std::int32_t* matcnt;  // numcols
    std::int32_t* matind;  // matnz
    double* matval;        // matnz, or numcols runs of numrows values
    double* var;           // numcols, starting point, or null
    double* lb;            // numcols
    double* ub;            // numcols
    double* rowrange;      // numrows, width of R rows, or null
    std::int32_t colspare, rowspare;
    std::int32_t matnz;
    std::int32_t* qmatbeg;  // numcols; these three are null for the dense layout
    std::int32_t* qmatcnt;  // numcols
    std::int32_t* qmatind;  // qnz
    double* qmatval;        // qnz, or numcols columns of numcols values
    std::int32_t qnz;
    char* ctype;       // numcols, C I or B, or null
    char* objtype;     // numcols, L or N: how the objective depends on each variable, or null
    char* matvaltype;  // matnz, L or N: the same for each entry of the matrix, or null
    TarnwickFuncEval funceval;  // null for linear and quadratic models
    TarnwickJacobian jacobian;  // or null

    // Counters of the current run, written by its reports.
    double currentobj;
    double infeasibility;
    double bestinteger;
    std::int32_t iterations;  // of the current subproblem
    std::int32_t nodes;
    std::int32_t totaliterations;  // of the finished subproblems
    std::int32_t intsolutions;

    // Results of the last run.
    std::int32_t status;  // STAT_...
    double objval;        // at the point last evaluated
    bool running;         // inside optimize: a callback must not start or unload the model again
    bool hasresults;      // a run has stored the arrays below
    tarnwick::Array<double> results;  // the block behind these arrays
    double* x;                       // numcols, the point last evaluated: after a run, the solution
    double* dj;                      // numcols
    double* piout;                   // numrows
    double* slack;                   // numrows
    std::int32_t firstcol, lastcol;  // the sensitivity arrays cover these, inclusive
    tarnwick::RangeArrays colrange;
    std::int32_t firstrow, lastrow;
    tarnwick::RangeArrays rowrangeof;
    bool hasranges;                     // the sensitivity arrays hold something
    tarnwick::RangeSource rangesource;  // where ranges wait to be read; its engine is null: nowhere

    // The stored infeasible subset.
    std::int32_t iisstatus;  // IIS_...
    std::int32_t iisnumrows, iisnumcols;
    tarnwick::Array<std::int32_t> rowind, rowbdstat;  // iisnumrows
    tarnwick::Array<std::int32_t> colind, colbdstat;  // iisnumcols

    // OLE array mode: the handles of obj, matbeg, matcnt, matind and matval, and those of objtype
    // and matvaltype, kept for the caller's derivative function.
    tarnwick::SafeArray** olehandles[5];
    tarnwick::SafeArray** oletypehandles[2];

    tarnwick::SolveControl control;
};

namespace tarnwick {

// Where the life of a Problem, the handle test, the size limits and the reports of the interface
// live.

// Makes a Problem that is empty but for its name, with the default parameters. Null: no memory.
Problem* create_problem(const char* name) noexcept;
// Ends the handle and releases what the Problem owns.
void release_problem(Problem* problem) noexcept;
// Makes the arrays in which a run leaves its point and its results, once per Problem. False: no
// memory.
bool create_results(Problem& problem) noexcept;

struct SizeLimits {
    std::int32_t numcols, numrows;
};

bool is_lp_family(std::int32_t problemtype) noexcept;   // LP, MILP, QP, MIQP
bool is_nlp_family(std::int32_t problemtype) noexcept;  // NLP, MINLP
bool is_nsp_family(std::int32_t problemtype) noexcept;  // NSP, MINSP
SizeLimits size_limits(std::int32_t problemtype) noexcept;
bool is_too_large(const Problem& problem) noexcept;

// True if a variable is integer and integer restrictions are not ignored.
bool is_mip(const Problem& problem) noexcept;

// True if the Q of the Problem, with the sign of the sense folded in, is positive semi-definite:
// the objective then is convex in the direction of the search. A NaN in Q and a lack of memory fail
// the test.
bool is_semidefinite(const Problem& problem) noexcept;

// An error report: shows the message box when PARAM_MESSAGES is on, and hands back the code.
[[gnu::cold]] std::int32_t report(std::int32_t code, const char* title, const char* text) noexcept;

// The handle test. False: it has been reported, and the caller returns 1.
bool is_handle(const Problem* lp, const char* title) noexcept;
// The handle test, for what must not happen inside a run of the model: a callback may not load,
// solve, fill or unload it. False: it has been reported, and the caller returns 1.
bool is_idle(const Problem* lp, const char* title) noexcept;
// True for null and all ones, the two values that never are a handle.
bool is_null_handle(const Problem* lp) noexcept;

// The process-wide parameters.
bool messages_are_on() noexcept;
bool ole_mode() noexcept;

// An optional array: null, or -1 in its first element.
bool is_absent(const double* array) noexcept;
bool is_absent(const std::int32_t* array) noexcept;

}  // namespace tarnwick
