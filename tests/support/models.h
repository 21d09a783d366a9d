#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "include/tarnwick.h"

namespace tarnwick {

using Reals = std::vector<double>;

inline constexpr double INF = 1e30;

struct Row {
    Reals a;  // one coefficient for each column
    char sense;
    double rhs;
};

// A model with linear rows as a test writes it down. Bounds that are left out are 0 and INF, the start
// of a quadratic model is the origin.
struct LinearModel {
    std::vector<Row> rows;
    Reals obj;
    Reals lb{}, ub{};
    std::int32_t objsen = 1;
    std::vector<Reals> q{};  // rows of the quadratic part x'Qx; none: the objective is linear
    Reals start{};

    std::size_t numcols() const { return obj.size(); }
    std::size_t numrows() const { return rows.size(); }
    double lower(std::size_t j) const { return lb.empty() ? 0.0 : lb[j]; }
    double upper(std::size_t j) const { return ub.empty() ? INF : ub[j]; }
};

enum class MatrixLayout { sparse, dense };

// A loaded model and the arrays behind it, which a test may change where the library must see it.
class LoadedModel {
  public:
    explicit LoadedModel(const LinearModel& model, MatrixLayout layout = MatrixLayout::sparse);
    ~LoadedModel();
    LoadedModel(const LoadedModel&) = delete;
    LoadedModel& operator=(const LoadedModel&) = delete;

    Problem* lp = nullptr;  // null if the load was refused
    Reals obj, rhs, matval, lb, ub;
    Reals qmatval, start;  // Q column by column, dense
    std::vector<char> sense;
    std::vector<std::int32_t> matbeg, matcnt, matind;
};

// The distributions of the standard library differ between platforms; these don't.
class Draw {
  public:
    explicit Draw(unsigned seed) : bits_(seed) {}

    double unit() { return static_cast<double>(bits_()) * 0x1p-32; }
    double real(double low, double high) { return low + (high - low) * unit(); }
    bool with(double probability) { return unit() < probability; }
    int whole(int low, int high)
    {
        return low + static_cast<int>(bits_() % static_cast<unsigned>(high - low + 1));
    }

  private:
    std::mt19937 bits_;
};

// What a random model is made of. Shares are probabilities.
struct RandomShape {
    int rows, cols;
    double density = 1.0;
    bool degenerate = false;  // small whole numbers: many ties
    double boxed = 0.3, free = 0.0, fixed = 0.0;
    double equal = 0.2, greater = 0.3;
};

// A model with an optimum: a point inside the bounds meets the rows, and a dual solution with the
// right signs prices the costs.
LinearModel solvable_model(unsigned seed, const RandomShape& shape);

// A model of a few rows and columns with small whole numbers, which may be infeasible, unbounded or
// degenerate.
LinearModel tiny_model(unsigned seed);

}  // namespace tarnwick
