#pragma once

#include <cmath>

#include "tests/support/functionhost.h"

namespace tarnwick {

using Smooth = FunctionCase;
using SmoothFunctions = HostFunctions;
using SmoothHost = FunctionHost;

inline bool is_good(std::int32_t status)
{
    return status == STAT_OPTIMAL || status == STAT_CONVERGED || status == STAT_MIP_OPTIMAL;
}

// The conditions of first order, by the model's derivatives and the definitions alone:
//
//     grad f = J' pi + dj,   dj = 0 off the bounds, pi = 0 off the limits,
//     dj >= 0 at a lower bound, pi >= 0 at a >= row of a minimisation, turned for a maximisation
//
// tol is relative to the size of the gradient.
inline void expect_stationary(const SmoothHost& host, const Answer& answer, double tol)
{
    const Smooth& model = host.model;
    const auto n = answer.x.size(), m = model.senses.size();
    Reals gradient(n), columns(n * m);
    model.derivatives(answer.x, gradient, columns);
    double size = 1.0;
    for (const double g : gradient) size = std::max(size, std::fabs(g));
    tol *= size;

    const auto is_at = [](double x, double limit) {
        return std::fabs(x - limit) <= 1e-4 * (1 + std::fabs(limit));
    };
    const auto expect_sign = [&](bool may_rise, bool may_fall, double multiplier) {
        EXPECT_LE(may_rise ? 0.0 : multiplier * model.objsen, tol);
        EXPECT_LE(may_fall ? 0.0 : -multiplier * model.objsen, tol);
    };
    for (std::size_t j = 0; j < n; ++j) {
        SCOPED_TRACE("column " + std::to_string(j));
        double rest = gradient[j] - answer.dj[j];
        for (std::size_t i = 0; i < m; ++i) rest -= answer.piout[i] * columns[j * m + i];
        EXPECT_NEAR(rest, 0.0, tol);
        const double x = answer.x[j];
        expect_sign(is_at(x, model.lb[j]), is_at(x, model.ub[j]), answer.dj[j]);
    }
    for (std::size_t i = 0; i < m; ++i) {
        SCOPED_TRACE("row " + std::to_string(i));
        const bool binds = is_at(model.rhs[i] - answer.slack[i], model.rhs[i]);
        expect_sign(binds && model.senses[i] != 'L', binds && model.senses[i] != 'G',
                    answer.piout[i]);
    }
}

}  // namespace tarnwick
