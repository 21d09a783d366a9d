/* TARNWICK: optimisation of models that stand in a host program's own arrays and functions.
 *
 * The public interface, usable from C11 and C++. A model is loaded once and reached through the
 * handle `lp`; the host owns the model arrays and keeps them valid, at the same place, until
 * unloadprob. Load functions return a handle or null; all other functions return 0 for success and
 * a small positive code otherwise. Where one argument is to blame the code is its position, counted
 * from 1; 1 stands for a general failure too. A refused call leaves the model usable and, but where
 * a comment below says otherwise, writes nothing. With PARAM_MESSAGES on, each refusal is also told
 * through the message box.
 *
 * Conventions: all indices are 0-based. A bound of 1e30 or more, or -1e30 or less, is infinite. An
 * optional array is absent when it is null or when its first element is -1. A handle that is null,
 * all ones or not a live model gives 1, unless a comment says that the function can do without.
 *
 * A callback may read counters and set parameters and callbacks of the model that is being solved;
 * loading into it, filling, solving and unloading it are refused with 1.
 *
 * OLE array mode (PARAM_OLEARRAYS): every array argument is a reference to a reference to an OLE
 * SAFEARRAY of one dimension, with lower bound 0, at least the elements told, and elements of 8, 4
 * or 1 bytes. One element of -1.0, -1 or the byte 0 stands for an absent array. rowrange is a plain
 * array in this mode too, and solution() asks for x: it may be marked absent, but not be null.
 *
 * One handle belongs to one thread at a time; different handles may be solved at the same time in
 * different threads.
 */
#ifndef TARNWICK_H
#define TARNWICK_H

#include <stdint.h>

#if defined(_WIN32)
#if defined(TARNWICK_BUILD)
#define TARNWICK_API __declspec(dllexport)
#else
#define TARNWICK_API
#endif
#else
#define TARNWICK_API __attribute__((visibility("default")))
#endif

#if defined(_WIN32) && !defined(_WIN64)
#define TARNWICK_CALL __stdcall
#else
#define TARNWICK_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A loaded model, its parameters and its results. */
typedef struct Problem Problem;

/* ------------------------------------------------------------------------------------ codes --- */

/* Problem types. The load functions move a model from one to the next. */
enum {
    PROB_LP = 0,     /* linear */
    PROB_MILP = 1,   /* linear, with integer variables */
    PROB_QP = 4,     /* linear rows, quadratic objective */
    PROB_MIQP = 8,   /* quadratic, with integer variables */
    PROB_NLP = 12,   /* the caller's functions, smooth */
    PROB_MINLP = 16, /* smooth, with integer variables */
    PROB_NSP = 20,   /* the caller's functions, non-smooth */
    PROB_MINSP = 24  /* non-smooth, with integer variables */
};

/* The status of a model, as solution() gives it. FEAS and INFEAS tell whether a run that was cut
 * short had a feasible point: with integer variables an integer solution, else by the infeasibility
 * that was reported last, which a second phase no longer does. */
/* clang-format off */
enum {
    STAT_NONE = 0,                 /* no run has ended yet */
    STAT_OPTIMAL = 1,              /* optimum found */
    STAT_INFEASIBLE = 2,           /* no feasible point exists */
    STAT_UNBOUNDED = 3,            /* the objective has no limit */
    STAT_ITERLIM_FEAS = 5,         /* iteration limit */
    STAT_ITERLIM_INFEAS = 6,
    STAT_TIMELIM_FEAS = 7,         /* time limit */
    STAT_TIMELIM_INFEAS = 8,
    STAT_USERSTOP_FEAS = 12,       /* a callback stopped the run */
    STAT_USERSTOP_INFEAS = 13,
    STAT_CONVERGED = 65,           /* converged; not proved to be the optimum */
    STAT_STALLED = 66,             /* no further progress */
    STAT_EVALERROR = 67,           /* the caller's function failed */
    STAT_NOMEMORY = 68,            /* memory exhausted */
    STAT_RESERVED69 = 69,
    STAT_MIP_OPTIMAL = 101,        /* integer optimum found */
    STAT_MIP_OPTIMAL_TOL = 102,    /* integer optimum within PARAM_MIPGAP */
    STAT_MIP_INFEASIBLE = 103,     /* no integer solution exists */
    STAT_MIP_INTLIMIT = 104,       /* integer solution limit */
    STAT_MIP_NODELIM_FEAS = 105,   /* node limit */
    STAT_MIP_NODELIM_INFEAS = 106,
    STAT_MIP_TIMELIM_FEAS = 107,   /* time limit */
    STAT_MIP_TIMELIM_INFEAS = 108,
    STAT_MODELCHECK = 200,         /* the model or the answer failed a consistency check */
    STAT_BADMODEL = 201,           /* the model can't be set up for solving */
    STAT_INTERNAL = 202,           /* internal failure */
    STAT_UNKNOWN = 203             /* unknown outcome */
};
/* clang-format on */

/* Integer parameters; infointparam gives the default and the range of each. */
enum {
    PARAM_MESSAGES = 990,      /* 0, 1: refusals are told through the message box; process-wide */
    PARAM_OLEARRAYS = 995,     /* 0, 1: array arguments are OLE arrays; process-wide */
    PARAM_RESERVED997 = 997,   /* stored, no effect; process-wide */
    PARAM_IISMETHOD = 999,     /* infeasible subsets: 0 rows and bounds, 1 rows only */
    PARAM_RESERVED1007 = 1007, /* stored, no effect */
    PARAM_ITERLIMIT = 1020,    /* iterations of one subproblem */
    PARAM_SCALING = 1033,      /* -1 turns model scaling off */
    PARAM_INTSOLLIMIT = 2015,  /* integer solutions */
    PARAM_NODELIMIT = 2017,    /* nodes of branch and bound */
    PARAM_RELAXINT = 2501,     /* 1: integer restrictions are ignored */
    PARAM_BINROWFIX = 2502,    /* 0-1 preprocessing: fix from row activities */
    PARAM_BINDUALFIX = 2503,   /* 0-1 preprocessing: fix from column signs */
    PARAM_BINORDER = 2504,     /* 0-1 preprocessing: order of branching */
    PARAM_BINTIGHTEN = 2505,   /* 0-1 preprocessing: tighten the other bounds */
    PARAM_NLPRECOGLIN = 5010,  /* smooth models: recognise constant columns */
    PARAM_NLPDERIVMODE = 5011, /* smooth models: source of the derivatives */
    PARAM_NLPQUADEXT = 5012,   /* smooth models: quadratic extrapolation */
    PARAM_NLPCGONLY = 5013,    /* smooth models: conjugate gradients only */
    PARAM_NSPPOPSIZE = 6001,   /* non-smooth models: population */
    PARAM_NSPSTALLTIME = 6002, /* non-smooth models: seconds without improvement */
    PARAM_NSPREQBOUNDS = 6003  /* non-smooth models: finite bounds are required */
};

/* Double parameters; infodblparam gives the default and the range of each. */
enum {
    PARAM_OPTTOL = 1014,       /* pricing tolerance of the simplex */
    PARAM_FEASTOL = 1016,      /* feasibility tolerance of linear and quadratic models */
    PARAM_TIMELIMIT = 1038,    /* seconds, whole seconds count */
    PARAM_PIVOTTOL = 1091,     /* smallest pivot of the simplex */
    PARAM_RESERVED1092 = 1092, /* stored, no effect */
    PARAM_OBJLOWERCUT = 2006,  /* objective cut-off of a maximisation */
    PARAM_OBJUPPERCUT = 2007,  /* objective cut-off of a minimisation */
    PARAM_MIPGAP = 2009,       /* relative gap that ends branch and bound */
    PARAM_NLPFEASTOL = 5001,   /* feasibility tolerance of models known through functions */
    PARAM_NLPCONVTOL = 5002,   /* convergence tolerance of such models */
    PARAM_NSPMUTATION = 6010   /* non-smooth models: probability of a mutation */
};

/* What stands in the arrays of letters. */
enum {
    SENSE_LESS = 'L',    /* row at most its right-hand side */
    SENSE_EQUAL = 'E',   /* row equal to it */
    SENSE_GREATER = 'G', /* row at least it */
    SENSE_RANGE = 'R',   /* row between it and it plus the row's range; loadnlp alone */
    TYPE_CONTINUOUS = 'C',
    TYPE_INTEGER = 'I',
    TYPE_BINARY = 'B',      /* integer, with bounds 0 and 1 whatever lb and ub say */
    DEPENDS_LINEAR = 'L',   /* kind of dependence: linear */
    DEPENDS_NONLINEAR = 'N' /* smooth */
};

/* What getcallbackinfo gives. */
enum {
    CB_OBJECTIVE = 1,       /* double: current objective */
    CB_INFEASIBILITY = 3,   /* double: infeasibility last reported */
    CB_FEASIBLE = 5,        /* int32_t: 1 when that is at most PARAM_FEASTOL */
    CB_ITERATIONS = 7,      /* int32_t: iterations of the current subproblem */
    CB_BESTINTEGER = 8,     /* double: objective of the best integer solution */
    CB_NODES = 10,          /* int32_t: nodes so far */
    CB_TOTALITERATIONS = 12 /* int32_t: iterations of the finished subproblems */
};

/* -------------------------------------------------------------------------------- callbacks --- */

/* Progress callback of the host. event is 1 at an iteration and 101 at a node of the integer
 * search. It may call getcallbackinfo on lp and must not unload or solve it. Return 0 to go on;
 * 5 stops as the iteration limit does, 7 or 107 as the time limit, 105 as the node limit, 104 as
 * the integer solution limit, and anything else as a stop of the user's. */
typedef int32_t(TARNWICK_CALL* TarnwickCallback)(Problem* lp, int32_t event);

/* The host's evaluation function for a model loaded with loadnlp: objective and row values at a
 * point. Returns 0 for success; anything else, and the evaluation counts as failed.
 *
 *   1 lp        the model
 *   2 numcols   its variables
 *   3 numrows   its rows
 *   4 objval_p  receives the objective
 *   5 lhs       double[numrows], receives the left-hand sides of the rows; all 0 at the call
 *   6 var       double[numcols], the point; only to be read
 *   7 varone    this variable and
 *   8 vartwo    that one have changed since the last call and no other; -1 for both when any may
 *               have, and for the place of one that isn't among the model's variables
 *
 * lhs and var are valid during the call only. In OLE array mode both are references to references
 * to a SAFEARRAY that is made for the call. The function may solve other models. */
typedef int32_t(TARNWICK_CALL* TarnwickFuncEval)(Problem* lp, int32_t numcols, int32_t numrows,
                                                 double* objval_p, double* lhs, double* var,
                                                 int32_t varone, int32_t vartwo);

/* The host's derivative function for such a model: writes the gradient of the objective into obj
 * and the derivative of each row's entries into matval, in the layout in which the matrix was
 * loaded. Returns 0 for success.
 *
 *   1 lp          the model
 *   2 numcols     its variables
 *   3 numrows     its rows
 *   4 matnz       as given to loadnlp
 *   5 objval_p    may receive the objective
 *   6 obj         double[numcols], receives the gradient
 *   7 matbeg      the arrays of the layout as loaded, null for the dense one
 *   8 matcnt
 *   9 matind
 *  10 matval      double[matnz], or numcols runs of numrows values; receives the derivatives
 *  11 x           double[numcols], the point; only to be read, valid during the call
 *  12 objtype     as given to loadnltype, or null
 *  13 matvaltype  likewise
 *
 * In OLE array mode the arrays are the references given at loading, null for those that came
 * without one; x is a reference to a reference to a SAFEARRAY that is made for the call. */
typedef int32_t(TARNWICK_CALL* TarnwickJacobian)(Problem* lp, int32_t numcols, int32_t numrows,
                                                 int32_t matnz, double* objval_p, double* obj,
                                                 int32_t* matbeg, int32_t* matcnt, int32_t* matind,
                                                 double* matval, double* x, char* objtype,
                                                 char* matvaltype);

/* Message box of the host. buttons is 0 for OK, 1 for OK and Cancel; the answer is 1 for OK and
 * 2 for Cancel. The texts are valid during the call only. */
typedef int32_t(TARNWICK_CALL* TarnwickMessageBox)(const char* text, const char* title,
                                                   int32_t buttons);

/* An entry that is exported by number; cast it to its own type before the call. */
typedef void(TARNWICK_CALL* TarnwickEntry)(void);

/* ------------------------------------------------------------------------- load and unload --- */

/* Loads a linear model
 *
 *     minimise or maximise c'x   subject to   A x (<=, =, >=) rhs,   lb <= x <= ub
 *
 * and returns its handle, or null when an argument is refused or, with no message, when memory runs
 * out. The library keeps the pointers: the arrays stay the host's and must not move or change until
 * unloadprob.
 *
 *   1 name      text or null; copied
 *   2 numcols   variables, 1 to 2000
 *   3 numrows   rows, 1 to 8192
 *   4 objsen    1 minimise, -1 maximise
 *   5 obj       double[numcols], objective coefficients c
 *   6 rhs       double[numrows], right-hand sides
 *   7 sense     char[numrows], 'L' (<=), 'E' (=) or 'G' (>=)
 *   8 matbeg    int32_t[numcols], where each column starts in matind and matval
 *   9 matcnt    int32_t[numcols], how many entries each column has, 0 to numrows
 *  10 matind    int32_t[matnz], row of each entry
 *  11 matval    double[matnz], value of each entry
 *  12 lb        double[numcols], lower bounds
 *  13 ub        double[numcols], upper bounds
 *  14 rowrange  double[numrows] or null; kept, no effect on a linear model
 *  15 colspare  kept, no effect
 *  16 rowspare  kept, no effect
 *  17 matnz     length of matind and matval
 *
 * Columns come in order and do not overlap; gaps between them are allowed. A column starts at
 * numcols x numrows at the most and must end within matnz. A row index is 0 to numrows - 1; numrows
 * itself is let pass and names nothing. Several entries for one place mean their sum. With matbeg,
 * matcnt and matind all null, or all -1 in their first elements, the matrix is dense: matval holds
 * numcols runs of numrows values, whatever matnz says. */
TARNWICK_API Problem* TARNWICK_CALL loadlp(const char* name, int32_t numcols, int32_t numrows,
                                           int32_t objsen, double* obj, double* rhs, char* sense,
                                           int32_t* matbeg, int32_t* matcnt, int32_t* matind,
                                           double* matval, double* lb, double* ub, double* rowrange,
                                           int32_t colspare, int32_t rowspare, int32_t matnz);

/* Adds a quadratic part to a linear model: the objective becomes c'x + x'Qx, with no factor of one
 * half. The arrays stay the host's, as in loadlp.
 *
 *   1 lp        the model; PROB_LP becomes PROB_QP and PROB_MILP becomes PROB_MIQP
 *   2 qmatbeg   int32_t[numcols], where each column starts in qmatind and qmatval
 *   3 qmatcnt   int32_t[numcols], how many entries each column has, 0 to numcols
 *   4 qmatind   int32_t[qnz], row of each entry
 *   5 qmatval   double[qnz], value of each entry
 *   6 qnz       length of qmatind and qmatval
 *   7 var       double[numcols], starting point
 *
 * The layout follows the rules of loadlp's, with numcols rows; some of qmatbeg, qmatcnt and qmatind
 * without the others give 1 with no message. With all three absent Q is dense, numcols columns of
 * numcols values. Returns 5 also for a Q that is indefinite in the sense of the objective: it is
 * loaded all the same. Once the views of arrays are past, a refusal leaves the type moved. */
TARNWICK_API int32_t TARNWICK_CALL loadquad(Problem* lp, int32_t* qmatbeg, int32_t* qmatcnt,
                                            int32_t* qmatind, double* qmatval, int32_t qnz,
                                            double* var);

/* Says which variables are integer.
 *
 *   1 lp        the model; its type becomes the one with integer variables
 *   2 ctype     char[numcols], 'C' continuous, 'I' integer, 'B' binary (bounds 0 and 1)
 *
 * A letter that is none of these gives 2; the type has moved all the same. */
TARNWICK_API int32_t TARNWICK_CALL loadctype(Problem* lp, char* ctype);

/* Loads a model that is known through the host's functions
 *
 *     minimise or maximise f(x)   subject to   g(x) (<=, =, >=) rhs,   lb <= x <= ub
 *
 * and returns its handle, or null when an argument is refused or, with no message, when memory runs
 * out. The arrays stay the host's, as in loadlp. obj and matval are buffers: the library and the
 * host's derivative function write derivatives into them.
 *
 *   1 name      text or null; copied
 *   2 numcols   variables, 1 to 400
 *   3 numrows   rows, 0 to 200
 *   4 objsen    1 minimise, -1 maximise
 *   5 obj       double[numcols], buffer for the gradient of f
 *   6 rhs       double[numrows], right-hand sides
 *   7 sense     char[numrows], 'L' (<=), 'E' (=), 'G' (>=) or 'R' (a range, see rowrange)
 *   8 matbeg    int32_t[numcols], the layout of the derivatives of g: as in loadlp
 *   9 matcnt    int32_t[numcols]
 *  10 matind    int32_t[matnz]
 *  11 matval    double[matnz], or double[numcols * numrows] for the dense layout; buffer
 *  12 var       double[numcols], starting point
 *  13 lb        double[numcols], lower bounds
 *  14 ub        double[numcols], upper bounds
 *  15 rowrange  double[numrows] or null: an R row lies between rhs and rhs + rowrange, in whichever
 *               order; with null it is an equality
 *  16 matnz     length of matind and matval
 *  17 funceval  the host's evaluation function
 *  18 jacobian  the host's derivative function, or null
 *
 * Without rows, rhs, sense and matval may be null. */
TARNWICK_API Problem* TARNWICK_CALL loadnlp(const char* name, int32_t numcols, int32_t numrows,
                                            int32_t objsen, double* obj, double* rhs, char* sense,
                                            int32_t* matbeg, int32_t* matcnt, int32_t* matind,
                                            double* matval, double* var, double* lb, double* ub,
                                            double* rowrange, int32_t matnz,
                                            TarnwickFuncEval funceval, TarnwickJacobian jacobian);

/* Says which parts of a model loaded with loadnlp are linear. A model all of whose parts are linear
 * or smooth stays what it is; any other becomes a non-smooth one.
 *
 *   1 lp          the model; PROB_NLP may become PROB_NSP, and PROB_MINLP PROB_MINSP
 *   2 objtype     char[numcols] or null: 'L' linear, 'N' smooth, any other letter non-smooth
 *   3 matvaltype  char[matnz] or null, the same for each entry of the matrix
 *
 * With either array null the model counts as non-smooth. The arrays stay the host's, as in loadlp.
 * A linear model with such a part gives 1. */
TARNWICK_API int32_t TARNWICK_CALL loadnltype(Problem* lp, char* objtype, char* matvaltype);

/* Releases a model. lp_p points at the handle, which keeps its old value and is dead afterwards. */
TARNWICK_API int32_t TARNWICK_CALL unloadprob(Problem** lp_p);

/* Gives the size limits of a problem type.
 *
 *   1 reserved   ignored, may be null
 *   2 probtype   one of PROB_...
 *   3 numcols_p  receives the largest number of variables
 *   4 numrows_p  receives the largest number of rows
 *   5 numints_p  receives the largest number of integer variables
 *
 * A null pointer gives 2, 3 or 4 in that order; an unknown type gives 1. */
TARNWICK_API int32_t TARNWICK_CALL getproblimits(void* reserved, int32_t probtype,
                                                 int32_t* numcols_p, int32_t* numrows_p,
                                                 int32_t* numints_p);

/* ------------------------------------------------------------------------------------ solve --- */

/* Solves the model. Returns 0 when a run took place, whatever its outcome, and 1 when it could not
 * start. The outcome is the status that solution() gives. */
TARNWICK_API int32_t TARNWICK_CALL optimize(Problem* lp);

/* As optimize, for a model with integer variables; returns 1 when loadctype has not been called. */
TARNWICK_API int32_t TARNWICK_CALL mipoptimize(Problem* lp);

/* Finds out which parts of a model loaded with loadnlp are linear, by asking its function: slopes
 * from single steps, then tests on the axis of each variable and at sample points.
 *
 *   1 lp            a model known through functions, else 1
 *   2 numtests      sample points, at least 1
 *   3 testvals      double[numtests * numcols], the sample points, one after the other; when absent
 *                   they are drawn at random between the bounds
 *   4 nonlinear_p   receives 1 if the model is not linear, 0 if there is no sign of that; or null
 *   5 objtype       char[numcols] or null, receives 'L' or 'N' as loadnltype takes it
 *   6 matvaltype    char[matnz] or null, likewise
 *
 * 0 and letters that are all 'L' are no proof. The letters come from the axes alone: what shows at
 * sample points only is told by nonlinear_p and not by the letters. The slopes are left in obj and
 * matval, and the point that solution() gives is the one evaluated last. When the function fails, or
 * memory runs out, the result is 1, and the arrays may be partly filled. */
TARNWICK_API int32_t TARNWICK_CALL testnltype(Problem* lp, int32_t numtests, double* testvals,
                                              int32_t* nonlinear_p, char* objtype,
                                              char* matvaltype);

/* ---------------------------------------------------------------------------------- results --- */

/* Gives the results of the last run. Every pointer but lp may be null, and an array whose first
 * element is -1.0 is not written.
 *
 *   1 lp      the model
 *   2 stat_p  receives the status, one of STAT_..., 0 before the first run
 *   3 objval_p  receives the objective
 *   4 x       double[numcols], the point
 *   5 piout   double[numrows], duals: the rate of change of the objective with each right-hand side
 *   6 slack   double[numrows], right-hand side minus row activity
 *   7 dj      double[numcols], reduced costs
 *
 * The point and the slacks are written unless the status is 67, 68 or 69; duals and reduced costs
 * only when it is STAT_OPTIMAL. Before a run has stored its results, and inside a run, status and
 * objective alone are written. For the types with integer variables and the non-smooth ones a
 * present piout gives 5 and a present dj 7, after the rest has been written. */
TARNWICK_API int32_t TARNWICK_CALL solution(Problem* lp, int32_t* stat_p, double* objval_p,
                                            double* x, double* piout, double* slack, double* dj);

/* Ranges of the objective coefficients of the columns begin to end of a linear model: the values
 * between which the coefficient can move, alone, with the basis still optimal.
 *
 *   1 lp      a model of type PROB_LP without integer variables, else 1
 *   2 begin   first column, 0-based
 *   3 end     last column, inclusive; a range that isn't one of the model's gives 2
 *   4 lower   double[end - begin + 1]; about -1e30 means no limit
 *   5 upper   double[end - begin + 1]; about 1e30 means no limit
 *
 * Nothing is written when no results are stored or the status is 67, 68 or 69. After a run that
 * ended without an optimum all values are 0. */
TARNWICK_API int32_t TARNWICK_CALL objsa(Problem* lp, int32_t begin, int32_t end, double* lower,
                                         double* upper);

/* Ranges of the right-hand sides of the rows begin to end of a linear model: the values between
 * which the right-hand side can move, alone, with the basis still feasible. Arguments and codes as
 * for objsa. */
TARNWICK_API int32_t TARNWICK_CALL rhssa(Problem* lp, int32_t begin, int32_t end, double* lower,
                                         double* upper);

/* Statistics of the variables begin to end over the final population of a non-smooth run: mean,
 * standard deviation, smallest and largest value, each double[end - begin + 1]. Another type of
 * model gives 1, a range that isn't one of the model's 2, a null array 4 or 6. */
TARNWICK_API int32_t TARNWICK_CALL varstat(Problem* lp, int32_t begin, int32_t end, double* mid,
                                           double* disp, double* lower, double* upper);

/* The same for the rows begin to end. */
TARNWICK_API int32_t TARNWICK_CALL constat(Problem* lp, int32_t begin, int32_t end, double* mid,
                                           double* disp, double* lower, double* upper);

/* Gives a counter of the run, inside a callback or after it.
 *
 *   1 lp         the model
 *   2 reserved   ignored, may be null
 *   3 whichinfo  one of CB_...
 *   4 result_p   receives the value, a double or an int32_t as listed with CB_... */
TARNWICK_API int32_t TARNWICK_CALL getcallbackinfo(Problem* lp, void* reserved, int32_t whichinfo,
                                                   void* result_p);

/* Set and read the callback that is called at every iteration report (lp) and at every node report
 * of an integer search (mip). A null function removes it. */
TARNWICK_API int32_t TARNWICK_CALL setlpcallbackfunc(Problem* lp, TarnwickCallback function);
TARNWICK_API int32_t TARNWICK_CALL getlpcallbackfunc(Problem* lp, TarnwickCallback* function_p);
TARNWICK_API int32_t TARNWICK_CALL setmipcallbackfunc(Problem* lp, TarnwickCallback function);
TARNWICK_API int32_t TARNWICK_CALL getmipcallbackfunc(Problem* lp, TarnwickCallback* function_p);

/* ------------------------------------------------------------------------------- parameters --- */

/* Default, lowest and highest value of an integer parameter. lp is ignored; a null result pointer
 * is passed over. Returns 1 for an unknown number. */
TARNWICK_API int32_t TARNWICK_CALL infointparam(Problem* lp, int32_t whichparam, int32_t* default_p,
                                                int32_t* min_p, int32_t* max_p);

/* Sets an integer parameter. The process-wide ones (990, 995, 997) need no model: lp may be null.
 * Returns 1 for a bad handle or an unknown number, 2 for a value out of range; the old value then
 * stays. */
TARNWICK_API int32_t TARNWICK_CALL setintparam(Problem* lp, int32_t whichparam, int32_t newvalue);

/* Reads an integer parameter, with the same rules for lp. */
TARNWICK_API int32_t TARNWICK_CALL getintparam(Problem* lp, int32_t whichparam, int32_t* value_p);

/* Default, lowest and highest value of a double parameter, as infointparam. */
TARNWICK_API int32_t TARNWICK_CALL infodblparam(Problem* lp, int32_t whichparam, double* default_p,
                                                double* min_p, double* max_p);

/* Sets a double parameter. Returns 1 for a bad handle or an unknown number, 2 for a value out of
 * range, NaN included. */
TARNWICK_API int32_t TARNWICK_CALL setdblparam(Problem* lp, int32_t whichparam, double newvalue);

/* Reads a double parameter. */
TARNWICK_API int32_t TARNWICK_CALL getdblparam(Problem* lp, int32_t whichparam, double* value_p);

/* Sets every parameter of the model to its default. With a null lp it resets the three process-wide
 * parameters instead; all ones changes nothing. Both give 0. */
TARNWICK_API int32_t TARNWICK_CALL setdefaults(Problem* lp);

/* ----------------------------------------------------------------------- infeasible subsets --- */

/* How the last search for an infeasible subset ended. */
enum {
    IIS_FOUND = 1,     /* the search came to its end; without any row the model is feasible */
    IIS_NOT_FOUND = 2, /* it was stopped, or a solve failed: what is stored is no proof */
};

/* Searches an infeasible model for rows and bounds that contradict each other. With PARAM_IISMETHOD
 * at 0 none of them can be spared; at 1 the bounds are not tested, and every finite one is listed.
 * Integer restrictions and the objective take no part. The status is 1, or 101 for integer models,
 * when the search came to its end, but 65 for an indefinite quadratic objective, and the subset then
 * counts as not found. A bound beyond which the model's function fails counts as needed. Earlier
 * results stay. Each row takes a variable of the engine's more and each equation two; beyond 2000 with
 * the model's the status is 201.
 *
 *   1 lp            a model with at least one row
 *   2 iisnumrows_p  receives the number of rows; an equality counts twice
 *   3 iisnumcols_p  receives the number of columns with a bound
 *
 * Returns 1 for a bad handle, a model that is being solved or one without rows, 2 and 3 for a null
 * argument. */
TARNWICK_API int32_t TARNWICK_CALL findiis(Problem* lp, int32_t* iisnumrows_p,
                                           int32_t* iisnumcols_p);

/* Gives the subset that the last findiis or iiswrite stored. Null arguments are passed over.
 *
 *   1 lp            the model
 *   2 iisstatus_p   receives IIS_FOUND or IIS_NOT_FOUND
 *   3 rowind        int32_t[iisnumrows], rows from 0, ascending
 *   4 rowbdstat     int32_t[iisnumrows], where the row stands at the start point: 0 below its upper
 *                   limit; at or above it, 2 above its lower limit and 1 at or below that
 *   5 iisnumrows_p  receives the number of rows
 *   6 colind        int32_t[iisnumcols], columns from 0, ascending
 *   7 colbdstat     int32_t[iisnumcols], which bound: 0 the lower, 2 the upper, 1 both
 *   8 iisnumcols_p  receives the number of columns
 *
 * Returns 1 for a bad handle and when there is no subset; 3 to 6, in OLE array mode, for arrays that
 * can't be viewed, counted without the status: rowind, rowbdstat, colind, colbdstat. */
TARNWICK_API int32_t TARNWICK_CALL getiis(Problem* lp, int32_t* iisstatus_p, int32_t* rowind,
                                          int32_t* rowbdstat, int32_t* iisnumrows_p,
                                          int32_t* colind, int32_t* colbdstat,
                                          int32_t* iisnumcols_p);

/* ------------------------------------------------------------------------------- text files --- */

/* Reads a model in the plain-text format. It creates no model: with lp null (or -1) it only counts,
 * so that the host can size its arrays; with a loaded model it fills that model's arrays in place.
 *
 *   1 lp         a linear or quadratic model, or null
 *   2 filename   the file
 *   3 objsen_p   receives 1 or -1, or null
 *   4 numcols_p  receives the highest variable index seen, or null
 *   5 numrows_p  receives the highest row index seen, or null
 *   6 numctype_p receives the number of columns when the file has integers, else 0; or null
 *   7 matcnt     counting: int32_t[numcols], receives the entries of each column; or absent
 *   8 qmatcnt    counting: the same for Q; filling: the lengths of Q's columns; or absent
 *
 * A host makes three calls: the first for the sizes, the second for the column lengths, and the
 * third, after loadlp, loadquad and loadctype with arrays of those sizes, to fill them. Reading
 * stops at the first error, and a model may then be partly filled. */
TARNWICK_API int32_t TARNWICK_CALL lpread(Problem* lp, const char* filename, int32_t* objsen_p,
                                          int32_t* numcols_p, int32_t* numrows_p,
                                          int32_t* numctype_p, int32_t* matcnt, int32_t* qmatcnt);

/* Writes a linear or quadratic model in the plain-text format. Numbers have six decimals at most;
 * what was a range of two finite limits can't be read back as one.
 *
 *   1 lp        the model
 *   2 filename  the file, which is created or replaced
 *
 * Returns 1 for a bad handle or a model given by functions, 2 for a null name, a file that can't be
 * opened and a write that fails; what was written before stays on disk. */
TARNWICK_API int32_t TARNWICK_CALL lpwrite(Problem* lp, const char* filename);

/* The same in every respect. */
TARNWICK_API int32_t TARNWICK_CALL lprewrite(Problem* lp, const char* filename);

/* Writes the rows and bounds of the infeasible subset, with the numbers that they have in the model;
 * the objective is written in full. findiis is called first if no subset is stored.
 *
 *   1 lp        a linear or quadratic model
 *   2 filename  the file, which is created or replaced
 *
 * Returns what findiis returns when that isn't 0, else as lpwrite does. */
TARNWICK_API int32_t TARNWICK_CALL iiswrite(Problem* lp, const char* filename);

/* --------------------------------------------------------------------------------- platform --- */

/* Hands in the message box of the host; null restores the default, which writes one line,
 * "title: text", to standard error and answers OK. Process-wide. */
TARNWICK_API void TARNWICK_CALL setmessagebox(TarnwickMessageBox function);

/* Gives the address of an engine, strategy or service that is exported by number (41 to 75), or
 * null. */
TARNWICK_API TarnwickEntry TARNWICK_CALL getexport(int32_t number);

#ifdef __cplusplus
}
#endif

#endif
