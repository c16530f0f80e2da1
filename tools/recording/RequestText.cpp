#include "tools/recording/RequestText.h"

#include <cwchar>
#include <regex>

namespace tools {
namespace {

// Matches only the start of the text, because std::regex needs much stack for a long match.
std::wcmatch StartOf(const std::wstring& request) {
  static const std::wregex start(LR"((\s*\[\s*(-?\d{1,10})\s*,\s*)(-?\d{1,10})(?=\s*[,\]]))");
  std::wcmatch match;
  std::regex_search(request.c_str(), request.c_str() + request.size(), match, start,
                    std::regex_constants::match_continuous);
  return match;
}

}  // namespace

std::optional<int> CommandOf(const std::wstring& request) {
  const std::wcmatch start = StartOf(request);
  if (start.empty()) return std::nullopt;
  return static_cast<int>(std::wcstoll(start[2].first, nullptr, 10 /*base*/));
}

std::optional<unsigned long> ProcessOf(const std::wstring& request) {
  const std::wcmatch start = StartOf(request);
  if (start.empty()) return std::nullopt;
  return static_cast<unsigned long>(std::wcstoll(start[3].first, nullptr, 10 /*base*/));
}

std::wstring WithoutProcess(const std::wstring& request) {
  const std::wcmatch start = StartOf(request);
  if (start.empty()) return request;
  return start.str(1) + L'?' + start.suffix().str();
}

}  // namespace tools
