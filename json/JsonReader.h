// Runs in the client and in the broker. Reads JSON text.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "json/ListValue.h"

namespace base {

// Accepts more than plain JSON: a leading byte order mark, comments, the escapes \v and \xHH,
// control characters inside strings, and one extra unit at the end of the text, which is ignored
// (any byte of UTF-8, or an ASCII unit of UTF-16). Lists and dictionaries nest at most 199 deep.
// Ill-formed UTF-8 in the text is an error; an unpaired surrogate is read as U+FFFD.
//
// Returns the type of the root value, or nothing on any error. `values` must be empty. It receives
// the elements of a list, or any other value as its only element. After an error, its content is
// undefined. Throws std::bad_alloc.
//
// The reader does not reserve memory for a whole list at once. It reserves enough for the next
// `step` units of the text (bytes of UTF-8, or 16-bit units of UTF-16), reads them, and so on.
// `step` is at least 1. It changes the speed, not the result.
constexpr std::size_t kReadStep = 512;
std::optional<ValueType> ReadJson(std::string_view utf8, ListValue& values,
                                  std::size_t step = kReadStep);
std::optional<ValueType> ReadJson(Utf16View text, ListValue& values, std::size_t step = kReadStep);

}  // namespace base
