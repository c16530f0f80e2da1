#include "tools/shared/ConsoleText.h"

#include <charconv>
#include <cstdint>
#include <iostream>

namespace tools {

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

std::string Quoted(std::string_view text) { return '"' + Printable(text) + '"'; }

std::string Printable(std::string_view text) {
  constexpr char kHexDigits[] = "0123456789abcdef";
  std::string result;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && byte != 0x7f) {
      result += character;
    } else if (byte == '\n') {
      result += "\\n";
    } else {
      result += {'\\', 'x', kHexDigits[byte >> 4], kHexDigits[byte & 15]};
    }
  }
  return result;
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
