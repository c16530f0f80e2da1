#include "json/MemberOrder.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "json/ListValue.h"

namespace base {

namespace {

std::string_view KeyOf(const char* member) { return *ValueView(member).GetIfString(); }
bool KeyLess(std::string_view a, std::string_view b) { return KeyOf(a.data()) < KeyOf(b.data()); }
bool KeyNotLess(const char* a, const char* b) { return KeyOf(a) >= KeyOf(b); }

}  // namespace

char* SortMembers(std::span<char* const> members, char* end) {
  if (std::adjacent_find(members.begin(), members.end(), KeyNotLess) == members.end()) return end;

  std::vector<std::string_view> order;
  order.reserve(members.size());
  for (std::size_t i = 0; i < members.size(); ++i) {
    const char* const behind = i + 1 < members.size() ? members[i + 1] : end;
    order.emplace_back(members[i], behind - members[i]);
  }
  std::stable_sort(order.begin(), order.end(), KeyLess);

  std::vector<char> sorted;
  sorted.reserve(end - members.front());
  for (std::size_t i = 0; i < order.size(); ++i) {
    const bool replaced =
        i + 1 < order.size() && KeyOf(order[i].data()) == KeyOf(order[i + 1].data());
    if (!replaced) sorted.insert(sorted.end(), order[i].begin(), order[i].end());
  }
  return std::copy(sorted.begin(), sorted.end(), members.front());
}

}  // namespace base
