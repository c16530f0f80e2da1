#include "tools/shared/ConsoleText.h"

#include <charconv>
#include <cstdint>
#include <iostream>

namespace tools {

HWND HandleFromText(std::string_view text) {
  if (!text.starts_with("0x") && !text.starts_with("0X")) return nullptr;
  std::uintptr_t value = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data() + 2, end, value, 16 /*base*/);
  if (read.ec != std::errc() || read.ptr != end) return nullptr;
  return reinterpret_cast<HWND>(value);
}

std::string PrintablePath(std::wstring_view path) {
  std::string text = tessel::Printable(tessel::Narrow(path));
  for (std::size_t at = 0; (at = text.find("\\\\", at)) != text.npos; ++at) text.erase(at, 1);
  return text;
}

void PrepareConsole() { ::SetConsoleOutputCP(CP_UTF8); }

void PrintLine(std::string_view text) { std::cout << text << std::endl; }

}  // namespace tools
