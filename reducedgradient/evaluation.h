#pragma once

#include "reducedgradient/nlpengine.h"

namespace tarnwick {

// Reports an iteration, or a step of the first derivatives. The code that ends the run, or 0.
EngineResult nlp_report_iteration(NlpEngine& nlp) noexcept;
// Asks whether a stop is pending.
EngineResult nlp_poll_stop(NlpEngine& nlp) noexcept;

// x in the host's units, to realpoint.
void nlp_real_point(NlpEngine& nlp, Vec<const double> x) noexcept;
// All rows at x. A failure, or a stop, goes to the status.
void nlp_eval(NlpEngine& nlp, Vec<double> values, Vec<const double> x) noexcept;
// The same at x, which differs from the last point in the variable `col`, while the variable `prev`
// is to be put right.
void nlp_eval_column(NlpEngine& nlp, Vec<double> values, Vec<const double> x, int prev,
                     int col) noexcept;
// False: some row is not finite, or the objective no number. An objective may fall to -infinity.
bool are_usable(const NlpEngine& nlp, Vec<const double> values) noexcept;

// Brings the model to the units of its start point. False: it can't be evaluated there.
bool nlp_scale_model(NlpEngine& nlp) noexcept;
void nlp_unscale_model(NlpEngine& nlp) noexcept;

}  // namespace tarnwick
