#pragma once

#include <cstddef>
#include <string>

#include "tools/messages.h"
#include "tools/model.h"

namespace tarnwick::tool {

// Writes the model to a file. Throws Failure.
void write_model(const Model& model, const std::string& file, Messages& messages);

// How many numbers of the model have more decimals than the file holds.
std::size_t count_rounded(const Model& model);

}  // namespace tarnwick::tool
