#pragma once

#include <cstdint>

#include "control/engine.h"
#include "platform/array.h"

// The record of the non-smooth engine: an evolutionary search over points x of the box
// lower <= x <= upper, of which nothing is known but the values of the rows and of the objective
// there. Arrays count from 0. A variable array has the elements 0..variables-1, a row array 0..rows
// with the objective in `rows`.
//
// During a solve everything is in scaled units, x / varscale and r / rowscale, and is minimised:
// the objective of a maximisation is negated where it enters and where it leaves.

namespace tarnwick {

// What becomes of a candidate. Any other code of an engine ends the search.
inline constexpr EngineResult CANDIDATE_STANDS = ENGINE_OPTIMAL;
inline constexpr EngineResult CANDIDATE_REFUSED = ENGINE_INFEASIBLE;

// A point of the population. Its coordinates lie behind the record, in the same block.
struct NspMember {
    double fitness;     // the objective plus a penalty for the rows that are violated
    double objective;   // minimised, scaled
    double* point;      // variables; scaled until the statistics
    double* rowvalues;  // rows + 1, or null; made by the statistics
};

// No penalty was added. This equality is the one test of feasibility of the search.
inline bool is_feasible(const NspMember& member) noexcept
{
    return member.fitness == member.objective;
}

struct NspEngine {
    NspEngine() noexcept = default;
    NspEngine(const NspEngine&) = delete;
    NspEngine& operator=(const NspEngine&) = delete;
    ~NspEngine();

    // The model and the settings, read once.
    SolveControl* control = nullptr;
    const std::int32_t* intflags = nullptr;  // variables, nonzero: integer; null: there are none
    int variables = 0, rows = 0;
    bool maximise = false;
    bool scaling = false;        // asked for
    bool requiresbounds = true;  // every variable must have finite bounds
    int popsize = 0;             // members of the population, at least 10
    std::int32_t crossoverlimit = 0;
    std::uint32_t stallseconds = 0;
    double convergence =
        0.0;               // relative with 1: spread of the fitness; what is too small to scale by
    double feastol = 0.0;  // of relative violations, of their squares for equality rows
    double gap = 0.0;      // relative with 1: a change of the best fitness that counts
    double mutationrate = 0.0;  // probability

    // Bounds and scales. Real units between solves, scaled during one, when a row limit beyond 1e30
    // is an infinity.
    bool scaled = false;  // the scales are in force
    Vec<double> lower, upper;
    Vec<double> rowlower, rowupper;
    Vec<double> varscale, rowscale;          // 1.0 when scaling is off; above 0
    Vec<double> reallower, realupper;        // the bounds of the present solve in real units
    Vec<double> realrowlower, realrowupper;  // likewise

    // The latest candidate.
    Vec<double> point;       // variables; start point before a solve, reported point after it
    Vec<double> rowvalue;    // rows + 1, at the point last evaluated
    Vec<double> blendpoint;  // variables, a candidate under repair
    Vec<double> blendrowvalue;
    Vec<double> realpoint;   // variables, what the caller's function gets; scratch
    double fitness = 0.0;    // set for a candidate that stands
    double objective = 0.0;  // minimised, scaled

    // What a stop evaluates before the run ends.
    Vec<double> startpoint;
    Vec<double> bestpoint;
    Vec<double> bestrowvalue;

    // The population, by rising fitness. Positions count from 1: ranking[p - 1] is at position p.
    Vec<NspMember*> ranking;            // room for popsize + 1
    int count = 0;                      // members in the ranking, at most popsize between inserts
    int feasiblemembers = 0;            // of them
    NspMember* bestfeasible = nullptr;  // lowest objective of all feasible ones, always a member
    NspMember* current = nullptr;       // the one made last; for comparison alone, it may be gone
    NspMember* pending = nullptr;       // made, and not in the ranking yet
    Vec<std::int32_t> mutationuse;   // popsize, how often a position was drawn; never moved along
    Vec<std::int32_t> crossoveruse;  // likewise

    // Accounts of one solve.
    EngineResult finalcode = ENGINE_OPTIMAL;
    std::int32_t seed = 0;
    std::int64_t evaluations = 0;        // of candidates and repairs, and popsize more
    std::int64_t failedevaluations = 0;  // in a row
    std::int64_t mutationcount = 0, crossovercount = 0;
    std::int32_t acceptedcrossovers = 0;
    std::int32_t iterations = 0;
    std::int32_t feasiblecount = 0;        // feasible members ever made
    std::int32_t failuresinrow = 0;        // since the last iteration
    std::int32_t infeasibleinrow = 0;      // candidates refused for their rows
    std::int32_t infeasibletolerated = 0;  // the next one is let in, with its penalty
    std::uint32_t lastimprovetick = 0;     // milliseconds, less the time of the caller's callbacks
    double referencefitness = INFINITE_BOUND;  // best fitness at the last improvement; 1e30: none
    double equalityweight = 0.0, inequalityweight = 0.0;  // of the penalties

    // The statistics, in real units. The objective row has none.
    Vec<double> varmean, varstddev, varmax, varmin;  // variables
    Vec<double> rowmean, rowstddev, rowmax, rowmin;  // rows + 1

    // The memory of these.
    ArrayBlock arrays;
    ArrayBlock places;  // ranking and use counters
    ArrayBlock statistics;
};

// The engine's entries: see engine.h for what they promise.
extern "C" {
std::int32_t TARNWICK_CALL nspinit(SolveRun& run) noexcept;
std::int32_t TARNWICK_CALL nspsolve(SolveRun& run) noexcept;
std::int32_t TARNWICK_CALL nspfinish(SolveRun& run) noexcept;
}

// Counts one more, and stays at the highest count there is.
inline void count_up(std::int32_t& counter) noexcept
{
    if (counter < INT32_MAX) ++counter;
}

}  // namespace tarnwick
