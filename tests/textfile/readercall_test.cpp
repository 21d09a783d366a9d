#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <string>
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
    Host host(SPARSE);
    const TextFile file(WHOLE);
    const auto read = [](Problem* lp, const char* name) {
        return lpread(lp, name, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    };
    Problem other{};
    EXPECT_EQ(read(&other, ""), 1);
    EXPECT_EQ(told(), "lp pointer is invalid");
    host.lp->problemtype = PROB_MINSP;
    EXPECT_EQ(read(host.lp, ""), 1);
    EXPECT_EQ(told(), "lpread not supported for NLP/NSPs");
    const std::pair<const char*, const char*> names[] = {
        {nullptr,         "filename is NULL or empty"                               },
        {"",              "filename is NULL or empty"                               },
        {"/no such/file", "Unable to open input file"                               },
        {"/",             "Error reading input file; error reading first input line"}
    };
    for (const auto& [name, message] : names) {
        EXPECT_EQ(read(nullptr, name), 2);
        EXPECT_EQ(told(), message);
    }
    EXPECT_EQ(read(reinterpret_cast<Problem*>(~std::uintptr_t{0}), file.path()), 0);
    EXPECT_EQ(told(), "");
}

// ---- the caller's counts

TEST(ReaderCall, counts_that_are_absent_or_go_with_a_model_are_not_written)
{
    const TextFile file(WHOLE);
    std::int32_t absent[] = {-1, 8, 8};
    EXPECT_EQ(lpread(nullptr, file.path(), nullptr, nullptr, nullptr, nullptr, absent, absent), 0);
    EXPECT_EQ(absent[0], -1);
    EXPECT_EQ(absent[2], 8);

    Host host(SPARSE);
    std::int32_t counts[] = {2, 2, std::numeric_limits<std::int32_t>::max()};
    EXPECT_EQ(lpread(host.lp, file.path(), nullptr, nullptr, nullptr, nullptr, counts, counts), 0);
    EXPECT_EQ(counts[0], 2);
    EXPECT_TRUE(host.is_intact());
    EXPECT_EQ(host.lp->qnz, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(host.lp->matnz, SIZE * SIZE);
}

TEST(ReaderCall, ole_counts_are_viewed)
{
    const MessageLog log;
    Host host(SPARSE);
    const ArrayMode mode(true);
    const TextFile file(WHOLE);
    const auto read = [&](Problem* lp, OleArray<std::int32_t>& m, OleArray<std::int32_t>& q) {
        return lpread(lp, file.path(), nullptr, nullptr, nullptr, nullptr, m.argument(),
                      q.argument());
    };
    OleArray<std::int32_t> matcnt{7, 7, 7, 7}, qmatcnt{7, 7, 7}, placeholder{-1}, shorter{7};
    EXPECT_EQ(read(nullptr, matcnt, qmatcnt), 0);
    EXPECT_EQ(matcnt.values(), (std::vector<std::int32_t>{1, 2, 1, 7}));
    EXPECT_EQ(qmatcnt.values(), (std::vector<std::int32_t>{2, 2, 0}));
    EXPECT_EQ(read(nullptr, placeholder, shorter), 0);
    EXPECT_EQ(placeholder.values()[0], -1);
    EXPECT_EQ(shorter.values()[0], 2);

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
    const auto converted = [](std::string text) {
        for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2)
            text.replace(at, 1, "\r\n");
        return text;
    };
    for (std::size_t shift = 0; shift < 4; ++shift) {
        // So many lines that line ends meet the edges of whatever blocks the file is read in.
        std::string terms(shift, ' ');
        for (int k = 0; k < 3000; ++k) terms += "x1\n";
        const Counts c = count(converted(with_rows("c1: " + terms + " <= 4")));
        EXPECT_EQ(c.code, 0);
        EXPECT_EQ(c.matcnt, (std::vector<std::int32_t>{3000}));
    }
    EXPECT_EQ(count(converted(WHOLE)).matcnt, count(WHOLE).matcnt);
    EXPECT_EQ(count(with_bounds("1 <= x1 <= 2\r\n2 <= x2 <= 3 \r")).code, 0);
    EXPECT_EQ(count(with_bounds("1 <= x1 <= 2 \r\r")).code, 2);
}

// ---- damaged files

TEST(ReaderCall, a_truncated_file_is_complete_only_with_its_end)
{
    for (std::size_t length = 0; length <= WHOLE.size(); ++length) {
        SCOPED_TRACE(length);
        const std::string text = WHOLE.substr(0, length);
        const std::int32_t code = length >= WHOLE.size() - 1 ? 0 : 2;
        EXPECT_EQ(count(text).code, code);
        Host host(SPARSE);
        EXPECT_EQ(host.read(text), code);
        EXPECT_TRUE(host.is_intact());
    }
}

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

TEST(ReaderCall, a_damaged_file_never_leads_outside_the_arrays)
{
    int accepted = 0;
    for (std::uint32_t seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        const std::string text = damaged(seed);
        const Counts c = count(text);
        EXPECT_TRUE(c.code == 0 || c.code == 2);

        Host host(seed % 2 ? DENSE : SPARSE, seed % 3 ? DENSE : SPARSE, seed % 5 == 0);
        const std::int32_t code = host.read(text);
        EXPECT_TRUE(host.is_intact());
        EXPECT_TRUE(code == 2 || (c.code == 0 && (code == 0 || code == 8)))
            << "what can't be counted was filled in";
        EXPECT_TRUE(code != 0 || (host.numcols <= SIZE && host.numrows <= SIZE));
        accepted += code == 0;
    }
    EXPECT_GT(accepted, 0);
}

}  // namespace
}  // namespace tarnwick
