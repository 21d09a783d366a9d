#pragma once

#include <cstdint>

#include "control/engine.h"
#include "platform/array.h"

// The record of the linear engine. n columns, m rows; arrays count from 1. A column array has the
// elements 0..n, a row array 0..m+1 with the objective in m+1; element 0 is idle unless a comment
// says otherwise.
//
// The tableau T has the rows 0..m+1 and the columns 0..n. Row 0 is the objective in minimisation
// form, rows 1..m are the constraints, row m+1 the objective as read and later the infeasibility
// that the first phase minimises. Labels name variables: 1..n the model's, n+i the logical variable
// of row i, with bounds 0 and 1e30. For each row i with basic variable B
//
//     B + sum over the columns j of T[i][j] * (variable of column j) = constant
//
// and T[i][0] is the present value of B, in row 0 of the objective.

namespace tarnwick {

// Entries of this magnitude or less count as zero in every update, in scaled units.
inline constexpr double NEGLIGIBLE = 1e-15;

// What the model was found to be.
enum LpMode : std::int32_t { MODE_NONE = 0, MODE_LINEAR = 1, MODE_QUADRATIC = 2 };

// Where the nonbasic variable of a column rests.
enum ColumnState : std::int32_t {
    AT_LOWER = 'L',
    AT_UPPER = 'U',
    AT_ZERO = 'X',  // free
    IS_FIXED = 'F',
};

struct RowSense {
    std::uint8_t flips;  // how often the row's sign was changed
    char sense;          // < > =
};

// Pivots whose effect on the rows 1..m is still to be applied: pivot p takes
// columns[p][i] * rows[p][j] from T[i][j]. A zero in either array says that there is nothing to do:
// the entry was negligible, or the row or column has been brought up to date on its own.
struct WaitingPivots {
    int count = 0;
    int capacity = 0;  // 0: every pivot is applied at once, and rows[0] and columns[0] are scratch
    Matrix rows;       // one for each, 0..n: the pivot row after its division
    Matrix columns;    // one for each, 0..m+1: the pivot column before it
    Vec<std::int32_t> list;  // n, columns of the entries of a pivot row; scratch
};

// Which activity of a row holds the share of an infinite bound.
enum : std::uint8_t { MAXREST_OPEN = 1, MINREST_OPEN = 2 };

struct LpEngine {
    SolveControl* control = nullptr;

    // Set up once.
    int n = 0, m = 0;
    LpMode mode = MODE_NONE;
    bool maximize = false;
    bool colscaled = false, rowscaled = false;  // some exponent is not zero
    double tol = 0.0;            // relative, plus 1.0: linearity, consistency of the answer
    Vec<double> start;           // n, the start point; scaled
    Vec<double> grad;            // n, the costs; scaled
    Vec<double> rowlower;        // m+1
    Vec<double> rowupper;        // m+1
    Vec<double> rhs;             // m+1, right-hand side of each row; scaled
    Vec<std::int32_t> colexp;    // n, binary scale exponents
    Vec<std::int32_t> rowexp;    // m+1, [0] and [m+1] are the objective's
    Vec<double> colup, coldown;  // n, two to the power of the exponent and of its negative
    Vec<double> rowup, rowdown;  // m+1, likewise

    // The point. Real units between solves, scaled during one.
    Vec<double> x;                // n; before a solve it decides the side of a boxed variable
    Vec<double> lower, upper;     // n, working bounds
    Vec<double> iterate;          // n, the point handed to a report
    Vec<double> rowvalue;         // m+1, rows at the point last evaluated
    Vec<double> rowbase;          // m+1, rows at the start point
    Vec<double> rowprobe;         // m+1, scratch
    bool answerverified = false;  // the first optimum has been checked
    bool rowsarecurrent = false;  // rowvalue holds the rows at x, in scaled units
    bool pointisscaled = false;   // x, lower and upper, for the analysis after the only solve

    // One solve.
    Matrix tableau;                // rows 0..m+1, columns 0..n
    Vec<RowSense> senses;          // m
    Vec<std::int32_t> colstate;    // n, ColumnState
    Vec<std::int32_t> collabel;    // n
    Vec<std::int32_t> rowlabel;    // m
    Vec<std::int32_t> rowpending;  // m, 1 while the row's first logical is basic and undecided
    std::int32_t leavebound = 0;   // AT_LOWER or AT_UPPER: where what moves comes to rest
    int activecols = 0;            // columns 1..activecols may enter
    std::int32_t iterations = 0;   // pivots and flips
    double feastol = 0.0;          // absolute, scaled units: what is left of the infeasibility
    double opttol = 0.0;           // absolute, scaled units: attractive costs
    double pivottol = 0.0;         // absolute, scaled units: smallest pivot

    // During a simplex run column 0 of the tableau is kept here, and the bounds of the basic
    // variables beside it, so that a step scans whole arrays instead of a column of the matrix.
    Vec<double> basicvalue;  // m+1, [0] the objective
    Vec<double> basiclower;  // m+1, infinite where there is no row
    Vec<double> basicupper;  // m+1, likewise
    Vec<double> column;      // m+1, the entering column, up to date
    Vec<double> steps;       // m+1, how far it can move for each row; NaN: the row sets no limit
    WaitingPivots waiting;

    // Kept for repeated solves.
    Matrix savedtableau;
    Vec<RowSense> savedsenses;  // m

    // Preprocessing of 0-1 variables: see linear/binaries.cpp.
    int numbin = 0;  // at set-up, the first of the list; 0: there is no preprocessing
    bool fixbyrow = false, fixbycost = false, orderbin = false, tightenrest = false;
    bool binscaled = false;              // some binone is not 1.0
    double pretol = 0.0;                 // absolute, scaled: rows, and bounds that move
    Vec<double> binone;                  // n, the value 1.0 in scaled units
    Vec<double> rowmaxrest, rowminrest;  // m, activities of the columns that are not 0-1
    Vec<std::uint8_t> restisopen;        // m, MAXREST_OPEN and MINREST_OPEN
    Vec<char> rowstatus;                 // m, ' ', or '-' for a row that can't be violated
    Vec<bool> isbinary;                  // n
    Array<std::int32_t> branchlist;      // what the run's list points at
    Array<char> binarystate;             // likewise

    // The quadratic method: see objective.cpp, master.cpp and quadratic.cpp.
    Matrix quad;  // rows 0..n, columns 0..n: [0] the linear costs, then Q, symmetric; real
    Vec<std::int32_t> quadfirst;  // n, first column of an entry of row i of Q, n+1 if there is none
    Vec<std::int32_t> quadlast;   // n, the last one, 0 if there is none
    Matrix vertices;  // rows 0..n+3, columns 0..n: [0] the current point, 1..hullsize the vertices;
                      // entry 0 is the predicted objective, and the weight of a vertex
    Matrix midvalues;  // rows 0..n+3, columns 0..n+2: objective half-way between two vertices;
                       // [0] and [hullsize+1] are weights of a master
    int hullsize = 0;  // vertices alive, at most n+2
    std::int32_t majors = 0;  // major iterations

    // The analysis.
    Vec<double> dj;              // n, reduced costs in the sense of the model
    Vec<double> objup, objdown;  // n, room of each cost while the basis stays optimal
    Vec<double> pi;              // m+1, duals in the sense of the model
    Vec<double> rhsup, rhsdown;  // m+1, room of each right-hand side while it stays feasible
    Vec<double> rise, fall;      // n, room of each nonbasic variable; scratch during set-up

    // The memory of all these.
    ArrayBlock arrays;
    ArrayBlock matrices;
    ArrayBlock savedmatrix;
    ArrayBlock onearray;
    ArrayBlock binaryarrays;
    ArrayBlock quadratics;
};

// Brings the tableau and the senses as read back, from the copy of lpsolve.
void restoretableau(LpEngine& lp) noexcept;

// The engine's entries: see engine.h for what they promise.
extern "C" {
std::int32_t TARNWICK_CALL lpinit(SolveRun& run) noexcept;
std::int32_t TARNWICK_CALL lpsolve(SolveRun& run) noexcept;
std::int32_t TARNWICK_CALL lpfinish(SolveRun& run) noexcept;
}

}  // namespace tarnwick
