#pragma once

#include <initializer_list>

#include "linear/lpengine.h"

namespace tarnwick {

// Computes the scale exponents from the tableau as read, unless scaling is off.
void computescales(LpEngine& lp) noexcept;

// Brings the tableau, rows 0..m, to scaled units, and clears what is too small to be an entry.
void scaletableau(LpEngine& lp) noexcept;

// Up to five arrays in the same units.
using VectorList = std::initializer_list<Vec<double>>;

// Between real and scaled units, in place. Infinite values stay as they are. Columns count 1..n; row
// values 1..m+1 with the objective in m+1; gradients 0..n with the objective in 0; duals 1..m. The
// idle elements of an array may change.
void scalecolumns(const LpEngine& lp, VectorList vectors) noexcept;
void unscalecolumns(const LpEngine& lp, VectorList vectors) noexcept;
void scalerowvalues(const LpEngine& lp, VectorList vectors) noexcept;
void unscalerowvalues(const LpEngine& lp, VectorList vectors) noexcept;
void scalegradient(const LpEngine& lp, VectorList vectors) noexcept;
void unscalegradient(const LpEngine& lp, VectorList vectors) noexcept;
void unscaleduals(const LpEngine& lp, Vec<double> values) noexcept;

double scaleobjective(const LpEngine& lp, double value) noexcept;
double unscaleobjective(const LpEngine& lp, double value) noexcept;

// The unbiased binary exponent; 0 for zero, -1023 for a denormal, 1024 for an infinity or NaN.
int exponentof(double value) noexcept;
// value * 2^power, exact while the result is a normal number.
double shiftexponent(double value, int power) noexcept;

}  // namespace tarnwick
