#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "include/tarnwick.h"
#include "tests/support/messages.h"

namespace tarnwick {

constexpr int SIZE = 3;  // columns and rows of the models that are filled

// ---- files, and arrays of a host

class TextFile {
  public:
    explicit TextFile(const std::string& text)
        : path_(testing::TempDir() + "reader_test." + std::to_string(getpid()))
    {
        std::ofstream(path_, std::ios::binary) << text;
    }
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;
    ~TextFile() { unlink(path_.c_str()); }
    const char* path() const { return path_.c_str(); }
    std::string content() const
    {
        std::ifstream in(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

  private:
    std::string path_;
};

// An array between cells that nobody may write.
template <class T>
class Guarded {
  public:
    Guarded(std::size_t n, T value) : cells_(n + 2 * MARGIN, T(GUARD))
    {
        std::fill_n(data(), n, value);
    }
    T* data() { return cells_.data() + MARGIN; }
    T& operator[](int k) { return data()[k]; }
    std::vector<T> values() const { return {cells_.begin() + MARGIN, cells_.end() - MARGIN}; }
    bool is_intact() const
    {
        const auto is_guard = [](T cell) { return cell == T(GUARD); };
        return std::all_of(cells_.begin(), cells_.begin() + MARGIN, is_guard) &&
               std::all_of(cells_.end() - MARGIN, cells_.end(), is_guard);
    }

  private:
    static constexpr int MARGIN = 8, GUARD = 99;
    std::vector<T> cells_;
};

inline std::int32_t read_file(Problem* lp, const char* name, std::int32_t* matcnt = nullptr,
                              std::int32_t* qmatcnt = nullptr)
{
    return lpread(lp, name, nullptr, nullptr, nullptr, nullptr, matcnt, qmatcnt);
}

// What a host learns by its first two calls.
struct Counts {
    std::int32_t code = -1, objsen = 0, numcols = 0, numrows = 0, numctype = 0;
    std::vector<std::int32_t> matcnt, qmatcnt;
};

inline Counts count(const std::string& text)
{
    const TextFile file(text);
    Counts c;
    c.code = lpread(nullptr, file.path(), &c.objsen, &c.numcols, &c.numrows, &c.numctype, nullptr,
                    nullptr);
    if (c.code != 0 || c.numcols > 1000) return c;

    const auto n = static_cast<std::size_t>(c.numcols);
    Guarded<std::int32_t> matcnt(n, 55), qmatcnt(n, 55);
    EXPECT_EQ(read_file(nullptr, file.path(), matcnt.data(), qmatcnt.data()), 0);
    EXPECT_TRUE(matcnt.is_intact() && qmatcnt.is_intact());
    c.matcnt = matcnt.values();
    c.qmatcnt = qmatcnt.values();
    return c;
}

enum Layout { DENSE, SPARSE };

// Three columns and rows. Each sparse column has room for three entries and comes after a gap of
// one slot; of a dense matrix the last slots are left over.
struct HostMatrix {
    static constexpr int SLOTS = SIZE * (SIZE + 1);
    static constexpr double GAP = 6.0;

    explicit HostMatrix(Layout which) : layout(which)
    {
        for (int j = 0; j < SIZE; ++j) {
            beg[j] = j * (SIZE + 1) + 1;
            val[beg[j] - 1] = GAP;
        }
    }
    std::int32_t* index(Guarded<std::int32_t>& array) const
    {
        return layout == SPARSE ? array.data() : nullptr;
    }
    bool is_intact() const
    {
        return beg.is_intact() && cnt.is_intact() && ind.is_intact() && val.is_intact();
    }
    // By columns; the entries for one place added up.
    std::vector<double> full()
    {
        if (layout == DENSE) return {val.data(), val.data() + SIZE * SIZE};
        std::vector<double> cells(SIZE * SIZE, 0.0);
        for (int k = 0; k < SLOTS; ++k) {
            if (k % (SIZE + 1) == 0)
                EXPECT_EQ(val[k], GAP) << "in slot " << k;
            else if (val[k] != 0.0)
                cells.at(static_cast<std::size_t>(k / (SIZE + 1) * SIZE + ind[k])) += val[k];
        }
        return cells;
    }

    Layout layout;
    Guarded<std::int32_t> beg{SIZE, 0}, cnt{SIZE, SIZE}, ind{SLOTS, 0};
    Guarded<double> val{SLOTS, 0.0};
};

// A loaded model of that size.
class Host {
  public:
    explicit Host(Layout matrix_layout, Layout q_layout = SPARSE, bool is_linear = false)
        : matrix(matrix_layout), q(q_layout)
    {
        lp = loadlp("host", SIZE, SIZE, 1, obj.data(), rhs.data(), sense.data(),
                    matrix.index(matrix.beg), matrix.index(matrix.cnt), matrix.index(matrix.ind),
                    matrix.val.data(), lb.data(), ub.data(), nullptr, 0, 0, HostMatrix::SLOTS);
        if (is_linear) return;
        loadquad(lp, q.index(q.beg), q.index(q.cnt), q.index(q.ind), q.val.data(),
                 HostMatrix::SLOTS, var.data());
        loadctype(lp, ctype.data());
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host() { unloadprob(&lp); }

    std::int32_t read(const std::string& text)
    {
        const TextFile file(text);
        return lpread(lp, file.path(), nullptr, &numcols, &numrows, nullptr, nullptr, nullptr);
    }
    bool is_intact() const
    {
        return obj.is_intact() && rhs.is_intact() && lb.is_intact() && ub.is_intact() &&
               sense.is_intact() && ctype.is_intact() && matrix.is_intact() && q.is_intact();
    }

    Problem* lp = nullptr;
    std::int32_t numcols = 0, numrows = 0;
    Guarded<double> obj{SIZE, 7.0}, rhs{SIZE, 7.0}, lb{SIZE, 7.0}, ub{SIZE, 7.0}, var{SIZE, 0.0};
    Guarded<char> sense{SIZE, 'G'}, ctype{SIZE, 'B'};
    HostMatrix matrix, q;
};

// Every section, and terms over several lines.
// clang-format off
inline const std::string WHOLE =
    "Minimize QP/MIP\n  obj:  2.5 x1 - x3 + [ 4.0 x1^2 + x1*x2\n      \n       + 3.0 x2^2 ]\n"
    "Subject To\n  c1:  x1 + 2.0 x2 >= 1.0\n  c3:  - x2\n       + 0.5 x3 <= 1e1\n"
    "Bounds\n  0.0 <= x1 <= +infinity\n  -infinity <= x2 <= 4.0\n"
    "Integers\n  x2\nEnd\n";
inline std::string with_objective(const std::string& s) { return "Minimize\n" + s + "\nSubject To\nBounds\nEnd\n"; }
inline std::string with_rows(const std::string& s) { return "Minimize\nSubject To\n" + s + "\nBounds\nEnd\n"; }
inline std::string with_bounds(const std::string& s) { return "Minimize\nSubject To\nBounds\n" + s + "\nEnd\n"; }
// clang-format on

// As it stands on disk: a line feed is a pair there.
inline std::string on_disk(std::string text)
{
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2)
        text.replace(at, 1, "\r\n");
    return text;
}

// What the message box has been shown since the last call; the MessageLog records it.
inline std::string told()
{
    std::string all;
    for (const Message& message : MessageLog::take()) {
        EXPECT_EQ(message.title, "lpread");
        all += (all.empty() ? "" : "; ") + message.text;
    }
    return all;
}

}  // namespace tarnwick
