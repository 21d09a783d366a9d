// Parameters by name. Defaults and ranges are the library's own; names and meanings stand here.

#include "tools/parameters.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include "tools/failure.h"

namespace tarnwick::tool {

namespace {

constexpr std::string_view PREFIX = "PARAM_";

struct Parameter {
    std::int32_t number;
    const char* name;
    const char* meaning;
};

// clang-format off
constexpr Parameter PARAMETERS[] = {
    {PARAM_MESSAGES,     "PARAM_MESSAGES",     "1: refused calls are told through the message box"},
    {PARAM_OLEARRAYS,    "PARAM_OLEARRAYS",    "1: array arguments are references to OLE arrays"},
    {PARAM_RESERVED997,  "PARAM_RESERVED997",  "stored, no effect"},
    {PARAM_IISMETHOD,    "PARAM_IISMETHOD",    "infeasible subsets: 0 filters rows, then column bounds; 1 rows only"},
    {PARAM_RESERVED1007, "PARAM_RESERVED1007", "stored, no effect"},
    {PARAM_OPTTOL,       "PARAM_OPTTOL",       "smallest reduced cost that counts as an improvement"},
    {PARAM_FEASTOL,      "PARAM_FEASTOL",      "feasibility and integrality tolerance"},
    {PARAM_ITERLIMIT,    "PARAM_ITERLIMIT",    "iterations of one subproblem; more of them stop the run"},
    {PARAM_SCALING,      "PARAM_SCALING",      "-1 turns model scaling off; 0 and 1 leave it on"},
    {PARAM_TIMELIMIT,    "PARAM_TIMELIMIT",    "seconds of a run, of which whole ones count"},
    {PARAM_PIVOTTOL,     "PARAM_PIVOTTOL",     "smallest pivot of the simplex"},
    {PARAM_RESERVED1092, "PARAM_RESERVED1092", "stored, no effect"},
    {PARAM_OBJLOWERCUT,  "PARAM_OBJLOWERCUT",  "maximisation with integer variables: objective cut-off"},
    {PARAM_OBJUPPERCUT,  "PARAM_OBJUPPERCUT",  "minimisation with integer variables: objective cut-off"},
    {PARAM_MIPGAP,       "PARAM_MIPGAP",       "relative gap that ends the integer search"},
    {PARAM_INTSOLLIMIT,  "PARAM_INTSOLLIMIT",  "integer solutions; more of them stop the run"},
    {PARAM_NODELIMIT,    "PARAM_NODELIMIT",    "nodes of the integer search; more of them stop the run"},
    {PARAM_RELAXINT,     "PARAM_RELAXINT",     "1: integer restrictions are ignored"},
    {PARAM_BINROWFIX,    "PARAM_BINROWFIX",    "1: fix 0-1 variables from row activities"},
    {PARAM_BINDUALFIX,   "PARAM_BINDUALFIX",   "1: fix 0-1 variables from the signs of their columns"},
    {PARAM_BINORDER,     "PARAM_BINORDER",     "1: branch on 0-1 variables in an order of their weight"},
    {PARAM_BINTIGHTEN,   "PARAM_BINTIGHTEN",   "1: tighten the bounds of the other variables"},
    {PARAM_NLPFEASTOL,   "PARAM_NLPFEASTOL",   "models known through functions: feasibility tolerance"},
    {PARAM_NLPCONVTOL,   "PARAM_NLPCONVTOL",   "models known through functions: convergence tolerance"},
    {PARAM_NLPRECOGLIN,  "PARAM_NLPRECOGLIN",  "smooth models, 1: derivatives that prove constant are kept"},
    {PARAM_NLPDERIVMODE, "PARAM_NLPDERIVMODE", "smooth models: source of the derivatives"},
    {PARAM_NLPQUADEXT,   "PARAM_NLPQUADEXT",   "smooth models, 1: quadratic extrapolation in the line search"},
    {PARAM_NLPCGONLY,    "PARAM_NLPCGONLY",    "smooth models, 1: conjugate gradients only"},
    {PARAM_NSPPOPSIZE,   "PARAM_NSPPOPSIZE",   "non-smooth models: members of the population"},
    {PARAM_NSPSTALLTIME, "PARAM_NSPSTALLTIME", "non-smooth models: seconds without improvement that end the run"},
    {PARAM_NSPREQBOUNDS, "PARAM_NSPREQBOUNDS", "non-smooth models, 1: every variable needs finite bounds"},
    {PARAM_NSPMUTATION,  "PARAM_NSPMUTATION",  "non-smooth models: probability of a mutation"},
};
// clang-format on

// ---- ranges

template <class Value>
struct Range {
    Value initial{}, lowest{}, highest{};
};

using IntRange = Range<std::int32_t>;
using DoubleRange = Range<double>;

// The library knows which kind a number is.
std::variant<IntRange, DoubleRange> range_of(std::int32_t number)
{
    IntRange whole;
    if (infointparam(nullptr, number, &whole.initial, &whole.lowest, &whole.highest) == 0)
        return whole;
    DoubleRange real;
    infodblparam(nullptr, number, &real.initial, &real.lowest, &real.highest);
    return real;
}

// ---- names and values

std::string upper_case(std::string_view text)
{
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return out;
}

template <class Value>
bool parse_all(std::string_view text, Value& value)
{
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value);
    return error == std::errc{} && end == last && !text.empty();
}

const Parameter& find_parameter(std::string_view name)
{
    std::string wanted = upper_case(name);
    if (wanted.starts_with(PREFIX)) wanted.erase(0, PREFIX.size());
    std::int32_t number = 0;
    const bool is_number = parse_all(name, number);

    for (const Parameter& parameter : PARAMETERS) {
        const bool is_named = std::string_view(parameter.name).substr(PREFIX.size()) == wanted;
        if (is_named || (is_number && parameter.number == number)) return parameter;
    }
    throw BadUsage(
        fmt::format("--set: there is no parameter '{}' ('tarnwick params' lists them)", name));
}

template <class Value>
Value parsed_value(const Parameter& parameter, std::string_view text, const Range<Value>& range,
                   const char* kind)
{
    Value value{};
    if (parse_all(text, value) && value >= range.lowest && value <= range.highest) return value;
    throw BadUsage(fmt::format("--set: {} is {} from {} to {}, not '{}'", parameter.name, kind,
                               range.lowest, range.highest, text));
}

// The tool hands plain arrays to the library and listens to its messages.
void refuse_if_kept(std::int32_t number, const char* name)
{
    if (number == PARAM_OLEARRAYS || number == PARAM_MESSAGES)
        throw BadUsage(
            fmt::format("--set: {} belongs to host programs and can't be set here", name));
}

}  // namespace

Setting parsed_setting(const std::string& text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0)
        throw BadUsage(fmt::format("--set: '{}' is not NAME=VALUE", text));
    const std::string_view name = std::string_view(text).substr(0, equals);
    const std::string_view value = std::string_view(text).substr(equals + 1);

    const Parameter& parameter = find_parameter(name);
    refuse_if_kept(parameter.number, parameter.name);
    const auto range = range_of(parameter.number);
    if (const auto* whole = std::get_if<IntRange>(&range))
        return {parameter.number, parsed_value(parameter, value, *whole, "a whole number")};
    return {parameter.number,
            parsed_value(parameter, value, std::get<DoubleRange>(range), "a number")};
}

void apply(const Setting& setting, Problem* lp)
{
    const auto* whole = std::get_if<std::int32_t>(&setting.value);
    const std::int32_t code =
        whole ? setintparam(lp, setting.number, *whole)
              : setdblparam(lp, setting.number, std::get<double>(setting.value));
    if (code != 0) throw BadUsage(fmt::format("--set: parameter {} is refused", setting.number));
}

Report parameter_report()
{
    Table table{"parameters", "Parameters", {}, {}};
    for (const char* field : {"number", "default", "lowest", "highest", "meaning"})
        table.columns.push_back({field, field});

    for (const Parameter& parameter : PARAMETERS) {
        std::vector<Cell> row = {std::string(parameter.name), std::int64_t{parameter.number}};
        const auto range = range_of(parameter.number);
        if (const auto* whole = std::get_if<IntRange>(&range))
            for (const std::int64_t value : {whole->initial, whole->lowest, whole->highest})
                row.emplace_back(value);
        if (const auto* real = std::get_if<DoubleRange>(&range))
            for (const double value : {real->initial, real->lowest, real->highest})
                row.emplace_back(value);
        row.emplace_back(std::string(parameter.meaning));
        table.rows.push_back(std::move(row));
    }
    Report report;
    report.tables.push_back(std::move(table));
    return report;
}

}  // namespace tarnwick::tool
