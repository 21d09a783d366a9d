// The parameters: one table for each kind of value, and the functions that read and write through
// it. A value v of a row always satisfies lowest <= v <= highest, which a NaN never does.

#include "interface/parameters.h"

#include <climits>
#include <cstddef>
#include <iterator>
#include <utility>

#include "interface/problem.h"

namespace tarnwick {

namespace {

constinit std::atomic<std::int32_t> messages{0};
constinit std::atomic<std::int32_t> olearrays{0};
constinit std::atomic<std::int32_t> reserved997{0};

using Control = SolveControl;

// clang-format off
constexpr Parameter<std::int32_t> INT_PARAMETERS[] = {
    {PARAM_MESSAGES,     "PARAM_MESSAGES",     nullptr, &messages,    0, 0, 1, "1: refused calls are told through the message box"},
    {PARAM_OLEARRAYS,    "PARAM_OLEARRAYS",    nullptr, &olearrays,   0, 0, 1, "1: array arguments are references to OLE arrays"},
    {PARAM_RESERVED997,  "PARAM_RESERVED997",  nullptr, &reserved997, 0, 0, 2, "stored, no effect"},

    {PARAM_IISMETHOD,    "PARAM_IISMETHOD",    &Control::iismethod,    nullptr, 0,       0,  1,       "infeasible subsets: 0 filters rows, then column bounds; 1 rows only"},
    {PARAM_RESERVED1007, "PARAM_RESERVED1007", &Control::reserved1007, nullptr, 0,       0,  1,       "stored, no effect"},
    {PARAM_ITERLIMIT,    "PARAM_ITERLIMIT",    &Control::iterlimit,    nullptr, INT_MAX, 0,  INT_MAX, "iterations of one subproblem; more of them stop the run"},
    {PARAM_SCALING,      "PARAM_SCALING",      &Control::scaling,      nullptr, 0,       -1, 1,       "-1 turns model scaling off; 0 and 1 leave it on"},
    {PARAM_INTSOLLIMIT,  "PARAM_INTSOLLIMIT",  &Control::intsollimit,  nullptr, INT_MAX, 0,  INT_MAX, "integer solutions; more of them stop the run"},
    {PARAM_NODELIMIT,    "PARAM_NODELIMIT",    &Control::nodelimit,    nullptr, INT_MAX, 0,  INT_MAX, "nodes of the integer search, crossovers of a non-smooth run; more of them stop the run"},
    {PARAM_RELAXINT,     "PARAM_RELAXINT",     &Control::relaxint,     nullptr, 0,       0,  1,       "1: integer restrictions are ignored"},
    {PARAM_BINROWFIX,    "PARAM_BINROWFIX",    &Control::binrowfix,    nullptr, 0,       0,  1,       "1: fix 0-1 variables from row activities"},
    {PARAM_BINDUALFIX,   "PARAM_BINDUALFIX",   &Control::bindualfix,   nullptr, 0,       0,  1,       "1: fix 0-1 variables from the signs of their columns"},
    {PARAM_BINORDER,     "PARAM_BINORDER",     &Control::binorder,     nullptr, 0,       0,  1,       "1: branch on 0-1 variables in an order of their weight"},
    {PARAM_BINTIGHTEN,   "PARAM_BINTIGHTEN",   &Control::bintighten,   nullptr, 0,       0,  1,       "1: tighten the bounds of the other variables"},
    {PARAM_NLPRECOGLIN,  "PARAM_NLPRECOGLIN",  &Control::nlprecoglin,  nullptr, 0,       0,  1,       "smooth models, 1: derivative columns that prove constant are kept"},
    {PARAM_NLPDERIVMODE, "PARAM_NLPDERIVMODE", &Control::nlpderivmode, nullptr, 0,       0,  3,       "smooth models: derivatives by 0 forward, 1 central differences, 2 the caller, 3 the caller, compared with differences"},
    {PARAM_NLPQUADEXT,   "PARAM_NLPQUADEXT",   &Control::nlpquadext,   nullptr, 0,       0,  1,       "smooth models, 1: quadratic extrapolation in the line search"},
    {PARAM_NLPCGONLY,    "PARAM_NLPCGONLY",    &Control::nlpcgonly,    nullptr, 0,       0,  1,       "smooth models, 1: conjugate gradients only"},
    {PARAM_NSPPOPSIZE,   "PARAM_NSPPOPSIZE",   &Control::popsize,      nullptr, 0,       0,  INT_MAX, "non-smooth models: members of the population; below 10 the engine chooses"},
    {PARAM_NSPSTALLTIME, "PARAM_NSPSTALLTIME", &Control::stalltime,    nullptr, 30,      0,  INT_MAX, "non-smooth models: seconds without improvement that end the search"},
    {PARAM_NSPREQBOUNDS, "PARAM_NSPREQBOUNDS", &Control::reqbounds,    nullptr, 1,       0,  1,       "non-smooth models, 1: every variable needs finite bounds"},
};

constexpr Parameter<double> DBL_PARAMETERS[] = {
    {PARAM_OPTTOL,       "PARAM_OPTTOL",       &Control::opttol,       nullptr, 1e-5,         1e-9,  1e-4,         "smallest reduced cost that the simplex takes for an improvement"},
    {PARAM_FEASTOL,      "PARAM_FEASTOL",      &Control::feastol,      nullptr, 1e-8,         1e-9,  1e-4,         "feasibility and integrality tolerance of linear and quadratic models"},
    {PARAM_TIMELIMIT,    "PARAM_TIMELIMIT",    &Control::timelimit,    nullptr, 2147483647.0, 0.0,   2147483647.0, "seconds of a run, of which whole ones count"},
    {PARAM_PIVOTTOL,     "PARAM_PIVOTTOL",     &Control::pivottol,     nullptr, 1e-6,         1e-9,  1e-4,         "smallest pivot of the simplex"},
    {PARAM_RESERVED1092, "PARAM_RESERVED1092", &Control::reserved1092, nullptr, 1e-4,         1e-9,  1e-4,         "stored, no effect"},
    {PARAM_OBJLOWERCUT,  "PARAM_OBJLOWERCUT",  &Control::objlowercut,  nullptr, -2e30,        -2e30, 2e30,         "maximisation with integer variables: objective cut-off"},
    {PARAM_OBJUPPERCUT,  "PARAM_OBJUPPERCUT",  &Control::objuppercut,  nullptr, 2e30,         -2e30, 2e30,         "minimisation with integer variables: objective cut-off"},
    {PARAM_MIPGAP,       "PARAM_MIPGAP",       &Control::mipgap,       nullptr, 0.0,          0.0,   1.0,          "relative gap between solution and bound that ends the integer search"},
    {PARAM_NLPFEASTOL,   "PARAM_NLPFEASTOL",   &Control::nlpfeastol,   nullptr, 1e-6,         1e-9,  1e-4,         "feasibility and integrality tolerance of models known through functions"},
    {PARAM_NLPCONVTOL,   "PARAM_NLPCONVTOL",   &Control::nlpconvtol,   nullptr, 1e-4,         0.0,   1.0,          "convergence tolerance of models known through functions"},
    {PARAM_NSPMUTATION,  "PARAM_NSPMUTATION",  &Control::mutation,     nullptr, 0.075,        0.0,   1.0,          "non-smooth models: probability of a mutation"},
};
// clang-format on

// Numbers strictly rise, every default lies in its own range, every value lives in one place.
template <class Value, std::size_t N>
consteval bool is_well_formed(const Parameter<Value> (&table)[N])
{
    for (std::size_t k = 0; k < N; ++k) {
        const Parameter<Value>& p = table[k];
        if (k > 0 && table[k - 1].number >= p.number) return false;
        if (!(p.lowest <= p.initial && p.initial <= p.highest)) return false;
        if ((p.field == nullptr) == (p.shared == nullptr)) return false;
    }
    return true;
}
static_assert(is_well_formed(INT_PARAMETERS) && is_well_formed(DBL_PARAMETERS));

template <class Value>
const Parameter<Value>* find(std::span<const Parameter<Value>> table, std::int32_t number) noexcept
{
    for (const Parameter<Value>& p : table)
        if (p.number == number) return &p;
    return nullptr;
}

// The three parameters that can be read and set before any model exists.
bool is_process_wide(std::int32_t number) noexcept
{
    const auto* const p = find(int_parameters(), number);
    return p && p->shared;
}

template <class Value>
void give(Value* result_p, Value value) noexcept
{
    if (result_p) *result_p = value;
}

template <class Value>
void store(SolveControl* control, const Parameter<Value>& p, Value value) noexcept
{
    if (p.shared)
        p.shared->store(value, std::memory_order_relaxed);
    else
        control->*p.field = value;
}

template <class Value>
Value value_of(const SolveControl* control, const Parameter<Value>& p) noexcept
{
    return p.shared ? p.shared->load(std::memory_order_relaxed) : control->*p.field;
}

const char* const UNKNOWN_NUMBER = "whichparam is out of range";

template <class Value>
std::int32_t info(const char* title, std::span<const Parameter<Value>> table, std::int32_t number,
                  Value* default_p, Value* min_p, Value* max_p) noexcept
{
    const Parameter<Value>* const p = find(table, number);
    if (!p) return report(1, title, UNKNOWN_NUMBER);
    give(default_p, p->initial);
    give(min_p, p->lowest);
    give(max_p, p->highest);
    return 0;
}

// lp has been tested, unless the parameter is process-wide.
template <class Value>
std::int32_t set(const char* title, std::span<const Parameter<Value>> table, Problem* lp,
                 std::int32_t number, Value value) noexcept
{
    const Parameter<Value>* const p = find(table, number);
    if (!p) return report(1, title, UNKNOWN_NUMBER);
    if (!(p->lowest <= value && value <= p->highest))
        return report(2, title, "newvalue is out of range");
    store(p->shared ? nullptr : &lp->control, *p, value);
    return 0;
}

template <class Value>
std::int32_t get(const char* title, std::span<const Parameter<Value>> table, const Problem* lp,
                 std::int32_t number, Value* value_p) noexcept
{
    const Parameter<Value>* const p = find(table, number);
    if (!p) return report(1, title, UNKNOWN_NUMBER);
    give(value_p, value_of(p->shared ? nullptr : &lp->control, *p));
    return 0;
}

}  // namespace

std::span<const Parameter<std::int32_t>> int_parameters() noexcept { return INT_PARAMETERS; }
std::span<const Parameter<double>> dbl_parameters() noexcept { return DBL_PARAMETERS; }

namespace {

// Row by row at compile time: what is left of the table are stores of constants.
template <auto& TABLE, std::size_t... ROW>
void set_fields(SolveControl& control, std::index_sequence<ROW...>) noexcept
{
    const auto set_field = [&control](const auto& p) noexcept {
        if (p.field) control.*p.field = p.initial;
    };
    (set_field(TABLE[ROW]), ...);
}

}  // namespace

void set_parameter_defaults(SolveControl& control) noexcept
{
    set_fields<INT_PARAMETERS>(control, std::make_index_sequence<std::size(INT_PARAMETERS)>());
    set_fields<DBL_PARAMETERS>(control, std::make_index_sequence<std::size(DBL_PARAMETERS)>());
}

bool messages_are_on() noexcept { return messages.load(std::memory_order_relaxed) != 0; }
bool ole_mode() noexcept { return olearrays.load(std::memory_order_relaxed) != 0; }

}  // namespace tarnwick

using namespace tarnwick;

extern "C" std::int32_t TARNWICK_CALL infointparam(Problem*, std::int32_t whichparam,
                                                   std::int32_t* default_p, std::int32_t* min_p,
                                                   std::int32_t* max_p)
{
    return info(__func__, int_parameters(), whichparam, default_p, min_p, max_p);
}

extern "C" std::int32_t TARNWICK_CALL setintparam(Problem* lp, std::int32_t whichparam,
                                                  std::int32_t newvalue)
{
    if (!is_process_wide(whichparam) && !is_handle(lp, __func__)) return 1;
    return set(__func__, int_parameters(), lp, whichparam, newvalue);
}

extern "C" std::int32_t TARNWICK_CALL getintparam(Problem* lp, std::int32_t whichparam,
                                                  std::int32_t* value_p)
{
    if (!is_process_wide(whichparam) && !is_handle(lp, __func__)) return 1;
    return get(__func__, int_parameters(), lp, whichparam, value_p);
}

extern "C" std::int32_t TARNWICK_CALL infodblparam(Problem*, std::int32_t whichparam,
                                                   double* default_p, double* min_p, double* max_p)
{
    return info(__func__, dbl_parameters(), whichparam, default_p, min_p, max_p);
}

extern "C" std::int32_t TARNWICK_CALL setdblparam(Problem* lp, std::int32_t whichparam,
                                                  double newvalue)
{
    if (!is_handle(lp, __func__)) return 1;
    return set(__func__, dbl_parameters(), lp, whichparam, newvalue);
}

extern "C" std::int32_t TARNWICK_CALL getdblparam(Problem* lp, std::int32_t whichparam,
                                                  double* value_p)
{
    if (!is_handle(lp, __func__)) return 1;
    return get(__func__, dbl_parameters(), lp, whichparam, value_p);
}

extern "C" std::int32_t TARNWICK_CALL setdefaults(Problem* lp)
{
    if (!is_null_handle(lp)) {
        if (!is_handle(lp, __func__)) return 1;
        set_parameter_defaults(lp->control);
    } else if (!lp) {
        for (const auto& p : INT_PARAMETERS)
            if (p.shared) store(nullptr, p, p.initial);
    }
    return 0;
}
