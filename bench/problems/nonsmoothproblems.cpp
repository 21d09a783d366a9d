// Problems for a search without derivatives. CEC: J. J. Liang et al., Problem Definitions and
// Evaluation Criteria for the CEC 2006 Special Session on Constrained Real-Parameter Optimization,
// 2006; its relaxed equality rows stand here as exact ones, with the optimum that belongs to them.
// The others are named by what is special about them.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench/problems/formulas.h"

namespace tarnwick {

namespace {

using std::cos, std::exp, std::fabs, std::floor, std::log, std::pow, std::sin, std::sqrt;

Reals cec_g01_rows(Point x)
{
    Reals g{2 * x[1] + 2 * x[2] + x[10] + x[11], 2 * x[1] + 2 * x[3] + x[10] + x[12],
            2 * x[2] + 2 * x[3] + x[11] + x[12]};
    for (int i = 1; i <= 3; ++i) g.push_back(x[9 + i] - 8 * x[i]);
    for (int i = 1; i <= 3; ++i) g.push_back(x[9 + i] - 2 * x[2 + 2 * i] - x[3 + 2 * i]);
    return g;
}

double cec_g02(Point x)
{
    const auto c = [x](int j) { return square(cos(x[j])); };
    const double fourths = sum(1, 20, [c](int j) { return square(c(j)); });
    const double weighted = sum(1, 20, [x](int j) { return j * square(x[j]); });
    return -fabs((fourths - 2 * product(1, 20, c)) / sqrt(weighted));
}

// Cost of a pressure vessel; x1 and x2 count sheets of a sixteenth of an inch. E. Sandgren 1990;
// the optimum is proved for these bounds by X. S. Yang et al. 2013.
double pressure_vessel(Point x)
{
    const double shell = 0.0625 * x[1], head = 0.0625 * x[2], r = x[3], length = x[4];
    return 0.6224 * shell * r * length + 1.7781 * head * square(r) +
           3.1661 * square(shell) * length + 19.84 * square(shell) * r;
}

Reals pressure_vessel_rows(Point x)
{
    const double shell = 0.0625 * x[1], head = 0.0625 * x[2], r = x[3], length = x[4];
    return {shell - 0.0193 * r, head - 0.00954 * r,
            M_PI * square(r) * length + 4.0 / 3 * M_PI * cube(r)};
}

// Weight of a coil spring: wire diameter, coil diameter, active coils. J. S. Arora 1989.
double spring(Point x) { return (x[3] + 2) * x[2] * square(x[1]); }

Reals spring_rows(Point x)
{
    const double d = x[1], coil = x[2], turns = x[3];
    return {cube(coil) * turns / (71785 * fourth(d)),
            (4 * square(coil) - d * coil) / (12566 * (coil * cube(d) - fourth(d))) +
                1 / (5108 * square(d)),
            140.45 * d / (square(coil) * turns), coil + d};
}

// A problem of the book under the name of the later collection, and in its box where that is another.
FunctionProblem from_book(const char* book, const char* name, Reals lower = {}, Reals upper = {})
{
    FunctionProblem problem = problem_named(book);
    problem.name = name;
    if (!lower.empty()) problem.lower = std::move(lower);
    if (!upper.empty()) problem.upper = std::move(upper);
    return problem;
}

std::vector<FunctionProblem> all_problems()
{
    // clang-format off
    return {
{.name = "CEC g01", .start = Reals(13, 0.5), .lower = {0}, .upper = {1, 1, 1, 1, 1, 1, 1, 1, 1, 100, 100, 100, 1},
    .sense = "LLLLLLLLL", .rhs = {10, 10, 10, 0, 0, 0, 0, 0, 0}, .optimum = -15,
    .best = {1, 1, 1, 1, 1, 1, 1, 1, 1, 3, 3, 3, 1},
    .objective = [](Point x) { return 5 * sum_of(x, 1, 4) - 5 * sum_of_squares(x, 1, 4) - sum_of(x, 5, 13); },
    .rows = cec_g01_rows},
{.name = "CEC g02", .start = Reals(20, 1.0), .lower = {0}, .upper = {10}, .sense = "GL", .rhs = {0.75, 150},
    .optimum = -0.80361910412559,
    .best = {3.16246061572185, 3.12833142812967, 3.09479212988791, 3.06145059523469, 3.02792915885555,
             2.99382606701730, 2.95866871765285, 2.92184227312450, 0.49482511456933, 0.48835711005490,
             0.48231642711865, 0.47664475092742, 0.47129550835493, 0.46623099264167, 0.46142004984199,
             0.45683664767217, 0.45245876903267, 0.44826762241853, 0.44424700958760, 0.44038285956317},
    .objective = cec_g02, .rows = [](Point x) { return Reals{product_of(x, 1, 20), sum_of(x, 1, 20)}; }},
{.name = "CEC g03", .start = Reals(10, 0.5), .lower = {0}, .upper = {1}, .sense = "E", .rhs = {1}, .optimum = -1,
    .best = Reals(10, sqrt(0.1)),
    .objective = [](Point x) { return -product(1, 10, [x](int j) { return sqrt(10.0) * x[j]; }); },
    .rows = [](Point x) { return Reals{sum_of_squares(x, 1, 10)}; }},
from_book("HS 83: three ranges", "CEC g04"),
from_book("HS 74 with its two rows as a range", "CEC g05"),
from_book("HS 19", "CEC g06"),
from_book("HS 113", "CEC g07", {-10}, {10}),
{.name = "CEC g08", .start = {5, 5}, .lower = {0}, .upper = {10}, .sense = "LL", .rhs = {-1}, .optimum = -0.0958250414180359,
    .best = {1.22797135260752599, 4.24537336612274885},
    .objective = [](Point x) { return -cube(sin(2 * M_PI * x[1])) * sin(2 * M_PI * x[2]) / (cube(x[1]) * (x[1] + x[2])); },
    .rows = [](Point x) { return Reals{square(x[1]) - x[2], square(x[2] - 4) - x[1]}; }},
from_book("HS 100", "CEC g09", {-10}, {10}),
from_book("HS 106", "CEC g10"),
{.name = "CEC g11", .start = {0, 0}, .lower = {-1}, .upper = {1}, .sense = "E", .optimum = 0.75, .best = {-1 / ROOT2, 0.5},
    .objective = [](Point x) { return square(x[1]) + square(x[2] - 1); },
    .rows = [](Point x) { return Reals{x[2] - square(x[1])}; }},
// The feasible region is made of 729 balls of radius 1/4; the row is the squared distance from the nearest centre.
{.name = "CEC g12", .start = {1.5, 1.5, 1.5}, .lower = {0}, .upper = {10}, .sense = "L", .rhs = {0.0625}, .optimum = -1,
    .best = {5, 5, 5},
    .objective = [](Point x) { return -(100 - sum(1, 3, [x](int j) { return square(x[j] - 5); })) / 100; },
    .rows = [](Point x) { return Reals{sum(1, 3, [x](int j) { return square(x[j] - std::clamp(std::round(x[j]), 1.0, 9.0)); })}; }},
from_book("HS 80", "CEC g13"),
from_book("HS 63", "CEC g15", {0}, {10}),
from_book("HS 108", "CEC g18", {-10, -10, -10, -10, -10, -10, -10, -10, 0}, {10, 10, 10, 10, 10, 10, 10, 10, 20}),
{.name = "CEC g24", .start = {1, 1}, .lower = {0}, .upper = {3, 4}, .sense = "LL", .rhs = {2, 36}, .optimum = -5.50801327159536,
    .best = {2.32952019747762, 3.17849307411774},
    .objective = [](Point x) { return -x[1] - x[2]; },
    .rows = [](Point x) {
        return Reals{x[2] - 2 * fourth(x[1]) + 8 * cube(x[1]) - 8 * square(x[1]),
                     x[2] - 4 * fourth(x[1]) + 32 * cube(x[1]) - 88 * square(x[1]) + 96 * x[1]};
    }},

{.name = "Rastrigin's function", .start = Reals(5, 4.0), .lower = {-5.12}, .upper = {5.12}, .optimum = 0,
    .best = Reals(5, 0.0),
    .objective = [](Point x) { return sum(1, 5, [x](int j) { return square(x[j]) - 10 * cos(2 * M_PI * x[j]); }, 50); }},
{.name = "Ackley's function", .start = Reals(5, 20.0), .lower = {-30}, .upper = {32}, .optimum = 0,
    .best = Reals(5, 0.0),
    .objective = [](Point x) {
        const double waves = sum(1, 5, [x](int j) { return cos(2 * M_PI * x[j]); });
        return 20 - 20 * exp(-0.2 * sqrt(sum_of_squares(x, 1, 5) / 5)) + exp(1.0) - exp(waves / 5);
    }},
{.name = "Griewank's function", .start = Reals(5, 500.0), .lower = {-400}, .upper = {600}, .optimum = 0,
    .best = Reals(5, 0.0),
    .objective = [](Point x) { return sum_of_squares(x, 1, 5) / 4000 - product(1, 5, [x](int j) { return cos(x[j] / sqrt(j)); }) + 1; }},
{.name = "Schwefel's function", .start = Reals(3, -400.0), .lower = {-500}, .upper = {500}, .optimum = 3 * -418.98288727243369,
    .best = Reals(3, 420.96874636),
    .objective = [](Point x) { return sum(1, 3, [x](int j) { return -x[j] * sin(sqrt(fabs(x[j]))); }); }},
// C. Charalambous and A. R. Conn 1978
{.name = "kinked: the largest of three", .start = {1, -0.1}, .lower = {-10}, .upper = {10}, .optimum = 1.9522245,
    .best = {1.1390376, 0.8995599},
    .objective = [](Point x) {
        return std::max({square(x[1]) + fourth(x[2]), square(2 - x[1]) + square(2 - x[2]), 2 * exp(x[2] - x[1])});
    }},
{.name = "kinked: distances along a line, with a row", .start = {9, 9, 9}, .lower = {0}, .upper = {10}, .sense = "L", .rhs = {12},
    .optimum = 2, .best = {1, 4, 7},
    .objective = [](Point x) { return fabs(x[1] - 2) + fabs(x[2] - 5) + 2 * fabs(x[3] - 7); },
    .rows = [](Point x) { return Reals{sum_of(x, 1, 3)}; }},
// K. De Jong 1975
{.name = "stepped", .start = Reals(5, 5.0), .lower = {-5.12}, .upper = {5.12}, .optimum = 0, .best = Reals(5, -5.1),
    .objective = [](Point x) { return 30 + sum(1, 5, [x](int j) { return floor(x[j]); }); }},
{.name = "one variable", .start = {-7}, .lower = {-10}, .upper = {10}, .optimum = -1, .best = {2},
    .objective = [](Point x) { return sqrt(fabs(x[1] - 2)) - 1; }},
// Z. Michalewicz 1992
{.name = "maximised", .start = {0, 5}, .lower = {-3, 4.1}, .upper = {12.1, 5.8}, .optimum = 38.850294, .objsen = -1,
    .best = {11.6255448, 5.7250441},
    .objective = [](Point x) { return 21.5 + x[1] * sin(4 * M_PI * x[1]) + x[2] * sin(20 * M_PI * x[2]); }},
// Eight for four of the resource beats five for three, and nothing fits into the 1.5 left over.
{.name = "integer", .start = {0, 0}, .lower = {0}, .upper = {10}, .sense = "L", .rhs = {21.5}, .optimum = 40, .objsen = -1,
    .ctype = "II", .best = {0, 5},
    .objective = [](Point x) { return 5 * x[1] + 8 * x[2]; },
    .rows = [](Point x) { return Reals{3 * x[1] + 4 * x[2]}; }},
{.name = "mixed: a pressure vessel", .start = {16, 16, 50, 100}, .lower = {1, 1, 10, 10}, .upper = {99, 99, 200, 200}, .sense = "GGG",
    .rhs = {0, 0, 1296000}, .optimum = 6059.714335, .ctype = "IICC", .best = {13, 7, 42.0984455958549, 176.636595842439},
    .objective = pressure_vessel, .rows = pressure_vessel_rows},
{.name = "badly scaled: a spring", .start = {0.1, 0.5, 10}, .lower = {0.05, 0.25, 2}, .upper = {2, 1.3, 15}, .sense = "GLGL",
    .rhs = {1, 1, 1, 1.5}, .optimum = 0.012665232788, .best = {0.0516890609, 0.3567177226, 11.2889657},
    .objective = spring, .rows = spring_rows},
{.name = "binary: a knapsack", .start = Reals(6, 0.0), .sense = "L", .rhs = {10}, .optimum = 23, .objsen = -1, .ctype = "BBBBBB",
    .best = {1, 0, 1, 1, 0, 0},
    .objective = [](Point x) { return 6 * x[1] + 5 * x[2] + 9 * x[3] + 8 * x[4] + 9 * x[5] + 10 * x[6]; },
    .rows = [](Point x) { return Reals{2 * x[1] + 3 * x[2] + 4 * x[3] + 4 * x[4] + 5 * x[5] + 6 * x[6]}; }},
{.name = "an equality", .start = {3, 3}, .lower = {-5}, .upper = {5}, .sense = "E", .rhs = {1}, .optimum = 1, .best = {0.5, 0.5},
    .objective = [](Point x) { return fabs(x[1]) + fabs(x[2]); },
    .rows = [](Point x) { return Reals{x[1] + x[2]}; }},
{.name = "fails in half of the box", .start = {2}, .lower = {-3}, .upper = {3}, .optimum = -0.36787944117144233, .best = {0.36787944117144233},
    .objective = [](Point x) { return x[1] > 0 ? x[1] * log(x[1]) : FAILS; }},
{.name = "fails everywhere", .start = {1, 1}, .lower = {0}, .upper = {2}, .status = STAT_EVALERROR,
    .objective = [](Point) { return FAILS; }},
{.name = "infeasible", .start = {0, 0}, .lower = {-3}, .upper = {3}, .sense = "LG", .rhs = {1, 2}, .status = STAT_INFEASIBLE,
    .objective = [](Point x) { return x[1]; },
    .rows = [](Point x) { return Reals{fabs(x[1]) + fabs(x[2]), x[1] + x[2]}; }},
    };
    // clang-format on
}

}  // namespace

std::span<const FunctionProblem> nonsmooth_problems()
{
    static const std::vector<FunctionProblem> problems = [] {
        std::vector<FunctionProblem> all = all_problems();
        std::ranges::for_each(all, complete);
        return all;
    }();
    return problems;
}

const FunctionProblem& problem_named(const std::string& name)
{
    for (const auto& problem : smooth_problems())
        if (name == problem.name) return problem;
    std::fprintf(stderr, "no problem is called %s\n", name.c_str());
    std::abort();
}

}  // namespace tarnwick
