// Writes JSON text in its compact form. Runs in every process that loads the module.
#pragma once

#include <string>
#include <string_view>

#include "json/Value.h"

namespace base {

// Both replace what `out` held. False, with `out` empty, if there is something that JSON text
// cannot hold: binary, a double that is not finite, or a string of more than 2147483647 bytes,
// which is reported as a failed check too.
bool WriteJson(const Value& value, std::string& out);
bool WriteJson(const ListValue& list, std::string& out);

// The same for a string alone. What is not valid UTF-8 is written as U+FFFD.
bool WriteJson(std::string_view utf8, std::string& out);

}  // namespace base
