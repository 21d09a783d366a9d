#pragma once

#include "linear/lpengine.h"

namespace tarnwick {

// The most pivots that wait at a time, for a tableau of this size; 0: none ever waits.
int waitingcapacity(int m, int n) noexcept;

// Column 0 of the tableau, and the bounds of the variables basic in it, go to the engine's arrays
// at the start of a simplex run and come back at its end.
void loadbasis(LpEngine& lp) noexcept;
void unloadbasis(LpEngine& lp) noexcept;

// Brings the rows 0..last of column c up to date into lp.column, and clears the others.
void fetchcolumn(LpEngine& lp, int last, int c) noexcept;
// Brings row i up to date in place; i is 1..m.
void refreshrow(LpEngine& lp, int i) noexcept;

// Moves the nonbasic variable of column c, which lp.column holds, to its other bound.
void flipbound(LpEngine& lp, int c) noexcept;
// Exchanges the basic variable of row r with the nonbasic one of column c, which lp.column holds.
// Updates the rows 0..last; the variable that leaves goes to rest at lp.leavebound.
void pivot(LpEngine& lp, int last, int r, int c) noexcept;

// Exchanges column c with column d, the one from c with its sign changed. c may be d.
void exchangecolumns(LpEngine& lp, int c, int d) noexcept;
// Changes the sign of column c in all rows.
void negatecolumn(LpEngine& lp, int c) noexcept;

// Bounds of any variable, a logical one included.
double lowerof(const LpEngine& lp, int label) noexcept;
double upperof(const LpEngine& lp, int label) noexcept;

}  // namespace tarnwick
