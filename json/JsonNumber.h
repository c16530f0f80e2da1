// Numbers that do not fit an integer. Runs in every process that loads the module.
#pragma once

#include <optional>
#include <string_view>

namespace base {

// `number` follows JSON's grammar. Returns a zero of the same sign if it is too small for a double,
// nothing if it is too large.
std::optional<double> ParseDouble(std::string_view number);

}  // namespace base
