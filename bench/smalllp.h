#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "include/tarnwick.h"

namespace bench {

// One of a family of dense random linear programs,
//
//     maximise c'x   subject to   A x <= b,   x >= 0,   A of n rows and n columns.
//
// All data are positive, so that x = 0 is feasible and the optimum is finite. The matrix is held in
// each layout that a solver asks for: what a host keeps is no part of the time.
struct SmallLp {
    int n = 0;
    std::vector<double> cost, rhs;     // n
    std::vector<double> lower, upper;  // n, 0 and 1e30
    std::vector<char> sense;           // n, all <=

    // Column by column, indices from 0.
    std::vector<std::int32_t> begin;  // n + 1
    std::vector<std::int32_t> count;  // n
    std::vector<std::int32_t> row;    // n * n
    std::vector<double> value;        // n * n

    // Row by row, indices from 1.
    std::vector<int> col_from_1;       // n, the same for each row
    std::vector<double> value_by_row;  // n * n

    // Triplets in the order of the columns, indices from 1, element 0 idle.
    std::vector<int> triplet_row, triplet_col;  // n * n + 1
    std::vector<double> triplet_value;          // n * n + 1
};

// Where element k of line `line` stands in such a layout, both from 0.
inline std::size_t place(const SmallLp& lp, int line, int k)
{
    const auto start = static_cast<std::size_t>(line) * static_cast<std::size_t>(lp.n);
    return start + static_cast<std::size_t>(k);
}

// Number k of the programs of size n. The same on every machine with IEEE arithmetic.
SmallLp make_small_lp(int n, int k);

// Hands one over to the library: as columns with indices, and as a dense matrix without.
Problem* load(SmallLp& lp);
Problem* load_dense(SmallLp& lp);

// A batch is the programs 0 to count - 1 of a size.
struct Batch {
    int n;
    int count;
    double objectives;  // the sum of the optimal objectives, to 12 digits
};
std::vector<SmallLp> make_batch(const Batch& batch);

}  // namespace bench
