#include "tools/shared/ConsoleText.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iostream>

namespace tools {
namespace {

// Returns true for characters that change how a terminal shows other text: control characters, line
// separators, and characters that change the direction of text.
bool IsControl(wchar_t unit) {
  constexpr struct {
    wchar_t first, last;
  } kRanges[] = {{0, 0x1f},        {0x7f, 0x9f},     {0x61c, 0x61c},
                 {0x200e, 0x200f}, {0x2028, 0x202e}, {0x2066, 0x2069}};
  return std::ranges::any_of(
      kRanges, [unit](const auto& range) { return range.first <= unit && unit <= range.last; });
}

std::wstring HexDigits(wchar_t unit, int count) {
  std::wstring digits;
  for (int shift = 4 * (count - 1); shift >= 0; shift -= 4) {
    digits += L"0123456789abcdef"[unit >> shift & 15];
  }
  return digits;
}

}  // namespace

std::string Narrow(std::wstring_view text) {
  const int units = static_cast<int>(text.size());
  const int bytes =
      ::WideCharToMultiByte(CP_UTF8, 0 /*flags*/, text.data(), units, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(bytes), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0 /*flags*/, text.data(), units, result.data(), bytes, nullptr,
                        nullptr);
  return result;
}

std::wstring Wide(std::string_view text) {
  const int bytes = static_cast<int>(text.size());
  const int units = ::MultiByteToWideChar(CP_UTF8, 0 /*flags*/, text.data(), bytes, nullptr, 0);
  std::wstring result(static_cast<std::size_t>(units), L'\0');
  ::MultiByteToWideChar(CP_UTF8, 0 /*flags*/, text.data(), bytes, result.data(), units);
  return result;
}

std::string Quoted(std::string_view text) {
  std::string result;
  for (const char character : Printable(text)) {
    if (character == '"') result += '\\';
    result += character;
  }
  return '"' + result + '"';
}

std::string Printable(std::string_view text) {
  std::wstring result;
  for (const wchar_t unit : Wide(text)) {
    if (unit == L'\\') {
      result += L"\\\\";
    } else if (unit == L'\n') {
      result += L"\\n";
    } else if (IsControl(unit)) {
      result += unit < 0x80 ? L"\\x" + HexDigits(unit, 2) : L"\\u" + HexDigits(unit, 4);
    } else {
      result += unit;
    }
  }
  return Narrow(result);
}

std::string HandleText(HWND window) {
  char digits[16];
  const auto end = std::to_chars(digits, digits + sizeof(digits),
                                 reinterpret_cast<std::uintptr_t>(window), 16 /*base*/);
  return "0x" + std::string(digits, end.ptr);
}

HWND HandleFromText(std::string_view text) {
  if (!text.starts_with("0x") && !text.starts_with("0X")) return nullptr;
  std::uintptr_t value = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data() + 2, end, value, 16 /*base*/);
  if (read.ec != std::errc() || read.ptr != end) return nullptr;
  return reinterpret_cast<HWND>(value);
}

void PrepareConsole() { ::SetConsoleOutputCP(CP_UTF8); }

void PrintLine(std::string_view text) { std::cout << text << std::endl; }

}  // namespace tools
