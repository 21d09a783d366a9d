#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <utility>

#include "interface/problem.h"
#include "tests/support/memory.h"
#include "tests/support/models.h"
#include "tests/textfile/host.h"
#include "textfile/realtext.h"

namespace tarnwick {
namespace {

// ---- numbers

// clang-format off
const std::pair<double, const char*> NUMBERS[] = {
    {0.0, "0.0"}, {-0.0, "0.0"}, {1.0, "1.0"}, {2.5, "2.5"}, {-0.125, "-0.125"},
    {1.0000004, "1.0"}, {1.0000006, "1.000001"}, {-4e-7, "-0.0"}, {0.000001, "0.000001"},
    {0.9999996, "1.0"}, {41.99999951, "42.0"}, {100.0, "100.0"}, {0.1, "0.1"},
    {4294967295.25, "4294967295.25"}, {4294967295.9999999, "4294967296.0"}, {4294967296.5, "4294967296.0"},
    {-1e29, "-99999999999999991433150857216.0"}, {0x1p53, "9007199254740992.0"},
    {1e30, "+infinity"}, {-1e30, "-infinity"}, {-std::numeric_limits<double>::infinity(), "-infinity"},
    {5e-324, "0.0"}, {std::numeric_limits<double>::quiet_NaN(), "nan"},
};
// clang-format on

TEST(RealText, a_number_has_at_most_six_places_and_no_exponent)
{
    char buffer[REAL_TEXT_SIZE];
    for (const auto& [value, text] : NUMBERS) EXPECT_STREQ(format_real(value, buffer), text);
}

// ---- files

std::string written(Problem* lp, std::int32_t TARNWICK_CALL write(Problem*, const char*) = lpwrite)
{
    const TextFile file("");
    EXPECT_EQ(write(lp, file.path()), 0);
    return file.content();
}

TEST(Writer, a_whole_model_is_written_byte_for_byte)
{
    for (const Layout matrix : {DENSE, SPARSE})
        for (const Layout q : {DENSE, SPARSE}) {
            Host host(matrix, q);
            ASSERT_EQ(host.read(WHOLE), 0);
            host.ctype[2] = 'B';
            const std::string text =
                on_disk("Minimize QP/MIP\n  obj: 2.5 x1 - x3\n"
                        "       + [ 4.0 x1^2 + x1*x2\n       + 3.0 x2^2\n       ]\nSubject To\n"
                        "  c1:  x1 + 2.0 x2 >= 1.0\n  c2:   = 0.0\n  c3:   - x2 + 0.5 x3 <= 10.0\n"
                        "Bounds\n  0.0 <= x1 <= +infinity\n  -infinity <= x2 <= 4.0\n"
                        "  0.0 <= x3 <= 1.0\nIntegers\n  x2\n  x3\nEnd\n");
            EXPECT_EQ(written(host.lp), text);
            EXPECT_EQ(written(host.lp, lprewrite), text);
        }
}

// clang-format off
const LinearModel SIGNS{{{{-1, 1.0000001}, 'L', 4}, {{0, 0}, 'G', -2}}, {0, 0}, {0, 0}, {INF, 1}, -1};
const LinearModel SMALL{{{{2}, 'L', 4}, {{2}, 'L', 4}, {{2}, 'L', 4}}, {1}};
const LinearModel PAIR{{{{1, 2}, 'L', 4}}, {1, 1}};
// clang-format on

TEST(Writer, signs_units_and_empty_parts)
{
    EXPECT_EQ(
        written(LoadedModel(SIGNS).lp),
        on_disk("Maximize LP\nSubject To\n  c1:   - x1 + 1.0 x2 <= 4.0\n  c2:   >= -2.0\nBounds\n"
                "  0.0 <= x1 <= +infinity\n  0.0 <= x2 <= 1.0\nEnd\n"));
}

TEST(Writer, a_range_has_two_limits_in_one_line)
{
    LoadedModel model(SMALL);
    double widths[] = {3.0, -3.0, 0.0};
    model.lp->rowrange = widths;
    for (char& sense : model.sense) sense = 'R';
    EXPECT_EQ(written(model.lp),
              on_disk("Minimize LP\n  obj: x1\nSubject To\n  c1:  4.0 <= 2.0 x1 <= 7.0\n"
                      "  c2:  1.0 <= 2.0 x1 <= 4.0\n  c3:  4.0 <= 2.0 x1 <= 4.0\nBounds\n"
                      "  0.0 <= x1 <= +infinity\nEnd\n"));
}

// Long numbers and many terms: every line must fit the reader, and all comes back.
TEST(Writer, what_is_written_reads_back)
{
    constexpr int N = 60;
    LinearModel wide{.rows = {}, .obj = Reals(N, -123456789.25)},
        blank{.rows = {}, .obj = Reals(N)};
    for (int i = 0; i < 3; ++i) {
        wide.rows.push_back({Reals(N, i == 0 ? -9.9e29 : 1.0 / 64 + i), 'G', 0.5 * i});
        blank.rows.push_back({Reals(N, 1.0), 'L', 1.0});
    }
    const LoadedModel model(wide), copy(blank, MatrixLayout::dense);
    const TextFile file(written(model.lp));
    ASSERT_EQ(read_file(copy.lp, file.path()), 0);
    EXPECT_EQ(copy.matval, model.matval);
    EXPECT_EQ(copy.obj, model.obj);
    EXPECT_EQ(copy.rhs, model.rhs);
    EXPECT_EQ(copy.sense, model.sense);
    std::istringstream lines(file.content());
    for (std::string line; std::getline(lines, line);) EXPECT_LT(line.size(), 250U);
}

TEST(Writer, several_entries_for_a_place_are_their_sum_and_strangers_are_passed_over)
{
    LoadedModel model(PAIR);
    model.matind[1] = 1;  // one beyond the rows
    EXPECT_NE(written(model.lp).find("  c1:  x1 <= 4.0"), std::string::npos);
    model.matind[1] = 0;
    model.matcnt = {2, 0};
    EXPECT_NE(written(model.lp).find("  c1:  3.0 x1 <= 4.0"), std::string::npos);
}

TEST(Writer, refusals_tell_what_is_wrong)
{
    const MessageLog log;
    LoadedModel model(SMALL);
    expect_told(lpwrite(nullptr, "x"), 1, "lpwrite", "lp pointer is NULL");
    expect_told(lprewrite(model.lp, nullptr), 2, "lpwrite", "filename is NULL");
    expect_told(lpwrite(model.lp, "/nowhere/at/all"), 2, "lpwrite", "Unable to open output file");
    expect_told(lpwrite(model.lp, "/dev/full"), 2, "lpwrite", "Error writing to output file");
    model.lp->problemtype = PROB_NSP;
    expect_told(lpwrite(model.lp, "x"), 1, "lpwrite", "lpwrite not supported for NLP/NSPs");
    model.lp->problemtype = PROB_LP;
}

TEST(Writer, without_memory_nothing_is_lost)
{
    const LoadedModel model(SMALL);
    const TextFile file("precious");
    bool failed = true;
    for (long n = 0; failed; ++n) {
        allow_allocations(n);
        const std::int32_t code = lpwrite(model.lp, file.path());
        failed = allocation_failed();
        allow_all_allocations();
        EXPECT_EQ(code, failed ? 2 : 0);
        EXPECT_EQ(file.content() == "precious", failed);
    }
}

}  // namespace
}  // namespace tarnwick
