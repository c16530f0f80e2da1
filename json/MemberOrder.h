// Runs in the client and in the broker. Sorts the members of a dictionary.
#pragma once

#include <span>

namespace base {

// Sorts the members by key. Of several members with the same key, keeps only the last. `members`
// holds the address of each member, a packed string (the key) with a packed value after it. The
// members follow one another without gaps, and the last member ends at `end`. Returns the new end.
char* SortMembers(std::span<char* const> members, char* end);

}  // namespace base
