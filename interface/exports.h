#pragma once

#include <cstdint>
#include <span>

#include "include/tarnwick.h"

namespace tarnwick {

// An engine entry, strategy or service that is exported by number alone.
struct NumberedExport {
    std::int32_t number;
    const char* name;
    TarnwickEntry address;
};

// All of them, by rising number. interface/tarnwick.def is printed from this table.
std::span<const NumberedExport> numbered_exports() noexcept;

}  // namespace tarnwick
