#pragma once

#include <cstdint>

#include "control/engine.h"
#include "include/tarnwick.h"
#include "platform/array.h"

namespace tarnwick {

// Whether the objective has a quadratic part, and what the definiteness test said of it.
enum QState : std::int32_t { Q_NONE = 0, Q_ACCEPTED = 1, Q_INDEFINITE = 2 };

// Parameters, callbacks and run state of one Problem; made with it and released with it. Engines
// and strategies hold a reference but read it through the services alone.
struct SolveControl {
    Problem* problem;

    TarnwickCallback lpcallback;
    TarnwickCallback mipcallback;
    QState qstate;

    // Parameters. Their numbers, ranges and defaults are in the table of interface/parameters.
    std::int32_t iismethod;
    std::int32_t iterlimit;
    std::int32_t nodelimit;
    std::int32_t intsollimit;
    std::int32_t popsize;
    std::int32_t stalltime;  // seconds
    std::int32_t scaling;
    std::int32_t reserved1007;
    std::int32_t relaxint;
    std::int32_t binrowfix, bindualfix, binorder, bintighten;
    std::int32_t reqbounds;
    double timelimit;  // seconds
    double opttol;
    double pivottol;
    double reserved1092;
    double feastol;
    double mipgap;
    double objlowercut, objuppercut;
    std::int32_t nlprecoglin, nlpderivmode, nlpquadext, nlpcgonly;
    double nlpfeastol;
    double nlpconvtol;
    double mutation;

    // The run: renewed by beginrun.
    std::uint32_t clockstart;  // seconds of the clock when the run began
    std::uint32_t timebudget;  // whole seconds
    StopCode stopcode;
    // The columns of the matrix list all rows in their order, one column behind the other, so that the
    // values are those of a dense matrix. Known during a run alone.
    bool matrixisfull;

    // Elastic variables of the run: variable numcols + k widens the row |elasticrows[k]| - 1, in
    // the direction of the sign. Mode 0 is off; 1 and 2 start a search, higher values are progress.
    std::uint16_t elasticcount;
    std::uint16_t elasticmode;
    Array<std::int32_t> elasticrows;  // elasticcount, signed, 1-based
    Array<double> elasticvalues;      // elasticcount, their current values

    EngineTable engines;
};

}  // namespace tarnwick
