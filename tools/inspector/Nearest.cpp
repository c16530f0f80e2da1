#include "tools/inspector/Nearest.h"

#include <windows.h>

#include <algorithm>
#include <numeric>
#include <optional>
#include <utility>

#include "tessel/Text.h"

namespace {

std::wstring Lowered(const std::string& text) {
  std::wstring lowered = tessel::Wide(text);
  ::CharLowerBuffW(lowered.data(), static_cast<DWORD>(lowered.size()));
  return lowered;
}

// Returns how many letters must be added, removed or replaced to turn one text into the other.
std::size_t EditDistance(const std::wstring& from, const std::wstring& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const wchar_t unit : from) {
    std::size_t diagonal = row[0]++;
    for (std::size_t i = 0; i < to.size(); ++i) {
      const std::size_t replaced = diagonal + (unit == to[i] ? 0 : 1);
      diagonal = row[i + 1];
      row[i + 1] = std::min({replaced, diagonal + 1, row[i] + 1});
    }
  }
  return row.back();
}

bool Contains(const std::wstring& outer, const std::wstring& inner) {
  return !inner.empty() && outer.find(inner) != outer.npos;
}

// Returns a number that is smaller for a more similar text, or nothing if the texts are not
// similar. Unless one text contains the other, at most a third of the letters (rounded up) may
// differ, because otherwise short names match by accident.
std::optional<std::size_t> Difference(const std::wstring& left, const std::wstring& right) {
  const std::size_t distance = EditDistance(left, right);
  const std::size_t limit = (std::max(left.size(), right.size()) + 2) / 3;
  if (distance <= limit) return distance;
  if (Contains(left, right) || Contains(right, left)) return distance;
  return std::nullopt;
}

}  // namespace

std::vector<std::string> Nearest(const std::string& text,
                                 const std::vector<std::string>& candidates, std::size_t most) {
  const std::wstring wanted = Lowered(text);
  std::vector<std::pair<std::size_t, std::string>> similar;
  for (const std::string& candidate : candidates) {
    if (const auto difference = Difference(wanted, Lowered(candidate))) {
      similar.emplace_back(*difference, candidate);
    }
  }
  std::ranges::stable_sort(similar, {}, &std::pair<std::size_t, std::string>::first);
  std::vector<std::string> names;
  for (std::size_t i = 0; i < std::min(most, similar.size()); ++i)
    names.push_back(similar[i].second);
  return names;
}

std::string DidYouMean(const std::string& text, const std::vector<std::string>& candidates) {
  const std::vector<std::string> names = Nearest(text, candidates, 1);
  return names.empty() ? "" : "did you mean '" + names.front() + "'?";
}
