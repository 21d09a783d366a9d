#pragma once

#include <string>

#include "tools/texts.h"

namespace tarnwick::tool {

std::string help_of(const CommandText& command);
std::string manual_page();

}  // namespace tarnwick::tool
