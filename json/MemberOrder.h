// The order of a dictionary's members. Runs in every process that loads the module.
#pragma once

#include <span>

namespace base {

// Each member is a string and a value, packed; the last one ends at `end`. Sorts them by their
// keys; of those with the same key the last one stays. Gives the new end.
char* SortMembers(std::span<char* const> members, char* end);

}  // namespace base
