#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>

#include "interface/problem.h"
#include "tests/reducedgradient/smoothmodel.h"
#include "tests/support/memory.h"
#include "tests/support/messages.h"
#include "tests/support/olearrays.h"
#include "tests/support/verifier.h"
#include "tests/textfile/host.h"

namespace tarnwick {
namespace {

using Indices = std::vector<std::int32_t>;

struct Subset {
    std::int32_t code = -1, status = 0;
    Indices rows, rowstand, columns, colstand;
};

Subset stored_subset(Problem* lp, std::int32_t rows, std::int32_t columns)
{
    Subset s{.rows = Indices(static_cast<std::size_t>(rows)),
             .rowstand = Indices(static_cast<std::size_t>(rows)),
             .columns = Indices(static_cast<std::size_t>(columns)),
             .colstand = Indices(static_cast<std::size_t>(columns))};
    std::int32_t numrows = 0, numcols = 0;
    s.code = getiis(lp, &s.status, s.rows.data(), s.rowstand.data(), &numrows, s.columns.data(),
                    s.colstand.data(), &numcols);
    EXPECT_TRUE(s.code != 0 || (numrows == rows && numcols == columns));
    return s;
}

Subset find(Problem* lp, std::int32_t method = 0)
{
    setintparam(lp, PARAM_IISMETHOD, method);
    std::int32_t rows = -1, columns = -1;
    EXPECT_EQ(findiis(lp, &rows, &columns), 0);
    return stored_subset(lp, rows, columns);
}

// ---- small models, by hand

struct SubsetCase {
    const char* what;
    LinearModel model;
    std::int32_t method;
    Subset want;
};

// clang-format off
const SubsetCase SUBSETS[] = {
    {"two rows, free variable", {{{{1}, 'G', 2}, {{1}, 'L', 1}}, {0}, {-INF}, {INF}}, 0,
     {0, 1, {0, 1}, {0, 0}, {}, {}}},
    {"a row and a lower bound; the rest is spared", {{{{1, 1}, 'L', 9}, {{1, 0}, 'L', -1}}, {1, 1}, {0, -4}, {7, 4}}, 0,
     {0, 1, {1}, {2}, {0}, {0}}},
    {"an equation counts twice", {{{{1}, 'E', 0}}, {1}, {1}, {5}}, 0,
     {0, 1, {0, 0}, {1, 1}, {0}, {0}}},
    {"both bounds of a column", {{{{1, 1}, 'E', 9}, {{1, -1}, 'E', 1}, {{1, 0}, 'L', 20}}, {1, 1}, {0, 0}, {4, INF}}, 0,
     {0, 1, {0, 0, 1, 1}, {0, 0, 0, 0}, {0}, {2}}},
    {"rows alone are filtered", {{{{1, 1}, 'L', 9}, {{1, 0}, 'L', -1}}, {1, 1}, {0, -4}, {7, INF}}, 1,
     {0, 1, {1}, {2}, {0, 1}, {1, 0}}},
};
// clang-format on

TEST(InfeasibleSubset, names_rows_bounds_and_where_they_stand)
{
    for (const SubsetCase& c : SUBSETS) {
        SCOPED_TRACE(c.what);
        const LoadedModel loaded(c.model);
        const Subset got = find(loaded.lp, c.method);
        EXPECT_EQ(got.status, c.want.status);
        EXPECT_EQ(got.rows, c.want.rows);
        EXPECT_EQ(got.rowstand, c.want.rowstand);
        EXPECT_EQ(got.columns, c.want.columns);
        EXPECT_EQ(got.colstand, c.want.colstand);
        EXPECT_EQ(loaded.lp->status, STAT_OPTIMAL);
        EXPECT_EQ(loaded.lp->control.elasticmode, 0);
    }
}

// ---- irreducible: infeasible, and feasible without any one member

enum class Side { lower, upper };

struct Member {
    int row;     // or -1
    int column;  // or -1
    Side side;
};

std::vector<Member> members_of(const Subset& s)
{
    std::vector<Member> members;
    for (std::size_t k = 0; k < s.rows.size(); ++k)
        if (k == 0 || s.rows[k] != s.rows[k - 1]) members.push_back({s.rows[k], -1, Side::lower});
    for (std::size_t k = 0; k < s.columns.size(); ++k) {
        if (s.colstand[k] != 2) members.push_back({-1, s.columns[k], Side::lower});
        if (s.colstand[k] != 0) members.push_back({-1, s.columns[k], Side::upper});
    }
    return members;
}

// The model of these members alone, without an objective.
LinearModel restricted(const LinearModel& model, const std::vector<Member>& members)
{
    const std::size_t n = model.numcols();
    LinearModel part{.rows = {{Reals(n, 0.0), 'L', 0.0}},
                     .obj = Reals(n, 0.0),
                     .lb = Reals(n, -INF),
                     .ub = Reals(n, INF)};
    for (const Member& member : members) {
        const auto j = static_cast<std::size_t>(member.column);
        if (member.row >= 0)
            part.rows.push_back(model.rows[static_cast<std::size_t>(member.row)]);
        else if (member.side == Side::lower)
            part.lb[j] = model.lower(j);
        else
            part.ub[j] = model.upper(j);
    }
    return part;
}

TEST(InfeasibleSubset, of_random_models_cannot_spare_a_member)
{
    int infeasible = 0;
    for (unsigned seed = 0; seed < 400; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        const LinearModel model = tiny_model(seed);
        if (truth_of(model).status != STAT_INFEASIBLE) continue;
        ++infeasible;
        const LoadedModel loaded(model);
        const Subset s = find(loaded.lp);
        ASSERT_EQ(s.status, IIS_FOUND);
        const std::vector<Member> members = members_of(s);
        EXPECT_EQ(solve(restricted(model, members)).status, STAT_INFEASIBLE);
        for (std::size_t k = 0; k < members.size(); ++k) {
            std::vector<Member> others = members;
            others.erase(others.begin() + static_cast<std::ptrdiff_t>(k));
            EXPECT_EQ(solve(restricted(model, others)).status, STAT_OPTIMAL) << "without " << k;
        }
    }
    EXPECT_GT(infeasible, 40);
}

// ---- other endings

TEST(InfeasibleSubset, a_feasible_model_has_none)
{
    const LoadedModel loaded({{{{1}, 'L', 4}}, {1}, {0}, {INF}});
    const Subset s = find(loaded.lp);
    EXPECT_EQ(s.status, IIS_FOUND);  // the last solve was an optimum; no row is fixed
    EXPECT_TRUE(s.rows.empty());
    EXPECT_EQ(s.columns, Indices{0});
}

std::int32_t TARNWICK_CALL stop(Problem*, std::int32_t) { return 1; }

TEST(InfeasibleSubset, a_stop_leaves_no_proof_and_earlier_results_stay)
{
    LoadedModel loaded({
        {{{1, 1}, 'L', 2}},
        { -1,              -1}
    });
    ASSERT_EQ(solve(loaded.lp).status, STAT_OPTIMAL);
    loaded.rhs[0] = -1.0;
    setlpcallbackfunc(loaded.lp, stop);
    EXPECT_EQ(find(loaded.lp).status, IIS_NOT_FOUND);
    setlpcallbackfunc(loaded.lp, nullptr);
    EXPECT_DOUBLE_EQ(loaded.lp->piout[0], -1.0);

    setdblparam(loaded.lp, PARAM_TIMELIMIT, 0.0);
    EXPECT_EQ(find(loaded.lp).status, IIS_NOT_FOUND);
    EXPECT_EQ(loaded.lp->status, STAT_TIMELIM_FEAS);
}

TEST(InfeasibleSubset, an_integer_model_is_searched_as_its_relaxation)
{
    LoadedModel loaded({{{{1}, 'L', -1}}, {1}, {0}, {4}});
    char ctype[] = {'I'};
    ASSERT_EQ(loadctype(loaded.lp, ctype), 0);
    EXPECT_EQ(find(loaded.lp).status, IIS_FOUND);
    EXPECT_EQ(loaded.lp->status, STAT_MIP_OPTIMAL);
}

TEST(InfeasibleSubset, a_quadratic_objective_takes_no_part_but_in_the_status)
{
    struct {
        const char* what;
        double square;  // x2 in the objective, minimised
        std::int32_t status, found;
    } const cases[] = {
        {"convex",     2.0,  STAT_OPTIMAL,   IIS_FOUND    },
        {"indefinite", -2.0, STAT_CONVERGED, IIS_NOT_FOUND},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const LoadedModel loaded({
            {{{1, 1}, 'L', 9}, {{1, 0}, 'L', -1}},
            {1,                1                },
            {0,                -4               },
            {7,                4                }
        });
        double q[] = {1.0, 0.0, 0.0, c.square}, start[] = {0.0, 0.0};
        loadquad(loaded.lp, nullptr, nullptr, nullptr, q, 4, start);
        const Subset s = find(loaded.lp);
        EXPECT_EQ(loaded.lp->status, c.status);
        EXPECT_EQ(s.status, c.found);
        EXPECT_EQ(s.rows, Indices{1});
        EXPECT_EQ(s.columns, Indices{0});
        EXPECT_EQ(s.colstand, Indices{0});
    }
}

TEST(InfeasibleSubset, memory_may_end_at_any_allocation)
{
    const LoadedModel loaded({
        {{{1}, 'G', 2}, {{1}, 'L', 1}},
        {0            },
        {0},
        {4            }
    });
    bool failed = true;
    for (long n = 0; failed; ++n) {
        std::int32_t rows = -1, columns = -1;
        allow_allocations(n);
        EXPECT_EQ(findiis(loaded.lp, &rows, &columns), 0);
        failed = allocation_failed();
        allow_all_allocations();
        const Subset s = stored_subset(loaded.lp, rows, columns);
        EXPECT_NE(s.status, failed ? IIS_FOUND : IIS_NOT_FOUND);
        EXPECT_TRUE(s.status != IIS_FOUND || s.rows == (Indices{0, 1}));
    }
}

// ---- models known through functions

// No point of the unit disc reaches the half-plane; the third row is spared, and so are all bounds.
bool disc(const Reals& x, double& f, Reals& g)
{
    f = x[0];
    g = {x[0] * x[0] + x[1] * x[1], x[0] + x[1], x[0] - x[1]};
    return true;
}

// e + 1 is more than 2.
bool exponential(const Reals& x, double& f, Reals& g)
{
    f = x[0];
    g = {x[0] + x[1], std::exp(x[0]) + x[1]};
    return true;
}

// x - y = 5 is out of reach of x^2 <= 4 and y >= 0.
bool parabola(const Reals& x, double& f, Reals& g)
{
    f = x[1];
    g = {x[0] * x[0], x[0] - x[1]};
    return true;
}

// Never below 0, and there is no value for x < 0.
bool root(const Reals& x, double& f, Reals& g)
{
    f = x[0];
    g[0] = std::sqrt(x[0]) + x[1];
    return x[0] >= 0.0;
}

// clang-format off
const Smooth DISC{"disc", 2, disc, "LGL", {1, 3, 4}, {0.5, 1}, {-9, -INF}, {9, 7}};
const Smooth EXPONENTIAL{"exponential", 2, exponential, "LL", {20, 2}, {1.5, 1.5}, {1, 1}, {5, 6}};
const Smooth PARABOLA{"parabola", 2, parabola, "LE", {4, 5}, {1, 1}, {-8, 0}, {INF, INF}};
const Smooth ROOT{"root", 2, root, "L", {-1}, {1, 1}, {0.25, 0}, {4, 9}};
// clang-format on

struct SmoothSubsetCase {
    const char* what;
    const Smooth* model;
    std::int32_t method;
    Subset want;
};

// clang-format off
const SmoothSubsetCase SMOOTH_SUBSETS[] = {
    {"two rows, no bound",           &DISC,        0, {0, 1, {0, 1},    {2, 0},    {},     {}    }},
    {"rows alone are filtered",      &DISC,        1, {0, 1, {0, 1},    {2, 0},    {0, 1}, {1, 2}}},
    {"a row and two lower bounds",   &EXPONENTIAL, 0, {0, 1, {1},       {2},       {0, 1}, {0, 0}}},
    {"the same, bounds unfiltered",  &EXPONENTIAL, 1, {0, 1, {1},       {2},       {0, 1}, {1, 1}}},
    {"an equation counts twice",     &PARABOLA,    0, {0, 1, {0, 1, 1}, {0, 0, 0}, {1},    {0}   }},
    {"no value beyond a bound",      &ROOT,        0, {0, 1, {0},       {2},       {0, 1}, {0, 0}}},
};
// clang-format on

TEST(InfeasibleSubset, of_smooth_models_is_found)
{
    for (const SmoothSubsetCase& c : SMOOTH_SUBSETS)
        for (const std::int32_t scaling : {-1, 0}) {
            SCOPED_TRACE(testing::Message() << c.what << ", scaling " << scaling);
            const SmoothHost host(*c.model);
            setintparam(host.lp, PARAM_SCALING, scaling);
            const Subset got = find(host.lp, c.method);
            EXPECT_EQ(got.status, c.want.status);
            EXPECT_EQ(got.rows, c.want.rows);
            EXPECT_EQ(got.rowstand, c.want.rowstand);
            EXPECT_EQ(got.columns, c.want.columns);
            EXPECT_EQ(got.colstand, c.want.colstand);
        }
}

TEST(InfeasibleSubset, of_a_feasible_smooth_model_has_no_rows)
{
    Smooth model = DISC;
    model.rhs[1] = 1.4;
    const SmoothHost host(model);
    const Subset s = find(host.lp);
    EXPECT_TRUE(s.rows.empty());
    EXPECT_EQ(s.columns, (Indices{0, 1}));
}

// One call fails, whichever: the proof is missing, or the subset holds more than it has to.
TEST(InfeasibleSubset, of_a_smooth_model_survives_a_failed_call)
{
    const Indices proof{0, 1};
    long last = 2;
    for (long bad = 1, call = 0; bad <= last; ++bad, call = 0) {
        SCOPED_TRACE(bad);
        Smooth model = DISC;
        model.functions = [&](const Reals& x, double& f, Reals& g) {
            return disc(x, f, g) && ++call != bad;
        };
        const SmoothHost host(model);
        const Subset s = find(host.lp);
        last = std::min(call, 500L);
        const bool is_proof =
            std::includes(s.rows.begin(), s.rows.end(), proof.begin(), proof.end());
        EXPECT_TRUE(s.status == IIS_FOUND ? is_proof : host.lp->status == STAT_EVALERROR);
    }
}

// ---- arguments, arrays, files

TEST(InfeasibleSubset, refusals_tell_what_is_wrong)
{
    const MessageLog log;
    const LoadedModel loaded({{{{1}, 'L', 4}}, {1}});
    std::int32_t count = 0;
    const auto told = [](const char* title) {
        const auto messages = MessageLog::take();
        return messages.size() == 1 && messages[0].title == title ? messages[0].text : "";
    };
    EXPECT_EQ(findiis(nullptr, &count, &count), 1);
    EXPECT_EQ(told("findiis"), "lp pointer is NULL");
    EXPECT_EQ(findiis(loaded.lp, nullptr, &count), 2);
    EXPECT_EQ(told("findiis"), "iisnumrows_p is NULL");
    EXPECT_EQ(findiis(loaded.lp, &count, nullptr), 3);
    EXPECT_EQ(told("findiis"), "iisnumcols_p is NULL");
    EXPECT_EQ(stored_subset(loaded.lp, 0, 0).code, 1);
    EXPECT_EQ(told("getiis"), "findiis or iiswrite not called");
    EXPECT_EQ(iiswrite(loaded.lp, nullptr), 2);
    EXPECT_EQ(told("iiswrite"), "filename is NULL");
    loaded.lp->problemtype = PROB_NLP;
    EXPECT_EQ(iiswrite(loaded.lp, "x"), 1);
    EXPECT_EQ(told("iiswrite"), "iiswrite not supported for NLPs");
    loaded.lp->problemtype = PROB_LP;
    loaded.lp->numrows = 0;
    EXPECT_EQ(findiis(loaded.lp, &count, &count), 1);
    EXPECT_EQ(told("findiis"), "problem has no constraints");
    loaded.lp->numrows = 1;
}

TEST(InfeasibleSubset, arrays_of_a_host_with_references_are_filled)
{
    const MessageLog log;
    const LoadedModel loaded({
        {{{1}, 'G', 2}, {{1}, 'L', 1}},
        {0            },
        {-INF},
        {INF            }
    });
    find(loaded.lp);
    OleArray<std::int32_t> rows{7, 7}, stands{7, 7}, small{7}, placeholder{-1};
    setintparam(nullptr, PARAM_OLEARRAYS, 1);
    EXPECT_EQ(getiis(loaded.lp, nullptr, rows.argument(), stands.argument(), nullptr, nullptr,
                     nullptr, nullptr),
              0);
    EXPECT_EQ(rows.values(), (Indices{0, 1}));
    EXPECT_EQ(getiis(loaded.lp, nullptr, placeholder.argument(), nullptr, nullptr, nullptr, nullptr,
                     nullptr),
              0);
    EXPECT_EQ(placeholder.values(), (Indices{-1}));
    EXPECT_EQ(
        getiis(loaded.lp, nullptr, small.argument(), nullptr, nullptr, nullptr, nullptr, nullptr),
        3);
    EXPECT_EQ(
        getiis(loaded.lp, nullptr, nullptr, small.argument(), nullptr, nullptr, nullptr, nullptr),
        4);
    setintparam(nullptr, PARAM_OLEARRAYS, 0);
}

TEST(InfeasibleSubset, is_written_with_the_numbers_of_the_model)
{
    const LoadedModel loaded({
        {{{1, 1}, 'L', 9}, {{1, 0}, 'L', -1}},
        {1,                1                },
        {0,                -4               },
        {7,                4                }
    });
    const TextFile file("");
    ASSERT_EQ(iiswrite(loaded.lp, file.path()), 0);
    std::ostringstream text;
    text << std::ifstream(file.path(), std::ios::binary).rdbuf();
    EXPECT_EQ(text.str(),
              "Minimize LP\r\n  obj: x1 + x2\r\nSubject To\r\n  c2:  x1 <= -1.0\r\nBounds\r\n"
              "  0.0 <= x1 <= 7.0\r\nEnd\r\n");
}

}  // namespace
}  // namespace tarnwick
