#pragma once

#include <vector>

#include "include/tarnwick.h"
#include "interface/problem.h"

namespace tarnwick {

// The arguments of loadnlp for a model of two columns and four rows, one of each sense, whose
// matrix has five entries:
//
//     rows   x,   x + y,   y,   x y
struct FunctionModel {
    std::int32_t numcols = 2, numrows = 4, objsen = 1, matnz = 5;
    std::vector<double> c = std::vector<double>(2), b{4.0, 1.0, 2.0, 3.0};
    std::vector<char> senses{'L', 'G', 'E', 'R'};
    std::vector<std::int32_t> begins{0, 3}, counts{3, 2}, rows{0, 1, 3, 1, 2};
    std::vector<double> values = std::vector<double>(5), start{1.0, 2.0};
    std::vector<double> lower{0.0, 0.0}, upper{9.0, 9.0}, widths{0.0, 0.0, 0.0, -2.0};

    double *obj = c.data(), *rhs = b.data();
    char* sense = senses.data();
    std::int32_t *matbeg = begins.data(), *matcnt = counts.data(), *matind = rows.data();
    double *matval = values.data(), *var = start.data();
    double *lb = lower.data(), *ub = upper.data(), *rowrange = widths.data();
    TarnwickFuncEval funceval = answer;
    TarnwickJacobian jacobian = nullptr;
    Problem* lp = nullptr;

    FunctionModel() = default;
    FunctionModel(const FunctionModel&) = delete;
    FunctionModel& operator=(const FunctionModel&) = delete;
    ~FunctionModel()
    {
        if (lp) unloadprob(&lp);
    }

    // The objective is x^2 + y.
    static std::int32_t TARNWICK_CALL answer(Problem*, std::int32_t, std::int32_t numrows,
                                             double* objval, double* lhs, double* var, std::int32_t,
                                             std::int32_t)
    {
        const double g[] = {var[0], var[0] + var[1], var[1], var[0] * var[1]};
        for (std::int32_t i = 0; i < numrows; ++i) lhs[i] = g[i];
        *objval = var[0] * var[0] + var[1];
        return 0;
    }

    // 1 stands for the null handle.
    std::int32_t run()
    {
        lp = loadnlp("smooth", numcols, numrows, objsen, obj, rhs, sense, matbeg, matcnt, matind,
                     matval, var, lb, ub, rowrange, matnz, funceval, jacobian);
        return lp ? 0 : 1;
    }
    bool is_untouched() const { return !lp; }
};

}  // namespace tarnwick
