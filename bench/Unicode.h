// The platform's type for UTF-16 text, and its converters between UTF-8 and UTF-16. Also HandedOut,
// the type of a text that a reader returns to the program: a BSTR on Windows, otherwise a string.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#ifdef _WIN32
#include <windows.h>
// oleauto.h needs windows.h before it
#include <oleauto.h>

#include "ComBstr.h"
#else
#include <codecvt>
#endif

namespace bench {

#ifdef _WIN32

using Unit = wchar_t;
using HandedOut = ATL::CComBSTR;

inline std::size_t LengthOf(const HandedOut& text) { return text.Length(); }
inline const Unit* UnitsOf(const HandedOut& text) { return text.m_str; }

inline HandedOut HandOut(std::wstring_view text) {
  HandedOut handed;
  handed.Attach(::SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
  return handed;
}

inline HandedOut HandOutUtf8(std::string_view utf8) {
  const int bytes = static_cast<int>(utf8.size());
  const int units = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, nullptr, 0);
  HandedOut handed;
  handed.Attach(::SysAllocStringLen(nullptr, static_cast<UINT>(units)));
  ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, handed.m_str, units);
  return handed;
}

inline std::string ToUtf8(std::wstring_view text) {
  const int units = static_cast<int>(text.size());
  std::string utf8;
  utf8.resize(static_cast<std::size_t>(
      ::WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr)));
  ::WideCharToMultiByte(CP_UTF8, 0, text.data(), units, utf8.data(), static_cast<int>(utf8.size()),
                        nullptr, nullptr);
  return utf8;
}

inline std::wstring ToUtf16(std::string_view utf8) {
  const int bytes = static_cast<int>(utf8.size());
  std::wstring text;
  text.resize(
      static_cast<std::size_t>(::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, nullptr, 0)));
  ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, text.data(), static_cast<int>(text.size()));
  return text;
}

#else

using Unit = char16_t;
using HandedOut = std::u16string;

inline std::size_t LengthOf(const HandedOut& text) { return text.size(); }
inline const Unit* UnitsOf(const HandedOut& text) { return text.data(); }

// The standard library's converter. It is faster than iconv for short texts, and as fast as iconv
// for long texts.
inline const std::codecvt_utf8_utf16<char16_t> facet;

inline std::u16string ToUtf16(std::string_view utf8) {
  std::u16string text(utf8.size(), u'\0');
  std::mbstate_t state = {};
  const char* read = nullptr;
  char16_t* written = nullptr;
  facet.in(state, utf8.data(), utf8.data() + utf8.size(), read, text.data(),
           text.data() + text.size(), written);
  text.resize(static_cast<std::size_t>(written - text.data()));
  return text;
}

inline std::string ToUtf8(std::u16string_view text) {
  std::string utf8(text.size() * 3, '\0');
  std::mbstate_t state = {};
  const char16_t* read = nullptr;
  char* written = nullptr;
  facet.out(state, text.data(), text.data() + text.size(), read, utf8.data(),
            utf8.data() + utf8.size(), written);
  utf8.resize(static_cast<std::size_t>(written - utf8.data()));
  return utf8;
}

inline HandedOut HandOut(std::u16string_view text) { return HandedOut(text); }
inline HandedOut HandOutUtf8(std::string_view utf8) { return ToUtf16(utf8); }

#endif

using Text = std::basic_string<Unit>;
using TextView = std::basic_string_view<Unit>;

}  // namespace bench
