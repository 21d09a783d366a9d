#pragma once

#include "reducedgradient/nlpengine.h"

namespace tarnwick {

// Counts the violated rows and, if there are any, puts the sum of violations in the objective's place.
void nlp_phase1_objective(NlpEngine& nlp, bool restart) noexcept;
void nlp_reduced_gradient(NlpEngine& nlp) noexcept;
// No nonbasic variable could lower the objective by much.
bool multipliers_hold(const NlpEngine& nlp) noexcept;
// What the binding rows change by along the direction, by position, if the basic variables stay.
void change_along_direction(const NlpEngine& nlp, Vec<double> change) noexcept;
void nlp_tangent(NlpEngine& nlp) noexcept;
// Whether the direction can be followed at all, or which position blocks it.
void nlp_blocking_test(NlpEngine& nlp) noexcept;

}  // namespace tarnwick
