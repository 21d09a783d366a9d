// The small problems of W. Hock and K. Schittkowski, Test Examples for Nonlinear Programming Codes,
// Springer 1981 (HS): a row or two, mostly of two to five variables. Starts and optima are the
// book's; where it gives the optimum in closed form, that form stands here. A row g(x) >= 0 of the
// book keeps its constant on the left.

#include "bench/problems/formulas.h"

namespace tarnwick {

namespace {

using std::cos, std::exp, std::log, std::sin, std::sqrt;

// HS 51 to 53 share their rows and all of the objective but the first square.
Reals hs52_rows(Point x) { return {x[1] + 3 * x[2], x[3] + x[4] - 2 * x[5], x[2] - x[5]}; }

double hs52_rest(Point x) { return square(x[2] + x[3] - 2) + square(x[4] - 1) + square(x[5] - 1); }

Reals hs56_start()
{
    const double a = std::asin(sqrt(1 / 4.2)), b = std::asin(sqrt(5 / 7.2));
    return {1, 1, 1, a, a, a, b};
}

// clang-format off
const FunctionProblem SMALL[] = {
{.name = "HS 1", .start = {-2, 1}, .lower = {-INF, -1.5}, .optimum = 0, .objective = rosenbrock},
{.name = "HS 2", .start = {-2, 1}, .lower = {-INF, 1.5}, .optimum = 0.0504261879, .local = {4.941229318},
    .objective = rosenbrock},
{.name = "HS 3", .start = {10, 1}, .lower = {-INF, 0}, .optimum = 0,
    .objective = [](Point x) { return x[2] + 1e-5 * square(x[2] - x[1]); }},
{.name = "HS 4", .start = {1.125, 0.125}, .lower = {1, 0}, .optimum = 8.0 / 3,
    .objective = [](Point x) { return cube(x[1] + 1) / 3 + x[2]; }},
{.name = "HS 5", .start = {0, 0}, .lower = {-1.5, -3}, .upper = {4, 3}, .optimum = -ROOT3 / 2 - M_PI / 3,
    .objective = [](Point x) { return sin(x[1] + x[2]) + square(x[1] - x[2]) - 1.5 * x[1] + 2.5 * x[2] + 1; }},
{.name = "HS 6", .start = {-1.2, 1}, .sense = "E", .optimum = 0,
    .objective = [](Point x) { return square(1 - x[1]); },
    .rows = [](Point x) { return Reals{10 * (x[2] - square(x[1]))}; }},
{.name = "HS 7", .start = {2, 2}, .sense = "E", .rhs = {4}, .optimum = -ROOT3,
    .objective = [](Point x) { return log(1 + square(x[1])) - x[2]; },
    .rows = [](Point x) { return Reals{square(1 + square(x[1])) + square(x[2])}; }},
{.name = "HS 8", .start = {2, 1}, .sense = "EE", .rhs = {25, 9}, .optimum = -1,
    .objective = [](Point) { return -1.0; },
    .rows = [](Point x) { return Reals{square(x[1]) + square(x[2]), x[1] * x[2]}; }},
{.name = "HS 9", .start = {0, 0}, .sense = "E", .optimum = -0.5,
    .objective = [](Point x) { return sin(M_PI * x[1] / 12) * cos(M_PI * x[2] / 16); },
    .rows = [](Point x) { return Reals{4 * x[1] - 3 * x[2]}; }},
{.name = "HS 10", .start = {-10, 10}, .sense = "G", .optimum = -1,
    .objective = [](Point x) { return x[1] - x[2]; },
    .rows = [](Point x) { return Reals{-3 * square(x[1]) + 2 * x[1] * x[2] - square(x[2]) + 1}; }},
{.name = "HS 11", .start = {4.9, 0.1}, .sense = "G", .optimum = -8.498464223,
    .objective = [](Point x) { return square(x[1] - 5) + square(x[2]) - 25; },
    .rows = [](Point x) { return Reals{x[2] - square(x[1])}; }},
{.name = "HS 12", .start = {0, 0}, .sense = "L", .rhs = {25}, .optimum = -30,
    .objective = [](Point x) { return 0.5 * square(x[1]) + square(x[2]) - x[1] * x[2] - 7 * x[1] - 7 * x[2]; },
    .rows = [](Point x) { return Reals{4 * square(x[1]) + square(x[2])}; }},
{.name = "HS 13: no constraint qualification", .start = {-2, -2}, .lower = {0}, .sense = "G", .optimum = 1,
    .objective = [](Point x) { return square(x[1] - 2) + square(x[2]); },
    .rows = [](Point x) { return Reals{cube(1 - x[1]) - x[2]}; }},
{.name = "HS 14", .start = {2, 2}, .sense = "GE", .optimum = 9 - 2.875 * ROOT7,
    .objective = [](Point x) { return square(x[1] - 2) + square(x[2] - 1); },
    .rows = [](Point x) { return Reals{1 - square(x[1]) / 4 - square(x[2]), x[1] - 2 * x[2] + 1}; }},
{.name = "HS 15", .start = {-2, 1}, .upper = {0.5, INF}, .sense = "GG", .rhs = {1, 0}, .optimum = 306.5,
    .objective = rosenbrock,
    .rows = [](Point x) { return Reals{x[1] * x[2], x[1] + square(x[2])}; }},
{.name = "HS 16", .start = {-2, 1}, .lower = {-0.5, -INF}, .upper = {0.5, 1}, .sense = "GG", .optimum = 0.25,
    .local = {100 * square(1 / ROOT2 - 0.25) + 2.25},
    .objective = rosenbrock,
    .rows = [](Point x) { return Reals{x[1] + square(x[2]), square(x[1]) + x[2]}; }},
{.name = "HS 17", .start = {-2, 1}, .lower = {-0.5, -INF}, .upper = {0.5, 1}, .sense = "GG", .optimum = 1,
    .objective = rosenbrock,
    .rows = [](Point x) { return Reals{square(x[2]) - x[1], square(x[1]) - x[2]}; }},
{.name = "HS 18", .start = {2, 2}, .lower = {2, 0}, .upper = {50}, .sense = "GG", .rhs = {25}, .optimum = 5,
    .objective = [](Point x) { return 0.01 * square(x[1]) + square(x[2]); },
    .rows = [](Point x) { return Reals{x[1] * x[2], square(x[1]) + square(x[2])}; }},
{.name = "HS 19", .start = {20.1, 5.84}, .lower = {13, 0}, .upper = {100}, .sense = "GL", .rhs = {100, 82.81},
    .optimum = -6961.81388, .best = {14.095, 0.84296079},
    .objective = [](Point x) { return cube(x[1] - 10) + cube(x[2] - 20); },
    .rows = [](Point x) { return Reals{square(x[1] - 5) + square(x[2] - 5), square(x[1] - 6) + square(x[2] - 5)}; }},
{.name = "HS 20", .start = {-2, 1}, .lower = {-0.5, -INF}, .upper = {0.5, INF}, .sense = "GGG",
    .rhs = {0, 0, 1}, .optimum = 81.5 - 25 * ROOT3, .local = {83.5 - 25 * ROOT3},
    .objective = rosenbrock,
    .rows = [](Point x) { return Reals{x[1] + square(x[2]), square(x[1]) + x[2], square(x[1]) + square(x[2])}; }},
{.name = "HS 21", .start = {-1, -1}, .lower = {2, -50}, .upper = {50}, .sense = "G", .rhs = {10}, .optimum = -99.96,
    .objective = [](Point x) { return 0.01 * square(x[1]) + square(x[2]) - 100; },
    .rows = [](Point x) { return Reals{10 * x[1] - x[2]}; }},
{.name = "HS 22", .start = {2, 2}, .sense = "LG", .rhs = {2, 0}, .optimum = 1,
    .objective = [](Point x) { return square(x[1] - 2) + square(x[2] - 1); },
    .rows = [](Point x) { return Reals{x[1] + x[2], x[2] - square(x[1])}; }},
{.name = "HS 23", .start = {3, 1}, .lower = {-50}, .upper = {50}, .sense = "GGGGG", .rhs = {1, 1, 9, 0, 0}, .optimum = 2,
    .objective = [](Point x) { return square(x[1]) + square(x[2]); },
    .rows = [](Point x) {
        return Reals{x[1] + x[2], square(x[1]) + square(x[2]), 9 * square(x[1]) + square(x[2]), square(x[1]) - x[2],
                     square(x[2]) - x[1]};
    }},
{.name = "HS 24", .start = {1, 0.5}, .lower = {0}, .sense = "GGL", .rhs = {0, 0, 6}, .optimum = -1,
    .objective = [](Point x) { return (square(x[1] - 3) - 9) * cube(x[2]) / (27 * ROOT3); },
    .rows = [](Point x) { return Reals{x[1] / ROOT3 - x[2], x[1] + ROOT3 * x[2], x[1] + ROOT3 * x[2]}; }},
{.name = "HS 26", .start = {-2.6, 2, 2}, .sense = "E", .rhs = {3}, .optimum = 0,
    .objective = [](Point x) { return square(x[1] - x[2]) + fourth(x[2] - x[3]); },
    .rows = [](Point x) { return Reals{(1 + square(x[2])) * x[1] + fourth(x[3])}; }},
{.name = "HS 27", .start = {2, 2, 2}, .sense = "E", .rhs = {-1}, .optimum = 0.04,
    .objective = [](Point x) { return 0.01 * square(x[1] - 1) + square(x[2] - square(x[1])); },
    .rows = [](Point x) { return Reals{x[1] + square(x[3])}; }},
{.name = "HS 28", .start = {-4, 1, 1}, .sense = "E", .rhs = {1}, .optimum = 0,
    .objective = [](Point x) { return square(x[1] + x[2]) + square(x[2] + x[3]); },
    .rows = [](Point x) { return Reals{x[1] + 2 * x[2] + 3 * x[3]}; }},
{.name = "HS 29", .start = {1, 1, 1}, .sense = "L", .rhs = {48}, .optimum = -16 * ROOT2,
    .objective = [](Point x) { return -x[1] * x[2] * x[3]; },
    .rows = [](Point x) { return Reals{square(x[1]) + 2 * square(x[2]) + 4 * square(x[3])}; }},
{.name = "HS 30", .start = {1, 1, 1}, .lower = {1, -10, -10}, .upper = {10}, .sense = "G", .rhs = {1}, .optimum = 1,
    .objective = [](Point x) { return sum_of_squares(x, 1, 3); },
    .rows = [](Point x) { return Reals{square(x[1]) + square(x[2])}; }},
{.name = "HS 31", .start = {1, 1, 1}, .lower = {-10, 1, -10}, .upper = {10, 10, 1}, .sense = "G", .rhs = {1}, .optimum = 6,
    .objective = [](Point x) { return 9 * square(x[1]) + square(x[2]) + 9 * square(x[3]); },
    .rows = [](Point x) { return Reals{x[1] * x[2]}; }},
{.name = "HS 32", .start = {0.1, 0.7, 0.2}, .lower = {0}, .sense = "GE", .rhs = {3, 1}, .optimum = 1,
    .objective = [](Point x) { return square(x[1] + 3 * x[2] + x[3]) + 4 * square(x[1] - x[2]); },
    .rows = [](Point x) { return Reals{6 * x[2] + 4 * x[3] - cube(x[1]), x[1] + x[2] + x[3]}; }},
{.name = "HS 33", .start = {0, 0, 3}, .lower = {0}, .upper = {INF, INF, 5}, .sense = "GG", .rhs = {0, 4}, .optimum = ROOT2 - 6,
    .local = {-4},
    .objective = [](Point x) { return (x[1] - 1) * (x[1] - 2) * (x[1] - 3) + x[3]; },
    .rows = [](Point x) { return Reals{square(x[3]) - square(x[2]) - square(x[1]), sum_of_squares(x, 1, 3)}; }},
{.name = "HS 34", .start = {0, 1.05, 2.9}, .lower = {0}, .upper = {100, 100, 10}, .sense = "GG", .optimum = -log(log(10.0)),
    .objective = [](Point x) { return -x[1]; },
    .rows = [](Point x) { return Reals{x[2] - exp(x[1]), x[3] - exp(x[2])}; }},
{.name = "HS 35", .start = {0.5, 0.5, 0.5}, .lower = {0}, .sense = "L", .rhs = {3}, .optimum = 1.0 / 9,
    .objective = [](Point x) {
        return 9 - 8 * x[1] - 6 * x[2] - 4 * x[3] + 2 * square(x[1]) + 2 * square(x[2]) + square(x[3]) +
               2 * x[1] * x[2] + 2 * x[1] * x[3];
    },
    .rows = [](Point x) { return Reals{x[1] + x[2] + 2 * x[3]}; }},
{.name = "HS 36", .start = {10, 10, 10}, .lower = {0}, .upper = {20, 11, 42}, .sense = "L", .rhs = {72}, .optimum = -3300,
    .objective = [](Point x) { return -x[1] * x[2] * x[3]; },
    .rows = [](Point x) { return Reals{x[1] + 2 * x[2] + 2 * x[3]}; }},
{.name = "HS 37 as a maximisation with one range", .start = {10, 10, 10}, .lower = {0}, .upper = {42},
    .sense = "R", .rhs = {72}, .range = {-72}, .optimum = 3456, .objsen = -1,
    .objective = [](Point x) { return x[1] * x[2] * x[3]; },
    .rows = [](Point x) { return Reals{x[1] + 2 * x[2] + 2 * x[3]}; }},
{.name = "HS 39", .start = {2, 2, 2, 2}, .sense = "EE", .optimum = -1,
    .objective = [](Point x) { return -x[1]; },
    .rows = [](Point x) { return Reals{x[2] - cube(x[1]) - square(x[3]), square(x[1]) - x[2] - square(x[4])}; }},
{.name = "HS 40", .start = {0.8, 0.8, 0.8, 0.8}, .sense = "EEE", .rhs = {1, 0, 0}, .optimum = -0.25,
    .objective = [](Point x) { return -x[1] * x[2] * x[3] * x[4]; },
    .rows = [](Point x) { return Reals{cube(x[1]) + square(x[2]), square(x[1]) * x[4] - x[3], square(x[4]) - x[2]}; }},
{.name = "HS 41", .start = {2, 2, 2, 2}, .lower = {0}, .upper = {1, 1, 1, 2}, .sense = "E", .optimum = 52.0 / 27,
    .objective = [](Point x) { return 2 - x[1] * x[2] * x[3]; },
    .rows = [](Point x) { return Reals{x[1] + 2 * x[2] + 2 * x[3] - x[4]}; }},
{.name = "HS 42", .start = {1, 1, 1, 1}, .sense = "EE", .rhs = {2}, .optimum = 28 - 10 * ROOT2,
    .objective = [](Point x) { return square(x[1] - 1) + square(x[2] - 2) + square(x[3] - 3) + square(x[4] - 4); },
    .rows = [](Point x) { return Reals{x[1], square(x[3]) + square(x[4])}; }},
{.name = "HS 43", .start = {0, 0, 0, 0}, .sense = "LLL", .rhs = {8, 10, 5}, .optimum = -44, .best = {0, 1, 2, -1},
    .objective = [](Point x) {
        return square(x[1]) + square(x[2]) + 2 * square(x[3]) + square(x[4]) - 5 * x[1] - 5 * x[2] -
               21 * x[3] + 7 * x[4];
    },
    .rows = [](Point x) {
        return Reals{sum_of_squares(x, 1, 4) + x[1] - x[2] + x[3] - x[4],
                     square(x[1]) + 2 * square(x[2]) + square(x[3]) + 2 * square(x[4]) - x[1] - x[4],
                     2 * square(x[1]) + square(x[2]) + square(x[3]) + 2 * x[1] - x[2] - x[4]};
    }},
{.name = "HS 44", .start = {0, 0, 0, 0}, .lower = {0}, .sense = "LLLLLL", .rhs = {8, 12, 12, 8, 8, 5}, .optimum = -15,
    .objective = [](Point x) { return x[1] - x[2] - x[3] - x[1] * x[3] + x[1] * x[4] + x[2] * x[3] - x[2] * x[4]; },
    .rows = [](Point x) {
        return Reals{x[1] + 2 * x[2], 4 * x[1] + x[2], 3 * x[1] + 4 * x[2], 2 * x[3] + x[4], x[3] + 2 * x[4], x[3] + x[4]};
    }},
{.name = "HS 45", .start = {2, 2, 2, 2, 2}, .lower = {0}, .upper = {1, 2, 3, 4, 5}, .optimum = 1,
    .objective = [](Point x) { return 2 - x[1] * x[2] * x[3] * x[4] * x[5] / 120; }},
{.name = "HS 46", .start = {ROOT2 / 2, 1.75, 0.5, 2, 2}, .sense = "EE", .rhs = {1, 2}, .optimum = 0,
    .objective = [](Point x) { return square(x[1] - x[2]) + square(x[3] - 1) + fourth(x[4] - 1) + sixth(x[5] - 1); },
    .rows = [](Point x) { return Reals{square(x[1]) * x[4] + sin(x[4] - x[5]), x[2] + fourth(x[3]) * square(x[4])}; }},
{.name = "HS 48", .start = {3, 5, -3, 2, -2}, .sense = "EE", .rhs = {5, -3}, .optimum = 0,
    .objective = [](Point x) { return square(x[1] - 1) + square(x[2] - x[3]) + square(x[4] - x[5]); },
    .rows = [](Point x) { return Reals{sum_of(x, 1, 5), x[3] - 2 * (x[4] + x[5])}; }},
{.name = "HS 49", .start = {10, 7, 2, -3, 0.8}, .sense = "EE", .rhs = {7, 6}, .optimum = 0,
    .objective = [](Point x) { return square(x[1] - x[2]) + square(x[3] - 1) + fourth(x[4] - 1) + sixth(x[5] - 1); },
    .rows = [](Point x) { return Reals{x[1] + x[2] + x[3] + 4 * x[4], x[3] + 5 * x[5]}; }},
{.name = "HS 50", .start = {35, -31, 11, 5, -5}, .sense = "EEE", .rhs = {6}, .optimum = 0,
    .objective = [](Point x) { return square(x[1] - x[2]) + square(x[2] - x[3]) + fourth(x[3] - x[4]) + square(x[4] - x[5]); },
    .rows = [](Point x) { return Reals{x[1] + 2 * x[2] + 3 * x[3], x[2] + 2 * x[3] + 3 * x[4], x[3] + 2 * x[4] + 3 * x[5]}; }},
{.name = "HS 51", .start = {2.5, 0.5, 2, -1, 0.5}, .sense = "EEE", .rhs = {4, 0, 0}, .optimum = 0,
    .objective = [](Point x) { return square(x[1] - x[2]) + hs52_rest(x); }, .rows = hs52_rows},
{.name = "HS 52", .start = {2, 2, 2, 2, 2}, .sense = "EEE", .optimum = 1859.0 / 349,
    .objective = [](Point x) { return square(4 * x[1] - x[2]) + hs52_rest(x); }, .rows = hs52_rows},
{.name = "HS 53", .start = {2, 2, 2, 2, 2}, .lower = {-10}, .upper = {10}, .sense = "EEE", .optimum = 176.0 / 43,
    .objective = [](Point x) { return square(x[1] - x[2]) + hs52_rest(x); }, .rows = hs52_rows},
{.name = "HS 55: degenerate", .start = {1, 2, 0, 0, 0, 2}, .lower = {0}, .upper = {1, INF, INF, 1, INF, INF},
    .sense = "EEEEEE", .rhs = {6, 3, 2, 1, 2, 2}, .optimum = 19.0 / 3,
    .local = {20.0 / 3}, .best = {0, 4.0 / 3, 5.0 / 3, 1, 2.0 / 3, 1.0 / 3},
    .objective = [](Point x) { return x[1] + 2 * x[2] + 4 * x[5] + exp(x[1] * x[4]); },
    .rows = [](Point x) {
        return Reals{x[1] + 2 * x[2] + 5 * x[5], x[1] + x[2] + x[3], x[4] + x[5] + x[6], x[1] + x[4], x[2] + x[5],
                     x[3] + x[6]};
    }},
{.name = "HS 56", .start = hs56_start(), .sense = "EEEE", .optimum = -3.456,
    .objective = [](Point x) { return -x[1] * x[2] * x[3]; },
    .rows = [](Point x) {
        return Reals{x[1] - 4.2 * square(sin(x[4])), x[2] - 4.2 * square(sin(x[5])), x[3] - 4.2 * square(sin(x[6])),
                     x[1] + 2 * x[2] + 2 * x[3] - 7.2 * square(sin(x[7]))};
    }},
{.name = "HS 60", .start = {2, 2, 2}, .lower = {-10}, .upper = {10}, .sense = "E", .rhs = {4 + 3 * ROOT2}, .optimum = 0.03256820025,
    .objective = [](Point x) { return square(x[1] - 1) + square(x[1] - x[2]) + fourth(x[2] - x[3]); },
    .rows = [](Point x) { return Reals{x[1] * (1 + square(x[2])) + fourth(x[3])}; }},
{.name = "HS 61", .start = {0, 0, 0}, .sense = "EE", .rhs = {7, 11}, .optimum = -143.6461422,
    .objective = [](Point x) { return 4 * square(x[1]) + 2 * square(x[2]) + 2 * square(x[3]) - 33 * x[1] + 16 * x[2] - 24 * x[3]; },
    .rows = [](Point x) { return Reals{3 * x[1] - 2 * square(x[2]), 4 * x[1] - square(x[3])}; }},
{.name = "HS 62", .start = {0.7, 0.2, 0.1}, .lower = {0}, .upper = {1}, .sense = "E", .rhs = {1}, .optimum = -26272.51448,
    .objective = [](Point x) {
        const double c = x[3] + 0.03, b = x[2] + c, a = x[1] + b;
        return -32.174 * (255 * log(a / (0.09 * x[1] + b)) + 280 * log(b / (0.07 * x[2] + c)) +
                          290 * log(c / (0.13 * x[3] + 0.03)));
    },
    .rows = [](Point x) { return Reals{x[1] + x[2] + x[3]}; }},
{.name = "HS 63", .start = {2, 2, 2}, .lower = {0}, .sense = "EE", .rhs = {56, 25}, .optimum = 961.7151721,
    .objective = [](Point x) { return 1000 - square(x[1]) - 2 * square(x[2]) - square(x[3]) - x[1] * x[2] - x[1] * x[3]; },
    .rows = [](Point x) { return Reals{8 * x[1] + 14 * x[2] + 7 * x[3], sum_of_squares(x, 1, 3)}; }},
{.name = "HS 64", .start = {1, 1, 1}, .lower = {1e-5}, .sense = "L", .rhs = {1}, .optimum = 6299.842428,
    .objective = [](Point x) { return 5 * x[1] + 50000 / x[1] + 20 * x[2] + 72000 / x[2] + 10 * x[3] + 144000 / x[3]; },
    .rows = [](Point x) { return Reals{4 / x[1] + 32 / x[2] + 120 / x[3]}; }},
{.name = "HS 65", .start = {-5, 5, 0}, .lower = {-4.5, -4.5, -5}, .upper = {4.5, 4.5, 5}, .sense = "L", .rhs = {48}, .optimum = 0.9535288567,
    .objective = [](Point x) { return square(x[1] - x[2]) + square(x[1] + x[2] - 10) / 9 + square(x[3] - 5); },
    .rows = [](Point x) { return Reals{sum_of_squares(x, 1, 3)}; }},
{.name = "HS 66", .start = {0, 1.05, 2.9}, .lower = {0}, .upper = {100, 100, 10}, .sense = "GG", .optimum = 0.5181632741,
    .objective = [](Point x) { return 0.2 * x[3] - 0.8 * x[1]; },
    .rows = [](Point x) { return Reals{x[2] - exp(x[1]), x[3] - exp(x[2])}; }},
};
// clang-format on

}  // namespace

std::span<const FunctionProblem> small_book_problems() { return SMALL; }

}  // namespace tarnwick
