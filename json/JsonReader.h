// Reads JSON text. Runs in every process that loads the module.
#pragma once

#include <optional>
#include <string_view>

#include "json/ListValue.h"

namespace base {

struct Document {
  ValueType type;
  ListValue values;  // the elements of a list, else the value as the only element
};

// Beyond plain JSON: a leading byte order mark, comments, the escapes \v and \xHH, control
// characters inside strings, and one surplus byte after the root value are accepted. Lists and
// dictionaries nest at most 199 deep. Any error gives no value, and so does ill-formed UTF-8; an
// unpaired surrogate is read as U+FFFD.
std::optional<Document> ReadJson(std::string_view utf8);
std::optional<Document> ReadJson(Utf16View text);

}  // namespace base
