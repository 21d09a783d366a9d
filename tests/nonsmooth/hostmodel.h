#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <vector>

#include "control/services.h"
#include "interface/problem.h"
#include "nonsmooth/nspengine.h"
#include "tests/support/models.h"

namespace tarnwick {

// Objective and rows at x. False: the evaluation fails.
using Functions = std::function<bool(const Reals& x, double& objective, Reals& rows)>;

// A non-smooth model as a test writes it down. Rows beyond `senses` don't exist; bounds that are left
// out are -10 and 10, and the start is the origin.
struct NonSmooth {
    int variables = 1;
    Functions functions;
    std::vector<char> senses{};
    Reals rhs{};
    Reals lb{}, ub{}, start{};
    std::vector<char> ctype{};  // empty: all are continuous
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

// What the driver does around the engine, with the engine in the open: set-up when it is made,
// nspfinish at the end. The first run, cut short, makes the arrays for the results.
class NspRun {
  public:
    explicit NspRun(const HostModel& host, std::uint32_t flags = RUN_DIRECT,
                    std::uint16_t elasticcount = 0)
    {
        SolveControl& control = host.lp->control;
        const std::int32_t limit = std::exchange(control.iterlimit, 0);
        optimize(host.lp);
        control.iterlimit = limit;

        run.control = &control;
        run.flags = flags;
        if (!host.model.ctype.empty()) {
            static_cast<void>(run.intflags.create(host.model.ctype.size()));
            getintflags(&control, run.intflags.data());
        }
        beginrun(&control, 0);
        control.elasticcount = elasticcount;
        ready = nspinit(run);
    }
    ~NspRun()
    {
        nspfinish(run);
        endrun(run.control);
    }
    NspRun(const NspRun&) = delete;
    NspRun& operator=(const NspRun&) = delete;

    NspEngine& record() { return *static_cast<NspEngine*>(run.engine); }

    SolveRun run{};
    std::int32_t ready = 0;  // what nspinit returned
};

// What the interface tells after a run.
struct Outcome {
    std::int32_t status = STAT_NONE;
    double objval = 0.0;
    Reals x, slack;
};

inline Outcome solve(const HostModel& host)
{
    Outcome outcome;
    outcome.x.resize(host.model.lb.size());
    outcome.slack.resize(host.model.senses.size() + 1);
    EXPECT_EQ(optimize(host.lp), 0);
    EXPECT_EQ(solution(host.lp, &outcome.status, &outcome.objval, outcome.x.data(), nullptr,
                       outcome.slack.data(), nullptr),
              0);
    return outcome;
}

}  // namespace tarnwick
