#include "UTILITY/Utf.h"

#include <windows.h>

#include <climits>
#include <stdexcept>

namespace {

int CheckedLength(std::size_t length) {
  if (length > INT_MAX) throw std::length_error("text too long to convert");
  return static_cast<int>(length);
}

}  // namespace

std::string ToUtf8(std::wstring_view text) {
  const int units = CheckedLength(text.size());
  if (units == 0) return {};
  const auto convert = [&](char* buffer, int size) {
    return ::WideCharToMultiByte(CP_UTF8, 0 /*flags*/, text.data(), units, buffer, size,
                                 nullptr /*default char*/, nullptr /*default used*/);
  };
  std::string utf8(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
  convert(utf8.data(), static_cast<int>(utf8.size()));
  return utf8;
}

std::wstring ToUtf16(std::string_view text) {
  std::wstring wide(static_cast<std::size_t>(Utf16Length(text)), L'\0');
  CopyAsUtf16(text, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

int Utf16Length(std::string_view text) {
  if (text.empty()) return 0;
  return ::MultiByteToWideChar(CP_UTF8, 0 /*flags*/, text.data(), CheckedLength(text.size()),
                               nullptr, 0);
}

void CopyAsUtf16(std::string_view text, wchar_t* buffer, int units) {
  if (text.empty()) return;
  ::MultiByteToWideChar(CP_UTF8, 0 /*flags*/, text.data(), CheckedLength(text.size()), buffer,
                        units);
}
