#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "interface/problem.h"
#include "tests/textfile/host.h"

namespace tarnwick {
namespace {

using Numbers = std::vector<double>;
constexpr double INF = std::numeric_limits<double>::infinity();

// ---- a whole model

TEST(Reader, a_file_is_counted)
{
    EXPECT_EQ(count(with_rows("c1: x2 + 2 x2\nc2: 4 x2")).matcnt,
              (std::vector<std::int32_t>{0, 3}));
    EXPECT_EQ(count(with_objective("[ x1^2 + 2 x1^2 + 0 x3^2 + x1*x2 ]")).qmatcnt,
              (std::vector<std::int32_t>{3, 1}));
    const Counts c = count(WHOLE);
    EXPECT_EQ((std::vector{c.code, c.objsen, c.numcols, c.numrows, c.numctype}),
              (std::vector{0, 1, 3, 3, 3}));
    EXPECT_EQ(c.matcnt, (std::vector<std::int32_t>{1, 2, 1}));
    EXPECT_EQ(c.qmatcnt, (std::vector<std::int32_t>{2, 2, 0}));
}

TEST(Reader, a_file_fills_a_model_in_every_layout)
{
    for (const Layout matrix : {DENSE, SPARSE})
        for (const Layout q : {DENSE, SPARSE}) {
            Host host(matrix, q);
            ASSERT_EQ(host.read(WHOLE), 0);
            EXPECT_TRUE(host.is_intact());
            EXPECT_EQ(host.numcols, 3);
            EXPECT_EQ(host.numrows, 3);
            EXPECT_EQ(host.lp->objsen, 1);
            EXPECT_EQ(host.lp->control.qstate, Q_ACCEPTED);
            EXPECT_EQ(host.obj.values(), (Numbers{2.5, 0.0, -1.0}));
            EXPECT_EQ(host.matrix.full(), (Numbers{1, 0, 0, 2, 0, -1, 0, 0, 0.5}));
            EXPECT_EQ(host.q.full(), (Numbers{4, 0.5, 0, 0.5, 3, 0, 0, 0, 0}));
            EXPECT_EQ(host.sense.values(), (std::vector<char>{'G', 'E', 'L'}));
            EXPECT_EQ(host.rhs.values(), (Numbers{1.0, 0.0, 10.0}));
            EXPECT_EQ(host.lb.values(), (Numbers{0.0, -1e30, -1e30}));
            EXPECT_EQ(host.ub.values(), (Numbers{1e30, 4.0, 1e30}));
            EXPECT_EQ(host.ctype.values(), (std::vector<char>{'C', 'I', 'C'}));

            ASSERT_EQ(host.read("Maximize\nSubject To\nBounds\nEnd\n"), 0);
            EXPECT_EQ(host.lp->objsen, -1);
            EXPECT_EQ(host.obj.values(), Numbers(SIZE, 0.0));
            for (HostMatrix* matrix_or_q : {&host.matrix, &host.q})
                EXPECT_EQ(matrix_or_q->full(), Numbers(SIZE * SIZE, 0.0));
        }
}

// ---- the elements of the format

struct Part {
    std::string (*around)(const std::string&);  // the section that the text belongs to
    Numbers (*of)(Host&);                       // what it fills
};

template <class... Arrays>
Numbers joined(const Arrays&... arrays)
{
    Numbers all;
    (all.insert(all.end(), arrays.begin(), arrays.end()), ...);
    return all;
}

const Part OBJECTIVE{with_objective, [](Host& h) { return h.obj.values(); }};
const Part FORM{with_objective, [](Host& h) { return h.q.full(); }};
const Part MATRIX{with_rows, [](Host& h) { return h.matrix.full(); }};
const Part BOUNDS{with_bounds, [](Host& h) { return joined(h.lb.values(), h.ub.values()); }};
// Senses, right-hand sides, and the first row.
const Part ROWS{with_rows, [](Host& h) {
                    const Numbers a = h.matrix.full();
                    return joined(h.sense.values(), h.rhs.values(), Numbers{a[0], a[3], a[6]});
                }};

// clang-format off
const struct {
    const char* what;
    const Part& part;
    const char* text;
    Numbers want;
} ELEMENTS[] = {
    {"the last one stands",       OBJECTIVE, "x1 + 5 x1",                     {5, 0, 0}},
    {"sign of sign and number",   OBJECTIVE, "- -3 x1 + +4 x2 - +5 x3",       {3, 4, -5}},
    {"exponents and points",      OBJECTIVE, "1e2 x1 + .5 x2 - 5. x3",        {100, 0.5, -5}},
    {"a number runs to a space",  OBJECTIVE, "3x1 x2",                        {0, 3, 0}},
    {"hexadecimal is 0",          OBJECTIVE, "0x10 x1 + x2",                  {0, 1, 0}},
    {"beyond the range",          OBJECTIVE, "1e999 x1 - 1e999 x2",           {INF, -INF, 0}},
    {"a lone number at the end",  OBJECTIVE, "x1 + 5\n x2",                   {1, 1, 0}},
    {"long senses",               ROWS,      "c1: <= 1\nc2: >=2\nc3: =3",     {'L', 'G', 'E', 1, 2, 3, 0, 0, 0}},
    {"any order, gaps",           ROWS,      "c3: x1 <= 3\nc1: x2 >= 1",      {'G', 'E', 'L', 1, 0, 3, 0, 1, 0}},
    {"a name runs to a space",    ROWS,      "c1xyz x1 <= 1",                 {'L', 'E', 'E', 1, 0, 0, 1, 0, 0}},
    {"range",                     ROWS,      "c1: 1 <= x1 + x2 <= 4",         {'L', 'E', 'E', 0, 0, 0, 0, 0, 0}},
    {"no sense, next row",        ROWS,      "c1:  x1 + x3\nc2: x1 <= 5",     {'E', 'L', 'E', 0, 5, 0, 1, 0, 1}},
    {"x0 ends the terms",         ROWS,      "c1: x1 + x0 <= 5",              {'E', 'E', 'E', 0, 0, 0, 1, 0, 0}},
    {"spaces and lines",          FORM,      "[\n   \n x1 ^ 2\n ]",           {1, 0, 0, 0, 0, 0, 0, 0, 0}},
    {"zero coefficient",          ROWS,      "c1: 0 x1 - 0.0 x99 + x2 <= 4",  {'L', 'E', 'E', 4, 0, 0, 0, 1, 0}},
    {"repeated place",            ROWS,      "c1: 2 x1 + 3 x1 <= 4",          {'L', 'E', 'E', 4, 0, 0, 5, 0, 0}},
    {"a full column drops the rest", MATRIX, "c1: x2 + 2 x2\nc2: 4 x2\nc3: 8 x2 + 16 x3", {0, 0, 0, 3, 4, 0, 0, 0, 16}},
    {"infinities",                BOUNDS,    "-infinity<=x2<=+infinity",      {-1e30, -1e30, -1e30, 1e30, 1e30, 1e30}},
    {"each on the other side",    BOUNDS,    "+infinity <= x2 <= -infinity",  {-1e30, 0, -1e30, 1e30, 0, 1e30}},
    {"beyond the range, signed",  BOUNDS,    "-1e999 <= x2 <= +2",            {-1e30, -INF, -1e30, 1e30, 2, 1e30}},
    {"words and nothing are 0",   BOUNDS,    "inf <= x2 <= ",                 {-1e30, 0, -1e30, 1e30, 0, 1e30}},
    {"empty block",               FORM,      "[ ]",                           {0, 0, 0, 0, 0, 0, 0, 0, 0}},
    {"squares and a product",     FORM,      "+ [ 3 x1^2 x2^2+3 x1 * x2 ]",   {3, 1.5, 0, 1.5, 1, 0, 0, 0, 0}},
};
// clang-format on

TEST(Reader, each_element_fills_its_part_of_the_model)
{
    for (const auto& c : ELEMENTS) {
        SCOPED_TRACE(c.what);
        Host host(SPARSE);
        EXPECT_EQ(host.read(c.part.around(c.text)), 0);
        EXPECT_EQ(c.part.of(host), c.want);
    }
}

TEST(Reader, an_indefinite_form_is_filled_in_and_told)
{
    const MessageLog log;
    Host host(DENSE, DENSE);
    EXPECT_EQ(host.read(with_objective("[ x1^2 - x2^2 ]")), 8);
    EXPECT_EQ(told(), "Q matrix is indefinite");
    EXPECT_EQ(host.lp->control.qstate, Q_INDEFINITE);
    EXPECT_EQ(host.q.full(), (Numbers{1, 0, 0, 0, -1, 0, 0, 0, 0}));
}

// ---- refusals

const std::string HEAD = "Minimize\n", ROW_HEAD = HEAD + "Subject To\n",
                  BOUND_HEAD = ROW_HEAD + "Bounds\n", INTEGER_HEAD = BOUND_HEAD + "Integers\n";

// clang-format off
const struct {
    const char* what;
    std::string text;
    const char* told;
} TEXT_REFUSALS[] = {
    {"empty file",               "",                                      "Error reading input line; error reading first input line"},
    {"zero byte in front",       '\0' + HEAD,                             "missing Maximize/Minimize"},
    {"negative variable",        with_objective("x-1"),                   "error reading objective"},
    {"no second index",          with_objective("[ x1*3 ]"),              "error reading quadratic objective"},
    {"second index of 32 bits",  with_objective("[ x1*x2147483648 ]"),    "error reading quadratic objective"},
    {"power 2.5",                with_objective("[ x1^2.5 x1^2 ]"),       "error reading quadratic objective"},
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
const std::pair<std::string, const char*> SIZE_REFUSALS[] = {
    {with_objective("x4"),        "error reading objective"},
    {with_objective("[ x4^2 ]"),  "error reading quadratic objective"},
    {with_objective("[ x1*x4 ]"), "error reading quadratic objective"},
    {with_rows("c4: x1 <= 1"),    "error reading constraint"},
    {with_rows("c1: x4"),         "error reading constraint"},
    {with_bounds("1 <= x4 <= 4"), "error reading bound"},
    {INTEGER_HEAD + "x4\nEnd\n",  "error reading integer"},
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
        for (const auto& [text, message] : SIZE_REFUSALS) {
            SCOPED_TRACE(text);
            Host host(layout, layout);
            EXPECT_EQ(host.read(text), 2);
            EXPECT_EQ(told(), message);
            EXPECT_TRUE(host.is_intact());
        }

    Host linear(SPARSE, SPARSE, true);
    EXPECT_EQ(linear.read(with_objective("[ x1^2 ]")), 2);
    EXPECT_EQ(told(), "error reading quadratic objective");
    EXPECT_EQ(linear.lp->problemtype, PROB_LP);
}

}  // namespace
}  // namespace tarnwick
