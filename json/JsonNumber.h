// Runs in the client and in the broker. Converts the text of a number to a double.
#pragma once

#include <optional>
#include <string_view>

namespace base {

// `number` must follow the grammar of JSON. Returns a zero of the same sign if the number is too
// close to zero for a double, and nothing if it is too large.
std::optional<double> ParseDouble(std::string_view number);

}  // namespace base
