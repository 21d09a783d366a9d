#pragma once

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

}  // namespace tarnwick
