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

Box range(double lower, double upper) { return Box(1, {lower, upper}); }

// A run of branchsolve. The engine's answers follow from the bounds alone; each call notes them.
struct Search {
    Search(const Box& start, std::function<Answered(const Box&)> engine)
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
    // clang-format off
    const struct {
        const char* name;
        Box start;
        Reals x;
        std::vector<std::int32_t> list;
        std::size_t variable;  // numvars: none
    } CASES[] = {
        {"a binary that is less fractional", {{0, 9}, {0, 1}}, {2.5, 0.9}, {}, 1},
        {"the first of two binaries", {{0, 1}, {0, 1}}, {0.1, 0.5}, {}, 0},
        {"a range of 1 elsewhere is no binary", {{0, 0.5}, {1, 2}}, {0.3, 1.5}, {}, 0},
        {"the narrower range", {{0, 5}, {4, 7}}, {2.5, 4.1}, {}, 1},
        {"the first of equal ranges", {{2, 5}, {4, 7}}, {2.9, 4.5}, {}, 0},
        {"a finite range before an infinite one", {{0, NONE}, {-90, 90}}, {2.5, 1.1}, {}, 1},
        {"most fractional without finite ranges", {{0, NONE}, {-NONE, 9}}, {2.7, 1.4}, {}, 1},
        {"distances to above and below are equal", {{0, NONE}, {0, NONE}}, {2.75, 1.25}, {}, 0},
        {"within the tolerance is integral", {{0, 3}, {0, NONE}}, {2 - 1e-9, 0.5}, {}, 1},
        {"at the tolerance is not", {{0, 3}, {0, NONE}}, {1 + 1.5e-8, 0.5}, {}, 0},
        {"the list says who comes first", {{0, 1}, {0, 1}}, {0.5, 0.5}, {2, 1}, 1},
        {"the list says who comes at all", {{0, 1}, {0, 1}}, {1.0, 0.5}, {1}, 2},
        {"a point outside is clamped first", {{0, 1}, {0, 3}}, {1.5, 1.5}, {}, 1},
        {"all integral", {{0, 1}, {0, 3}}, {1.0, 3.0}, {}, 2},
    };
    // clang-format on
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

// The ranges of one integer variable: [l, u] has its point in the middle, so that the search halves it
// until it is down to a cell. The objective of a range tells it apart.
using Objective = std::function<double(double l, double u)>;

std::function<Answered(const Box&)> halving(Objective objective)
{
    return [objective = std::move(objective)](const Box& box) -> Answered {
        const auto [l, u] = box[0];
        const double middle = std::floor(0.5 * (l + u)) + (l < u ? 0.5 : 0.0);
        return {ENGINE_OPTIMAL, objective(l, u), {middle}};
    };
}

std::string order_of(const Search& search)
{
    std::string order;
    for (const Box& box : search.boxes)
        order += std::to_string(std::lround(box[0].first)) +
                 std::to_string(std::lround(box[0].second)) + ' ';
    return order;
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
    // Halves of 1 and 1.2, quarters of 3 and 3.5, cells from 9 down to 3.5.
    const Objective falling = [](double l, double u) {
        if (u == l) return 9.0 - l;
        return u - l == 3 ? (l == 0 ? 1.0 : 1.2) : u - l == 1 ? (l < 4 ? 3.0 : 3.5) : 0.0;
    };
    const Objective level = [](double, double) { return 4.0; };
    const Objective lower_child = [](double l, double u) { return u > l ? 4.0 : 3.0 + l; };
    const Objective far = [](double l, double u) { return u == l ? 9.0 : u - l == 3 ? 0.0 : 1.0; };
    const Objective near = [](double l, double u) { return u == l ? 2.0 : 1.0; };
    // clang-format off
    const struct {
        const char* name;
        Objective objective;
        double last, cutoff, gap;
        std::int32_t outcome;
        double x, best;
        const char* order;
    } CASES[] = {
        {"dives to an incumbent, whose equal closes the gap", uneven, 7, 2e30, 0, ENGINE_GAPREACHED, 6, 3, "07 03 47 45 67 66 77 "},
        {"dives, then takes the best bound", falling, 7, 2e30, 0, RESULT_STANDS, 7, 3.5, "07 03 47 01 23 00 11 45 67 22 33 44 55 66 77 "},
        {"a cut-off of 1e30 is none", falling, 7, 1e30, 0, RESULT_STANDS, 7, 3.5, "07 03 47 01 23 00 11 45 67 22 33 44 55 66 77 "},
        {"a cut-off puts off what is above it", falling, 7, 1.5, 0, RESULT_STANDS, 7, 3.5, "07 03 47 01 23 45 67 00 11 22 33 44 55 66 77 "},
        {"an equal solution replaces the incumbent", level, 1, 2e30, 0, RESULT_STANDS, 1, 4, "01 00 11 "},
        {"a child claims no better bound than its parent", lower_child, 1, 2e30, 0, RESULT_STANDS, 1, 4, "01 00 11 "},
        {"the gap is wide", far, 3, 2e30, 0.5, RESULT_STANDS, 3, 9, "03 01 23 00 11 22 33 "},
        {"the gap is within the limit", near, 3, 2e30, 0.5, ENGINE_GAPREACHED, 1, 2, "03 01 23 00 11 "},
        {"the gap is just beyond it", near, 3, 2e30, 0.499, RESULT_STANDS, 3, 2, "03 01 23 00 11 22 33 "},
    };
    // clang-format on
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        Search search(range(0, c.last), halving(c.objective));
        setdblparam(search.loaded.lp, PARAM_OBJUPPERCUT, c.cutoff);
        setdblparam(search.loaded.lp, PARAM_MIPGAP, c.gap);
        EXPECT_EQ(search.go(), c.outcome);
        EXPECT_EQ(order_of(search), c.order);
        EXPECT_EQ(search.run.result, ENGINE_OPTIMAL);
        EXPECT_EQ(search.run.objective, c.best);
        for (const double value : {search.x[0], search.lb[0], search.ub[0]}) EXPECT_EQ(value, c.x);
    }
}

TEST(Branch, searches_a_tree_of_a_hundred_thousand_nodes)
{
    Search search(range(1, 65536),
                  halving([](double l, double u) { return u > l ? 0.0 : 1.0 + l; }));
    search.keeps_boxes = false;
    EXPECT_EQ(search.go(), RESULT_STANDS);
    EXPECT_EQ(search.solves, 131071);
    EXPECT_EQ(search.run.objective, 2.0);
}

TEST(Branch, searches_a_tree_of_great_depth)
{
    constexpr double DEPTH = 5000;
    Search search(range(0, DEPTH), [](const Box& box) -> Answered {
        const auto [l, u] = box[0];
        return {u < DEPTH ? ENGINE_INFEASIBLE : ENGINE_OPTIMAL, 0.0, {l < DEPTH ? l + 0.5 : l}};
    });
    search.keeps_boxes = false;
    EXPECT_EQ(search.go(), RESULT_STANDS);
    EXPECT_EQ(search.solves, 10001);
    EXPECT_EQ(search.x, Reals{DEPTH});
}

// What the engine attaches goes to nodes and is released with them, or at once.
TEST(Branch, survives_a_failure_of_each_allocation)
{
    const auto objective = [](double l, double u) { return u == l ? 99.0 - l : 1.0; };
    for (long allowed = 0;; ++allowed) {
        SCOPED_TRACE(allowed);
        Search search(range(0, 15), halving(objective));
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
    const struct {
        const char* name;
        Answered fifth;
        EngineResult result;
        double x;
    } CASES[] = {
        {"a stop",                         {ENGINE_USERSTOP, 0.0, {1}},   ENGINE_USERSTOP,   0},
        {"an objective that is no number", {ENGINE_OPTIMAL, NAN, {1}},    ENGINE_MODELCHECK, 0},
        {"a point that is none",           {ENGINE_OPTIMAL, 1.0, {NAN}},  ENGINE_MODELCHECK, 0},
        {"an unbounded child is dropped",  {ENGINE_UNBOUNDED, -1e9, {1}}, ENGINE_OPTIMAL,    3},
    };
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.name);
        int calls = 0;
        const auto engine = halving([](double l, double u) { return l == u ? 1.0 : 0.0; });
        Search search(range(0, 3),
                      [&](const Box& box) { return ++calls == 5 ? c.fifth : engine(box); });
        search.attaches = true;
        EXPECT_EQ(search.go(), RESULT_STANDS);
        EXPECT_EQ(search.run.result, c.result);
        EXPECT_EQ(search.x, Reals{c.x});
    }
}

// ---- whole runs

// The relaxation packs the first item and two thirds of the third; of whole items the last two are
// best.
// clang-format off
const IntegerModel KNAPSACK{{{{{5, 4, 3}, 'L', 7}}, {12, 9, 7}, {0, 0, 0}, {1, 1, 1}, -1}, "BBB"};
// clang-format on

TEST(MipRun, ends_with_the_status_of_its_case)
{
    // clang-format off
    const struct {
        const char* name;
        IntegerModel model;
        std::int32_t status;
        double objective;
    } CASES[] = {
        {"knapsack", KNAPSACK, 101, 16},
        {"integral relaxation", {{{{{1}, 'L', 3}}, {1}, {0}, {9}, -1}, "I"}, 101, 3},
        {"no integer in range", {{{{{1}, 'L', 3}}, {1}, {0.3}, {0.7}, -1}, "I"}, 103, 0},
        {"no integer solution", {{{{{2, 2}, 'E', 3}}, {1, 1}, {0, 0}, {5, 5}}, "II"}, 103, 0},
        {"infeasible relaxation", {{{{{1}, 'G', 3}}, {1}, {0}, {2}}, "I"}, 103, 0},
        {"unbounded relaxation", {{{{{1, -1}, 'L', 3}}, {-1, 0}, {0, 0}, {INF, INF}}, "IC"}, 3, 0},
        {"crossed bounds", {{{{{1}, 'L', 3}}, {1}, {2}, {1}}, "I"}, 103, 0},
        {"crossed bounds of a binary don't count", {{{{{1}, 'L', 3}}, {-1}, {2}, {1}}, "B"}, 101, -1},
        {"all continuous", {{{{{2}, 'L', 3}}, {1}, {0}, {9}, -1}, "C"}, 1, 1.5},
    };
    // clang-format on
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
    IntegerModel model;
    model.objsen = -1;
    model.rows = {
        {{}, 'L', 40.5},
        {{}, 'L', 55.5}
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
    // clang-format off
    const struct {
        const char* name;
        std::int32_t nodes, solutions, iterations;
        double seconds;
        std::int32_t status;
    } CASES[] = {
        {"no node", 0, 99, 999, 99, 106},
        {"one node", 1, 99, 999, 99, 106},
        {"no solution", 999, 0, 999, 99, 104},
        {"one solution", 999, 1, 999, 99, 104},
        {"no iteration", 999, 99, 0, 99, 6},
        {"no time", 999, 99, 999, 0, 108},
        {"enough of all", 999, 99, 999, 99, 101},
    };
    // clang-format on
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
