#include "control/branch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "control/services.h"
#include "interface/problem.h"
#include "platform/memory.h"
#include "tests/support/clock.h"
#include "tests/support/integers.h"
#include "tests/support/memory.h"

namespace tarnwick {
namespace {

TEST(Branch, finds_what_looking_at_every_integer_point_finds)
{
    for (unsigned seed = 1; seed <= 600; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const IntegerModel model = tiny_integer_model(seed);
        const LoadedIntegers loaded(model);
        expect_true(model, solve_integers(loaded.lp));
        if (testing::Test::HasFailure()) return;
    }
}

// ---- the search, with an engine that answers as a test likes

struct Answered {
    EngineResult result;
    double objective;
    Reals x;
};
using Box = std::vector<std::pair<double, double>>;

// A run of branchsolve. The engine's answers follow from the bounds alone; each call notes them.
struct Search {
    Search(Box start, std::function<Answered(const Box&)> engine)
        : loaded({{{{1}, 'L', 1}}, {1}}), answer(std::move(engine))
    {
        for (const auto& [lower, upper] : start) {
            lb.push_back(lower);
            ub.push_back(upper);
        }
        x.resize(lb.size());
        beginrun(&loaded.lp->control, 0);
        run.control = &loaded.lp->control;
        run.numvars = static_cast<std::int32_t>(x.size());
        run.lb = lb.data(), run.ub = ub.data(), run.x = x.data();
        EXPECT_TRUE(run.intflags.create(x.size()));
        std::fill_n(run.intflags.data(), x.size(), 1);
    }
    std::int32_t go()
    {
        active = this;
        return branchsolve(solve_entry, run);
    }
    static std::int32_t TARNWICK_CALL solve_entry(SolveRun& run) noexcept
    {
        run.nodedata = nullptr;
        run.nodeaux = nullptr;
        Box box;
        for (std::size_t j = 0; j < active->x.size(); ++j) box.emplace_back(run.lb[j], run.ub[j]);
        if (active->keeps_boxes) active->boxes.push_back(box);
        ++active->solves;
        const Answered answered = active->answer(box);
        run.result = answered.result;
        run.objective = answered.objective;
        std::copy(answered.x.begin(), answered.x.end(), run.x);
        if (active->attaches) run.nodedata = static_cast<double*>(allocate_block(8));
        return run.result == ENGINE_USERSTOP ? 0 : 1;
    }

    static Search* active;
    LoadedModel loaded;
    std::function<Answered(const Box&)> answer;
    SolveRun run{};
    Reals lb, ub, x;
    std::vector<Box> boxes;
    int solves = 0;
    bool keeps_boxes = true, attaches = false;
};
Search* Search::active = nullptr;

constexpr double NONE = 1e30;

// The second solve shows the branching: which variable has a new upper bound, and the third that its
// lower bound follows.
TEST(Branch, chooses_the_variable_by_binaries_then_range_then_fraction)
{
    const struct {
        const char* name;
        Box start;
        Reals x;
        std::vector<std::int32_t> list;
        std::size_t variable;  // numvars: none
    } CASES[] = {
        {"a binary that is less fractional",       {{0, 9}, {0, 1}},        {2.5, 0.9},        {},     1},
        {"the first of two binaries",              {{0, 1}, {0, 1}},        {0.1, 0.5},        {},     0},
        {"a range of 1 elsewhere is no binary",    {{0, 0.5}, {1, 2}},      {0.3, 1.5},        {},     0},
        {"the narrower range",                     {{0, 5}, {4, 7}},        {2.5, 4.1},        {},     1},
        {"the first of equal ranges",              {{2, 5}, {4, 7}},        {2.9, 4.5},        {},     0},
        {"a finite range before an infinite one",  {{0, NONE}, {-90, 90}},  {2.5, 1.1},        {},     1},
        {"most fractional without finite ranges",  {{0, NONE}, {-NONE, 9}}, {2.7, 1.4},        {},     1},
        {"distances to above and below are equal", {{0, NONE}, {0, NONE}},  {2.75, 1.25},      {},     0},
        {"within the tolerance is integral",       {{0, 3}, {0, NONE}},     {2 - 1e-9, 0.5},   {},     1},
        {"at the tolerance is not",                {{0, 3}, {0, NONE}},     {1 + 1.5e-8, 0.5}, {},     0},
        {"the list says who comes first",          {{0, 1}, {0, 1}},        {0.5, 0.5},        {2, 1}, 1},
        {"the list says who comes at all",         {{0, 1}, {0, 1}},        {1.0, 0.5},        {1},    2},
        {"a point outside is clamped first",       {{0, 1}, {0, 3}},        {1.5, 1.5},        {},     1},
        {"all integral",                           {{0, 1}, {0, 3}},        {1.0, 3.0},        {},     2},
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        bool first = true;
        Search search(c.start, [&](const Box&) {
            const auto result = std::exchange(first, false) ? ENGINE_OPTIMAL : ENGINE_INFEASIBLE;
            return Answered{result, 0.0, c.x};
        });
        std::vector<std::int32_t> list = c.list;
        search.run.branchlist = list.empty() ? nullptr : list.data();
        search.run.branchcount = static_cast<std::int32_t>(list.size());
        EXPECT_EQ(search.go(), RESULT_STANDS);
        if (c.variable == c.x.size()) {
            EXPECT_EQ(search.boxes.size(), 1u);
            EXPECT_EQ(search.run.result, ENGINE_OPTIMAL);
            continue;
        }
        ASSERT_EQ(search.boxes.size(), 3u);
        Box left = c.start, right = c.start;
        left[c.variable].second = std::floor(c.x[c.variable]);
        right[c.variable].first = std::floor(c.x[c.variable]) + 1.0;
        EXPECT_EQ(search.boxes[1], left);
        EXPECT_EQ(search.boxes[2], right);
        EXPECT_EQ(search.run.result, ENGINE_INFEASIBLE);
    }
}

// A tree over the cells of one variable from 0 to `cells`: a range [l, u] is fractional in its middle
// while it has more than one cell, so the search halves it.
struct Cells {
    std::function<double(double, double)> objective;
    Answered operator()(const Box& box) const
    {
        const auto [l, u] = box[0];
        if (l > u) return {ENGINE_INFEASIBLE, 0.0, {l}};
        const double middle = std::floor(0.5 * (l + u)) + (l < u ? 0.5 : 0.0);
        return {ENGINE_OPTIMAL, objective(l, u), {middle}};
    }
};

using Order = std::vector<std::pair<double, double>>;

Order order_of(const Search& search)
{
    Order order;
    for (const Box& box : search.boxes) order.push_back(box[0]);
    return order;
}

TEST(Branch, dives_to_the_deepest_then_goes_by_the_bound)
{
    // Bounds of the ranges of eight cells; the middle of each tells it apart.
    const auto objective = [](double l, double u) {
        if (u - l == 3) return l == 0 ? 5.0 : 2.0;
        if (u - l == 1) return l < 4 ? 6.0 : l == 4 ? 3.0 : 2.5;
        return u == l ? (l == 6 ? 3.0 : 4.0) : 1.0;
    };
    Search search(
        {
            {0, 7}
    },
        Cells{objective});
    EXPECT_EQ(search.go(), ENGINE_GAPREACHED);
    // Both halves, then the better one by its bound, down to cells 6 and 7; the incumbent with 3
    // closes 0..3, and its equal 4..5 leaves no gap.
    const Order expected = {
        {0, 7},
        {0, 3},
        {4, 7},
        {4, 5},
        {6, 7},
        {6, 6},
        {7, 7}
    };
    EXPECT_EQ(order_of(search), expected);
    EXPECT_EQ(search.x, Reals{6.0});
    EXPECT_EQ(search.run.objective, 3.0);
    EXPECT_EQ(search.run.result, ENGINE_OPTIMAL);
    EXPECT_EQ(search.lb[0], 6.0);
    EXPECT_EQ(search.ub[0], 6.0);
}

TEST(Branch, a_cut_off_orders_the_search_and_does_not_end_it)
{
    // Of the halves the left has the lower bound; the quarters are above the cut-off. With it, both
    // halves are taken before any quarter.
    const auto objective = [](double l, double u) {
        if (u == l) return 9.0 - l;
        return u - l == 3 ? (l == 0 ? 1.0 : 1.2) : u - l == 1 ? (l < 4 ? 3.0 : 3.5) : 0.0;
    };
    const auto order_with = [&](double cutoff) {
        Search search(
            {
                {0, 7}
        },
            Cells{objective});
        setdblparam(search.loaded.lp, PARAM_OBJUPPERCUT, cutoff);
        EXPECT_EQ(search.go(), RESULT_STANDS);
        EXPECT_EQ(search.x, Reals{7.0});
        EXPECT_EQ(search.run.objective, 3.5);
        return order_of(search);
    };
    const Order diving = {
        {0, 7},
        {0, 3},
        {4, 7},
        {0, 1},
        {2, 3},
        {0, 0},
        {1, 1},
        {4, 5},
        {6, 7},
        {2, 2},
        {3, 3},
        {4, 4},
        {5, 5},
        {6, 6},
        {7, 7}
    };
    const Order in_order = {
        {0, 7},
        {0, 3},
        {4, 7},
        {0, 1},
        {2, 3},
        {4, 5},
        {6, 7},
        {0, 0},
        {1, 1},
        {2, 2},
        {3, 3},
        {4, 4},
        {5, 5},
        {6, 6},
        {7, 7}
    };
    EXPECT_EQ(order_with(2e30), diving);
    EXPECT_EQ(order_with(1e30), diving);
    EXPECT_EQ(order_with(1.5), in_order);
}

TEST(Branch, an_equal_solution_replaces_the_incumbent)
{
    Search search(
        {
            {0, 1}
    },
        Cells{[](double, double) { return 4.0; }});
    EXPECT_EQ(search.go(), RESULT_STANDS);
    EXPECT_EQ(search.x, Reals{1.0});
    EXPECT_EQ(search.run.result, ENGINE_OPTIMAL);
}

TEST(Branch, a_child_claims_no_better_bound_than_its_parent)
{
    Search search(
        {
            {0, 1}
    },
        Cells{[](double l, double u) { return u > l ? 4.0 : 3.0 + l; }});
    EXPECT_EQ(search.go(), RESULT_STANDS);
    EXPECT_EQ(search.run.objective, 4.0);
    EXPECT_EQ(search.x, Reals{1.0});
}

TEST(Branch, a_gap_ends_the_search_with_its_own_result)
{
    // The root's bound stands at 0 while the search dives: the gap is that of 9 to 0.
    const auto objective = [](double l, double u) { return u == l ? 9.0 : u - l == 3 ? 0.0 : 1.0; };
    for (const double gap : {0.0, 0.5, 1.0}) {
        SCOPED_TRACE(gap);
        Search search(
            {
                {0, 3}
        },
            Cells{objective});
        setdblparam(search.loaded.lp, PARAM_MIPGAP, gap);
        EXPECT_EQ(search.go(), RESULT_STANDS);
        EXPECT_EQ(search.solves, 7);
    }
    Search search(
        {
            {0, 3}
    },
        Cells{[](double l, double u) { return u == l ? 2.0 : 1.0; }});
    setdblparam(search.loaded.lp, PARAM_MIPGAP, 0.5);
    EXPECT_EQ(search.go(), ENGINE_GAPREACHED);
    EXPECT_EQ(search.solves, 5);
}

TEST(Branch, a_large_tree_is_searched_without_a_deep_stack_or_slow_picks)
{
    const struct {
        const char* name;
        double cells;
        std::function<Answered(const Box&)> engine;
        int solves;
    } CASES[] = {
        {"wide", 65536, Cells{[](double l, double u) { return u > l ? 0.0 : 1.0 + l; }}, 131071},
        {"deep", 5000,
         [](const Box& box) {
             return Answered{box[0].second < 5e3 ? ENGINE_INFEASIBLE : ENGINE_OPTIMAL,
                             0.0,
                             {box[0].first + (box[0].first < 5e3 ? 0.5 : 0.0)}};
         },                                                                              10001 },
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        Search search(
            {
                {c.name[0] == 'w' ? 1 : 0, c.cells}
        },
            c.engine);
        search.keeps_boxes = false;
        EXPECT_EQ(search.go(), RESULT_STANDS);
        EXPECT_EQ(search.solves, c.solves);
        EXPECT_EQ(search.run.result, ENGINE_OPTIMAL);
    }
}

// What the engine attaches goes to nodes and is released with them, or at once.
TEST(Branch, survives_a_failure_of_each_allocation)
{
    const auto objective = [](double l, double u) { return u == l ? 99.0 - l : 1.0; };
    for (long allowed = 0;; ++allowed) {
        SCOPED_TRACE(allowed);
        Search search(
            {
                {0, 15}
        },
            Cells{objective});
        search.attaches = true;
        const long before = blocks_alive();
        allow_allocations(allowed);
        const std::int32_t outcome = search.go();
        allow_all_allocations();
        EXPECT_EQ(blocks_alive(), before);
        if (search.run.result == ENGINE_OPTIMAL) {
            EXPECT_EQ(outcome, RESULT_STANDS);
            EXPECT_EQ(search.x, Reals{15.0});
            break;
        }
        EXPECT_EQ(search.run.result, ENGINE_NOMEMORY);
        ASSERT_LT(allowed, 200);
    }
}

TEST(Branch, an_engine_that_gives_up_decides_the_result)
{
    int calls = 0;
    Search search(
        {
            {0, 3}
    },
        [&calls](const Box& box) {
            Answered answered = Cells{[](double l, double u) { return l == u ? 1.0 : 0.0; }}(box);
            if (++calls == 5) answered.result = ENGINE_USERSTOP;
            return answered;
        });
    search.attaches = true;
    EXPECT_EQ(search.go(), RESULT_STANDS);
    EXPECT_EQ(search.run.result, ENGINE_USERSTOP);
    EXPECT_EQ(search.x, Reals{0.0});
}

// ---- whole runs

// Three items into a knapsack. The relaxation has 22, the best whole load is 21, the greedy 20.
const IntegerModel KNAPSACK{
    {{{{5, 4, 3}, 'L', 8}}, {12, 9, 7}, {0, 0, 0}, {1, 1, 1}, -1},
    "BBB"
};

TEST(MipRun, ends_with_the_status_of_its_case)
{
    const struct {
        const char* name;
        IntegerModel model;
        std::int32_t status;
        double objective;
    } CASES[] = {
        {"knapsack",                               KNAPSACK,                                                   101, 19 },
        {"integral relaxation",                    {{{{{1}, 'L', 3}}, {1}, {0}, {9}, -1}, "I"},                101, 3  },
        {"no integer in range",                    {{{{{1}, 'L', 3}}, {1}, {0.3}, {0.7}, -1}, "I"},            103, 0  },
        {"no integer solution",                    {{{{{2, 2}, 'E', 3}}, {1, 1}, {0, 0}, {5, 5}}, "II"},       103, 0  },
        {"infeasible relaxation",                  {{{{{1}, 'G', 3}}, {1}, {0}, {2}}, "I"},                    103, 0  },
        {"unbounded relaxation",                   {{{{{1, -1}, 'L', 3}}, {-1, 0}, {0, 0}, {INF, INF}}, "IC"}, 3,   0  },
        {"crossed bounds",                         {{{{{1}, 'L', 3}}, {1}, {2}, {1}}, "I"},                    103, 0  },
        {"crossed bounds of a binary don't count",
         {{{{{1}, 'L', 3}}, {-1}, {2}, {1}}, "B"},
         101,                                                                                                       -1 },
        {"all continuous",                         {{{{{2}, 'L', 3}}, {1}, {0}, {9}, -1}, "C"},                1,   1.5},
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        const LoadedIntegers loaded(c.model);
        const Answer answer = solve_integers(loaded.lp);
        EXPECT_EQ(answer.status, c.status);
        if (c.status != 101 && c.status != 1) continue;
        EXPECT_NEAR(answer.objval, c.objective, 1e-9);
        if (c.status == 101 && c.name[0] != 'c') expect_integer_solution(c.model, answer);
    }
}

std::function<std::int32_t(Problem*)> on_node;
std::int32_t TARNWICK_CALL call_on_node(Problem* lp, std::int32_t event)
{
    EXPECT_EQ(event, 101);
    return on_node(lp);
}

template <class Value>
Value counter(Problem* lp, std::int32_t which)
{
    Value value{};
    EXPECT_EQ(getcallbackinfo(lp, nullptr, which, &value), 0);
    return value;
}

// A maximisation of many nodes, with an incumbent after some of them.
IntegerModel many_nodes()
{
    IntegerModel model{
        {{{{}, 'L', 40.5}, {{}, 'L', 55.5}}, {}, {}, {}, -1},
        ""
    };
    for (int j = 0; j < 12; ++j) {
        model.rows[0].a.push_back(3 + (7 * j) % 11);
        model.rows[1].a.push_back(2 + (5 * j) % 13);
        model.obj.push_back(5 + (6 * j) % 7);
        model.lb.push_back(0);
        model.ub.push_back(1);
        model.ctype.push_back('B');
    }
    return model;
}

TEST(MipRun, can_be_stopped_at_each_node)
{
    const IntegerModel model = many_nodes();
    const Truth truth = truth_of(model);
    const LoadedIntegers loaded(model);
    std::int32_t events = 0, solutions = 0, last = 0;
    double best = 0.0;
    on_node = [&](Problem* lp) -> std::int32_t {
        EXPECT_EQ(counter<std::int32_t>(lp, CB_NODES), ++events);
        solutions = lp->intsolutions;
        best = counter<double>(lp, CB_BESTINTEGER);
        return events == last ? 105 : 0;
    };
    setmipcallbackfunc(loaded.lp, call_on_node);
    std::int32_t status = 0;
    bool had_none = false, had_some = false;
    for (last = 1; status != STAT_MIP_OPTIMAL && last < 500; ++last) {
        SCOPED_TRACE(last);
        events = solutions = 0;
        const Answer answer = solve_integers(loaded.lp);
        status = answer.status;
        if (status != STAT_MIP_OPTIMAL) {
            EXPECT_EQ(status, solutions > 0 ? 105 : 106);
            EXPECT_EQ(events, last);
        }
        had_none = had_none || status == 106;
        had_some = had_some || status == 105;
        if (status == 106) continue;
        expect_integer_solution(model, answer);
        EXPECT_NEAR(answer.objval, status == 105 ? best : truth.objective, 1e-9);
    }
    EXPECT_EQ(status, STAT_MIP_OPTIMAL);
    EXPECT_TRUE(had_none && had_some);
}

TEST(MipRun, ends_at_its_limits)
{
    const struct {
        const char* name;
        std::int32_t nodes, solutions, iterations;
        double seconds;
        std::int32_t status;
    } CASES[] = {
        {"no node",       0,   99, 999, 99, 106},
        {"one node",      1,   99, 999, 99, 106},
        {"no solution",   999, 0,  999, 99, 104},
        {"one solution",  999, 1,  999, 99, 104},
        {"no iteration",  999, 99, 0,   99, 6  },
        {"no time",       999, 99, 999, 0,  108},
        {"enough of all", 999, 99, 999, 99, 101},
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        const LoadedIntegers loaded(many_nodes());
        setintparam(loaded.lp, PARAM_NODELIMIT, c.nodes);
        setintparam(loaded.lp, PARAM_INTSOLLIMIT, c.solutions);
        setintparam(loaded.lp, PARAM_ITERLIMIT, c.iterations);
        setdblparam(loaded.lp, PARAM_TIMELIMIT, c.seconds);
        EXPECT_EQ(solve_integers(loaded.lp).status, c.status);
    }
}

TEST(MipRun, keeps_its_incumbent_when_time_runs_out)
{
    const IntegerModel model = many_nodes();
    const LoadedIntegers loaded(model);
    setdblparam(loaded.lp, PARAM_TIMELIMIT, 1.0);
    on_node = [](Problem* lp) -> std::int32_t {
        if (lp->intsolutions > 0) set_clock(90000);
        return 0;
    };
    setmipcallbackfunc(loaded.lp, call_on_node);
    set_clock(1000);
    const Answer answer = solve_integers(loaded.lp);
    release_clock();
    EXPECT_EQ(answer.status, STAT_MIP_TIMELIM_FEAS);
    expect_integer_solution(model, answer);
}

TEST(MipRun, survives_a_failure_of_each_allocation)
{
    for (const bool with_switches : {false, true}) {
        const LoadedIntegers loaded(KNAPSACK);
        for (const std::int32_t number : {PARAM_BINROWFIX, PARAM_BINORDER, PARAM_BINTIGHTEN})
            setintparam(loaded.lp, number, with_switches);
        std::int32_t status = 0;
        const long before = blocks_alive();
        for (long allowed = 0; status != STAT_MIP_OPTIMAL && allowed < 100; ++allowed) {
            allow_allocations(allowed);
            EXPECT_EQ(optimize(loaded.lp), 0);
            const bool failed = allocation_failed();
            allow_all_allocations();
            solution(loaded.lp, &status, nullptr, nullptr, nullptr, nullptr, nullptr);
            EXPECT_EQ(failed, status == 68 || status == 201) << allowed << ' ' << status;
            EXPECT_LE(blocks_alive(), before + 1);  // the arrays of the results stay
        }
        EXPECT_EQ(status, STAT_MIP_OPTIMAL);
    }
}

}  // namespace
}  // namespace tarnwick
