#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include "interface/problem.h"
#include "tests/reducedgradient/smoothmodel.h"
#include "tests/support/memory.h"
#include "tests/support/olearrays.h"
#include "tests/support/verifier.h"
#include "tests/textfile/host.h"

namespace tarnwick {
namespace {

using Indices = std::vector<std::int32_t>;
using Lists = std::vector<Indices>;

struct Subset {
    std::int32_t status = 0;
    Indices rows, rowstand, columns, colstand;

    Lists lists() const { return {rows, rowstand, columns, colstand}; }
};

Subset find(Problem* lp, std::int32_t method = 0)
{
    setintparam(lp, PARAM_IISMETHOD, method);
    std::int32_t rows = -1, columns = -1, numrows = -1, numcols = -1;
    EXPECT_EQ(findiis(lp, &rows, &columns), 0);
    const auto m = static_cast<std::size_t>(rows), n = static_cast<std::size_t>(columns);
    Subset s{
        .rows = Indices(m), .rowstand = Indices(m), .columns = Indices(n), .colstand = Indices(n)};
    const std::int32_t code = getiis(lp, &s.status, s.rows.data(), s.rowstand.data(), &numrows,
                                     s.columns.data(), s.colstand.data(), &numcols);
    EXPECT_TRUE(code != 0 || (numrows == rows && numcols == columns));
    return s;
}

// clang-format off
const LinearModel TWO_ROWS{{{{1}, 'G', 2}, {{1}, 'L', 1}}, {0}, {-INF}, {INF}};
const LinearModel ROW_AND_BOUND{{{{1, 1}, 'L', 9}, {{1, 0}, 'L', -1}}, {1, 1}, {0, -4}, {7, 4}};
const LinearModel EQUATION{{{{1}, 'E', 0}}, {1}, {1}, {5}}, FEASIBLE{{{{1}, 'L', 4}}, {1}};
const LinearModel BOTH_BOUNDS{{{{1, 1}, 'E', 9}, {{1, -1}, 'E', 1}, {{1, 0}, 'L', 20}}, {1, 1},
                              {0, 0}, {4, INF}};
const LinearModel INDEFINITE{ROW_AND_BOUND.rows, {1, 1}, {0, -4}, {7, 4}, 1, {{1, 0}, {0, -2}}};
const LinearModel ROW_ALONE{{{{1, 1}, 'L', 2}}, {-1, -1}};
// clang-format on

TEST(InfeasibleSubset, names_rows_bounds_and_where_they_stand)
{
    // clang-format off
    const struct {
        const char* what;
        LinearModel model;
        std::int32_t status, found;
        Lists lists;
        std::int32_t method = 0;
        bool is_integer = false;
    } CASES[] = {
        {"two rows, free variable", TWO_ROWS, 1, 1, {{0, 1}, {0, 0}, {}, {}}},
        {"a row and a bound; the rest is spared", ROW_AND_BOUND, 1, 1, {{1}, {2}, {0}, {0}}},
        {"an equation counts twice", EQUATION, 1, 1, {{0, 0}, {1, 1}, {0}, {0}}},
        {"both bounds of a column", BOTH_BOUNDS, 1, 1, {{0, 0, 1, 1}, {0, 0, 0, 0}, {0}, {2}}},
        {"rows alone are filtered", ROW_AND_BOUND, 1, 1, {{1}, {2}, {0, 1}, {1, 1}}, 1},
        {"a feasible model: no row", FEASIBLE, 1, 1, {{}, {}, {0}, {0}}},
        {"an integer model: its relaxation", ROW_AND_BOUND, 101, 1, {{1}, {2}, {0}, {0}}, 0, true},
        {"an indefinite one but in the status", INDEFINITE, 65, 2, {{1}, {2}, {0}, {0}}},
    };
    // clang-format on
    for (const auto& c : CASES) {
        SCOPED_TRACE(c.what);
        const LoadedModel loaded(c.model);
        char letters[] = {'I', 'I'};
        if (c.is_integer) loadctype(loaded.lp, letters);
        const Subset got = find(loaded.lp, c.method);
        EXPECT_EQ(got.status, c.found);
        EXPECT_EQ(got.lists(), c.lists);
        EXPECT_EQ(loaded.lp->status, c.status);
        EXPECT_EQ(loaded.lp->control.elasticmode, 0);
    }
}

// ---- irreducible: infeasible, and feasible without any one member

// The rows and bounds of a subset, and no objective. Row 0 is an empty one.
LinearModel part_of(const LinearModel& model, const Subset& s)
{
    const std::size_t n = model.numcols();
    LinearModel part{{{Reals(n), 'L', 0.0}}, Reals(n), Reals(n, -INF), Reals(n, INF)};
    for (std::size_t k = 0; k < s.rows.size(); ++k)
        if (k == 0 || s.rows[k] != s.rows[k - 1])
            part.rows.push_back(model.rows[static_cast<std::size_t>(s.rows[k])]);
    for (std::size_t k = 0; k < s.columns.size(); ++k) {
        const auto j = static_cast<std::size_t>(s.columns[k]);
        if (s.colstand[k] != 2) part.lb[j] = model.lower(j);
        if (s.colstand[k] != 0) part.ub[j] = model.upper(j);
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
        const Subset s = find(LoadedModel(model).lp);
        ASSERT_EQ(s.status, IIS_FOUND);
        const LinearModel part = part_of(model, s);
        EXPECT_EQ(solve(part).status, STAT_INFEASIBLE);
        for (std::size_t i = 1; i < part.numrows(); ++i) {
            LinearModel less = part;
            less.rows[i] = part.rows[0];
            EXPECT_EQ(solve(less).status, STAT_OPTIMAL) << "without row " << i;
        }
        for (std::size_t j = 0; j < part.numcols(); ++j)
            for (const bool is_upper : {false, true}) {
                LinearModel less = part;
                (is_upper ? less.ub : less.lb)[j] = is_upper ? INF : -INF;
                if (less.lb == part.lb && less.ub == part.ub) continue;
                EXPECT_EQ(solve(less).status, STAT_OPTIMAL) << "without a bound of " << j;
            }
    }
    EXPECT_GT(infeasible, 40);
}

// ---- other endings

std::int32_t TARNWICK_CALL stop(Problem*, std::int32_t) { return 1; }

TEST(InfeasibleSubset, a_stop_leaves_no_proof_and_earlier_results_stay)
{
    LoadedModel loaded(ROW_ALONE);
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

TEST(InfeasibleSubset, memory_may_end_at_any_allocation)
{
    const LoadedModel loaded({TWO_ROWS.rows, {0}, {0}, {4}});
    bool failed = true;
    for (long n = 0; failed; ++n) {
        allow_allocations(n);
        std::int32_t rows = -1, columns = -1;
        EXPECT_EQ(findiis(loaded.lp, &rows, &columns), 0);
        failed = allocation_failed();
        allow_all_allocations();
        EXPECT_EQ(loaded.lp->iisstatus, failed ? IIS_NOT_FOUND : IIS_FOUND);
        EXPECT_TRUE(failed || rows == 2);
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
const Smooth EASY_DISC{"easy disc", 2, disc, "LGL", {1, 1.4, 4}, {0.5, 1}, {-9, -INF}, {9, 7}};
const Smooth PARABOLA{"parabola", 2, parabola, "LE", {4, 5}, {1, 1}, {-8, 0}, {INF, INF}};
const Smooth ROOT{"root", 2, root, "L", {-1}, {1, 1}, {0.25, 0}, {4, 9}};
// clang-format on

TEST(InfeasibleSubset, of_smooth_models_is_found)
{
    // clang-format off
    const std::tuple<const char*, const Smooth&, std::int32_t, Lists> CASES[] = {
        {"two rows, no bound",          DISC,        0, {{0, 1},    {2, 0},    {},     {}    }},
        {"rows alone are filtered",     DISC,        1, {{0, 1},    {2, 0},    {0, 1}, {1, 2}}},
        {"an equation counts twice",    PARABOLA,    0, {{0, 1, 1}, {0, 0, 0}, {1},    {0}   }},
        {"no value beyond a bound",     ROOT,        0, {{0},       {2},       {0, 1}, {0, 0}}},
        {"a feasible model: no row",    EASY_DISC,   0, {{},        {},        {0, 1}, {1, 2}}},
    };
    // clang-format on
    for (const auto& [what, model, method, lists] : CASES)
        for (const std::int32_t scaling : {-1, 0}) {
            SCOPED_TRACE(testing::Message() << what << ", scaling " << scaling);
            const SmoothHost host(model);
            setintparam(host.lp, PARAM_SCALING, scaling);
            const Subset got = find(host.lp, method);
            EXPECT_EQ(got.status, IIS_FOUND);
            EXPECT_EQ(got.lists(), lists);
        }
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
    const LoadedModel loaded(ROW_ALONE);
    Problem* const lp = loaded.lp;
    std::int32_t n = 0;
    expect_told(findiis(lp, nullptr, &n), 2, "findiis", "iisnumrows_p is NULL");
    expect_told(findiis(lp, &n, nullptr), 3, "findiis", "iisnumcols_p is NULL");
    expect_told(getiis(lp, &n, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 1, "getiis",
                "findiis or iiswrite not called");
    expect_told(iiswrite(lp, nullptr), 2, "iiswrite", "filename is NULL");
    lp->problemtype = PROB_NLP;
    expect_told(iiswrite(lp, "x"), 1, "iiswrite", "iiswrite not supported for NLPs");
    lp->problemtype = PROB_LP;
    lp->numrows = 0;
    expect_told(findiis(lp, nullptr, nullptr), 1, "findiis", "problem has no constraints");
    lp->numrows = 1;
}

TEST(InfeasibleSubset, arrays_of_a_host_with_references_are_filled)
{
    LoadedModel loaded(ROW_ALONE);
    loaded.rhs[0] = -3.0;  // against both lower bounds
    find(loaded.lp);
    OleArray<std::int32_t> rows{7, 7}, columns{7, 7}, empty{}, placeholder{-1};
    const auto get = [&](std::int32_t* r, std::int32_t* rs, std::int32_t* c, std::int32_t* cs) {
        return getiis(loaded.lp, nullptr, r, rs, nullptr, c, cs, nullptr);
    };
    const ArrayMode mode(true);
    std::int32_t *const r = rows.argument(), *const c = columns.argument(),
                        *const p = placeholder.argument(), *const e = empty.argument();
    EXPECT_EQ(get(r, nullptr, c, nullptr), 0);
    EXPECT_EQ(rows.values(), (Indices{0, 7}));
    EXPECT_EQ(columns.values(), (Indices{0, 1}));
    EXPECT_EQ(get(nullptr, nullptr, p, p), 0);
    EXPECT_EQ(placeholder.values(), (Indices{-1}));
    EXPECT_EQ(get(e, r, c, c), 3);
    EXPECT_EQ(get(r, e, c, c), 4);
    EXPECT_EQ(get(r, r, e, c), 5);
    EXPECT_EQ(get(r, r, c, e), 6);
}

TEST(InfeasibleSubset, is_written_with_the_numbers_of_the_model)
{
    const LoadedModel loaded(ROW_AND_BOUND);
    const TextFile file("");
    ASSERT_EQ(iiswrite(loaded.lp, file.path()), 0);
    EXPECT_EQ(file.content(),
              on_disk("Minimize LP\n  obj: x1 + x2\nSubject To\n  c2:  x1 <= -1.0\nBounds\n"
                      "  0.0 <= x1 <= 7.0\nEnd\n"));
}

}  // namespace
}  // namespace tarnwick
