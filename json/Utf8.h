// UTF-8 as both the reader and the writer see it: strict, and fast over plain ASCII.
// Used in every process that loads the module.
#pragma once

#include <bit>
#include <cstddef>
#include <string>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define JSON_HAS_SSE2 1
#endif

namespace base {

inline bool IsAscii(char byte) { return static_cast<signed char>(byte) >= 0; }

struct CodePoint {
  char32_t code;
  std::size_t length;  // of the ill-formed part if not valid
  bool valid;
};

// [text, end) is not empty. An ill-formed part is as long as a valid sequence could start with it.
inline CodePoint DecodeUtf8(const char* text, const char* end) {
  const auto lead = static_cast<unsigned char>(*text);
  if (lead < 0x80) return {lead, 1, true};
  if (lead < 0xC2 || lead > 0xF4) return {0, 1, false};
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  // The second byte rules out overlong forms, surrogates and what lies above U+10FFFF.
  unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  char32_t code = lead & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i, low = 0x80, high = 0xBF) {
    if (text + i == end) return {0, i, false};
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < low || byte > high) return {0, i, false};
    code = code << 6 | (byte & 0x3F);
  }
  return {code, length, true};
}

inline void AppendUtf8(char32_t code, std::string& out) {
  const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
  if (code < 0x80) return put(code);
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
}

// Plain bytes need no thought in a JSON string: printable ASCII but for the quote, the backslash
// and the less-than sign.
inline bool IsPlain(char byte) {
  return static_cast<signed char>(byte) >= 0x20 && byte != '"' && byte != '\\' && byte != '<';
}

#ifdef JSON_HAS_SSE2
// A bit for each byte that is not plain.
inline unsigned SpecialBytes(__m128i bytes) {
  const auto equal = [&bytes](char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
  const __m128i beyond = _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20));  // signed: at both ends
  const __m128i special =
      _mm_or_si128(_mm_or_si128(beyond, equal('<')), _mm_or_si128(equal('"'), equal('\\')));
  return static_cast<unsigned>(_mm_movemask_epi8(special));
}
#endif

inline const char* SkipPlain(const char* text, const char* end) {
#ifdef JSON_HAS_SSE2
  for (; end - text >= 16; text += 16) {
    const unsigned special = SpecialBytes(_mm_loadu_si128(reinterpret_cast<const __m128i*>(text)));
    if (special != 0) return text + std::countr_zero(special);
  }
  if (end - text >= 8) {
    const unsigned special =
        SpecialBytes(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(text))) & 0xFF;
    if (special != 0) return text + std::countr_zero(special);
    text += 8;
  }
#endif
  while (text != end && IsPlain(*text)) ++text;
  return text;
}

}  // namespace base
