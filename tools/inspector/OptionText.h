// Part of tessel. Parses the option values "X,Y" and "A,B,C", and formats them.
#pragma once

#include <optional>
#include <string>

#include "tools/inspector/InspectorOptions.h"

// `text` is "X,Y", two 32-bit integers.
std::optional<POINT> ParsePoint(const std::string& text);

// `text` is "A,B,C". A comma or a backslash inside one of the three texts is escaped with a
// backslash.
std::optional<SearchTexts> ParseSearchTexts(const std::string& text);

// These functions format a value so that it can be parsed again.
std::string TextOf(POINT point);
std::string TextOf(const SearchTexts& texts);
