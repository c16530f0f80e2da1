// Runs in any program. Converts text between UTF-16, which Windows and the module use, and UTF-8,
// and makes text safe to print.
#pragma once

#include <windows.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace tessel {

// Narrow converts UTF-16 to UTF-8, and Wide converts UTF-8 to UTF-16. Ill-formed text becomes
// U+FFFD.
inline std::string Narrow(std::wstring_view text) {
  const int units = static_cast<int>(text.size());
  const int bytes =
      ::WideCharToMultiByte(CP_UTF8, 0 /*flags*/, text.data(), units, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(bytes), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0 /*flags*/, text.data(), units, result.data(), bytes, nullptr,
                        nullptr);
  return result;
}

inline std::wstring Wide(std::string_view text) {
  const int bytes = static_cast<int>(text.size());
  const int units = ::MultiByteToWideChar(CP_UTF8, 0 /*flags*/, text.data(), bytes, nullptr, 0);
  std::wstring result(static_cast<std::size_t>(units), L'\0');
  ::MultiByteToWideChar(CP_UTF8, 0 /*flags*/, text.data(), bytes, result.data(), units);
  return result;
}

namespace detail {

// Returns true for characters that change how a terminal shows other text: control characters, line
// separators, and characters that change the direction of text.
inline bool IsControl(wchar_t unit) {
  constexpr struct {
    wchar_t first, last;
  } kRanges[] = {{0, 0x1f},        {0x7f, 0x9f},     {0x61c, 0x61c},
                 {0x200e, 0x200f}, {0x2028, 0x202e}, {0x2066, 0x2069}};
  return std::ranges::any_of(
      kRanges, [unit](const auto& range) { return range.first <= unit && unit <= range.last; });
}

inline std::wstring HexDigits(wchar_t unit, int count) {
  std::wstring digits;
  for (int shift = 4 * (count - 1); shift >= 0; shift -= 4) {
    digits += L"0123456789abcdef"[unit >> shift & 15];
  }
  return digits;
}

inline std::wstring PrintableUnit(wchar_t unit) {
  if (unit == L'\\') return L"\\\\";
  if (unit == L'\n') return L"\\n";
  if (!IsControl(unit)) return {unit};
  return unit < 0x80 ? L"\\x" + HexDigits(unit, 2) : L"\\u" + HexDigits(unit, 4);
}

}  // namespace detail

// Returns the text for one line of a terminal. Characters that would change how the terminal shows
// other text become escapes (\n, \x1b, \u202e), and each backslash becomes two.
inline std::string Printable(std::string_view text) {
  std::wstring result;
  for (const wchar_t unit : Wide(text)) result += detail::PrintableUnit(unit);
  return Narrow(result);
}

// Returns the printable text in double quotes. A double quote in the text becomes \".
inline std::string Quoted(std::string_view text) {
  std::string result;
  for (const char character : Printable(text)) {
    if (character == '"') result += '\\';
    result += character;
  }
  return '"' + result + '"';
}
inline std::string Quoted(std::wstring_view text) { return Quoted(Narrow(text)); }

// Returns the handle as "0x..." without leading zeros.
inline std::string HandleText(HWND window) {
  char digits[16];
  const auto end = std::to_chars(digits, digits + sizeof(digits),
                                 reinterpret_cast<std::uintptr_t>(window), 16 /*base*/);
  return "0x" + std::string(digits, end.ptr);
}

}  // namespace tessel
