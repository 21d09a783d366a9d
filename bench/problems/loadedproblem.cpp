#include "bench/problems/loadedproblem.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace tarnwick {

namespace {

std::map<Problem*, LoadedProblem*> hosts;

std::int32_t TARNWICK_CALL evaluate(Problem* lp, std::int32_t, std::int32_t, double* objval_p,
                                    double* lhs, double* var, std::int32_t, std::int32_t)
{
    LoadedProblem& host = *hosts.at(lp);
    ++host.evaluations;
    *objval_p = host.problem.value({var}, lhs);
    return std::isnan(*objval_p);
}

std::int32_t TARNWICK_CALL differentiate(Problem* lp, std::int32_t numcols, std::int32_t,
                                         std::int32_t, double*, double* obj, std::int32_t*,
                                         std::int32_t*, std::int32_t*, double* matval, double* x,
                                         char*, char*)
{
    const Derivatives d = derivatives_at(hosts.at(lp)->problem, Reals(x, x + numcols));
    std::copy(d.obj.begin(), d.obj.end(), obj);
    std::copy(d.matval.begin(), d.matval.end(), matval);
    return std::ranges::any_of(d.obj, [](double v) { return std::isnan(v); });
}

double excess(double value, Limits limits, double unit)
{
    if (std::isnan(value)) return INF;
    const double below = (limits.lower - value) / (unit + std::fabs(limits.lower));
    const double above = (value - limits.upper) / (unit + std::fabs(limits.upper));
    return std::max({0.0, below, above});
}

bool is_near(double value, double limit, double tol)
{
    return std::fabs(value - limit) <= tol * (1 + std::fabs(limit));
}

// How far a multiplier of a minimisation has the wrong sign for where its value lies.
double wrong_sign(double multiplier, double value, Limits limits, double tol)
{
    double wrong = 0.0;
    if (!is_near(value, limits.lower, tol)) wrong = std::max(wrong, multiplier);
    if (!is_near(value, limits.upper, tol)) wrong = std::max(wrong, -multiplier);
    return wrong;
}

}  // namespace

Limits limits_of_row(const FunctionProblem& problem, int i)
{
    const auto k = static_cast<std::size_t>(i);
    const double rhs = problem.rhs[k], other = rhs + problem.range[k];
    switch (problem.sense[k]) {
    case SENSE_LESS: return {-INF, rhs};
    case SENSE_GREATER: return {rhs, INF};
    case SENSE_RANGE: return {std::min(rhs, other), std::max(rhs, other)};
    default: return {rhs, rhs};
    }
}

Limits limits_of_column(const FunctionProblem& problem, int j)
{
    const auto k = static_cast<std::size_t>(j);
    if (!problem.ctype.empty() && problem.ctype[k] == TYPE_BINARY) return {0, 1};
    return {problem.lower[k], problem.upper[k]};
}

LoadedProblem::LoadedProblem(const FunctionProblem& given, Family family)
    : problem(given), has_duals_(family == Family::smooth && given.ctype.empty()),
      obj_(given.start.size()), matval_(given.start.size() * given.sense.size())
{
    const int n = problem.numcols(), m = problem.numrows();
    lp = loadnlp(problem.name, n, m, problem.objsen, obj_.data(), problem.rhs.data(),
                 problem.sense.data(), nullptr, nullptr, nullptr, matval_.data(),
                 problem.start.data(), problem.lower.data(), problem.upper.data(),
                 problem.range.data(), n * m, evaluate, differentiate);
    hosts[lp] = this;
    if (family == Family::nonsmooth) loadnltype(lp, nullptr, nullptr);
    if (!problem.ctype.empty()) loadctype(lp, problem.ctype.data());
}

LoadedProblem::~LoadedProblem()
{
    hosts.erase(lp);
    unloadprob(&lp);
}

Answer LoadedProblem::solve()
{
    Answer answer;
    answer.x.resize(problem.start.size());
    answer.slack.resize(problem.sense.size());
    if (has_duals_) {
        answer.dj.resize(answer.x.size());
        answer.piout.resize(answer.slack.size());
    }
    if (optimize(lp) || solution(lp, &answer.status, &answer.objval, answer.x.data(),
                                 answer.piout.data(), answer.slack.data(), answer.dj.data()))
        answer.status = -1;
    return answer;
}

Derivatives derivatives_at(const FunctionProblem& problem, Reals x)
{
    const auto n = x.size(), m = problem.sense.size();
    Derivatives d{Reals(n), Reals(n * m)};
    for (std::size_t j = 0; j < n; ++j) {
        const double old = x[j], step = 1e-6 * (1 + std::fabs(old));
        const Limits limits = limits_of_column(problem, static_cast<int>(j));
        const double up = std::max(old, std::min(old + step, limits.upper));
        const double down = std::min(old, std::max(old - step, limits.lower));
        if (up == down) continue;
        x[j] = up;
        const double above = problem.objective({x.data()});
        const Reals g = problem.rows({x.data()});
        x[j] = down;
        const double below = problem.objective({x.data()});
        const Reals h = problem.rows({x.data()});
        x[j] = old;
        d.obj[j] = (above - below) / (up - down);
        for (std::size_t i = 0; i < m; ++i) d.matval[j * m + i] = (g[i] - h[i]) / (up - down);
    }
    return d;
}

double violation(const FunctionProblem& problem, const Reals& x)
{
    double worst = 0.0;
    const Reals g = problem.rows({x.data()}), first = problem.rows({problem.start.data()});
    for (std::size_t i = 0; i < problem.sense.size(); ++i) {
        const double unit = std::isnan(first[i]) ? 1 : 1 + std::fabs(first[i]);
        worst = std::max(worst, excess(g[i], limits_of_row(problem, static_cast<int>(i)), unit));
    }
    for (std::size_t j = 0; j < x.size(); ++j)
        worst = std::max(worst, excess(x[j], limits_of_column(problem, static_cast<int>(j)), 1));
    return worst;
}

double objective(const FunctionProblem& problem, const Reals& x)
{
    return problem.objective({x.data()});
}

double stationarity_error(const FunctionProblem& problem, const Answer& answer, double bindingtol)
{
    const auto n = answer.x.size(), m = problem.sense.size();
    const Derivatives d = derivatives_at(problem, answer.x);
    const Reals g = problem.rows({answer.x.data()});
    double worst = 0.0, size = 1.0;

    for (std::size_t j = 0; j < n; ++j) {
        const Limits limits = limits_of_column(problem, static_cast<int>(j));
        if (limits.lower == limits.upper) continue;
        double rest = d.obj[j] - answer.dj[j];
        size = std::max(size, std::fabs(d.obj[j]));
        for (std::size_t i = 0; i < m; ++i) {
            const double term = answer.piout[i] * d.matval[j * m + i];
            rest -= term;
            size = std::max(size, std::fabs(term));
        }
        const double dj = problem.objsen * answer.dj[j];
        worst = std::max({worst, std::fabs(rest), wrong_sign(dj, answer.x[j], limits, bindingtol)});
    }
    for (std::size_t i = 0; i < m; ++i) {
        const Limits limits = limits_of_row(problem, static_cast<int>(i));
        const double pi = problem.objsen * answer.piout[i];
        worst = std::max(worst, wrong_sign(pi, g[i], limits, bindingtol));
    }
    return worst / size;
}

}  // namespace tarnwick
