#include "bench/nloptpeer.h"

#include <nlopt.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "bench/problems/loadedproblem.h"

namespace bench {

namespace {

using tarnwick::FunctionProblem;
using tarnwick::INF;
using tarnwick::Limits;
using tarnwick::Reals;

// NLopt asks for the objective and for each kind of row by calls of their own, at the same points;
// one evaluation serves them all.
class Host {
  public:
    Host(const FunctionProblem& problem, double step) : problem_(problem), step_(step)
    {
        for (int i = 0; i < problem.numrows(); ++i) {
            const Limits limits = limits_of_row(problem, i);
            const auto row = static_cast<std::size_t>(i);
            if (limits.lower == limits.upper)
                equal_.push_back({row, limits.upper, 1.0});
            else if (limits.upper < INF)
                below_.push_back({row, limits.upper, 1.0});
            if (limits.lower > -INF && limits.lower < limits.upper)
                below_.push_back({row, limits.lower, -1.0});
        }
    }

    PeerOutcome solve(nlopt_opt opt, double rowtol, double equaltol)
    {
        const auto n = static_cast<std::size_t>(problem_.numcols());
        Reals lower, upper;
        for (int j = 0; j < problem_.numcols(); ++j) {
            const Limits limits = limits_of_column(problem_, j);
            lower.push_back(limits.lower > -INF ? limits.lower : -HUGE_VAL);
            upper.push_back(limits.upper < INF ? limits.upper : HUGE_VAL);
        }
        PeerOutcome outcome{.x = problem_.start};
        for (std::size_t j = 0; j < n; ++j)
            outcome.x[j] = std::clamp(outcome.x[j], lower[j], upper[j]);
        nlopt_set_lower_bounds(opt, lower.data());
        nlopt_set_upper_bounds(opt, upper.data());
        nlopt_set_min_objective(opt, objective, this);
        add(opt, below_, nlopt_add_inequality_mconstraint, rows_below, rowtol);
        add(opt, equal_, nlopt_add_equality_mconstraint, rows_equal, equaltol);

        double f = 0.0;
        outcome.code = nlopt_optimize(opt, outcome.x.data(), &f);
        outcome.x = rounded(outcome.x.data());
        outcome.evaluations = evaluations_;
        outcome.gradients = gradients_;
        nlopt_destroy(opt);
        return outcome;
    }

  private:
    struct Term {
        std::size_t row;
        double limit, sign;  // sign * (g - limit) <= 0, or = 0
    };

    template <class Add, class Function>
    void add(nlopt_opt opt, const std::vector<Term>& terms, Add add_them, Function function,
             double tol)
    {
        Reals tolerances;
        for (const Term& term : terms) tolerances.push_back(tol * (1 + std::fabs(term.limit)));
        if (!terms.empty())
            add_them(opt, static_cast<unsigned>(terms.size()), function, this, tolerances.data());
    }

    Reals rounded(const double* x) const
    {
        Reals point(x, x + problem_.numcols());
        for (std::size_t j = 0; j < problem_.ctype.size(); ++j)
            if (problem_.ctype[j] != 'C') point[j] = std::round(point[j]);
        return point;
    }

    // Objective, then rows.
    Reals values(const Reals& x)
    {
        ++evaluations_;
        Reals all(static_cast<std::size_t>(problem_.numrows()) + 1, 0.0);
        all[0] = problem_.objsen * problem_.value({x.data()}, all.data() + 1);
        return all;
    }

    const Reals& at(const double* x)
    {
        const Reals point = rounded(x);
        if (point != point_) {
            point_ = point;
            values_ = values(point);
            columns_.clear();
        }
        return values_;
    }

    const std::vector<Reals>& gradient_at(const double* x)
    {
        at(x);
        if (!columns_.empty()) return columns_;
        ++gradients_;
        for (std::size_t j = 0; j < point_.size(); ++j) {
            Reals moved = point_;
            const double h = (std::fabs(point_[j]) + 1.0) * step_;
            const auto column = static_cast<int>(j);
            moved[j] += point_[j] + h > limits_of_column(problem_, column).upper ? -h : h;
            Reals column_values = values(moved);
            for (std::size_t k = 0; k < column_values.size(); ++k)
                column_values[k] = (column_values[k] - values_[k]) / (moved[j] - point_[j]);
            columns_.push_back(column_values);
        }
        return columns_;
    }

    static double objective(unsigned, const double* x, double* gradient, void* data)
    {
        Host& host = *static_cast<Host*>(data);
        const double f = host.at(x)[0];
        if (gradient)
            for (const Reals& column : host.gradient_at(x)) *gradient++ = column[0];
        return f;
    }

    void rows(const std::vector<Term>& terms, double* result, const double* x, double* gradient)
    {
        for (const Term& term : terms) {
            *result++ = term.sign * (at(x)[term.row + 1] - term.limit);
            if (gradient)
                for (const Reals& column : gradient_at(x))
                    *gradient++ = term.sign * column[term.row + 1];
        }
    }
    static void rows_below(unsigned, double* result, unsigned, const double* x, double* gradient,
                           void* data)
    {
        Host& host = *static_cast<Host*>(data);
        host.rows(host.below_, result, x, gradient);
    }
    static void rows_equal(unsigned, double* result, unsigned, const double* x, double* gradient,
                           void* data)
    {
        Host& host = *static_cast<Host*>(data);
        host.rows(host.equal_, result, x, gradient);
    }

    const FunctionProblem& problem_;
    double step_;
    std::vector<Term> below_, equal_;
    Reals point_, values_;        // the point evaluated last
    std::vector<Reals> columns_;  // its derivatives, if they were asked for
    long evaluations_ = 0, gradients_ = 0;
};

}  // namespace

PeerOutcome solve_by_slsqp(const FunctionProblem& problem, double step)
{
    nlopt_opt opt = nlopt_create(NLOPT_LD_SLSQP, static_cast<unsigned>(problem.numcols()));
    nlopt_set_xtol_rel(opt, 1e-8);
    nlopt_set_ftol_rel(opt, 1e-10);
    nlopt_set_maxeval(opt, 1000);
    return Host(problem, step).solve(opt, 1e-6, 1e-6);
}

PeerOutcome search_by_isres(const FunctionProblem& problem, long evaluations, unsigned long seed)
{
    nlopt_srand(seed);
    nlopt_opt opt = nlopt_create(NLOPT_GN_ISRES, static_cast<unsigned>(problem.numcols()));
    nlopt_set_maxeval(opt, static_cast<int>(evaluations));
    return Host(problem, 1e-4).solve(opt, 1e-6, 1e-3);
}

}  // namespace bench
