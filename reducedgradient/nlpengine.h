#pragma once

#include <cstdint>

#include "control/engine.h"
#include "platform/array.h"

// The record of the reduced-gradient engine: minimise g_m(x) subject to bounds on x and on the rows
// g_1(x) .. g_m-1(x), where m counts the objective as the last row. n variables; arrays count from 1,
// element 0 is idle. The slack of row i is variable n + i and stands for g_i(x), so that a row is a
// variable with bounds, and
//
//     g(x) - s = 0
//
// holds for every row. A row that stands on a bound is binding; its slack is held there. The basis has
// a position for each binding row, with one basic variable each, which Newton steps keep on the rows.
// All other variables are nonbasic: the superbasic ones are free to move, the rest stand on a bound.
//
// A variable array has the elements 0..n, a row array 0..m+2, a long array 0..n+m+3 and a work array
// as many as the longer of the first two. Units: the host's between solves, scaled during one.

namespace tarnwick {

// What counts as zero: pivots, slopes, differences of objectives. Absolute, scaled units.
inline constexpr double TINY = 1e-15;
// Consecutive passes within the band of convergence that end a run.
inline constexpr int STALL_LIMIT = 5;
// Newton iterations of one restoration.
inline constexpr int NEWTON_LIMIT = 10;
// Pivots below it are avoided. Absolute in scaled units, and relative to the largest.
inline constexpr double BASIS_PIVOT_TOL = 1e-4;

// Rows 1..m of single precision, each of the elements 0..n.
struct JacobianRows {
    Vec<float> cells;
    int width = 0;  // n + 1

    float* operator[](int i) const noexcept { return cells.data() + std::ptrdiff_t{width} * i; }
};

enum DerivativeMode : std::int32_t {
    DERIVE_FORWARD = 0,
    DERIVE_CENTRAL = 1,
    DERIVE_ANALYTIC = 2,
    DERIVE_CHECKED = 3,  // by the host's function, compared with central differences
};

// How the bounds of a row are held.
enum RowKind : std::int32_t { ROW_FREE = 0, ROW_EQUALITY = 1, ROW_BOUNDED = 2 };

// Which extrapolation predicts the basic variables.
enum Extrapolation : std::int32_t { BY_TANGENT = 0, BY_TWO_POINTS = 1, BY_THREE_POINTS = 2 };

// A point of the basic variables along the direction.
struct BasicPoint {
    double step = 0.0;
    Vec<double> value;  // work, by position
};

struct NlpEngine {
    SolveControl* control = nullptr;

    // Set up once.
    int variables = 0;     // n, elastic ones included
    int rows = 0;          // m
    int objrow = 0;        // m
    int factorlimit = -1;  // most superbasics for the factor; -1: conjugate gradients only
    std::int32_t derivmode = DERIVE_FORWARD;
    bool maximise = false;     // the host's objective; here it is negated
    bool quadratic = false;    // predict basic variables by parabolas
    bool recognise = false;    // keep columns that prove constant
    bool scaling = false;      // asked for
    double feastol = 0.0;      // absolute, scaled: rows and bounds hold within it
    double convergence = 0.0;  // share of the whole progress
    double diffstep = 0.0;     // relative with 1: step of the differences; absolute: equal slopes

    // The model, the host's bounds or those of the strategy; scaled during a solve.
    Vec<double> varlower, varupper;          // variable
    Vec<double> rowlower, rowupper;          // row
    Vec<double> realvarlower, realvarupper;  // the same in the host's units, during a scaled solve
    Vec<double> realrowlower, realrowupper;
    Vec<double> scale;    // long, divisors above 0: of variable j, and in n + i of row i
    bool scaled = false;  // they are in force

    // The run. Once status is set nothing more is solved.
    EngineResult status = ENGINE_OPTIMAL;     // the stop or the failure that ended it
    EngineResult finalcode = ENGINE_OPTIMAL;  // the engine's verdict
    bool firstjacobian = false;  // has been made; from then on reports may stop the run

    // One solve.
    Vec<double> startpoint;      // variable, within the bounds
    Vec<double> point;           // long, present values, slacks included
    Vec<double> lower, upper;    // long, working bounds, slacks included
    Vec<std::int32_t> rowkind;   // row, RowKind; the objective's is ROW_FREE
    Vec<std::int32_t> fixed;     // variable, 1: equal bounds
    Vec<double> rowvalue;        // row; [m] is the violation sum in phase 1
    Vec<double> startrowvalue;   // row
    Vec<double> lastpoint;       // variable, where optimality was tested before
    int iterations = 0;          // line searches
    bool hasmoved = false;       // one of them has led away from the start
    int ninfeasible = 0;         // inactive rows violated beyond feastol; nonzero: phase 1
    double trueobjective = 0.0;  // while [m] holds the sum

    // Derivatives of the scaled, minimised problem.
    JacobianRows jacobian;    // row m is the violation sum's gradient in phase 1
    Vec<double> objgradient;  // variable, the objective's
    Vec<std::int32_t>
        stablecount;             // variable, refreshes that found the column the same; -1: it isn't
    bool jacobianvalid = false;  // holds values of this solve
    Vec<double> rowplus, rowminus;  // row, values beside the point
    Vec<double> realpoint;          // variable, the host's units

    // The basis. A basic slack is n + row in `basic` and n + position in `basisorder`.
    int nbasic = 0;     // binding rows, and basis positions
    int ninactive = 0;  // bounded rows that don't bind
    int nsuper = 0;
    Vec<std::int32_t> binding;   // row, row of each position
    Vec<std::int32_t> position;  // row, position of each row, 0: it doesn't bind
    Vec<std::int32_t> inactive;  // row
    Vec<std::int32_t> basic;     // row, by position; behind nbasic the inactive rows' slacks
    Vec<std::int32_t>
        basisorder;               // row, basic columns in the order in which they are offered again
    Vec<std::int32_t> nonbasic;   // variable; 1..nsuper are the superbasics
    Vec<std::int32_t> boundside;  // variable, by place in nonbasic: -1 lower, 1 upper, 0 neither
    Vec<std::int32_t> previous;   // work, an earlier list for comparison
    Vec<std::int32_t> columnmark;  // long, scratch: may enter; is basic; old place
    Vec<std::int32_t> pivotrow;    // variable, row of a column's best pivot
    Vec<double> maxpivot;          // variable, its magnitude
    Vec<double> bounddistance;     // variable, 0 within feastol, at most 1e10
    Matrix basisinverse;           // 0..m+2 by work, by position; a slack's column is -e
    int hitposition = 0;           // place in `basic` that reached a bound, or that has to leave
    int blockrow = 0;              // position that blocks the direction
    bool canmove = false;          // none does
    bool rebuildnext = false;      // the next refresh chooses the basis afresh
    bool superchanged = false;     // the set of superbasics isn't the last one
    bool degenerate = false;       // the last pass exchanged the basis instead of moving

    // Multipliers, by position or by place in nonbasic.
    Vec<double> multiplier;   // work
    Vec<double> redgrad;      // variable
    Vec<double> prevredgrad;  // variable, when the direction was made
    Vec<double> gradchange;   // variable, and scratch

    // The direction over the superbasics.
    Vec<double> direction;     // variable
    Vec<double> tangent;       // work, of the basic variables along it
    Vec<double> factor;        // L of B = L L', rows one after the other; absent without a limit
    Vec<double> refactor;      // likewise, scratch
    int cgcount = 0;           // conjugate-gradient steps since a restart
    bool quasinewton = false;  // the factor is in use
    bool nodirection = false;
    bool restarted = false;     // steepest descent, or from an identity factor
    bool forcedescent = false;  // the next one is to be steepest descent

    // The line search.
    Vec<double> superstart;    // variable, superbasic values at step 0
    Vec<double> beststate;     // row, values of `basic` at the best point
    Vec<double> bestrowvalue;  // row
    double step = 0.0, maxstep = 0.0;
    double beststep = 0.0, bestobjective = 0.0;
    int bestinfeasible = 0;
    BasicPoint extrap[3];
    std::int32_t extrappoints = BY_TANGENT;
    double hitstep = 0.0;   // step at which the variable is on its bound
    double hitbound = 0.0;  // that bound
    double hitslope = 0.0;  // slope of an inactive row along the direction, else 0
    double rowtol = 0.0;    // within which Newton's method brings the binding rows: feastol or less
    int newtoniters = 0;
    bool newtonfailed = false;
    bool interior = false;      // the search ended with no variable on a bound
    bool previnterior = false;  // the one before
    bool nowfeasible = false;   // the tentative step has ended phase 1
    bool superatbound = false;  // it went to maxstep
    bool unbounded = false;
    bool stepfound = true;
    Vec<double> work1, work2, work3;  // work

    // The report, in the host's units and sense.
    Vec<double> rowdual;      // row
    Vec<double> reducedcost;  // variable

    // The memory of all these.
    ArrayBlock arrays;
    ArrayBlock matrices;
    ArrayBlock factors;
};

// The engine's entries: see engine.h for what they promise.
extern "C" {
std::int32_t TARNWICK_CALL nlpinit(SolveRun& run) noexcept;
std::int32_t TARNWICK_CALL nlpsolve(SolveRun& run) noexcept;
std::int32_t TARNWICK_CALL nlpfinish(SolveRun& run) noexcept;
// Takes a derivative of the host's; what evaljacobian visits. 0: it is not a number of single
// precision, or it differs from the numeric one, which goes to the data.
std::int32_t TARNWICK_CALL nlpjacobianentry(SolveControl* control, void* engine, std::int32_t row,
                                            std::int32_t column, double value, void* data) noexcept;
}

inline bool is_slack(const NlpEngine& nlp, int v) noexcept { return v > nlp.variables; }

// Entry of the column of variable v in the binding row of position i.
inline double column_entry(const NlpEngine& nlp, int i, int v) noexcept
{
    if (!is_slack(nlp, v)) return nlp.jacobian[nlp.binding[i]][v];
    return nlp.position[v - nlp.variables] == i ? -1.0 : 0.0;
}

}  // namespace tarnwick
