#pragma once

#include <algorithm>
#include <functional>
#include <iterator>
#include <vector>

#include "interface/problem.h"
#include "tests/support/olearrays.h"

namespace tarnwick {

// The arguments of loadnlp, and the model that they load. Two columns and four rows, one of each
// sense; the matrix has five entries. What the model computes is up to the test:
//
//     evaluate(x, lhs) fills lhs and gives the objective; first  x,  x + y,  y,  x y;  x^2 + y
struct FunctionModel {
    bool is_ole = false;
    std::int32_t numcols = 2, numrows = 4, objsen = 1, matnz = 5;
    OleArray<double> obj{0, 0}, rhs{4, 1, 2, 3}, matval{0, 0, 0, 0, 0}, var{1, 2};
    OleArray<double> lb{0, 0}, ub{9, 9};
    OleArray<char> sense{'L', 'G', 'E', 'R'}, objtype{'L', 'N'},
        matvaltype{'L', 'L', 'L', 'L', 'N'};
    OleArray<std::int32_t> matbeg{0, 3}, matcnt{3, 2}, matind{0, 1, 3, 1, 2};
    std::vector<double> rowrange{0, 0, 0, -2};
    TarnwickFuncEval funceval = answer;
    TarnwickJacobian jacobian = nullptr;
    Problem* lp = nullptr;

    // The one that answers, and how; a nonzero failure is what the function returns.
    static inline std::function<double(const double* x, double* lhs)> evaluate;
    static inline std::int32_t failure = 0;

    FunctionModel()
    {
        failure = 0;
        evaluate = [](const double* x, double* lhs) {
            const double g[] = {x[0], x[0] + x[1], x[1], x[0] * x[1]};
            std::copy(std::begin(g), std::end(g), lhs);
            return x[0] * x[0] + x[1];
        };
    }
    FunctionModel(const FunctionModel&) = delete;
    FunctionModel& operator=(const FunctionModel&) = delete;
    ~FunctionModel()
    {
        if (lp) unloadprob(&lp);
    }

    // 1 stands for the null handle.
    std::int32_t run()
    {
        const ArrayMode mode(is_ole);
        lp = loadnlp("smooth", numcols, numrows, objsen, obj.pass(), rhs.pass(), sense.pass(),
                     matbeg.pass(), matcnt.pass(), matind.pass(), matval.pass(), var.pass(),
                     lb.pass(), ub.pass(), rowrange.data(), matnz, funceval, jacobian);
        return lp ? 0 : 1;
    }
    bool is_untouched() const { return !lp; }
    void make_dense(std::size_t rows)
    {
        numrows = static_cast<std::int32_t>(rows);
        for (auto* array : {&matbeg, &matcnt, &matind}) array->replace(nullptr);
        matval.assign(std::vector<double>(2 * rows));
        matnz = 2 * numrows;
    }

    // True if the model keeps the references of OLE array mode.
    bool holds_references()
    {
        const OleReference all[] = {obj.reference(), matbeg.reference(), matcnt.reference(),
                                    matind.reference(), matval.reference()};
        return std::equal(std::begin(all), std::end(all), lp->olehandles);
    }

    // The data of an array that a function of the caller's is handed.
    static double* data_of(double* array)
    {
        return ole_mode() ? static_cast<double*>((*reinterpret_cast<OleReference>(array))->data)
                          : array;
    }
    static std::int32_t TARNWICK_CALL answer(Problem*, std::int32_t, std::int32_t, double* objval,
                                             double* lhs, double* var, std::int32_t, std::int32_t)
    {
        *objval = evaluate(data_of(var), data_of(lhs));
        return failure;
    }
};

}  // namespace tarnwick
