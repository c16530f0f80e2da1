// UTF-8 and UTF-16 as the reader, the writer and the archive see them: strict, and fast over ASCII.
// Used in every process that loads the module.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define JSON_HAS_SSE2 1
#endif

namespace base {

using Utf16Unit = std::conditional_t<sizeof(wchar_t) == 2, wchar_t, char16_t>;
using Utf16Text = std::basic_string<Utf16Unit>;
using Utf16View = std::basic_string_view<Utf16Unit>;

constexpr char32_t kReplacement = 0xFFFD;
constexpr std::size_t kMaxUtf8PerUnit = 3;

inline bool IsAscii(char byte) { return static_cast<signed char>(byte) >= 0; }
inline bool IsAscii(Utf16Unit unit) { return unit < 0x80; }

struct CodePoint {
  char32_t code;
  std::size_t length;  // of the ill-formed part if not valid
  bool valid;
};

// [text, end) is not empty. An ill-formed part is as long as a valid sequence could start with it.
inline CodePoint Decode(const char* text, const char* end) {
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

// UTF-16 knows no ill-formed text: an unpaired surrogate stands for U+FFFD.
inline CodePoint Decode(const Utf16Unit* text, const Utf16Unit* end) {
  const char32_t unit = *text;
  if (unit < 0xD800 || unit > 0xDFFF) return {unit, 1, true};
  if (unit < 0xDC00 && end - text > 1 && text[1] >= 0xDC00 && text[1] <= 0xDFFF)
    return {0x10000 + ((unit - 0xD800) << 10) + (text[1] - 0xDC00u), 2, true};
  return {kReplacement, 1, true};
}

inline char* PutUtf8(char32_t code, char* to) {
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

inline Utf16Unit* PutUtf16(char32_t code, Utf16Unit* to) {
  if (code < 0x10000) {
    *to++ = static_cast<Utf16Unit>(code);
  } else {
    *to++ = static_cast<Utf16Unit>(0xD800 + ((code - 0x10000) >> 10));
    *to++ = static_cast<Utf16Unit>(0xDC00 + (code & 0x3FF));
  }
  return to;
}

// What a copy of units does with those that are ASCII, and where it stops.
enum class Stop {
  kNonAscii,    // at nothing else
  kStringEnds,  // at a quote and a backslash, too
  kEscapes      // at what is not written into a JSON string as it stands, too
};

template <Stop kStop, class Unit>
inline bool IsPlain(Unit unit) {
  if (kStop != Stop::kNonAscii && (unit == '"' || unit == '\\')) return false;
  return IsAscii(unit) && (kStop != Stop::kEscapes || (unit >= 0x20 && unit != '<'));
}

#ifdef JSON_HAS_SSE2
// A bit for each of 16 bytes at which the copy stops; what is not ASCII has the highest bit.
template <Stop kStop>
inline unsigned StopBits(__m128i bytes) {
  const auto equal = [&bytes](char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
  __m128i stops = bytes;
  if constexpr (kStop != Stop::kNonAscii)
    stops = _mm_or_si128(stops, _mm_or_si128(equal('"'), equal('\\')));
  if constexpr (kStop == Stop::kEscapes) {
    const __m128i controls = _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20));
    stops = _mm_or_si128(stops, _mm_or_si128(controls, equal('<')));
  }
  return static_cast<unsigned>(_mm_movemask_epi8(stops));
}

inline __m128i LoadVector(const void* from) {
  return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
inline void StoreVector(void* to, __m128i vector) {
  _mm_storeu_si128(static_cast<__m128i*>(to), vector);
}

// Units beyond ASCII become bytes with the highest bit, whatever else. Half a vector has zeros
// behind.
inline __m128i LoadAsBytes(const char* from) { return LoadVector(from); }
inline __m128i LoadHalfAsBytes(const char* from) {
  return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
}
inline __m128i LoadClamped(const Utf16Unit* from) {
  // A later saturation is signed: what is above 0x7FFF would become 0.
  const __m128i units = LoadVector(from), beyond = _mm_srai_epi16(units, 15);
  return _mm_or_si128(_mm_andnot_si128(beyond, units), _mm_srli_epi16(beyond, 8));
}
inline __m128i LoadAsBytes(const Utf16Unit* from) {
  return _mm_packus_epi16(LoadClamped(from), LoadClamped(from + 8));
}
inline __m128i LoadHalfAsBytes(const Utf16Unit* from) {
  return _mm_packus_epi16(LoadClamped(from), _mm_setzero_si128());
}
inline void StoreBytes(char* to, __m128i bytes) { StoreVector(to, bytes); }
inline void StoreHalf(Utf16Unit* to, __m128i bytes) {
  StoreVector(to, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
}
inline void StoreBytes(Utf16Unit* to, __m128i bytes) {
  StoreHalf(to, bytes);
  StoreVector(to + 8, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
}
#endif

// Copies plain ASCII between any two of the encodings, sixteen units at a step. Gives where it
// stopped; `to` has room for kCopySlack units more than those that there are to copy.
constexpr std::size_t kCopySlack = 16;

template <Stop kStop, class From, class To>
inline const From* CopyPlain(const From* from, const From* end, To*& to) {
#ifdef JSON_HAS_SSE2
  const auto copy = [&](__m128i bytes, unsigned stops, int count) {
    StoreBytes(to, bytes);
    const int copied = stops != 0 ? std::countr_zero(stops) : count;
    from += copied;
    to += copied;
    return stops == 0;
  };
  while (end - from >= 16) {
    const __m128i bytes = LoadAsBytes(from);
    if (!copy(bytes, StopBits<kStop>(bytes), 16)) return from;
  }
  if (end - from >= 8) {
    const __m128i bytes = LoadHalfAsBytes(from);
    if (!copy(bytes, StopBits<kStop>(bytes) & 0xFF, 8)) return from;
  }
#endif
  while (from != end && IsPlain<kStop>(*from)) *to++ = static_cast<To>(*from++);
  return from;
}

// A copy in another alphabet than ASCII's meets ASCII here and there: so many code points go by one
// at a time before it tries a vector again.
constexpr int kScalarRun = 16;

// UTF-8 of any text; `to` has room for kMaxUtf8PerUnit bytes a unit and kCopySlack. Gives the end.
inline char* CopyAsUtf8(Utf16View text, char* to) {
  const Utf16Unit* from = text.data();
  const Utf16Unit* const end = from + text.size();
  while (from = CopyPlain<Stop::kNonAscii>(from, end, to), from != end) {
    for (int i = 0; i < kScalarRun && from != end; ++i) {
      const CodePoint next = Decode(from, end);
      from += next.length;
      to = PutUtf8(next.code, to);
    }
  }
  return to;
}

// UTF-16 of well-formed text: the units that it has, and the copy, which writes no unit more.
std::size_t Utf16Length(std::string_view utf8);
void CopyAsUtf16(std::string_view utf8, Utf16Unit* to);

}  // namespace base
