#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "control/services.h"
#include "include/tarnwick.h"
#include "interface/exports.h"
#include "linear/lpengine.h"
#include "tests/support/printed.h"

namespace tarnwick {
namespace {

// The module definition: what the public header declares, by name, and the rest by number.
std::string module_definition()
{
    static const std::regex DECLARATION(R"(TARNWICK_API [^(;]*TARNWICK_CALL\s+(\w+)\()");
    const std::string header = source_text("include/tarnwick.h");
    std::string definition = "EXPORTS\n";
    for (std::sregex_iterator it(header.begin(), header.end(), DECLARATION), end; it != end; ++it)
        definition += "    " + (*it)[1].str() + "\n";
    for (const auto& row : numbered_exports())
        definition +=
            "    " + std::string(row.name) + " @" + std::to_string(row.number) + " NONAME\n";
    return definition;
}

TEST(Exports, module_definition_is_printed_from_the_table)
{
    expect_printed("interface/tarnwick.def", module_definition());
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
