// The larger problems of the collection of Hock and Schittkowski (HS): engineering models, several
// rows, up to fifteen variables. Some return in the collections for search methods.

#include <numeric>

#include "bench/problems/formulas.h"

namespace tarnwick {

namespace {

using std::exp, std::log, std::pow, std::sin, std::sqrt;

double hs74_cost(Point x)
{
    return 3 * x[1] + 1e-6 * cube(x[1]) + 2 * x[2] + 2e-6 / 3 * cube(x[2]);
}

Reals hs74_rows(Point x)
{
    return {x[4] - x[3], 1000 * (sin(-x[3] - 0.25) + sin(-x[4] - 0.25)) + 894.8 - x[1],
            1000 * (sin(x[3] - 0.25) + sin(x[3] - x[4] - 0.25)) + 894.8 - x[2],
            1000 * (sin(x[4] - 0.25) + sin(x[4] - x[3] - 0.25)) + 1294.8};
}

Reals hs78_rows(Point x)
{
    return {sum_of_squares(x, 1, 5), x[2] * x[3] - 5 * x[4] * x[5], cube(x[1]) + cube(x[2])};
}

// The data of the shell problems, HS 86 and its dual, HS 117.
constexpr double SHELL_E[] = {-15, -27, -36, -18, -12};
constexpr double SHELL_D[] = {4, 8, 10, 6, 2};
constexpr double SHELL_B[] = {-40, -2, -0.25, -4, -4, -1, -40, -60, 5, 1};
constexpr double SHELL_C[5][5] = {
    {30,  -20, -10, 32,  -10},
    {-20, 39,  -6,  -31, 32 },
    {-10, -6,  10,  -6,  -10},
    {32,  -31, -6,  39,  -20},
    {-10, 32,  -10, -20, 30 }
};
constexpr double SHELL_A[10][5] = {
    {-16,  2,  0,  1,  0   },
    {0,    -2, 0,  4,  2   },
    {-3.5, 0,  2,  0,  0   },
    {0,    -2, 0,  -4, -1  },
    {0,    -9, -2, 1,  -2.8},
    {2,    0,  -4, 0,  0   },
    {-1,   -1, -1, -1, -1  },
    {-1,   -2, -3, -2, -1  },
    {1,    2,  3,  4,  5   },
    {1,    1,  1,  1,  1   }
};

double shell_primal(Point x)
{
    double f = 0.0;
    for (int j = 0; j < 5; ++j) {
        f += SHELL_E[j] * x[j + 1] + SHELL_D[j] * cube(x[j + 1]);
        for (int k = 0; k < 5; ++k) f += SHELL_C[k][j] * x[k + 1] * x[j + 1];
    }
    return f;
}

Reals shell_primal_rows(Point x)
{
    Reals g;
    for (const auto& a : SHELL_A) g.push_back(std::inner_product(a, a + 5, x.first, 0.0));
    return g;
}

double shell_dual(Point x)
{
    double f = 0.0;
    for (int i = 0; i < 10; ++i) f -= SHELL_B[i] * x[i + 1];
    for (int j = 0; j < 5; ++j) {
        f += 2 * SHELL_D[j] * cube(x[11 + j]);
        for (int k = 0; k < 5; ++k) f += SHELL_C[k][j] * x[11 + k] * x[11 + j];
    }
    return f;
}

Reals shell_dual_rows(Point x)
{
    Reals g;
    for (int j = 0; j < 5; ++j) {
        double row = 3 * SHELL_D[j] * square(x[11 + j]) + SHELL_E[j];
        for (int k = 0; k < 5; ++k) row += 2 * SHELL_C[k][j] * x[11 + k];
        for (int i = 0; i < 10; ++i) row -= SHELL_A[i][j] * x[i + 1];
        g.push_back(row);
    }
    return g;
}

double hs93_a(Point x) { return x[1] * x[4] * (x[1] + x[2] + x[3]); }
double hs93_b(Point x) { return x[2] * x[3] * (x[1] + 1.57 * x[2] + x[4]); }

double hs95_cost(Point x)
{
    return 4.3 * x[1] + 31.8 * x[2] + 63.3 * x[3] + 15.8 * x[4] + 68.5 * x[5] + 4.7 * x[6];
}

Reals hs95_rows(Point x)
{
    return {17.1 * x[1] + 38.2 * x[2] + 204.2 * x[3] + 212.3 * x[4] + 623.4 * x[5] + 1495.5 * x[6] -
                169 * x[1] * x[3] - 3580 * x[3] * x[5] - 3810 * x[4] * x[5] - 18500 * x[4] * x[6] -
                24300 * x[5] * x[6],
            17.9 * x[1] + 36.8 * x[2] + 113.9 * x[3] + 169.7 * x[4] + 337.8 * x[5] + 1385.2 * x[6] -
                139 * x[1] * x[3] - 2450 * x[4] * x[5] - 16600 * x[4] * x[6] - 17200 * x[5] * x[6],
            -273 * x[2] - 70 * x[4] - 819 * x[5] + 26000 * x[4] * x[5],
            159.9 * x[1] - 311 * x[2] + 587 * x[4] + 391 * x[5] + 2198 * x[6] -
                14000 * x[1] * x[6]};
}

double hs104(Point x)
{
    return 0.4 * pow(x[1] / x[7], 0.67) + 0.4 * pow(x[2] / x[8], 0.67) + 10 - x[1] - x[2];
}

// Chemical equilibrium; x holds the moles.
double gibbs_energy(Point x)
{
    constexpr double energy[] = {-6.089,  -17.164, -34.054, -5.914,  -24.721,
                                 -14.986, -24.100, -10.708, -26.662, -22.179};
    const double all = sum_of(x, 1, 10);
    return sum(1, 10, [&](int j) { return x[j] * (energy[j - 1] + log(x[j] / all)); });
}

Reals gibbs_rows(Point x)
{
    return {x[1] + 2 * x[2] + 2 * x[3] + x[6] + x[10], x[4] + 2 * x[5] + x[6] + x[7],
            x[3] + x[7] + x[8] + 2 * x[9] + x[10]};
}

Reals moles(Point logarithms)
{
    Reals all;
    for (int j = 1; j <= 10; ++j) all.push_back(exp(logarithms[j]));
    return all;
}

double hs118(Point x)
{
    return sum(0, 4, [x](int k) {
        const double a = x[3 * k + 1], b = x[3 * k + 2], c = x[3 * k + 3];
        return 2.3 * a + 1e-4 * square(a) + 1.7 * b + 1e-4 * square(b) + 2.2 * c +
               1.5e-4 * square(c);
    });
}

Reals hs118_rows(Point x)
{
    Reals g;
    for (int i = 1; i <= 12; ++i) g.push_back(x[i + 3] - x[i]);
    for (int k = 1; k < 15; k += 3) g.push_back(sum_of(x, k, k + 2));
    return g;
}

// clang-format off
const FunctionProblem LARGER[] = {
{.name = "HS 38", .start = {-3, -1, -3, -1}, .lower = {-10}, .upper = {10}, .optimum = 0,
    .objective = [](Point x) {
        return rosenbrock(x) + 90 * square(x[4] - square(x[3])) + square(1 - x[3]) +
               10.1 * (square(x[2] - 1) + square(x[4] - 1)) + 19.8 * (x[2] - 1) * (x[4] - 1);
    }},
{.name = "HS 71", .start = {1, 5, 5, 1}, .lower = {1}, .upper = {5}, .sense = "GE", .rhs = {25, 40}, .optimum = 17.0140173,
    .objective = [](Point x) { return x[1] * x[4] * (x[1] + x[2] + x[3]) + x[3]; },
    .rows = [](Point x) { return Reals{x[1] * x[2] * x[3] * x[4], sum_of_squares(x, 1, 4)}; }},
{.name = "HS 72", .start = {1, 1, 1, 1}, .lower = {0.001}, .upper = {4e5, 3e5, 2e5, 1e5}, .sense = "LL",
    .rhs = {0.0401, 0.010085}, .optimum = 727.67937,
    .objective = [](Point x) { return 1 + sum_of(x, 1, 4); },
    .rows = [](Point x) {
        return Reals{4 / x[1] + 2.25 / x[2] + 1 / x[3] + 0.25 / x[4], 0.16 / x[1] + 0.36 / x[2] + 0.64 / x[3] + 0.64 / x[4]};
    }},
{.name = "HS 73", .start = {1, 1, 1, 1}, .lower = {0}, .sense = "GGE", .rhs = {5, 21, 1}, .optimum = 29.894378,
    .objective = [](Point x) { return 24.55 * x[1] + 26.75 * x[2] + 39 * x[3] + 40.5 * x[4]; },
    .rows = [](Point x) {
        return Reals{2.3 * x[1] + 5.6 * x[2] + 11.1 * x[3] + 1.3 * x[4],
                     12 * x[1] + 11.9 * x[2] + 41.8 * x[3] + 52.1 * x[4] -
                         1.645 * sqrt(0.28 * square(x[1]) + 0.19 * square(x[2]) + 20.5 * square(x[3]) + 0.62 * square(x[4])),
                     sum_of(x, 1, 4)};
    }},
{.name = "HS 74 with its two rows as a range", .start = {0, 0, 0, 0}, .lower = {0, 0, -0.55, -0.55},
    .upper = {1200, 1200, 0.55, 0.55}, .sense = "REEE", .rhs = {-0.55, 0, 0, 0}, .range = {1.1, 0, 0, 0}, .optimum = 5126.4981,
    .objective = hs74_cost, .rows = hs74_rows},
{.name = "HS 75 with its two rows as a range", .start = {0, 0, 0, 0}, .lower = {0, 0, -0.48, -0.48},
    .upper = {1200, 1200, 0.48, 0.48}, .sense = "REEE", .rhs = {0.48, 0, 0, 0}, .range = {-0.96, 0, 0, 0}, .optimum = 5174.4129,
    .objective = hs74_cost, .rows = hs74_rows},
{.name = "HS 76", .start = {0.5, 0.5, 0.5, 0.5}, .lower = {0}, .sense = "LLG", .rhs = {5, 4, 1.5}, .optimum = -4.681818182,
    .objective = [](Point x) {
        return square(x[1]) + 0.5 * square(x[2]) + square(x[3]) + 0.5 * square(x[4]) - x[1] * x[3] +
               x[3] * x[4] - x[1] - 3 * x[2] + x[3] - x[4];
    },
    .rows = [](Point x) { return Reals{x[1] + 2 * x[2] + x[3] + x[4], 3 * x[1] + x[2] + 2 * x[3] - x[4], x[2] + 4 * x[3]}; }},
{.name = "HS 77", .start = {2, 2, 2, 2, 2}, .sense = "EE", .rhs = {2 * ROOT2, 8 + ROOT2}, .optimum = 0.24150513,
    .objective = [](Point x) { return square(x[1] - 1) + square(x[1] - x[2]) + square(x[3] - 1) + fourth(x[4] - 1) + sixth(x[5] - 1); },
    .rows = [](Point x) { return Reals{square(x[1]) * x[4] + sin(x[4] - x[5]), x[2] + fourth(x[3]) * square(x[4])}; }},
{.name = "HS 78", .start = {-2, 1.5, 2, -1, -1}, .sense = "EEE", .rhs = {10, 0, -1}, .optimum = -2.91970041,
    .objective = [](Point x) { return product_of(x, 1, 5); }, .rows = hs78_rows},
{.name = "HS 79", .start = {2, 2, 2, 2, 2}, .sense = "EEE", .rhs = {2 + 3 * ROOT2, 2 * ROOT2 - 2, 2}, .optimum = 0.0787768209,
    .objective = [](Point x) {
        return square(x[1] - 1) + square(x[1] - x[2]) + square(x[2] - x[3]) + fourth(x[3] - x[4]) + fourth(x[4] - x[5]);
    },
    .rows = [](Point x) { return Reals{x[1] + square(x[2]) + cube(x[3]), x[2] - square(x[3]) + x[4], x[1] * x[5]}; }},
{.name = "HS 80", .start = {-2, 2, 2, -1, -1}, .lower = {-2.3, -2.3, -3.2, -3.2, -3.2}, .upper = {2.3, 2.3, 3.2, 3.2, 3.2},
    .sense = "EEE", .rhs = {10, 0, -1}, .optimum = 0.0539498478,
    .objective = [](Point x) { return exp(product_of(x, 1, 5)); }, .rows = hs78_rows},
{.name = "HS 81", .start = {-2, 2, 2, -1, -1}, .lower = {-2.3, -2.3, -3.2, -3.2, -3.2}, .upper = {2.3, 2.3, 3.2, 3.2, 3.2},
    .sense = "EEE", .rhs = {10, 0, -1}, .optimum = 0.0539498478,
    .objective = [](Point x) { return exp(product_of(x, 1, 5)) - 0.5 * square(cube(x[1]) + cube(x[2]) + 1); }, .rows = hs78_rows},
{.name = "HS 83: three ranges", .start = {78, 33, 27, 27, 27}, .lower = {78, 33, 27, 27, 27}, .upper = {102, 45, 45, 45, 45},
    .sense = "RRR", .rhs = {0, 110, 20}, .range = {92, -20, 5}, .optimum = -30665.53867,
    .best = {78, 33, 29.995256025681599, 45, 36.775812905788207},
    .objective = [](Point x) { return 5.3578547 * square(x[3]) + 0.8356891 * x[1] * x[5] + 37.293239 * x[1] - 40792.141; },
    .rows = [](Point x) {
        return Reals{85.334407 + 0.0056858 * x[2] * x[5] + 0.0006262 * x[1] * x[4] - 0.0022053 * x[3] * x[5],
                     80.51249 + 0.0071317 * x[2] * x[5] + 0.0029955 * x[1] * x[2] + 0.0021813 * square(x[3]),
                     9.300961 + 0.0047026 * x[3] * x[5] + 0.0012547 * x[1] * x[3] + 0.0019085 * x[3] * x[4]};
    }},
{.name = "HS 86", .start = {0, 0, 0, 0, 1}, .lower = {0}, .sense = "GGGGGGGGGG", .rhs = {std::begin(SHELL_B), std::end(SHELL_B)},
    .optimum = -32.34867897, .objective = shell_primal, .rows = shell_primal_rows},
{.name = "HS 93", .start = {5.54, 4.4, 12.02, 11.82, 0.702, 0.852}, .lower = {0}, .sense = "GL", .rhs = {2.07, 1},
    .optimum = 135.075961,
    .objective = [](Point x) {
        return 0.0204 * hs93_a(x) + 0.0187 * hs93_b(x) + 0.0607 * hs93_a(x) * square(x[5]) + 0.0437 * hs93_b(x) * square(x[6]);
    },
    .rows = [](Point x) {
        return Reals{0.001 * x[1] * x[2] * x[3] * x[4] * x[5] * x[6],
                     0.00062 * hs93_a(x) * square(x[5]) + 0.00058 * hs93_b(x) * square(x[6])};
    }},
{.name = "HS 95", .start = {0, 0, 0, 0, 0, 0}, .lower = {0}, .upper = {0.31, 0.046, 0.068, 0.042, 0.028, 0.0134},
    .sense = "GGGG", .rhs = {4.97, -1.88, -29.08, -78.02}, .optimum = 0.015619514, .objective = hs95_cost, .rows = hs95_rows},
{.name = "HS 96", .start = {0, 0, 0, 0, 0, 0}, .lower = {0}, .upper = {0.31, 0.046, 0.068, 0.042, 0.028, 0.0134},
    .sense = "GGGG", .rhs = {4.97, -1.88, -69.08, -118.02}, .optimum = 0.015619514, .objective = hs95_cost, .rows = hs95_rows},
{.name = "HS 100", .start = {1, 2, 0, 4, 0, 1, 1}, .sense = "LLLL", .rhs = {127, 282, 196, 0}, .optimum = 680.6300573,
    .best = {2.33049935147405174, 1.95137236847114592, -0.477541399510615805, 4.36572624923625874,
             -0.624486959100388983, 1.03813099410962173, 1.5942266780671519},
    .objective = [](Point x) {
        return square(x[1] - 10) + 5 * square(x[2] - 12) + fourth(x[3]) + 3 * square(x[4] - 11) + 10 * sixth(x[5]) +
               7 * square(x[6]) + fourth(x[7]) - 4 * x[6] * x[7] - 10 * x[6] - 8 * x[7];
    },
    .rows = [](Point x) {
        return Reals{2 * square(x[1]) + 3 * fourth(x[2]) + x[3] + 4 * square(x[4]) + 5 * x[5],
                     7 * x[1] + 3 * x[2] + 10 * square(x[3]) + x[4] - x[5],
                     23 * x[1] + square(x[2]) + 6 * square(x[6]) - 8 * x[7],
                     4 * square(x[1]) + square(x[2]) - 3 * x[1] * x[2] + 2 * square(x[3]) + 5 * x[6] - 11 * x[7]};
    }},
{.name = "HS 104: the objective is a row as well", .start = {6, 3, 0.4, 0.2, 6, 6, 1, 0.5}, .lower = {0.1}, .upper = {10},
    .sense = "LLLLR", .rhs = {1}, .range = {3.2}, .optimum = 3.9511634396, .objective = hs104,
    .rows = [](Point x) {
        return Reals{0.0588 * x[5] * x[7] + 0.1 * x[1], 0.0588 * x[6] * x[8] + 0.1 * x[1] + 0.1 * x[2],
                     4 * x[3] / x[5] + 2 * pow(x[3], -0.71) / x[5] + 0.0588 * pow(x[3], -1.3) * x[7],
                     4 * x[4] / x[6] + 2 * pow(x[4], -0.71) / x[6] + 0.0588 * pow(x[4], -1.3) * x[8], hs104(x)};
    }},
{.name = "HS 106", .start = {5000, 5000, 5000, 200, 350, 150, 225, 425}, .lower = {100, 1000, 1000, 10, 10, 10, 10, 10},
    .upper = {10000, 10000, 10000, 1000, 1000, 1000, 1000, 1000}, .sense = "LLLGGG",
    .rhs = {1, 1, 1, -83333.333, 0, 1250000}, .optimum = 7049.248,
    .objective = [](Point x) { return x[1] + x[2] + x[3]; },
    .rows = [](Point x) {
        return Reals{0.0025 * (x[4] + x[6]), 0.0025 * (x[5] + x[7] - x[4]), 0.01 * (x[8] - x[5]),
                     x[1] * x[6] - 833.33252 * x[4] - 100 * x[1], x[2] * x[7] - 1250 * x[5] - x[2] * x[4] + 1250 * x[4],
                     x[3] * x[8] - x[3] * x[5] + 2500 * x[5]};
    }},
{.name = "HS 108", .start = Reals(9, 1.0), .lower = {-INF, -INF, -INF, -INF, -INF, -INF, -INF, -INF, 0}, .sense = "LLLLLLLLLGGLG",
    .rhs = {1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0}, .optimum = -0.8660254038,
    .objective = [](Point x) { return -0.5 * (x[1] * x[4] - x[2] * x[3] + x[3] * x[9] - x[5] * x[9] + (x[5] * x[8] - x[6] * x[7])); },
    .rows = [](Point x) {
        return Reals{square(x[3]) + square(x[4]), square(x[9]), square(x[5]) + square(x[6]),
                     square(x[1]) + square(x[2] - x[9]), square(x[1] - x[5]) + square(x[2] - x[6]),
                     square(x[1] - x[7]) + square(x[2] - x[8]), square(x[3] - x[5]) + square(x[4] - x[6]),
                     square(x[3] - x[7]) + square(x[4] - x[8]), square(x[7]) + square(x[8] - x[9]), x[1] * x[4] - x[2] * x[3],
                     x[3] * x[9], x[5] * x[9], x[5] * x[8] - x[6] * x[7]};
    }},
{.name = "HS 110", .start = Reals(10, 9.0), .lower = {2.001}, .upper = {9.999}, .optimum = -45.77846971,
    .objective = [](Point x) {
        return sum(1, 10, [x](int j) { return square(log(x[j] - 2)) + square(log(10 - x[j])); }) - pow(product_of(x, 1, 10), 0.2);
    }},
{.name = "HS 111", .start = Reals(10, -2.3), .lower = {-100}, .upper = {100}, .sense = "EEE", .rhs = {2, 1, 1},
    .optimum = -47.76109026,
    .objective = [](Point x) { return gibbs_energy({moles(x).data()}); },
    .rows = [](Point x) { return gibbs_rows({moles(x).data()}); }},
{.name = "HS 112", .start = Reals(10, 0.1), .lower = {1e-6}, .sense = "EEE", .rhs = {2, 1, 1}, .optimum = -47.76109026,
    .objective = gibbs_energy, .rows = gibbs_rows},
{.name = "HS 113", .start = {2, 3, 5, 5, 1, 2, 7, 3, 6, 10}, .sense = "LLLLLLLL",
    .rhs = {105, 0, 12, 120, 40, 30, 0, 0}, .optimum = 24.3062091,
    .best = {2.17199634142692, 2.3636830416034, 8.77392573913157, 5.09598443745173, 0.990654756560493,
             1.43057392853463, 1.32164415364306, 9.82872576524495, 8.2800915887356, 8.3759266477347},
    .objective = [](Point x) {
        return square(x[1]) + square(x[2]) + x[1] * x[2] - 14 * x[1] - 16 * x[2] + square(x[3] - 10) +
               4 * square(x[4] - 5) + square(x[5] - 3) + 2 * square(x[6] - 1) + 5 * square(x[7]) +
               7 * square(x[8] - 11) + 2 * square(x[9] - 10) + square(x[10] - 7) + 45;
    },
    .rows = [](Point x) {
        return Reals{4 * x[1] + 5 * x[2] - 3 * x[7] + 9 * x[8], 10 * x[1] - 8 * x[2] - 17 * x[7] + 2 * x[8],
                     -8 * x[1] + 2 * x[2] + 5 * x[9] - 2 * x[10],
                     3 * square(x[1] - 2) + 4 * square(x[2] - 3) + 2 * square(x[3]) - 7 * x[4],
                     5 * square(x[1]) + 8 * x[2] + square(x[3] - 6) - 2 * x[4],
                     0.5 * square(x[1] - 8) + 2 * square(x[2] - 4) + 3 * square(x[5]) - x[6],
                     square(x[1]) + 2 * square(x[2] - 2) - 2 * x[1] * x[2] + 14 * x[5] - 6 * x[6],
                     -3 * x[1] + 6 * x[2] + 12 * square(x[9] - 8) - 7 * x[10]};
    }},
{.name = "HS 117", .start = {1e-3, 1e-3, 1e-3, 1e-3, 1e-3, 1e-3, 60, 1e-3, 1e-3, 1e-3, 1e-3, 1e-3, 1e-3, 1e-3, 1e-3},
    .lower = {0}, .sense = "GGGGG", .optimum = 32.34867897,
    .objective = shell_dual, .rows = shell_dual_rows},
{.name = "HS 118: twelve ranges", .start = {20, 55, 15, 20, 60, 20, 20, 60, 20, 20, 60, 20, 20, 60, 20},
    .lower = {8, 43, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    .upper = {21, 57, 16, 90, 120, 60, 90, 120, 60, 90, 120, 60, 90, 120, 60}, .sense = "RRRRRRRRRRRRGGGGG",
    .rhs = {-7, -7, -7, -7, -7, -7, -7, -7, -7, -7, -7, -7, 60, 50, 70, 85, 100},
    .range = {13, 14, 13, 13, 14, 13, 13, 14, 13, 13, 14, 13, 0, 0, 0, 0, 0}, .optimum = 664.82045,
    .objective = hs118, .rows = hs118_rows},
};
// clang-format on

}  // namespace

std::span<const FunctionProblem> larger_book_problems() { return LARGER; }

}  // namespace tarnwick
