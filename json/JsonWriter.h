// Runs in the client and in the broker. Writes JSON text in its compact form.
#pragma once

#include "json/ListValue.h"

namespace base {

// Replaces the content of `out`. Returns false and leaves `out` empty if a value has no JSON form:
// a binary value, a double that is not finite, or a string of more than 2147483647 bytes in UTF-8.
// For such a string, WriteJson also calls the hook in json/Check.h. A noncharacter is written as
// U+FFFD.
bool WriteJson(const ListValue& list, Utf16Text& out);

}  // namespace base
