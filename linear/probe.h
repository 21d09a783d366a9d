#pragma once

#include "linear/lpengine.h"

namespace tarnwick {

// All rows and the objective at a point in scaled units, into a row array in scaled units. False:
// the evaluation failed or a stop is pending.
bool evalrows(const LpEngine& lp, Vec<double> target, Vec<double> point) noexcept;

// Finds out what kind of model it is, and leaves rowvalue at the origin and rowbase at the start
// point. False: the evaluation there failed.
bool classify(LpEngine& lp) noexcept;

// Senses and right-hand sides from the row bounds. False: a row with two bounds or with none.
bool buildsenses(LpEngine& lp) noexcept;

// Fills the tableau and the costs, and clears x; rowvalue holds the rows at the origin. False: the
// walk failed.
bool readmatrix(LpEngine& lp) noexcept;

// Holds the first optimum of a run against a fresh evaluation: the code to go on with.
EngineResult checkanswer(LpEngine& lp, EngineResult code) noexcept;

// Adds a matrix entry to a tableau: the visiting operation of walkmatrix, with the row pointers of
// the tableau as its data. Rows and columns count from 0, row m being the objective. 0: no tableau.
extern "C" std::int32_t TARNWICK_CALL visitmatrix(SolveControl* control, void* user,
                                                  std::int32_t row, std::int32_t column,
                                                  double value, void* data) noexcept;

}  // namespace tarnwick
