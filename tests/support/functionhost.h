#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/verifier.h"

namespace tarnwick {

// Objective and rows at x. False: the evaluation fails.
using HostFunctions = std::function<bool(const Reals& x, double& objective, Reals& rows)>;
// The gradient and, column after column, the rows' derivatives.
using HostDerivatives = std::function<bool(const Reals& x, Reals& gradient, Reals& columns)>;

// A model of functions as a test writes it down. What is left out: rows don't exist, variables are
// free and start at 0, rows have the limit 0.
struct FunctionCase {
    const char* name = "";
    int variables = 1;
    HostFunctions functions{};
    std::string senses{};
    Reals rhs{}, start{}, lb{}, ub{};
    std::int32_t objsen = 1;
    std::string ctype{};
    HostDerivatives derivatives{};
    Reals ranges{};
};

// Parameters by number, of either type.
using Settings = std::vector<std::pair<std::int32_t, double>>;
inline void set(Problem* lp, const Settings& settings)
{
    for (const auto& [number, value] : settings)
        EXPECT_TRUE(setintparam(lp, number, static_cast<std::int32_t>(value)) == 0 ||
                    setdblparam(lp, number, value) == 0)
            << number;
}
template <class... More>
void set(Problem* lp, std::int32_t number, double value, More... more)
{
    set(lp, Settings{std::pair(number, value)});
    if constexpr (sizeof...(more) > 0) set(lp, more...);
}

// Such a model, loaded, with its calls on record.
class FunctionHost {
  public:
    explicit FunctionHost(FunctionCase given, bool is_smooth = true)
        : model(std::move(given)), has_duals(is_smooth && model.ctype.empty())
    {
        const auto n = static_cast<std::size_t>(model.variables), m = model.senses.size();
        const auto fill = [](Reals& array, std::size_t size, double value) {
            if (array.empty()) array.assign(size, value);
        };
        fill(model.rhs, m, 0.0);
        fill(model.start, n, 0.0);
        fill(model.lb, n, -INF);
        fill(model.ub, n, INF);
        obj_.resize(n);
        matval_.resize(n * m + 1);
        lp = loadnlp(model.name, model.variables, static_cast<std::int32_t>(m), model.objsen,
                     obj_.data(), model.rhs.data(), model.senses.data(), nullptr, nullptr, nullptr,
                     matval_.data(), model.start.data(), model.lb.data(), model.ub.data(),
                     model.ranges.empty() ? nullptr : model.ranges.data(),
                     static_cast<std::int32_t>(n * m), evaluate,
                     model.derivatives ? differentiate : nullptr);
        if (!is_smooth) loadnltype(lp, nullptr, nullptr);
        if (!model.ctype.empty()) loadctype(lp, model.ctype.data());
        hosts()[lp] = this;
    }
    ~FunctionHost()
    {
        hosts().erase(lp);
        unloadprob(&lp);
    }
    FunctionHost(const FunctionHost&) = delete;
    FunctionHost& operator=(const FunctionHost&) = delete;

    // Status -1: a function of the library has refused.
    Answer solve()
    {
        Answer answer;
        answer.x.resize(model.lb.size());
        answer.dj.resize(model.lb.size());
        answer.slack.resize(model.senses.size());
        answer.piout.resize(model.senses.size());
        evaluations = jacobians = 0;
        if (optimize(lp) || solution(lp, &answer.status, &answer.objval, answer.x.data(),
                                     has_duals ? answer.piout.data() : nullptr, answer.slack.data(),
                                     has_duals ? answer.dj.data() : nullptr))
            answer.status = -1;
        return answer;
    }

    FunctionCase model;
    const bool has_duals;
    Problem* lp = nullptr;
    long evaluations = 0, jacobians = 0;
    std::vector<Reals> points{};  // evaluated, if they are kept
    bool keeps_points = false;
    std::map<std::int32_t, Reals> beside{};  // where each variable was last moved alone

  private:
    static std::map<Problem*, FunctionHost*>& hosts()
    {
        static std::map<Problem*, FunctionHost*> all;
        return all;
    }
    static std::int32_t TARNWICK_CALL evaluate(Problem* lp, std::int32_t numcols,
                                               std::int32_t numrows, double* objval, double* lhs,
                                               double* var, std::int32_t, std::int32_t vartwo)
    {
        FunctionHost& host = *hosts().at(lp);
        const Reals x(var, var + numcols);
        Reals rows(static_cast<std::size_t>(numrows));
        ++host.evaluations;
        if (host.keeps_points) host.points.push_back(x);
        if (vartwo >= 0) host.beside[vartwo] = x;
        const bool succeeds = host.model.functions(x, *objval, rows);
        std::copy(rows.begin(), rows.end(), lhs);
        return succeeds ? 0 : 1;
    }
    static std::int32_t TARNWICK_CALL differentiate(Problem* lp, std::int32_t numcols, std::int32_t,
                                                    std::int32_t matnz, double*, double* obj,
                                                    std::int32_t*, std::int32_t*, std::int32_t*,
                                                    double* matval, double* x, char*, char*)
    {
        FunctionHost& host = *hosts().at(lp);
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
