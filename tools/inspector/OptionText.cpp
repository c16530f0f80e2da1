#include "tools/inspector/OptionText.h"

#include <charconv>

std::optional<POINT> ParsePoint(const std::string& text) {
  POINT point = {};
  const char* const end = text.data() + text.size();
  const auto x = std::from_chars(text.data(), end, point.x);
  if (x.ec != std::errc() || x.ptr == end || *x.ptr != ',') return std::nullopt;
  const auto y = std::from_chars(x.ptr + 1, end, point.y);
  if (y.ec != std::errc() || y.ptr != end) return std::nullopt;
  return point;
}

std::optional<SearchTexts> ParseSearchTexts(const std::string& text) {
  SearchTexts texts;
  std::size_t part = 0;
  for (auto character = text.begin(); character != text.end(); ++character) {
    if (*character == ',') {
      if (++part == texts.size()) return std::nullopt;
      continue;
    }
    if (*character == '\\') {
      ++character;
      if (character == text.end() || (*character != ',' && *character != '\\')) return std::nullopt;
    }
    texts[part] += *character;
  }
  if (part + 1 != texts.size()) return std::nullopt;
  return texts;
}

std::string TextOf(POINT point) { return std::to_string(point.x) + ',' + std::to_string(point.y); }

std::string TextOf(const SearchTexts& texts) {
  std::string result;
  for (const std::string& text : texts) {
    if (&text != texts.data()) result += ',';
    for (const char character : text) {
      if (character == ',' || character == '\\') result += '\\';
      result += character;
    }
  }
  return result;
}
