#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "include/tarnwick.h"
#include "tests/support/models.h"

namespace tarnwick {

// Objective and rows at x. False: the evaluation fails.
using Functions = std::function<bool(const Reals& x, double& objective, Reals& rows)>;

// A non-smooth model as a test writes it down. Rows beyond `senses` don't exist; bounds that are left
// out are -10 and 10, and the start is the origin.
struct NonSmooth {
    int variables = 1;
    Functions functions;
    std::string senses{};
    Reals rhs{};
    Reals lb{}, ub{}, start{};
    std::string ctype{};  // empty: all are continuous
    std::int32_t objsen = 1;
    Reals ranges{};
};

// Such a model, loaded, with its evaluations on record.
class HostModel {
  public:
    explicit HostModel(NonSmooth given) : model(std::move(given))
    {
        const auto n = static_cast<std::size_t>(model.variables), m = model.senses.size();
        if (model.lb.empty()) model.lb.assign(n, -10.0);
        if (model.ub.empty()) model.ub.assign(n, 10.0);
        if (model.start.empty()) model.start.assign(n, 0.0);
        obj_.resize(n);
        matval_.resize(n * m + 1);
        lp = loadnlp("host", model.variables, static_cast<std::int32_t>(m), model.objsen,
                     obj_.data(), model.rhs.data(), model.senses.data(), nullptr, nullptr, nullptr,
                     matval_.data(), model.start.data(), model.lb.data(), model.ub.data(),
                     model.ranges.empty() ? nullptr : model.ranges.data(),
                     static_cast<std::int32_t>(n * m), evaluate, nullptr);
        loadnltype(lp, nullptr, nullptr);
        if (!model.ctype.empty()) loadctype(lp, model.ctype.data());
        hosts()[lp] = this;
    }
    ~HostModel()
    {
        hosts().erase(lp);
        unloadprob(&lp);
    }
    HostModel(const HostModel&) = delete;
    HostModel& operator=(const HostModel&) = delete;

    NonSmooth model;
    Problem* lp = nullptr;
    long evaluations = 0;
    std::vector<Reals> points{};  // evaluated, if they are kept
    bool keeps_points = false;

  private:
    static std::map<Problem*, HostModel*>& hosts()
    {
        static std::map<Problem*, HostModel*> all;
        return all;
    }
    static std::int32_t TARNWICK_CALL evaluate(Problem* lp, std::int32_t numcols,
                                               std::int32_t numrows, double* objval, double* lhs,
                                               double* var, std::int32_t, std::int32_t)
    {
        HostModel& host = *hosts().at(lp);
        const Reals x(var, var + numcols);
        Reals rows(static_cast<std::size_t>(numrows));
        ++host.evaluations;
        if (host.keeps_points) host.points.push_back(x);
        const bool succeeds = host.model.functions(x, *objval, rows);
        std::copy(rows.begin(), rows.end(), lhs);
        return succeeds ? 0 : 1;
    }

    Reals obj_, matval_;
};

}  // namespace tarnwick
