// Part of tessel. Finds the parents of all elements with few calls.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tools/inspector/Inspection.h"

// The id of each element, with the id of its parent. The id of a root's parent is empty.
using Parents = std::map<std::wstring, std::wstring>;

// `elements` are all elements of the content.
Parents FindParents(Inspection& inspection, std::vector<tessel::Element>& elements);
