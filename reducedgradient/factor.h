#pragma once

#include "reducedgradient/nlpengine.h"

namespace tarnwick {

// The approximate reduced Hessian B = L L', in the order of the superbasics.

// Reals of a factor for so many superbasics, with a spare row.
constexpr int factor_size(int superbasics) noexcept
{
    return (superbasics + 1) * (superbasics + 2) / 2;
}

// L := identity, which makes the next direction a restart.
void nlp_factor_reset(NlpEngine& nlp) noexcept;
// The BFGS formula after a step along the direction: dy is the change of the slope along it, dg its
// slope before the step. Uses gradchange and prevredgrad up.
void nlp_bfgs_update(NlpEngine& nlp, double dy, double dg) noexcept;
// Solves L L' d = direction in place.
void nlp_factor_solve(NlpEngine& nlp) noexcept;
// No entry of the diagonal is negligible.
bool has_sound_diagonal(const NlpEngine& nlp) noexcept;
// Removes superbasic k, and lowers nsuper.
void nlp_factor_delete(NlpEngine& nlp, int k) noexcept;
// A unit row for the new last superbasic.
void nlp_factor_append(NlpEngine& nlp) noexcept;
// Brings the factor, prevredgrad and direction to a new order: place k takes what stood in old[k].
// False: B is not positive definite in the new order's arithmetic, and the factor is lost.
bool nlp_factor_permute(NlpEngine& nlp, Vec<const std::int32_t> old) noexcept;

}  // namespace tarnwick
