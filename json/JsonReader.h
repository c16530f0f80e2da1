// Reads JSON text. Runs in every process that loads the module.
#pragma once

#include <optional>
#include <string_view>

#include "json/Value.h"

namespace base {

// Beyond plain JSON: a leading byte order mark, comments, the escapes \v and \xHH, control
// characters inside strings, and one surplus byte after the root value are accepted. Lists and
// dictionaries nest at most 199 deep. Any error gives no value.
std::optional<Value> ReadJson(std::string_view utf8);

}  // namespace base
