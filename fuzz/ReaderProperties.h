// What holds of every text that a reader is given, whichever reader it is.
#pragma once

#include <optional>
#include <string_view>

#include "fuzz/PlainUtf.h"
#include "json/JsonReader.h"

// Reads the text and checks what reading costs, and that what was read is the same when it is
// written and read again.
std::optional<base::Document> ReadChecked(std::string_view utf8);
std::optional<base::Document> ReadChecked(base::Utf16View text);

bool SameDocument(const std::optional<base::Document>& a, const std::optional<base::Document>& b);
