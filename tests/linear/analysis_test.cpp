#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "control/driver.h"
#include "control/services.h"
#include "interface/problem.h"
#include "linear/lpengine.h"
#include "tests/support/memory.h"
#include "tests/support/verifier.h"

namespace tarnwick {
namespace {

std::int32_t TARNWICK_CALL stop(Problem*, std::int32_t) { return 1; }

struct Range {
    double lower, upper;
};

// clang-format off
const struct {
    const char* name;
    LinearModel model;
    Reals x, dj, pi;
    std::vector<Range> costs, sides;  // of each column's cost and of each right-hand side
} ANALYSIS_CASES[] = {
    {"minimise, binding >",         {{{{1}, 'G', 2}}, {1}},                     {2}, {0},  {1},  {{0, INF}},  {{0, INF}}},
    {"maximise, binding >",         {{{{1}, 'G', 2}}, {-1}, {}, {}, -1},        {2}, {0},  {-1}, {{-INF, 0}}, {{0, INF}}},
    {"minimise, binding <",         {{{{1}, 'L', 2}}, {-3}},                    {2}, {0},  {-3}, {{-INF, 0}}, {{0, INF}}},
    {"a row that was turned",       {{{{-1}, 'L', -2}}, {1}},                   {2}, {0},  {-1}, {{0, INF}},  {{-INF, 0}}},
    {"held by a bound further up",  {{{{1}, 'L', 2}}, {-3}, {0}, {6}},          {2}, {0},  {-3}, {{-INF, 0}}, {{0, 6}}},
    {"at the upper bound",          {{{{1}, 'L', 9}}, {-1}, {0}, {5}},          {5}, {-1}, {0},  {{-INF, 0}}, {{5, INF}}},
    {"at the upper bound, maximise", {{{{1}, 'L', 9}}, {1}, {0}, {5}, -1},      {5}, {1},  {0},  {{0, INF}},  {{5, INF}}},
    {"a > row that doesn't bind",   {{{{1}, 'G', 2}}, {-1}, {0}, {5}},          {5}, {-1}, {0},  {{-INF, 0}}, {{-INF, 5}}},
    {"a free variable at zero",     {{{{1}, 'L', 5}}, {0}, {-INF}, {INF}},      {0}, {0},  {0},  {{-INF, 0}}, {{0, INF}}},
    {"an equation",                 {{{{1, 1}, 'E', 3}}, {1, 2}},               {3, 0}, {0, 1}, {1},  {{-INF, 2}, {1, INF}},  {{0, INF}}},
    {"a turned equation, maximise", {{{{-1, -1}, 'E', -3}}, {-1, -2}, {}, {}, -1}, {3, 0}, {0, -1}, {1}, {{-2, INF}, {-INF, -1}}, {{-INF, 0}}},
    {"a degenerate basic variable", {{{{1}, 'L', 2}, {{1}, 'L', 2}}, {-1}},     {2}, {0},  {0, -1}, {{-INF, 0}}, {{2, INF}, {0, 2}}},
};
// clang-format on

TEST(Analysis, gives_duals_and_ranges)
{
    for (const auto& c : ANALYSIS_CASES) {
        SCOPED_TRACE(c.name);
        const Answer a = solve(c.model);
        expect_optimal(c.model, a);
        const auto expect_numbers = [](const Reals& got, const Reals& want) {
            for (std::size_t k = 0; k < want.size(); ++k)
                EXPECT_NEAR(got[k], want[k], 1e-12 * (1.0 + std::fabs(want[k])));
        };
        expect_numbers(a.x, c.x);
        expect_numbers(a.dj, c.dj);
        expect_numbers(a.piout, c.pi);
        for (std::size_t j = 0; j < c.x.size(); ++j)
            expect_numbers({a.objlower[j], a.objupper[j]}, {c.costs[j].lower, c.costs[j].upper});
        for (std::size_t i = 0; i < c.pi.size(); ++i)
            expect_numbers({a.rhslower[i], a.rhsupper[i]}, {c.sides[i].lower, c.sides[i].upper});
    }
}

// ---- when they are read

// A host may ask late or never. What happens in between, to its arrays too, changes no answer, and
// what waits to be read goes with the Problem.
TEST(Analysis, ranges_wait_to_be_asked_for)
{
    const LinearModel model = solvable_model(3, {.rows = 6, .cols = 9, .boxed = 0.5});
    const Answer known = solve(model);
    ASSERT_EQ(known.status, STAT_OPTIMAL);
    const long alive = blocks_alive();
    const auto find_subset = [](LoadedModel& m) {
        std::int32_t rows = 0, columns = 0;
        findiis(m.lp, &rows, &columns);
    };
    const auto change_arrays = [](LoadedModel& m) { m.obj[0] = m.rhs[0] = m.matval[0] = 77.0; };
    const auto ask = [](LoadedModel& m) { answer_of(m.lp); };
    const auto run = [](LoadedModel& m) { optimize(m.lp); };
    const auto drive = [](LoadedModel& m) {  // as a host may, by the exported entries
        EngineTable entries{&m.lp->control, lpinit, lpsolve, lpfinish};
        beginrun(&m.lp->control, 0);
        solveproblem(entries);
        endrun(&m.lp->control);
    };
    for (const auto event : {+find_subset, +change_arrays, +ask, +run, +drive}) {
        LoadedModel loaded(model), silent(model);
        optimize(loaded.lp);
        event(loaded);
        const Answer got = answer_of(loaded.lp);
        EXPECT_EQ(got.objlower, known.objlower);
        EXPECT_EQ(got.objupper, known.objupper);
        EXPECT_EQ(got.rhslower, known.rhslower);
        EXPECT_EQ(got.rhsupper, known.rhsupper);

        optimize(silent.lp);
        event(silent);
    }
    EXPECT_EQ(blocks_alive(), alive);
}

TEST(Analysis, a_run_without_an_optimum_leaves_no_ranges)
{
    const LoadedModel loaded({{{{1}, 'G', 2}}, {1}});
    for (const bool asks : {false, true}) {
        EXPECT_EQ(optimize(loaded.lp), 0);
        EXPECT_EQ(asks ? answer_of(loaded.lp).rhsupper : Reals{INF}, Reals{INF});
        setlpcallbackfunc(loaded.lp, stop);
        const Answer got = solve(loaded.lp);
        EXPECT_EQ(got.objlower, Reals{0});
        EXPECT_EQ(got.rhsupper, Reals{0});
        setlpcallbackfunc(loaded.lp, nullptr);
    }
}

// ---- ranges, by solving again

// A model without ties, so that its ranges end exactly where the basis changes.
LinearModel model_without_ties(unsigned seed)
{
    LinearModel model = solvable_model(seed, {.rows = 6, .cols = 9, .boxed = 0.8, .free = 0.1});
    double shift = 0.1 * seed;
    for (double& cost : model.obj) cost += std::sin(++shift);
    for (Row& row : model.rows)
        row.rhs += (row.sense == 'G' ? -1.0 : 1.0) * std::fabs(std::sin(++shift));
    return model;
}

// The optimum as a minimisation; infinite when there is none, which can only be worse for a moved
// right-hand side and better for a moved cost.
double optimum(const LinearModel& model)
{
    const LoadedModel loaded(model);
    setdblparam(loaded.lp, PARAM_OPTTOL, 1e-9);  // costs close to the end of a range count too
    const Answer answer = solve(loaded.lp);
    if (answer.status != STAT_OPTIMAL) return answer.status == STAT_UNBOUNDED ? -INF : INF;
    return answer.objval * model.objsen;
}

// Inside its range the number moves the optimum along a straight line of the given slope; outside
// the optimum leaves the line, downwards for a cost and upwards for a right-hand side. All as a
// minimisation. Gives how many ends were looked at.
int expect_range(const LinearModel& model, double& number, Range range, double slope, bool is_cost)
{
    const double old = number, base = optimum(model);
    int ends = 0;
    for (const double end : {range.lower, range.upper}) {
        const bool open = std::fabs(end) > 0.5 * INF;
        const double inside = open ? 1000.0 * (end > 0.0 ? 1.0 : -1.0) : 0.999 * (end - old);
        number = old + inside;
        EXPECT_NEAR(optimum(model), base + slope * inside,
                    1e-6 * (1.0 + std::fabs(base + slope * inside)));
        if (open) continue;
        ++ends;
        const double outside = 1.05 * (end - old) + (end > old ? 0.01 : -0.01);
        number = old + outside;
        const double leaves = optimum(model) - (base + slope * outside);
        EXPECT_GT(is_cost ? -leaves : leaves, 1e-9);
    }
    number = old;
    return ends;
}

TEST(Analysis, ranges_end_where_the_basis_changes)
{
    int ends = 0;
    for (unsigned seed = 1; seed <= 40 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        LinearModel model = model_without_ties(seed);
        const Answer a = solve(model);
        if (a.status != STAT_OPTIMAL) continue;
        expect_optimal(model, a);
        for (std::size_t j = 0; j < model.numcols(); ++j)
            ends += expect_range(model, model.obj[j], {a.objlower[j], a.objupper[j]},
                                 a.x[j] * model.objsen, true);
        for (std::size_t i = 0; i < model.numrows(); ++i)
            ends += expect_range(model, model.rows[i].rhs, {a.rhslower[i], a.rhsupper[i]},
                                 a.piout[i] * model.objsen, false);
    }
    EXPECT_GE(ends, 400);
}

}  // namespace
}  // namespace tarnwick
