// The order of a dictionary's members. Runs in every process that loads the module.
#pragma once

#include <span>

namespace base {

// Each member is a packed string and its packed value. The last one ends at `end`. Sorts the
// members by key and, of several with the same key, keeps the last. Returns the new end.
char* SortMembers(std::span<char* const> members, char* end);

}  // namespace base
