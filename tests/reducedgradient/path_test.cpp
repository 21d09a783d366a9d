#include <gtest/gtest.h>

#include <cmath>

#include "tests/reducedgradient/smoothmodel.h"

namespace tarnwick {
namespace {

// Linear rows a'x, one after the other, with the costs first.
SmoothFunctions linear(std::vector<Reals> a)
{
    return [a](const Reals& x, double& objective, Reals& rows) {
        const auto product = [&x](const Reals& c) {
            double sum = 0.0;
            for (std::size_t j = 0; j < x.size(); ++j) sum += c[j] * x[j];
            return sum;
        };
        objective = product(a[0]);
        for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = product(a[i + 1]);
        return true;
    };
}

// Models whose path is known by hand to touch a place where the bookkeeping of the basis, of phase 1
// or of the search can go wrong; each would end with a good status at a wrong point.
const struct {
    Smooth model;
    double optimum;
} CASES[] = {
    {{.name = "an exchange moves superbasics down beside one on its bound",
      .variables = 3,
      .functions = linear({{-3, 5, -1}, {0, 2, -1}}),
      .senses = "E",
      .rhs = {2},
      .start = {0, 1, 0},
      .lb = {0, 0, 0},
      .ub = {2, 1, 1}},
     -1.0 },
 // The cone lies between y = x / 3 and y = x; the other four rows bind at the start alone.
    {{.name = "more binding rows than variables",
      .variables = 2,
      .functions = linear({{-1, -1}, {-2, 1}, {1, -3}, {-3, 1}, {-1, -1}, {-1, 0.5}, {-1, 1}}),
      .senses = "LLLLLL",
      .lb = {-5, -5},
      .ub = {5, 5}},
     -10.0},
    {{.name = "phase 1 hits bounds on its way",
      .variables = 2,
      .functions = linear({{1, 4}, {-1, -2}, {1, -1}, {2, 1}}),
      .senses = "LLE",
      .rhs = {-1, -0.5, 0.5},
      .start = {0, 0.3}},
     2.0  },
    {{.name = "equal bounds leave no way down",
      .variables = 2,
      .functions =
          [](const Reals& x, double& f, Reals&) {
              f = -10 * x[0] + (x[1] - 1) * (x[1] - 1);
              return true;
          },
      .start = {4, 3},
      .lb = {4, -INF},
      .ub = {4, INF}},
     -40.0},
};

TEST(SmoothPaths, end_at_the_optimum)
{
    for (const auto& c : CASES)
        for (const std::int32_t scaling : {-1, 0})
            for (const std::int32_t derivmode : {0, 1}) {
                SCOPED_TRACE(testing::Message() << c.model.name << ", scaling " << scaling
                                                << ", derivatives " << derivmode);
                SmoothHost host(c.model);
                setintparam(host.lp, PARAM_SCALING, scaling);
                setintparam(host.lp, PARAM_NLPDERIVMODE, derivmode);
                const Answer answer = host.solve();
                EXPECT_TRUE(answer.status == STAT_OPTIMAL || answer.status == STAT_CONVERGED)
                    << answer.status;
                EXPECT_NEAR(answer.objval, c.optimum, 1e-5);
            }
}

}  // namespace
}  // namespace tarnwick
