#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

#include "platform/array.h"
#include "tests/support/memory.h"

namespace tarnwick {
namespace {

TEST(ArrayBlocks, give_every_array_zeros_and_a_line_of_its_own)
{
    Vec<double> x;
    Vec<std::int32_t> labels;
    Matrix matrix;
    ArrayBlock block;
    const auto list = [&](auto& layout) {
        layout(x, 9);
        layout(labels, 0);
        layout(matrix, 2, 16);
    };
    allow_allocations(0);
    EXPECT_FALSE(block.create(list));
    EXPECT_FALSE(x);
    allow_allocations(1);
    ASSERT_TRUE(block.create(list)) << "all of it in one request";
    allow_all_allocations();

    const auto on_a_line = [](const void* p) {
        return reinterpret_cast<std::uintptr_t>(p) % 64 == 0;
    };
    EXPECT_TRUE(on_a_line(x.data()) && on_a_line(labels.data()));
    EXPECT_EQ(x.size(), 9);
    EXPECT_EQ(matrix.width(), 24) << "columns 0 to 16 and the rest of the last line";
    for (int i = 0; i <= 2; ++i) {
        EXPECT_TRUE(on_a_line(matrix[i]));
        for (int j = 0; j < matrix.width(); ++j) EXPECT_EQ(std::exchange(matrix[i][j], 5.0), 0.0);
    }
    for (int k = 0; k <= 9; ++k) EXPECT_EQ(x[k], 0.0) << "the matrix is elsewhere";
    EXPECT_EQ(labels[0], 0);
}

}  // namespace
}  // namespace tarnwick
