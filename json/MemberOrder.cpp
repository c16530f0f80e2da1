#include "json/MemberOrder.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "json/ListValue.h"

namespace base {

namespace {

// Compares two texts by their code points. The texts may have different encodings. The order is the
// same as the order of their bytes in UTF-8.
template <class A, class B>
int Compare(std::basic_string_view<A> a, std::basic_string_view<B> b) {
  const auto rank = [](auto unit) {
    const auto code = static_cast<char32_t>(unit);
    // Rank surrogates above all other units, because a pair of surrogates stands for a code point
    // above 0xFFFF.
    return code >= 0xE000 ? code - 0x800 : code >= 0xD800 ? code + 0x2000 : code;
  };
  const std::size_t shared = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < shared; ++i) {
    if (rank(a[i]) != rank(b[i])) return rank(a[i]) < rank(b[i]) ? -1 : 1;
  }
  return a.size() < b.size() ? -1 : a.size() > b.size();
}

int CompareKeys(const char* a, const char* b) {
  const StringView x = *ValueView(a).GetIfString(), y = *ValueView(b).GetIfString();
  if (x.wide.empty()) return y.wide.empty() ? Compare(x.ascii, y.ascii) : Compare(x.ascii, y.wide);
  return y.wide.empty() ? Compare(x.wide, y.ascii) : Compare(x.wide, y.wide);
}

bool KeyLess(std::string_view a, std::string_view b) { return CompareKeys(a.data(), b.data()) < 0; }
bool KeyNotLess(const char* a, const char* b) { return CompareKeys(a, b) >= 0; }

}  // namespace

char* SortMembers(std::span<char* const> members, char* end) {
  if (std::adjacent_find(members.begin(), members.end(), KeyNotLess) == members.end()) return end;

  std::vector<std::string_view> order;
  order.reserve(members.size());
  for (std::size_t i = 0; i < members.size(); ++i) {
    const char* const next = i + 1 < members.size() ? members[i + 1] : end;
    order.emplace_back(members[i], next - members[i]);
  }
  std::stable_sort(order.begin(), order.end(), KeyLess);

  std::vector<char> sorted;
  sorted.reserve(end - members.front());
  for (std::size_t i = 0; i < order.size(); ++i) {
    const bool replaced =
        i + 1 < order.size() && CompareKeys(order[i].data(), order[i + 1].data()) == 0;
    if (!replaced) sorted.insert(sorted.end(), order[i].begin(), order[i].end());
  }
  return std::copy(sorted.begin(), sorted.end(), members.front());
}

}  // namespace base
