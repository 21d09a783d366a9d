#pragma once

#include <gtest/gtest.h>

#include "control/services.h"
#include "interface/problem.h"
#include "tests/support/models.h"

namespace tarnwick {

using Ints = std::vector<std::int32_t>;

// clang-format off
inline const LinearModel SERVED{{{{1, 0}, 'L', 2}, {{0, 3}, 'G', -1}, {{2, 1}, 'E', 0}, {{1, 1}, 'L', 4}},
                                {5, 0}, {-1, -9}, {INF, 9}};
// clang-format on

// The first takes two steps, both of phase two; the second begins with two of phase one.
// clang-format off
inline const LinearModel FEASIBLE_AT_ONCE{{{{1, 0}, 'L', 2}, {{0, 1}, 'L', 3}, {{1, 1}, 'L', 5}}, {-3, -2}};
inline const LinearModel TWO_PHASES{{{{1, 1, 0}, 'G', 2}, {{1, 0, 1}, 'E', 3}, {{1, 1, 1}, 'L', 9}}, {-1, -2, -3}};
// clang-format on

// A model with rows of every sense, as the services see it outside a run. The last row is ranged,
// from 1 to 4. The elastic variables belong to the rows -1, +2, +3, -3, -4.
struct ServedModel : LoadedModel {
    Reals x = Reals(8), ranges{0, 0, 0, -3}, start{7, 8}, q{1, 2, 0, -1};
    SolveControl* control;

    explicit ServedModel(std::int32_t type = PROB_LP, MatrixLayout layout = MatrixLayout::sparse)
        : LoadedModel(SERVED, layout), control(&lp->control)
    {
        lp->sense[3] = 'R';
        lp->rowrange = ranges.data();
        lp->problemtype = type;
        lp->x = x.data();
        lp->var = start.data();
        lp->qmatval = q.data();
    }
    void make_elastic(std::uint16_t mode = 1)
    {
        control->elasticmode = mode;
        EXPECT_EQ(beginrun(control, 0), 1);
    }
};

}  // namespace tarnwick
