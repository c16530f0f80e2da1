// Reads JSON text. Runs in every process that loads the module.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "json/ListValue.h"

namespace base {

// Beyond plain JSON: a leading byte order mark, comments, the escapes \v and \xHH, control
// characters inside strings, and one surplus byte after the root value are accepted. Lists and
// dictionaries nest at most 199 deep. Any error gives no value, and so does ill-formed UTF-8; an
// unpaired surrogate is read as U+FFFD.
// Gives the type of the root value. `values`, which must be empty, receives the elements of a list,
// else the value as its only element; after an error it is to be thrown away.
// `step` (1 or more) is for how much of the text room is made at least: another only costs more.
constexpr std::size_t kReadStep = 512;
std::optional<ValueType> ReadJson(std::string_view utf8, ListValue& values,
                                  std::size_t step = kReadStep);
std::optional<ValueType> ReadJson(Utf16View text, ListValue& values, std::size_t step = kReadStep);

}  // namespace base
