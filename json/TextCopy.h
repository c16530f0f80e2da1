// Runs in the client and in the broker. Copies text 16 bytes at a time, up to the first unit that
// needs special treatment. Most of the time of reading and writing messages is spent here. Needs
// SSE2, which every x86-64 processor has.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "json/Utf.h"

namespace base {

// Where a copy of text stops. The values are in order: each value includes the stops of the values
// above it.
enum class Stop {
  // A copy of ASCII stops at a unit that is not ASCII. Any other copy stops at a surrogate and at a
  // unit above the surrogates.
  kLimits,
  kStringEnds,  // a copy stops at a quote or a backslash
  kEscapes      // a copy stops at a unit that the JSON writer escapes
};

template <Stop kStop, class Unit>
inline bool IsPlain(Unit unit) {
  if (kStop != Stop::kLimits && (unit == '"' || unit == '\\')) return false;
  if (kStop != Stop::kEscapes) return true;
  return (unit >= 0x20 || !IsAscii(unit)) && unit != '<';
}

inline __m128i LoadVector(const void* from) {
  return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
inline __m128i LoadHalf(const void* from) {
  return _mm_loadl_epi64(static_cast<const __m128i*>(from));
}
inline void StoreHalf(void* to, __m128i vector) {
  _mm_storel_epi64(static_cast<__m128i*>(to), vector);
}
inline void StoreVector(void* to, __m128i vector) {
  _mm_storeu_si128(static_cast<__m128i*>(to), vector);
}

// Returns one bit for each of 16 bytes. The bit is set if a copy of ASCII stops at this byte.
template <Stop kStop>
inline unsigned StopBits(__m128i bytes) {
  const auto equal = [&bytes](char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
  // A copy stops at each byte whose top bit is set in `stops`. Bytes beyond ASCII already have
  // their top bit set.
  __m128i stops = bytes;
  if constexpr (kStop != Stop::kLimits)
    stops = _mm_or_si128(stops, _mm_or_si128(equal('"'), equal('\\')));
  if constexpr (kStop == Stop::kEscapes) {
    const __m128i controls = _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20));
    stops = _mm_or_si128(stops, _mm_or_si128(controls, equal('<')));
  }
  return static_cast<unsigned>(_mm_movemask_epi8(stops));
}

// Returns a mask with two bits for each of 8 units. Both bits are set if the copy must stop at the
// unit. It stops at every unit from U+D800 on, not only at surrogates: one comparison is then
// enough, and units above the surrogates are rare.
template <Stop kStop>
inline unsigned WideStopBits(__m128i units) {
  const auto equal = [](__m128i a, short b) { return _mm_cmpeq_epi16(a, _mm_set1_epi16(b)); };
  const auto atMost = [&equal, &units](unsigned short limit) {
    return equal(_mm_subs_epu16(units, _mm_set1_epi16(static_cast<short>(limit))), 0);
  };
  unsigned stops = ~_mm_movemask_epi8(atMost(0xD7FF)) & 0xFFFF;
  if constexpr (kStop != Stop::kLimits) {
    __m128i more = _mm_or_si128(equal(units, '"'), equal(units, '\\'));
    if constexpr (kStop == Stop::kEscapes) {
      const __m128i even = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xFFFE)));
      more = _mm_or_si128(_mm_or_si128(more, atMost(0x1F)), equal(units, '<'));
      more = _mm_or_si128(more, equal(even, 0x2028));  // true for U+2028 and U+2029
    }
    stops |= static_cast<unsigned>(_mm_movemask_epi8(more));
  }
  return stops;
}

// Prepares 16-bit units so that they can be packed into bytes. Units beyond ASCII become bytes
// beyond ASCII.
inline __m128i Narrow(__m128i units) {
  // The packing reads its input as signed and would turn units above 0x7FFF into 0.
  const __m128i beyond = _mm_srai_epi16(units, 15);
  return _mm_or_si128(_mm_andnot_si128(beyond, units), _mm_srli_epi16(beyond, 8));
}
inline __m128i LoadAsBytes(const char* from) { return LoadVector(from); }
inline __m128i LoadAsBytes(const Utf16Unit* from) {
  return _mm_packus_epi16(Narrow(LoadVector(from)), Narrow(LoadVector(from + 8)));
}
inline __m128i LoadHalfAsBytes(const char* from) { return LoadHalf(from); }
inline __m128i LoadHalfAsBytes(const Utf16Unit* from) {
  return _mm_packus_epi16(Narrow(LoadVector(from)), _mm_setzero_si128());
}
inline __m128i LoadHalfAsUnits(const char* from) {
  return _mm_unpacklo_epi8(LoadHalf(from), _mm_setzero_si128());
}
inline __m128i LoadHalfAsUnits(const Utf16Unit* from) { return LoadVector(from); }
inline void StoreHalfOfBytes(char* to, __m128i bytes) { StoreHalf(to, bytes); }
inline void StoreHalfOfBytes(Utf16Unit* to, __m128i bytes) {
  StoreVector(to, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
}
inline void StoreBytes(char* to, __m128i bytes) { StoreVector(to, bytes); }
inline void StoreBytes(Utf16Unit* to, __m128i bytes) {
  StoreHalfOfBytes(to, bytes);
  StoreVector(to + 8, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
}

// CopyAscii and CopyWide store whole vectors. So they may write as many units as the text has, even
// if they stop before its end.

// Copies ASCII from UTF-8 or UTF-16 to UTF-8 or UTF-16 and advances `to`. Returns the position in
// `from` of the first unit that was not copied.
template <Stop kStop, class From, class To>
inline const From* CopyAscii(const From* from, const From* end, To*& to) {
  const auto advance = [&](unsigned stops, int count) {
    const int copied = stops != 0 ? std::countr_zero(stops) : count;
    from += copied;
    to += copied;
    return stops == 0;
  };
  while (end - from >= 16) {
    const __m128i bytes = LoadAsBytes(from);
    StoreBytes(to, bytes);
    if (!advance(StopBits<kStop>(bytes), 16)) return from;
  }
  if (end - from >= 8) {
    const __m128i bytes = LoadHalfAsBytes(from);
    StoreHalfOfBytes(to, bytes);
    if (!advance(StopBits<kStop>(bytes) & 0xFF, 8)) return from;
  }
  while (from != end && IsAscii(*from) && IsPlain<kStop>(*from)) *to++ = static_cast<To>(*from++);
  return from;
}

// Copies UTF-16 up to the first unit that is a surrogate or above the surrogates, and advances
// `to`. Returns the position in `from` of the first unit that was not copied.
template <Stop kStop>
inline const Utf16Unit* CopyWide(const Utf16Unit* from, const Utf16Unit* end, Utf16Unit*& to) {
  while (end - from >= 8) {
    const __m128i units = LoadVector(from);
    const unsigned stops = WideStopBits<kStop>(units);
    StoreVector(to, units);
    const int copied = stops != 0 ? std::countr_zero(stops) / 2 : 8;
    from += copied;
    to += copied;
    if (stops != 0) return from;
  }
  // Four to seven units are left: copy the first four and the last four, which may overlap.
  if (const auto left = end - from; left >= 4) {
    const __m128i first = LoadHalf(from), last = LoadHalf(end - 4);
    if (WideStopBits<kStop>(_mm_unpacklo_epi64(first, last)) == 0) {
      StoreHalf(to, first);
      StoreHalf(to + left - 4, last);
      to += left;
      return end;
    }
  }
  for (; from != end && *from < 0xD800 && IsPlain<kStop>(*from); *to++ = *from++) {
    if (kStop == Stop::kEscapes && (*from == 0x2028 || *from == 0x2029)) break;
  }
  return from;
}

}  // namespace base
