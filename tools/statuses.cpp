#include "tools/statuses.h"

#include "include/tarnwick.h"

namespace tarnwick::tool {

namespace {

// clang-format off
constexpr Status STATUSES[] = {
    {STAT_NONE,               "STAT_NONE",               "no run has ended yet",                      Point::none},
    {STAT_OPTIMAL,            "STAT_OPTIMAL",            "optimum found",                             Point::feasible},
    {STAT_INFEASIBLE,         "STAT_INFEASIBLE",         "no feasible point exists",                  Point::none},
    {STAT_UNBOUNDED,          "STAT_UNBOUNDED",          "the objective has no limit",                Point::none},
    {STAT_ITERLIM_FEAS,       "STAT_ITERLIM_FEAS",       "iteration limit, at a feasible point",      Point::feasible},
    {STAT_ITERLIM_INFEAS,     "STAT_ITERLIM_INFEAS",     "iteration limit, no feasible point so far", Point::infeasible},
    {STAT_TIMELIM_FEAS,       "STAT_TIMELIM_FEAS",       "time limit, at a feasible point",           Point::feasible},
    {STAT_TIMELIM_INFEAS,     "STAT_TIMELIM_INFEAS",     "time limit, no feasible point so far",      Point::infeasible},
    {STAT_USERSTOP_FEAS,      "STAT_USERSTOP_FEAS",      "interrupted, at a feasible point",          Point::feasible},
    {STAT_USERSTOP_INFEAS,    "STAT_USERSTOP_INFEAS",    "interrupted, no feasible point so far",     Point::infeasible},
    {STAT_CONVERGED,          "STAT_CONVERGED",          "converged, not proved to be the optimum",   Point::feasible},
    {STAT_STALLED,            "STAT_STALLED",            "no further progress",                       Point::feasible},
    {STAT_EVALERROR,          "STAT_EVALERROR",          "the host's function failed",                Point::none},
    {STAT_NOMEMORY,           "STAT_NOMEMORY",           "memory exhausted",                          Point::none},
    {STAT_RESERVED69,         "STAT_RESERVED69",         "reserved",                                  Point::none},
    {STAT_MIP_OPTIMAL,        "STAT_MIP_OPTIMAL",        "integer optimum found",                     Point::feasible},
    {STAT_MIP_OPTIMAL_TOL,    "STAT_MIP_OPTIMAL_TOL",    "integer optimum found within PARAM_MIPGAP", Point::feasible},
    {STAT_MIP_INFEASIBLE,     "STAT_MIP_INFEASIBLE",     "no integer solution exists",                Point::none},
    {STAT_MIP_INTLIMIT,       "STAT_MIP_INTLIMIT",       "limit of integer solutions",                Point::feasible},
    {STAT_MIP_NODELIM_FEAS,   "STAT_MIP_NODELIM_FEAS",   "node limit, with an integer solution",      Point::feasible},
    {STAT_MIP_NODELIM_INFEAS, "STAT_MIP_NODELIM_INFEAS", "node limit, no integer solution so far",    Point::infeasible},
    {STAT_MIP_TIMELIM_FEAS,   "STAT_MIP_TIMELIM_FEAS",   "time limit, with an integer solution",      Point::feasible},
    {STAT_MIP_TIMELIM_INFEAS, "STAT_MIP_TIMELIM_INFEAS", "time limit, no integer solution so far",    Point::infeasible},
    {STAT_MODELCHECK,         "STAT_MODELCHECK",         "the model or the answer failed a check",    Point::doubtful},
    {STAT_BADMODEL,           "STAT_BADMODEL",           "the model can't be set up for solving",     Point::none},
    {STAT_INTERNAL,           "STAT_INTERNAL",           "internal failure",                          Point::none},
};
// clang-format on

constexpr Status UNKNOWN = {STAT_UNKNOWN, "STAT_UNKNOWN", "unknown outcome", Point::none};

}  // namespace

std::span<const Status> statuses() { return STATUSES; }

Status status_of(std::int32_t number)
{
    for (const Status& status : STATUSES)
        if (status.number == number) return status;
    Status unknown = UNKNOWN;
    unknown.number = number;
    return unknown;
}

bool is_optimum(std::int32_t number)
{
    return number == STAT_OPTIMAL || number == STAT_MIP_OPTIMAL || number == STAT_MIP_OPTIMAL_TOL;
}

}  // namespace tarnwick::tool
