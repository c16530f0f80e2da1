// Runs in the client and in the broker. Decodes and encodes code points in UTF-8 and UTF-16.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

namespace base {

using Utf16Unit = std::conditional_t<sizeof(wchar_t) == 2, wchar_t, char16_t>;
using Utf16Text = std::basic_string<Utf16Unit>;
using Utf16View = std::basic_string_view<Utf16Unit>;

constexpr char32_t kReplacement = 0xFFFD;

inline bool IsAscii(char byte) { return static_cast<signed char>(byte) >= 0; }
inline bool IsAscii(Utf16Unit unit) { return unit < 0x80; }
inline bool IsSurrogate(Utf16Unit unit) { return (unit & 0xF800) == 0xD800; }
inline bool IsHighSurrogate(Utf16Unit unit) { return (unit & 0xFC00) == 0xD800; }

struct CodePoint {
  char32_t code;
  std::size_t length;  // of the code point, or of the ill-formed part, in units
  bool valid;
};

// Decodes the first code point of the UTF-8 text [text, end), which must not be empty. An
// ill-formed part has at least one byte and ends before the first byte that cannot continue a valid
// sequence.
inline CodePoint Decode(const char* text, const char* end) {
  const auto lead = static_cast<unsigned char>(*text);
  if (lead < 0x80) return {lead, 1, true};
  if (lead < 0xC2 || lead > 0xF4) return {kReplacement, 1, false};
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  // Limits of the second byte exclude overlong forms, surrogates and values above U+10FFFF.
  unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  char32_t code = lead & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i, low = 0x80, high = 0xBF) {
    if (text + i == end) return {kReplacement, i, false};
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < low || byte > high) return {kReplacement, i, false};
    code = code << 6 | (byte & 0x3F);
  }
  return {code, length, true};
}

// Decodes the first code point of UTF-16 text. The result is always valid, because an unpaired
// surrogate is decoded as U+FFFD.
inline CodePoint Decode(const Utf16Unit* text, const Utf16Unit* end) {
  const char32_t unit = *text;
  if (!IsSurrogate(*text)) return {unit, 1, true};
  if (unit < 0xDC00 && end - text > 1 && text[1] >= 0xDC00 && text[1] <= 0xDFFF)
    return {0x10000 + ((unit - 0xD800) << 10) + (text[1] - 0xDC00u), 2, true};
  return {kReplacement, 1, true};
}

// Writes a code point as UTF-8 and returns the end. Code points below 0x10000 take up to three
// bytes, all others take four.
inline char* Encode(char32_t code, char* to) {
  const auto put = [&to](char32_t byte) { *to++ = static_cast<char>(byte); };
  if (code < 0x80) {
    put(code);
    return to;
  }
  if (code < 0x800) {
    put(0xC0 | code >> 6);
  } else {
    if (code < 0x10000) {
      put(0xE0 | code >> 12);
    } else {
      put(0xF0 | code >> 18);
      put(0x80 | (code >> 12 & 0x3F));
    }
    put(0x80 | (code >> 6 & 0x3F));
  }
  put(0x80 | (code & 0x3F));
  return to;
}

inline Utf16Unit* Encode(char32_t code, Utf16Unit* to) {
  if (code < 0x10000) {
    *to++ = static_cast<Utf16Unit>(code);
  } else {
    *to++ = static_cast<Utf16Unit>(0xD800 + ((code - 0x10000) >> 10));
    *to++ = static_cast<Utf16Unit>(0xDC00 + (code & 0x3FF));
  }
  return to;
}

}  // namespace base
