#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "interface/problem.h"
#include "tests/textfile/host.h"

namespace tarnwick {
namespace {

constexpr double INF = std::numeric_limits<double>::infinity();

// ---- a whole model

TEST(Reader, a_file_is_counted)
{
    const Counts c = count(WHOLE);
    EXPECT_EQ(c.code, 0);
    EXPECT_EQ(c.objsen, 1);
    EXPECT_EQ(c.numcols, 3);
    EXPECT_EQ(c.numrows, 3);
    EXPECT_EQ(c.numctype, 3);
    EXPECT_EQ(c.matcnt, (std::vector<std::int32_t>{1, 2, 1}));
    EXPECT_EQ(c.qmatcnt, (std::vector<std::int32_t>{2, 2, 0}));
}

TEST(Reader, a_file_fills_a_model_in_every_layout)
{
    for (const Layout matrix : {DENSE, SPARSE})
        for (const Layout q : {DENSE, SPARSE}) {
            SCOPED_TRACE(testing::Message() << "matrix " << matrix << ", Q " << q);
            Host host(matrix, q);
            ASSERT_EQ(host.read(WHOLE), 0);
            EXPECT_TRUE(host.is_intact());
            EXPECT_EQ(host.numcols, 3);
            EXPECT_EQ(host.numrows, 3);
            EXPECT_EQ(host.lp->objsen, 1);
            EXPECT_EQ(host.lp->control.qstate, Q_ACCEPTED);
            EXPECT_EQ(host.obj.values(), (std::vector<double>{2.5, 0.0, -1.0}));
            EXPECT_EQ(host.matrix.full(), (std::vector<double>{1, 0, 0, 2, 0, -1, 0, 0, 0.5}));
            EXPECT_EQ(host.q.full(), (std::vector<double>{4, 0.5, 0, 0.5, 3, 0, 0, 0, 0}));
            EXPECT_EQ(host.sense.values(), (std::vector<char>{'G', 'E', 'L'}));
            EXPECT_EQ(host.rhs.values(), (std::vector<double>{1.0, 0.0, 10.0}));
            EXPECT_EQ(host.lb.values(), (std::vector<double>{0.0, -1e30, -1e30}));
            EXPECT_EQ(host.ub.values(), (std::vector<double>{1e30, 4.0, 1e30}));
            EXPECT_EQ(host.ctype.values(), (std::vector<char>{'C', 'I', 'C'}));

            ASSERT_EQ(host.read("Maximize\nSubject To\nBounds\nEnd\n"), 0);
            EXPECT_EQ(host.lp->objsen, -1);
            EXPECT_EQ(host.obj.values(), std::vector<double>(SIZE, 0.0));
            EXPECT_TRUE(host.matrix.is_clear());
            EXPECT_TRUE(host.q.is_clear());
            EXPECT_EQ(host.ctype.values(), (std::vector<char>{'C', 'I', 'C'}));
        }
}

// ---- the elements of the format

struct ObjectiveCase {
    const char* what;
    const char* text;
    std::vector<double> want;
};

// clang-format off
const ObjectiveCase OBJECTIVES[] = {
    {"no prefix",                 "3 x1 - 2 x2 x3",                  {3, -2, 1}},
    {"the last one stands",       "x1 + 5 x1",                       {5, 0, 0}},
    {"sign of sign and number",   "- -3 x1 + +4 x2 - +5 x3",         {3, 4, -5}},
    {"exponents and points",      "1e2 x1 + .5 x2 - 5. x3",          {100, 0.5, -5}},
    {"a number runs to a space",  "3x1 x2",                          {0, 3, 0}},
    {"hexadecimal is 0",          "0x10 x1 + x2",                    {0, 1, 0}},
    {"beyond the range",          "1e999 x1 - 1e999 x2",             {INF, -INF, 0}},
    {"a lone number at the end",  "x1 + 5\n x2",                     {1, 1, 0}},
};
// clang-format on

TEST(Reader, terms_give_the_objective)
{
    for (const auto& c : OBJECTIVES) {
        SCOPED_TRACE(c.what);
        Host host(DENSE);
        EXPECT_EQ(host.read(with_objective(c.text)), 0);
        EXPECT_EQ(host.obj.values(), c.want);
    }
}

struct RowCase {
    const char* what;
    const char* text;
    std::string sense;
    std::vector<double> rhs, row1;  // the coefficients of the first row
};

// clang-format off
const RowCase ROWS[] = {
    {"long senses",               "c1: <= 1\nc2: >=2\nc3: =3",      "LGE", {1, 2, 3}, {0, 0, 0}},
    {"any order, gaps",           "c3: x1 <= 3\nc1: x2 >= 1",       "GEL", {1, 0, 3}, {0, 1, 0}},
    {"a name runs to a space",    "c1xyz x1 <= 1",                  "LEE", {1, 0, 0}, {1, 0, 0}},
    {"side that is no number",    "c1: x1 <= +infinity",            "LEE", {0, 0, 0}, {1, 0, 0}},
    {"range",                     "c1: 1 <= x1 + x2 <= 4",          "LEE", {0, 0, 0}, {0, 0, 0}},
    {"no sense, next row",        "c1:  x1 + x3\nc2: x1 <= 5",      "ELE", {0, 5, 0}, {1, 0, 1}},
    {"x0 ends the terms",         "c1: x1 + x0 <= 5",               "EEE", {0, 0, 0}, {1, 0, 0}},
    {"zero coefficient",          "c1: 0 x1 - 0.0 x99 + x2 <= 4",   "LEE", {4, 0, 0}, {0, 1, 0}},
    {"repeated place",            "c1: 2 x1 + 3 x1 <= 4",           "LEE", {4, 0, 0}, {5, 0, 0}},
};
// clang-format on

TEST(Reader, row_lines_give_the_rows)
{
    for (const auto& c : ROWS) {
        SCOPED_TRACE(c.what);
        Host host(SPARSE);
        EXPECT_EQ(host.read(with_rows(c.text)), 0);
        const auto senses = host.sense.values();
        EXPECT_EQ(std::string(senses.begin(), senses.end()), c.sense);
        EXPECT_EQ(host.rhs.values(), c.rhs);
        const auto matrix = host.matrix.full();
        EXPECT_EQ((std::vector<double>{matrix[0], matrix[SIZE], matrix[2 * SIZE]}), c.row1);
    }
}

TEST(Reader, a_full_column_drops_what_comes_later)
{
    Host host(SPARSE);
    EXPECT_EQ(host.read(with_rows("c1: x2 + 2 x2\nc2: 4 x2\nc3: 8 x2 + 16 x3")), 0);
    EXPECT_EQ(host.matrix.full(), (std::vector<double>{0, 0, 0, 3, 4, 0, 0, 0, 16}));
    EXPECT_EQ(count(with_rows("c1: x2 + 2 x2\nc2: 4 x2")).matcnt,
              (std::vector<std::int32_t>{0, 3}));
}

struct BoundCase {
    const char* text;
    double lower, upper;
};

constexpr BoundCase BOUNDS[] = {
    {"1 <= x2 <= 2",                 1,     2   },
    {"  1   <=x2<=2  ",              1,     2   },
    {"-infinity <= x2 <= +infinity", -1e30, 1e30},
    {"-infinity<=x2<=+infinity",     -1e30, 1e30},
    {"+infinity <= x2 <= -infinity", 0,     0   },
    {"-1e999 <= x2 <= +2",           -INF,  2   },
    {"inf <= x2 <= ",                0,     0   },
};

TEST(Reader, bound_lines_give_the_bounds)
{
    for (const auto& c : BOUNDS) {
        SCOPED_TRACE(c.text);
        Host host(SPARSE);
        EXPECT_EQ(host.read(with_bounds(c.text)), 0);
        EXPECT_EQ(host.lb.values(), (std::vector<double>{-1e30, c.lower, -1e30}));
        EXPECT_EQ(host.ub.values(), (std::vector<double>{1e30, c.upper, 1e30}));
    }
}

struct BlockCase {
    const char* what;
    const char* text;
    std::vector<double> full;
    std::vector<std::int32_t> counts;
};

// clang-format off
const BlockCase BLOCKS[] = {
    {"empty",             "[ ]",                         {0, 0, 0, 0, 0, 0, 0, 0, 0},     {}},
    {"square",            "[ x2^2 ]",                    {0, 0, 0, 0, 1, 0, 0, 0, 0},     {0, 1}},
    {"product",           "+ [ 3 x1^2 x2^2+3 x1 * x2 ]", {3, 1.5, 0, 1.5, 1, 0, 0, 0, 0}, {2, 2}},
    {"spaces and lines",  "[\n   \n x1 ^ 2\n ]",         {1, 0, 0, 0, 0, 0, 0, 0, 0},     {1}},
    {"zero coefficient",  "[ 0 x3^2 + x1^2 ]",           {1, 0, 0, 0, 0, 0, 0, 0, 0},     {1}},
    {"repeated",          "[ x1^2 + 2 x1^2 ]",           {3, 0, 0, 0, 0, 0, 0, 0, 0},     {2}},
};
// clang-format on

TEST(Reader, a_quadratic_block_gives_the_form_itself)
{
    for (const auto& c : BLOCKS) {
        SCOPED_TRACE(c.what);
        Host host(DENSE, SPARSE);
        EXPECT_EQ(host.read(with_objective(c.text)), 0);
        EXPECT_EQ(host.q.full(), c.full);
        EXPECT_EQ(host.obj.values(), std::vector<double>(SIZE, 0.0));
        EXPECT_EQ(count(with_objective(c.text)).qmatcnt, c.counts);
    }
}

TEST(Reader, an_indefinite_form_is_filled_in_and_told)
{
    const MessageLog log;
    Host host(DENSE, DENSE);
    EXPECT_EQ(host.read(with_objective("[ x1^2 - x2^2 ]")), 8);
    EXPECT_EQ(told(), "Q matrix is indefinite");
    EXPECT_EQ(host.lp->control.qstate, Q_INDEFINITE);
    EXPECT_EQ(host.q.full(), (std::vector<double>{1, 0, 0, 0, -1, 0, 0, 0, 0}));
    EXPECT_EQ(host.numcols, 2);

    EXPECT_EQ(host.read("Maximize\n[ - x2^2 ]\nSubject To\nBounds\nEnd\n"), 0);
    EXPECT_EQ(host.lp->control.qstate, Q_ACCEPTED);
}

// ---- refusals

struct TextRefusal {
    const char* what;
    std::string text;
    const char* told;
};

const std::string HEAD = "Minimize\n", ROW_HEAD = HEAD + "Subject To\n",
                  BOUND_HEAD = ROW_HEAD + "Bounds\n", INTEGER_HEAD = BOUND_HEAD + "Integers\n";

// clang-format off
const TextRefusal TEXT_REFUSALS[] = {
    {"empty file",               "",                                      "Error reading input line; error reading first input line"},
    {"zero byte in front",       '\0' + HEAD,                             "missing Maximize/Minimize"},
    {"negative variable",        with_objective("x-1"),                   "error reading objective"},
    {"no quadratic term",        with_objective("[ a ]"),                 "error reading quadratic objective"},
    {"no second index",          with_objective("[ x1*3 ]"),              "error reading quadratic objective"},
    {"second index of 32 bits",  with_objective("[ x1*x2147483648 ]"),    "error reading quadratic objective"},
    {"power 3",                  with_objective("[ x1^3 ]"),              "error reading quadratic objective"},
    {"text in the objective",    with_objective("x1 Subject To"),         "missing Subject To"},
    {"end for rows",             ROW_HEAD,                                "Error reading input line; error reading input line"},
    {"row of 32 bits",           with_rows("c2147483648: x1 <= 1"),       "error reading constraint"},
    {"row 0",                    with_rows("c0: x1 <= 1"),                "missing constraint name"},
    {"end in the objective",     HEAD + "x1\n",                           "Error reading input line; error reading objective"},
    {"end in the block",         HEAD + "[ x1^2\n",                       "Error reading input line; error reading quadratic objective"},
    {"no lower bound",           with_bounds("<= x1 <= 4"),               "error reading lower bound"},
    {"end in a row",             ROW_HEAD + "c1: x1\n",                   "Error reading input line; error reading constraint"},
    {"Integers for Bounds",      ROW_HEAD + "Integers\n",                 "missing Bounds"},
    {"end for bounds",           BOUND_HEAD,                              "Error reading input line; error reading bound"},
    {"no variable",              with_bounds("1 <= 4"),                   "error reading variable bound"},
    {"no upper bound",           with_bounds("1 <= x1"),                  "error reading upper bound"},
    {"text behind the bound",    with_bounds("1 <= x1 <= 4 5"),           "error reading beyond bound"},
    {"end for integers",         INTEGER_HEAD,                            "Error reading input line; error reading integer"},
    {"no integer variable",      INTEGER_HEAD + "y1\nEnd\n",              "error reading integer variable"},
    {"two integer variables",    INTEGER_HEAD + "x1 x2\nEnd\n",           "error reading beyond integer"},
    {"no end",                   BOUND_HEAD + "En\n",                     "missing End"},
};

// For a model of three columns and rows.
const TextRefusal SIZE_REFUSALS[] = {
    {"objective",      with_objective("x4"),              "error reading objective"},
    {"square",         with_objective("[ x4^2 ]"),        "error reading quadratic objective"},
    {"product",        with_objective("[ x1*x4 ]"),       "error reading quadratic objective"},
    {"row",            with_rows("c4: x1 <= 1"),          "error reading constraint"},
    {"matrix",         with_rows("c1: x4"),               "error reading constraint"},
    {"bound",          with_bounds("1 <= x4 <= 4"),       "error reading bound"},
    {"integer",        INTEGER_HEAD + "x4\nEnd\n",        "error reading integer"},
};
// clang-format on

TEST(Reader, a_faulty_text_is_refused)
{
    const MessageLog log;
    for (const auto& c : TEXT_REFUSALS) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(count(c.text).code, 2);
        EXPECT_EQ(told(), c.told);
    }
}

TEST(Reader, what_lies_beyond_the_model_is_refused)
{
    const MessageLog log;
    for (const Layout layout : {DENSE, SPARSE})
        for (const auto& c : SIZE_REFUSALS) {
            SCOPED_TRACE(c.what);
            Host host(layout, layout);
            EXPECT_EQ(host.read(c.text), 2);
            EXPECT_EQ(told(), c.told);
            EXPECT_TRUE(host.is_intact());
        }

    Host linear(SPARSE, SPARSE, true);
    EXPECT_EQ(linear.read(with_objective("[ x1^2 ]")), 2);
    EXPECT_EQ(told(), "error reading quadratic objective");
    EXPECT_EQ(linear.lp->problemtype, PROB_LP);
}

}  // namespace
}  // namespace tarnwick
