// Part of tessel. Reads all elements of the content for the command `tree`.
#pragma once

#include <string>

#include "tools/inspector/Inspection.h"
#include "tools/inspector/Report.h"

// The names of the states. The broker returns states in the same way as attributes.
inline constexpr const char* kStates[] = {"checked", "selected", "value"};

// Returns the id of the focused element, or an empty text if the focus is not known.
std::string ReadFocus(Inspection& inspection);

// Returns the elements as in a scene file, with the parts that the options select.
Json ReadElements(Inspection& inspection);

// Finds all elements of the content, without reading them.
std::vector<tessel::Element> FindAllElements(Inspection& inspection);
