#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "include/tarnwick.h"
#include "tests/support/models.h"
#include "tests/support/verifier.h"

namespace tarnwick {

// Objective and rows at x. False: the evaluation fails.
using SmoothFunctions = std::function<bool(const Reals& x, double& objective, Reals& rows)>;
// The gradient and, column after column, the rows' derivatives.
using SmoothDerivatives = std::function<bool(const Reals& x, Reals& gradient, Reals& columns)>;

// A smooth model as a test writes it down. What is left out: rows don't exist, variables are free and
// start at 0, rows have the limit 0.
struct Smooth {
    const char* name = "";
    int variables = 1;
    SmoothFunctions functions{};
    std::string senses{};
    Reals rhs{}, start{}, lb{}, ub{};
    std::int32_t objsen = 1;
    std::string ctype{};
    SmoothDerivatives derivatives{};
};

// Such a model, loaded, with its calls on record.
class SmoothHost {
  public:
    explicit SmoothHost(Smooth given) : model(std::move(given))
    {
        const auto n = static_cast<std::size_t>(model.variables), m = model.senses.size();
        if (model.rhs.empty()) model.rhs.assign(m, 0.0);
        if (model.start.empty()) model.start.assign(n, 0.0);
        if (model.lb.empty()) model.lb.assign(n, -INF);
        if (model.ub.empty()) model.ub.assign(n, INF);
        obj_.resize(n);
        matval_.resize(n * m + 1);
        lp = loadnlp(model.name, model.variables, static_cast<std::int32_t>(m), model.objsen,
                     obj_.data(), model.rhs.data(), model.senses.data(), nullptr, nullptr, nullptr,
                     matval_.data(), model.start.data(), model.lb.data(), model.ub.data(), nullptr,
                     static_cast<std::int32_t>(n * m), evaluate,
                     model.derivatives ? differentiate : nullptr);
        if (!model.ctype.empty()) loadctype(lp, model.ctype.data());
        hosts()[lp] = this;
    }
    ~SmoothHost()
    {
        hosts().erase(lp);
        unloadprob(&lp);
    }
    SmoothHost(const SmoothHost&) = delete;
    SmoothHost& operator=(const SmoothHost&) = delete;

    // Duals are left out with integer variables.
    Answer solve()
    {
        Answer answer;
        answer.x.resize(model.lb.size());
        answer.slack.resize(model.senses.size() + 1);
        answer.piout.resize(model.senses.size() + 1);
        answer.dj.resize(model.lb.size());
        evaluations = jacobians = 0;
        const bool has_duals = model.ctype.empty();
        if (optimize(lp) || solution(lp, &answer.status, &answer.objval, answer.x.data(),
                                     has_duals ? answer.piout.data() : nullptr, answer.slack.data(),
                                     has_duals ? answer.dj.data() : nullptr))
            answer.status = -1;
        return answer;
    }

    Smooth model;
    Problem* lp = nullptr;
    long evaluations = 0, jacobians = 0;

  private:
    static std::map<Problem*, SmoothHost*>& hosts()
    {
        static std::map<Problem*, SmoothHost*> all;
        return all;
    }
    static std::int32_t TARNWICK_CALL evaluate(Problem* lp, std::int32_t numcols,
                                               std::int32_t numrows, double* objval, double* lhs,
                                               double* var, std::int32_t, std::int32_t)
    {
        SmoothHost& host = *hosts().at(lp);
        Reals rows(static_cast<std::size_t>(numrows));
        ++host.evaluations;
        const bool succeeds = host.model.functions(Reals(var, var + numcols), *objval, rows);
        std::copy(rows.begin(), rows.end(), lhs);
        return succeeds ? 0 : 1;
    }
    static std::int32_t TARNWICK_CALL differentiate(Problem* lp, std::int32_t numcols, std::int32_t,
                                                    std::int32_t matnz, double*, double* obj,
                                                    std::int32_t*, std::int32_t*, std::int32_t*,
                                                    double* matval, double* x, char*, char*)
    {
        SmoothHost& host = *hosts().at(lp);
        Reals gradient(static_cast<std::size_t>(numcols)), columns(static_cast<std::size_t>(matnz));
        ++host.jacobians;
        const bool succeeds = host.model.derivatives(Reals(x, x + numcols), gradient, columns);
        std::copy(gradient.begin(), gradient.end(), obj);
        std::copy(columns.begin(), columns.end(), matval);
        return succeeds ? 0 : 1;
    }

    Reals obj_, matval_;
};

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

    const auto is_at = [](double x, double limit) {
        return std::fabs(x - limit) <= 1e-4 * (1 + std::fabs(limit));
    };
    const auto excess = [](bool may_rise, bool may_fall, double multiplier) {
        return std::max(may_rise ? 0.0 : multiplier, may_fall ? 0.0 : -multiplier);
    };
    for (std::size_t j = 0; j < n; ++j) {
        double rest = gradient[j] - answer.dj[j];
        for (std::size_t i = 0; i < m; ++i) rest -= answer.piout[i] * columns[j * m + i];
        EXPECT_NEAR(rest, 0.0, tol * size) << "column " << j;
        EXPECT_LE(excess(is_at(answer.x[j], model.lb[j]), is_at(answer.x[j], model.ub[j]),
                         model.objsen * answer.dj[j]),
                  tol * size)
            << "column " << j;
    }
    for (std::size_t i = 0; i < m; ++i) {
        const bool binds = is_at(model.rhs[i] - answer.slack[i], model.rhs[i]);
        EXPECT_LE(excess(binds && model.senses[i] != 'L', binds && model.senses[i] != 'G',
                         model.objsen * answer.piout[i]),
                  tol * size)
            << "row " << i;
    }
}

}  // namespace tarnwick
