// The record behind the handle: its life, the handle test, families and limits, and the one way in
// which the interface tells of errors.

#include "interface/problem.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

#include "interface/parameters.h"
#include "platform/floatcontrol.h"
#include "platform/messagebox.h"

namespace tarnwick {

namespace {

constexpr SizeLimits LINEAR_LIMITS{2000, 8192};  // models given by their arrays
constexpr SizeLimits FUNCTION_LIMITS{400, 200};  // models known through the caller's functions

// The second value that never is a handle: all ones in the 32 bits that hosts pass it in.
constexpr std::uintptr_t ALL_ONES_32 = 0xFFFFFFFFU;
constexpr std::uintptr_t ALL_ONES = ~std::uintptr_t{0};

}  // namespace

// ---- life

Problem* create_problem(const char* name) noexcept
{
    const std::size_t length = name ? std::strlen(name) : 0;
    void* const block = allocate_record(sizeof(Problem) + length + 1);
    if (!block) return nullptr;

    auto* const problem = std::construct_at(static_cast<Problem*>(block));
    problem->name = static_cast<char*>(block) + sizeof(Problem);
    std::copy_n(name, length, problem->name);
    problem->name[length] = '\0';
    problem->self = problem;
    problem->control.problem = problem;
    set_parameter_defaults(problem->control);
    return problem;
}

void release_problem(Problem* problem) noexcept
{
    if (!problem) return;
    // A plain store to a record whose life ends here is one that the compiler may leave out.
    Problem* volatile& self = problem->self;
    self = nullptr;
    dropranges(*problem);
    std::destroy_at(problem);
    release_block(problem);
}

bool create_results(Problem& problem) noexcept
{
    if (problem.results) return true;
    const auto n = static_cast<std::size_t>(problem.numcols);
    const auto m = static_cast<std::size_t>(problem.numrows);
    if (!problem.results.create(5 * n + 5 * m)) return false;

    double* next = problem.results.data();
    const auto take = [&next](std::size_t count) { return std::exchange(next, next + count); };
    problem.x = take(n);
    problem.dj = take(n);
    problem.colrange = {take(n), take(n), take(n)};
    problem.piout = take(m);
    problem.slack = take(m);
    problem.rowrangeof = {take(m), take(m), take(m)};
    return true;
}

// ---- family and size

bool is_lp_family(std::int32_t problemtype) noexcept
{
    return problemtype == PROB_LP || problemtype == PROB_MILP || problemtype == PROB_QP ||
           problemtype == PROB_MIQP;
}

bool is_nlp_family(std::int32_t problemtype) noexcept
{
    return problemtype == PROB_NLP || problemtype == PROB_MINLP;
}

bool is_nsp_family(std::int32_t problemtype) noexcept
{
    return problemtype == PROB_NSP || problemtype == PROB_MINSP;
}

SizeLimits size_limits(std::int32_t problemtype) noexcept
{
    if (is_lp_family(problemtype)) return LINEAR_LIMITS;
    if (is_nlp_family(problemtype) || is_nsp_family(problemtype)) return FUNCTION_LIMITS;
    return {0, 0};
}

bool is_too_large(const Problem& problem) noexcept
{
    const SizeLimits limits = size_limits(problem.problemtype);
    return problem.numcols > limits.numcols || problem.numrows > limits.numrows;
}

bool is_mip(const Problem& problem) noexcept
{
    if (!problem.ctype || problem.control.relaxint != 0) return false;
    return std::any_of(problem.ctype, problem.ctype + problem.numcols,
                       [](char letter) { return letter != 'C'; });
}

// ---- reports and tests

std::int32_t report(std::int32_t code, const char* title, const char* text) noexcept
{
    if (messages_are_on()) show_message(text, title, BUTTONS_OK);
    return code;
}

bool is_null_handle(const Problem* lp) noexcept
{
    const auto address = reinterpret_cast<std::uintptr_t>(lp);
    return !lp || address == ALL_ONES || address == ALL_ONES_32;
}

bool is_handle(const Problem* lp, const char* title) noexcept
{
    if (is_null_handle(lp)) {
        report(1, title, "lp pointer is NULL");
        return false;
    }
    const bool is_aligned = reinterpret_cast<std::uintptr_t>(lp) % alignof(Problem) == 0;
    if (is_aligned && lp->self == lp) return true;
    report(1, title, "lp pointer is invalid");
    return false;
}

bool is_idle(const Problem* lp, const char* title) noexcept
{
    if (!is_handle(lp, title)) return false;
    if (!lp->running) return true;
    report(1, title, "the problem is being solved");
    return false;
}

bool is_absent(const double* array) noexcept { return !array || *array == -1.0; }

bool is_absent(const std::int32_t* array) noexcept { return !array || *array == -1; }

}  // namespace tarnwick

using namespace tarnwick;

extern "C" std::int32_t TARNWICK_CALL unloadprob(Problem** lp_p)
{
    if (!lp_p) return report(1, __func__, "lp_p is not valid");
    if (!is_idle(*lp_p, __func__)) return 1;

    release_problem(*lp_p);
    return 0;
}

extern "C" std::int32_t TARNWICK_CALL getproblimits(void*, std::int32_t probtype,
                                                    std::int32_t* numcols_p,
                                                    std::int32_t* numrows_p,
                                                    std::int32_t* numints_p)
{
    set_float_control();
    if (!numcols_p) return report(2, __func__, "numcols_p is NULL");
    if (!numrows_p) return report(3, __func__, "numrows_p is NULL");
    if (!numints_p) return report(4, __func__, "numints_p is NULL");

    const SizeLimits limits = size_limits(probtype);
    if (limits.numcols == 0) return report(1, __func__, "problem type is invalid");

    *numcols_p = limits.numcols;
    *numrows_p = limits.numrows;
    *numints_p = limits.numcols;
    return 0;
}
