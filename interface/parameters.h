#pragma once

#include <atomic>
#include <cstdint>
#include <span>

#include "control/solvecontrol.h"

namespace tarnwick {

// One numbered parameter. Its value lives in one place: a member of each Problem's SolveControl, or
// one variable of the whole process.
template <class Value>
struct Parameter {
    std::int32_t number;  // part of the interface: never reused, never renumbered
    const char* name;
    Value SolveControl::*field;
    std::atomic<Value>* shared;
    Value initial, lowest, highest;
    const char* meaning;  // one line, with the unit; docs/parameters.md is printed from it
};

// The tables, by rising number.
std::span<const Parameter<std::int32_t>> int_parameters() noexcept;
std::span<const Parameter<double>> dbl_parameters() noexcept;

// Gives the parameters of a Problem their defaults.
void set_parameter_defaults(SolveControl& control) noexcept;

}  // namespace tarnwick
