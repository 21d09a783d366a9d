#include "control/branch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <sstream>
#include <tuple>

#include "control/services.h"
#include "interface/problem.h"
#include "platform/memory.h"
#include "tests/support/integers.h"
#include "tests/support/memory.h"

namespace tarnwick {
namespace {

TEST(Branch, finds_what_looking_at_every_integer_point_finds)
{
    for (unsigned seed = 1; seed <= 600 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const IntegerModel model = tiny_integer_model(seed);
        expect_true(model, solve_integers(LoadedIntegers(model).lp));
    }
}

// ---- the search, with an engine that answers as a test likes

struct Answered {
    EngineResult result;
    double objective;
    Reals x;
};
using Box = std::vector<std::pair<double, double>>;

const LinearModel ANY{{{{1}, 'L', 1}}, {1}};

Box range(double lower, double upper) { return Box(1, {lower, upper}); }

// A run of branchsolve. The engine's answers follow from the bounds alone; each call notes them.
struct Search {
    Search(const Box& start, std::function<Answered(const Box&)> engine)
        : answer(std::move(engine)), x(start.size())
    {
        for (const auto& [lower, upper] : start) lb.push_back(lower), ub.push_back(upper);
        run.control = &loaded.lp->control;
        run.numvars = static_cast<std::int32_t>(x.size());
        run.lb = lb.data(), run.ub = ub.data(), run.x = x.data();
        EXPECT_TRUE(run.intflags.create(x.size()));
        std::fill_n(run.intflags.data(), x.size(), 1);
        beginrun(run.control, 0);
        active = this;
    }
    static std::int32_t TARNWICK_CALL solve(SolveRun& run) noexcept
    {
        Box box;
        for (std::size_t j = 0; j < active->x.size(); ++j) box.emplace_back(run.lb[j], run.ub[j]);
        if (++active->solves < 99) active->boxes.push_back(box);
        const Answered answered = active->answer(box);
        run.result = answered.result;
        run.objective = answered.objective;
        std::copy(answered.x.begin(), answered.x.end(), run.x);
        run.nodedata = active->attaches ? static_cast<double*>(allocate_block(8)) : nullptr;
        run.nodeaux = nullptr;
        return run.result != ENGINE_USERSTOP;
    }
    std::int32_t go() { return branchsolve(solve, run); }

    static inline Search* active;
    LoadedModel loaded{ANY};
    std::function<Answered(const Box&)> answer;
    SolveRun run{};
    Reals lb, ub, x;
    std::vector<Box> boxes;  // of the first solves
    int solves = 0;
    bool attaches = false;
};

constexpr double NONE = 1e30;

// The second solve shows the branching: which variable has a new upper bound, and the third that
// its lower bound follows.
TEST(Branch, chooses_the_variable_by_binaries_then_range_then_fraction)
{
    // clang-format off
    const struct {
        const char* name;
        Box start;
        Reals x;
        std::size_t variable;  // numvars: none
        std::vector<std::int32_t> list{};
    } CASES[] = {
        {"a binary that is less fractional",      {{0, 9}, {0, 1}},        {2.5, 0.9},        1},
        {"the first of two binaries",             {{0, 1}, {0, 1}},        {0.1, 0.5},        0},
        {"a range of 1 elsewhere is no binary",   {{0, 0.5}, {1, 2}},      {0.3, 1.5},        0},
        {"the narrower range",                    {{0, 5}, {4, 7}},        {2.5, 4.1},        1},
        {"the first of equal ranges",             {{2, 5}, {4, 7}},        {2.9, 4.5},        0},
        {"a finite range before an infinite one", {{0, NONE}, {-90, 90}},  {2.5, 1.1},        1},
        {"most fractional without finite ranges", {{0, NONE}, {-NONE, 9}}, {2.7, 1.4},        1},
        {"equally far from above and below",      {{0, NONE}, {0, NONE}},  {2.75, 1.25},      0},
        {"within the tolerance is integral",      {{0, 3}, {0, NONE}},     {2 - 1e-9, 0.5},   1},
        {"at the tolerance is not",               {{0, 3}, {0, NONE}},     {1 + 1.5e-8, 0.5}, 0},
        {"the list says who comes first",         {{0, 1}, {0, 1}},        {0.5, 0.5},   1, {2, 1}},
        {"the list says who comes at all",        {{0, 1}, {0, 1}},        {1.0, 0.5},      2, {1}},
        {"a point outside is clamped first",      {{0, 1}, {0, 3}},        {1.5, 1.5},        1},
    };
    // clang-format on
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        EngineResult next = ENGINE_OPTIMAL;
        Search search(c.start, [&](const Box&) {
            return Answered{std::exchange(next, ENGINE_INFEASIBLE), 0.0, c.x};
        });
        std::vector<std::int32_t> list = c.list;
        search.run.branchlist = list.empty() ? nullptr : list.data();
        search.run.branchcount = static_cast<std::int32_t>(list.size());
        std::vector<Box> want(c.variable < 2 ? 3 : 1, c.start);
        if (c.variable < 2) {
            want[1][c.variable].second = std::floor(c.x[c.variable]);
            want[2][c.variable].first = std::floor(c.x[c.variable]) + 1.0;
        }
        EXPECT_EQ(search.go(), RESULT_STANDS);
        EXPECT_EQ(search.boxes, want);
        EXPECT_EQ(search.run.result, c.variable < 2 ? ENGINE_INFEASIBLE : ENGINE_OPTIMAL);
    }
}

// The ranges of one integer variable: [l, u] has its point in the middle, so that the search halves
// it until it is down to a cell. The objective of a range tells it apart.
using Objective = double (*)(double l, double u);

auto halving(Objective objective)
{
    return [objective](const Box& box) -> Answered {
        const auto [l, u] = box[0];
        const double middle = std::floor(0.5 * (l + u)) + (l < u ? 0.5 : 0.0);
        return {ENGINE_OPTIMAL, objective(l, u), {middle}};
    };
}

// Halves of 1 and 1.2, quarters of 3 and 3.5, cells from 9 down to 3.5.
double falling(double l, double u)
{
    if (u == l) return 9.0 - l;
    return u - l == 3 ? (l == 0 ? 1.0 : 1.2) : u - l == 1 ? (l < 4 ? 3.0 : 3.5) : 0.0;
}

// The order of the ranges is found by hand.
TEST(Branch, goes_through_the_tree_in_its_order)
{
    // Halves of 5 and 2, quarters of 6, 6, 3, 2.5, cells of 4 but for one of 3.
    const Objective uneven = [](double l, double u) {
        if (u - l == 3) return l == 0 ? 5.0 : 2.0;
        if (u - l == 1) return l < 4 ? 6.0 : l == 4 ? 3.0 : 2.5;
        return u == l ? (l == 6 ? 3.0 : 4.0) : 1.0;
    };
    const Objective level = [](double, double) { return 4.0; };
    const Objective lower_child = [](double l, double u) { return u > l ? 4.0 : 3.0 + l; };
    const Objective near = [](double l, double u) { return u == l ? 2.0 : 1.0; };
    // clang-format off
    const struct {
        const char* name;
        Objective objective;
        double last, cutoff, gap, x, best;
        const char* order;
    } CASES[] = {
        {"dives to an incumbent, whose equal closes the gap", uneven, 7, 2e30, 0, 6, 3,
         "07 03 47 45 67 66 77 "},
        {"dives, then takes the best bound", falling, 7, 2e30, 0, 7, 3.5,
         "07 03 47 01 23 00 11 45 67 22 33 44 55 66 77 "},
        {"a cut-off puts off what is above it", falling, 7, 1.5, 0, 7, 3.5,
         "07 03 47 01 23 45 67 00 11 22 33 44 55 66 77 "},
        {"an equal solution replaces the incumbent", level, 1, 2e30, 0, 1, 4, "01 00 11 "},
        {"a child claims no better bound", lower_child, 1, 1e30, 0, 1, 4, "01 00 11 "},
        {"the gap is within the limit", near, 3, 2e30, 0.5, 1, 2, "03 01 23 00 11 "},
        {"the gap is just beyond it", near, 3, 2e30, 0.499, 3, 2, "03 01 23 00 11 22 33 "},
    };
    // clang-format on
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        Search search(range(0, c.last), halving(c.objective));
        setdblparam(search.loaded.lp, PARAM_OBJUPPERCUT, c.cutoff);
        setdblparam(search.loaded.lp, PARAM_MIPGAP, c.gap);
        EXPECT_EQ(search.go(), c.x < c.last ? ENGINE_GAPREACHED : RESULT_STANDS);
        std::ostringstream order;
        for (const Box& box : search.boxes) order << box[0].first << box[0].second << ' ';
        EXPECT_EQ(order.str(), c.order);
        EXPECT_EQ(search.run.result, ENGINE_OPTIMAL);
        EXPECT_EQ(search.run.objective, c.best);
        for (const double value : {search.x[0], search.lb[0], search.ub[0]}) EXPECT_EQ(value, c.x);
    }
}

TEST(Branch, stopped_at_any_node_keeps_the_best_cell_that_it_has_seen)
{
    for (std::int32_t limit = 0; limit < 14; ++limit) {
        SCOPED_TRACE(limit);
        Search search(range(0, 7), halving(falling));
        search.run.control->nodelimit = limit;
        search.loaded.lp->objsen = -1;
        EXPECT_EQ(search.go(), RESULT_STANDS);
        EXPECT_EQ(search.run.control->stopcode, STOP_NODELIMIT);
        EXPECT_EQ(search.solves, limit + 1);
        double last = -1.0;
        for (const Box& box : search.boxes)
            if (box[0].first == box[0].second) last = std::max(last, box[0].first);
        EXPECT_EQ(search.x, Reals{last < 0 ? 3.5 : last}) << "a cell's, or the root's";
        EXPECT_EQ(search.run.objective, last < 0 ? 0.0 : std::max(9.0 - last, 3.5));
        EXPECT_EQ(search.loaded.lp->bestinteger, -search.run.objective) << "the caller maximises";
    }
}

TEST(Branch, searches_trees_of_a_hundred_thousand_nodes_and_of_great_depth)
{
    Search broad(range(1, 65536),
                 halving([](double l, double u) { return u > l ? 0.0 : 1.0 + l; }));
    EXPECT_EQ(broad.go(), RESULT_STANDS);
    EXPECT_EQ(broad.solves, 131071);
    EXPECT_EQ(broad.run.objective, 2.0);

    Search deep(range(0, 5000), [](const Box& box) -> Answered {
        const auto [l, u] = box[0];
        return {u < 5000 ? ENGINE_INFEASIBLE : ENGINE_OPTIMAL, 0.0, {l < 5000 ? l + 0.5 : l}};
    });
    EXPECT_EQ(deep.go(), RESULT_STANDS);
    EXPECT_EQ(deep.solves, 10001);
    EXPECT_EQ(deep.x, Reals{5000});
}

TEST(Branch, an_engine_that_gives_up_decides_the_result)
{
    // clang-format off
    const std::tuple<const char*, Answered, EngineResult, double> CASES[] = {
        {"a stop", {ENGINE_USERSTOP, 0.0, {1}}, ENGINE_USERSTOP, 0},
        {"an objective that is no number", {ENGINE_OPTIMAL, NAN, {1}}, ENGINE_MODELCHECK, 0},
        {"a point that is none", {ENGINE_OPTIMAL, 1.0, {NAN}}, ENGINE_MODELCHECK, 0},
        {"an unbounded child is dropped", {ENGINE_UNBOUNDED, -1e9, {1}}, ENGINE_OPTIMAL, 3},
    };
    // clang-format on
    for (const auto& [name, fifth, result, x] : CASES) {
        SCOPED_TRACE(name);
        const auto engine = halving([](double l, double u) { return l == u ? 1.0 : 0.0; });
        Search search(range(0, 3), [&, last = fifth](const Box& box) {
            return Search::active->solves == 5 ? last : engine(box);
        });
        search.attaches = true;
        EXPECT_EQ(search.go(), RESULT_STANDS);
        EXPECT_EQ(search.run.result, result);
        EXPECT_EQ(search.x, Reals{x});
    }
}

// ---- whole runs

TEST(MipRun, goes_by_letters_and_bounds)
{
    const std::tuple<const char*, char, double, double, bool, std::int32_t, double> CASES[] = {
        {"integral relaxation",                 'I', 0,   9,   false, 101, 3  },
        {"no integer in range",                 'I', 0.3, 0.7, false, 103, 0  },
        {"crossed bounds of a binary are none", 'B', 2,   1,   false, 101, 1  },
        {"all continuous",                      'C', 0,   9,   false, 1,   3.5},
        {"relaxed",                             'I', 0,   9,   true,  1,   3.5},
    };
    for (auto [name, letter, lower, upper, relaxed, status, x] : CASES) {
        SCOPED_TRACE(name);
        const LoadedModel loaded({{{{2}, 'L', 7}}, {1}, {lower}, {upper}, -1});
        const Problem& problem = *loaded.lp;
        EXPECT_EQ(loadctype(loaded.lp, &letter), 0);
        setintparam(loaded.lp, PARAM_RELAXINT, relaxed);
        EXPECT_EQ(mipoptimize(loaded.lp), 0);
        EXPECT_EQ(problem.status, status);
        EXPECT_TRUE(status == 103 || problem.x[0] == x) << problem.x[0];
        EXPECT_EQ(problem.piout[0], 0.0) << "integer models have no duals";
    }
}

}  // namespace
}  // namespace tarnwick
