#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "include/tarnwick.h"
#include "interface/problem.h"
#include "tests/support/olearrays.h"
#include "tests/textfile/host.h"

namespace tarnwick {
namespace {

// ---- arguments

TEST(ReaderCall, arguments_are_refused_in_order)
{
    const MessageLog log;
    const Host host(SPARSE), functions(SPARSE);
    const TextFile file(WHOLE);
    Problem none{};
    functions.lp->problemtype = PROB_MINSP;
    auto* const all_ones = reinterpret_cast<Problem*>(~std::uintptr_t{0});
    const std::tuple<Problem*, const char*, std::int32_t, const char*> CASES[] = {
        {&none,        "",              1, "lp pointer is invalid"                                   },
        {functions.lp, "",              1, "lpread not supported for NLP/NSPs"                       },
        {host.lp,      nullptr,         2, "filename is NULL or empty"                               },
        {nullptr,      "",              2, "filename is NULL or empty"                               },
        {nullptr,      "/no such/file", 2, "Unable to open input file"                               },
        {nullptr,      "/",             2, "Error reading input file; error reading first input line"},
        {all_ones,     file.path(),     0, ""                                                        },
    };
    for (const auto& [lp, name, code, text] : CASES) {
        EXPECT_EQ(read_file(lp, name), code);
        EXPECT_EQ(told(), text);
    }
}

// ---- the caller's counts

TEST(ReaderCall, counts_that_are_absent_or_go_with_a_model_are_not_written)
{
    const TextFile file(WHOLE);
    std::int32_t absent[] = {-1, 8, 8};
    EXPECT_EQ(read_file(nullptr, file.path(), absent, absent), 0);
    EXPECT_EQ(absent[0] + absent[2], 7);

    const Host host(SPARSE);
    std::int32_t counts[] = {2, 2, INT32_MAX};
    EXPECT_EQ(read_file(host.lp, file.path(), counts, counts), 0);
    EXPECT_EQ(counts[0], 2);
    EXPECT_TRUE(host.is_intact());
    EXPECT_EQ(host.lp->qnz, INT32_MAX);
    EXPECT_EQ(host.lp->matnz, SIZE * SIZE);
}

TEST(ReaderCall, ole_counts_are_viewed)
{
    const MessageLog log;
    const Host host(SPARSE);
    const ArrayMode mode(true);
    const TextFile file(WHOLE);
    const auto read = [&](Problem* lp, OleArray<std::int32_t>& m, OleArray<std::int32_t>& q) {
        return read_file(lp, file.path(), m.argument(), q.argument());
    };
    OleArray<std::int32_t> matcnt{7, 7, 7, 7}, qmatcnt{7, 7, 7}, placeholder{-1}, shorter{7};
    EXPECT_EQ(read(nullptr, matcnt, qmatcnt), 0);
    EXPECT_EQ(matcnt.values(), (std::vector<std::int32_t>{1, 2, 1, 7}));
    EXPECT_EQ(qmatcnt.values(), (std::vector<std::int32_t>{2, 2, 0}));
    EXPECT_EQ(read(nullptr, placeholder, shorter), 0);
    EXPECT_EQ(placeholder[0], -1);
    EXPECT_EQ(shorter[0], 2);

    EXPECT_EQ(read(host.lp, placeholder, qmatcnt), 0);
    EXPECT_EQ(told(), "");
    EXPECT_EQ(read(host.lp, shorter, shorter), 7);
    EXPECT_EQ(told(), "matcnt is not a valid OLE array");
    EXPECT_EQ(read(host.lp, matcnt, shorter), 8);
    EXPECT_EQ(told(), "qmatcnt is not a valid OLE array");
}

// ---- lines and the buffer

TEST(ReaderCall, a_line_fits_with_its_line_feed_in_250_characters)
{
    for (const std::size_t length : {249U, 250U, 251U})
        for (const char* const before : {"", "x2\n"}) {
            SCOPED_TRACE(testing::Message() << length << " behind '" << before << "'");
            const std::string line = "x1" + std::string(length - 3, ' ');
            EXPECT_EQ(count(with_objective(before + line)).code, length <= 250 ? 0 : 2);
            const std::string end = "End" + std::string(length - 3, ' ');
            EXPECT_EQ(count("Minimize\nSubject To\nBounds\n" + end).code, length <= 249 ? 0 : 2);
        }
}

TEST(ReaderCall, an_empty_line_takes_the_rest_of_the_buffer_with_it)
{
    for (const std::size_t rest : {248U, 249U, 250U})
        EXPECT_EQ(
            count("Minimize\nx1\n\n" + std::string(rest, '?') + "Subject To\nBounds\nEnd\n").code,
            rest == 249 ? 0 : 2);
}

TEST(ReaderCall, the_platform_decides_nothing_about_line_ends)
{
    for (std::size_t shift = 0; shift < 4; ++shift) {
        // So many lines that line ends meet the edges of whatever blocks the file is read in.
        std::string terms(shift, ' ');
        for (int k = 0; k < 3000; ++k) terms += "x1\n";
        const Counts c = count(on_disk(with_rows("c1: " + terms + " <= 4")));
        EXPECT_EQ(c.code, 0);
        EXPECT_EQ(c.matcnt, (std::vector<std::int32_t>{3000}));
    }
    EXPECT_EQ(count(on_disk(WHOLE)).matcnt, count(WHOLE).matcnt);
    EXPECT_EQ(count(with_bounds("1 <= x1 <= 2\r\n2 <= x2 <= 3 \r")).code, 0);
    EXPECT_EQ(count(with_bounds("1 <= x1 <= 2 \r\r")).code, 2);
}

// ---- damaged files

std::string damaged(std::uint32_t seed)
{
    static const char* const PIECES[] = {"x0",  "x4",   "x-1", "c2",  "c9",  "[",    "]",    "^2",
                                         "*x3", "<=",   "\n",  " ",   "\r",  "1e99", "-",    "End",
                                         "I",   "obj:", "nan", "0x1", "1e-", "x99",  "\xff", "B"};
    std::mt19937 random(seed);
    std::string text = WHOLE;
    for (auto changes = 1 + random() % 4; changes > 0 && !text.empty(); --changes) {
        const std::size_t at = random() % text.size();
        switch (random() % 4) {
        case 0: text[at] = static_cast<char>(random()); break;
        case 1: text.erase(at, 1 + random() % 8); break;
        case 2: text.insert(at, PIECES[random() % std::size(PIECES)]); break;
        default: text.insert(at, text.substr(random() % text.size(), random() % 300)); break;
        }
    }
    return text;
}

// The first files are cut short: they are complete only with their end.
TEST(ReaderCall, a_damaged_file_never_leads_outside_the_arrays)
{
    for (std::uint32_t seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        const bool is_cut = seed <= WHOLE.size();
        const std::string text = is_cut ? WHOLE.substr(0, seed) : damaged(seed);
        const Counts c = count(text);
        if (is_cut)
            EXPECT_EQ(c.code, seed + 1 < WHOLE.size() ? 2 : 0);
        else
            EXPECT_TRUE(c.code == 0 || c.code == 2);

        Host host(seed % 2 ? DENSE : SPARSE, seed % 3 ? DENSE : SPARSE, seed % 5 == 0);
        const std::int32_t code = host.read(text);
        EXPECT_TRUE(host.is_intact());
        EXPECT_TRUE(code == 2 || (c.code == 0 && (code == 0 || code == 8)))
            << "what can't be counted was filled in";
        EXPECT_TRUE(code != 0 || (host.numcols <= SIZE && host.numrows <= SIZE));
    }
}

}  // namespace
}  // namespace tarnwick
