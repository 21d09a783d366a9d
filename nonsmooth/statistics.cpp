// What the final population tells about each variable and each row, in real units: mean, standard
// deviation, highest and lowest value over the members that count,
//
//     mean = sum x / n,   deviation = sqrt( sum (x - mean)^2 / (n - 1) )
//
// in two passes, so that large values of little spread keep their digits. The members that count are
// the feasible ones, or all if the run ends without any.

#include "nonsmooth/statistics.h"

#include <algorithm>
#include <cmath>

#include "control/services.h"
#include "nonsmooth/candidate.h"

namespace tarnwick {

namespace {

// The statistics of the variables, or of the rows.
struct Spread {
    int count;
    Vec<double> mean, deviation, highest, lowest;

    void clear() const noexcept
    {
        std::fill_n(mean.data(), count, 0.0);
        std::fill_n(deviation.data(), count, 0.0);
        std::fill_n(highest.data(), count, -INFINITE_BOUND);
        std::fill_n(lowest.data(), count, INFINITE_BOUND);
    }
    void add(const double* values) const noexcept
    {
        for (int k = 0; k < count; ++k) {
            mean[k] += values[k];
            highest[k] = std::max(highest[k], values[k]);
            lowest[k] = std::min(lowest[k], values[k]);
        }
    }
    void divide_means(double n) const noexcept
    {
        for (int k = 0; k < count; ++k) mean[k] /= n;
    }
    void add_distances(const double* values) const noexcept
    {
        for (int k = 0; k < count; ++k) {
            const double distance = values[k] - mean[k];
            deviation[k] += distance * distance;
        }
    }
    void finish_deviations(double n) const noexcept
    {
        for (int k = 0; k < count; ++k) deviation[k] = std::sqrt(deviation[k] / n);
    }
};

Spread variables_of(const NspEngine& nsp) noexcept
{
    return {nsp.variables, nsp.varmean, nsp.varstddev, nsp.varmax, nsp.varmin};
}

Spread rows_of(const NspEngine& nsp) noexcept
{
    return {nsp.rows, nsp.rowmean, nsp.rowstddev, nsp.rowmax, nsp.rowmin};
}

bool create_statistics(NspEngine& nsp) noexcept
{
    return nsp.statistics.create([&nsp](auto& layout) {
        layout({&nsp.varmean, &nsp.varstddev, &nsp.varmax, &nsp.varmin}, nsp.variables - 1);
        layout({&nsp.rowmean, &nsp.rowstddev, &nsp.rowmax, &nsp.rowmin}, nsp.rows);
    });
}

bool counts(const NspEngine& nsp, const NspMember& member) noexcept
{
    return nsp.finalcode == ENGINE_INFEASIBLE || is_feasible(member);
}

// The first pass over a member, which keeps its rows for the second. False: no memory for them. A
// member whose evaluation fails is left without, and takes no further part.
bool add_member(NspEngine& nsp, NspMember& member, double& n) noexcept
{
    for (int i = 0; i < nsp.variables; ++i)
        member.point[i] = real_coordinate(nsp, i, member.point[i]);

    const std::size_t bytes = (static_cast<std::size_t>(nsp.rows) + 1) * sizeof(double);
    member.rowvalues = static_cast<double*>(allocate_block(bytes));
    if (!member.rowvalues) return false;
    if (!nsp_evaluate_rows(nsp, {member.rowvalues, nsp.rows}, member.point)) {
        release_block(std::exchange(member.rowvalues, nullptr));
        return true;
    }
    n += 1.0;
    variables_of(nsp).add(member.point);
    rows_of(nsp).add(member.rowvalues);
    return true;
}

void add_distances(const NspEngine& nsp, NspMember& member) noexcept
{
    if (!member.rowvalues) return;
    variables_of(nsp).add_distances(member.point);
    rows_of(nsp).add_distances(member.rowvalues);
    release_block(std::exchange(member.rowvalues, nullptr));
}

void nsp_statistics(NspEngine& nsp) noexcept
{
    const Spread all[] = {variables_of(nsp), rows_of(nsp)};
    for (const Spread& spread : all) spread.clear();

    double n = 0.0;
    for (int k = 0; k < nsp.count; ++k)
        if (counts(nsp, *nsp.ranking[k]) && !add_member(nsp, *nsp.ranking[k], n)) break;
    n = std::max(n, 1.0);
    for (const Spread& spread : all) spread.divide_means(n);

    for (int k = 0; k < nsp.count; ++k) add_distances(nsp, *nsp.ranking[k]);
    if (n > 1.0) n -= 1.0;
    for (const Spread& spread : all) spread.finish_deviations(n);
}

}  // namespace

void nsp_hand_back(NspEngine& nsp) noexcept
{
    const bool has_statistics = create_statistics(nsp);
    if (has_statistics) nsp_statistics(nsp);
    evalfunctions(nsp.control, nsp.rowvalue.data(), nsp.point.data());
    if (!has_statistics) return;

    const SolutionRecord solution{
        .columns = nsp.variables,
        .lower = nsp.lower.data(),
        .point = nsp.point.data(),
        .upper = nsp.upper.data(),
        .reduced = nsp.varmean.data(),
        .rows = nsp.rows,
        .rowlower = nsp.rowlower.data(),
        .rowvalue = nsp.rowvalue.data(),
        .rowupper = nsp.rowupper.data(),
        .duals = nsp.rowmean.data(),
    };
    const SensitivityRecord spreads{
        .columns = nsp.variables,
        .cost = nsp.varstddev.data(),
        .costup = nsp.varmax.data(),
        .costdown = nsp.varmin.data(),
        .own = {},
        .rows = nsp.rows,
        .rhs = nsp.rowstddev.data(),
        .rhsup = nsp.rowmax.data(),
        .rhsdown = nsp.rowmin.data(),
    };
    storesolution(nsp.control, &solution, &spreads);
}

}  // namespace tarnwick
