// Writes JSON text in its compact form. Runs in every process that loads the module.
#pragma once

#include "json/ListValue.h"

namespace base {

// Replaces what `out` held. False, with `out` empty, if there is something that JSON text cannot
// hold: binary, a double that is not finite, or a string of more than 2147483647 bytes in UTF-8,
// which is reported as a failed check too. A noncharacter is written as U+FFFD.
bool WriteJson(const ListValue& list, Utf16Text& out);

}  // namespace base
