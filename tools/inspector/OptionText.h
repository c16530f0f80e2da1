// tessel. The texts of options that are more than a text or a number.
#pragma once

#include <optional>
#include <string>

#include "tools/inspector/InspectorOptions.h"

// "X,Y", two integers of 32 bits.
std::optional<POINT> ParsePoint(const std::string& text);

// "A,B,C"; a backslash stands before a comma or a backslash that belongs to a text.
std::optional<SearchTexts> ParseSearchTexts(const std::string& text);

// The reverse.
std::string TextOf(POINT point);
std::string TextOf(const SearchTexts& texts);
