// Numbers that do not fit an integer. Runs in every process that loads the module.
#pragma once

#include <optional>
#include <string_view>

namespace base {

// `number` follows JSON's grammar. One too small for a double gives a zero of its sign, one too
// large nothing.
std::optional<double> ParseDouble(std::string_view number);

}  // namespace base
