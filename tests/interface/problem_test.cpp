#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <string>

#include "control/services.h"
#include "interface/exports.h"
#include "interface/problem.h"
#include "linear/lpengine.h"
#include "tests/support/messages.h"
#include "tests/support/models.h"
#include "tests/support/printed.h"

namespace tarnwick {
namespace {

using P = Problem*;

double a[4];
std::int32_t n;
char letters[] = {'C', 'C'};
TarnwickCallback f;

constexpr struct {
    const char* name;
    std::int32_t (*call)(P lp);
} HANDLE_FUNCTIONS[] = {
    {"loadquad",           [](P lp) { return loadquad(lp, nullptr, nullptr, nullptr, a, 4, a); } },
    {"loadctype",          [](P lp) { return loadctype(lp, letters); }                           },
    {"loadnltype",         [](P lp) { return loadnltype(lp, letters, letters); }                 },
    {"unloadprob",         [](P lp) { return unloadprob(&lp); }                                  },
    {"optimize",           [](P lp) { return optimize(lp); }                                     },
    {"mipoptimize",        [](P lp) { return mipoptimize(lp); }                                  },
    {"testnltype",         [](P lp) { return testnltype(lp, 1, a, &n, letters, letters); }       },
    {"solution",           [](P lp) { return solution(lp, &n, a, a, nullptr, nullptr, nullptr); }},
    {"objsa",              [](P lp) { return objsa(lp, 0, 0, a, a); }                            },
    {"rhssa",              [](P lp) { return rhssa(lp, 0, 0, a, a); }                            },
    {"varstat",            [](P lp) { return varstat(lp, 0, 0, a, a, a, a); }                    },
    {"constat",            [](P lp) { return constat(lp, 0, 0, a, a, a, a); }                    },
    {"findiis",            [](P lp) { return findiis(lp, &n, &n); }                              },
    {"getcallbackinfo",    [](P lp) { return getcallbackinfo(lp, nullptr, CB_NODES, &n); }       },
    {"setlpcallbackfunc",  [](P lp) { return setlpcallbackfunc(lp, nullptr); }                   },
    {"getlpcallbackfunc",  [](P lp) { return getlpcallbackfunc(lp, &f); }                        },
    {"setmipcallbackfunc", [](P lp) { return setmipcallbackfunc(lp, nullptr); }                  },
    {"getmipcallbackfunc", [](P lp) { return getmipcallbackfunc(lp, &f); }                       },
    {"setintparam",        [](P lp) { return setintparam(lp, PARAM_NODELIMIT, 1); }              },
    {"getintparam",        [](P lp) { return getintparam(lp, PARAM_NODELIMIT, &n); }             },
    {"setdblparam",        [](P lp) { return setdblparam(lp, PARAM_MIPGAP, 0.5); }               },
    {"getdblparam",        [](P lp) { return getdblparam(lp, PARAM_MIPGAP, a); }                 },
};

TEST(Handle, every_function_refuses_what_is_none)
{
    const LoadedModel model({{{{1}, 'L', 1}}, {1}});
    alignas(Problem) static unsigned char foreign[sizeof(Problem)];
    std::memcpy(foreign, static_cast<const void*>(model.lp), sizeof foreign);  // a copy is none
    const auto address = reinterpret_cast<std::uintptr_t>(foreign);
    const MessageLog log;
    for (const auto& function : HANDLE_FUNCTIONS)
        for (const auto handle : {std::uintptr_t{0}, ~std::uintptr_t{0},
                                  std::uintptr_t{0xFFFFFFFFU}, address, address + 1}) {
            SCOPED_TRACE(std::string(function.name) + ": " + std::to_string(handle));
            expect_told(function.call(reinterpret_cast<P>(handle)), 1, function.name,
                        handle - address <= 1 ? "lp pointer is invalid" : "lp pointer is NULL");
        }
}

TEST(Unload, keeps_the_callers_variable)
{
    const MessageLog log;
    LoadedModel model({{{{1}, 'L', 1}}, {1}});
    Problem* lp = model.lp;
    EXPECT_EQ(unloadprob(&lp), 0);
    EXPECT_EQ(lp, std::exchange(model.lp, nullptr));
    expect_told(unloadprob(nullptr), 1, "unloadprob", "lp_p is not valid");
}

// The module definition: what the public header declares, by name, and the rest by number.
TEST(Exports, module_definition_is_printed_from_the_table)
{
    const std::regex DECLARATION(R"(TARNWICK_API [^(;]*TARNWICK_CALL\s+(\w+)\()");
    const std::string header = source_text("include/tarnwick.h");
    std::string definition = "EXPORTS\n";
    for (std::sregex_iterator it(header.begin(), header.end(), DECLARATION), end; it != end; ++it)
        definition += "    " + (*it)[1].str() + "\n";
    for (const auto& row : numbered_exports())
        definition +=
            std::string("    ") + row.name + " @" + std::to_string(row.number) + " NONAME\n";
    expect_printed("interface/tarnwick.def", definition);
}

TEST(Exports, an_entry_is_found_by_its_number)
{
    EXPECT_EQ(getexport(45), reinterpret_cast<TarnwickEntry>(lpinit));
    EXPECT_EQ(getexport(62), reinterpret_cast<TarnwickEntry>(getintinfo));
    for (const std::int32_t number : {INT32_MIN, -1, 0, 40, 76, INT32_MAX})
        EXPECT_EQ(getexport(number), nullptr) << number;
}

}  // namespace
}  // namespace tarnwick
