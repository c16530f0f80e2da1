// Copies of text that run sixteen bytes at a step over what needs no thought: this is where
// messages spend their time. Used in every process that loads the module.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "json/Utf.h"

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define JSON_HAS_SSE2 1
#endif

namespace base {

// Where a copy stops.
enum class Stop {
  kLimits,      // at the limit of what it copies: ASCII, or text without surrogates
  kStringEnds,  // at a quote and a backslash, too
  kEscapes      // at what does not stand in a JSON string as it is, too
};

// A copy may write so many units more than there are to copy.
constexpr std::size_t kCopySlack = 16;

template <Stop kStop, class Unit>
inline bool IsPlain(Unit unit) {
  if (kStop != Stop::kLimits && (unit == '"' || unit == '\\')) return false;
  if (kStop != Stop::kEscapes) return true;
  return (unit >= 0x20 || !IsAscii(unit)) && unit != '<';
}

#ifdef JSON_HAS_SSE2
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

// A bit for each of 16 bytes at which a copy of ASCII stops.
template <Stop kStop>
inline unsigned StopBits(__m128i bytes) {
  const auto equal = [&bytes](char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
  __m128i stops = bytes;  // what is not ASCII has the bit that counts
  if constexpr (kStop != Stop::kLimits)
    stops = _mm_or_si128(stops, _mm_or_si128(equal('"'), equal('\\')));
  if constexpr (kStop == Stop::kEscapes) {
    const __m128i controls = _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20));
    stops = _mm_or_si128(stops, _mm_or_si128(controls, equal('<')));
  }
  return static_cast<unsigned>(_mm_movemask_epi8(stops));
}

// Two bits for each of 8 units at which a copy of text without surrogates stops. All above them
// counts as such: it is rare.
template <Stop kStop>
inline unsigned WideStopBits(__m128i units) {
  const auto equal = [](__m128i a, short b) { return _mm_cmpeq_epi16(a, _mm_set1_epi16(b)); };
  const auto at_most = [&equal, &units](unsigned short limit) {
    return equal(_mm_subs_epu16(units, _mm_set1_epi16(static_cast<short>(limit))), 0);
  };
  unsigned stops = ~_mm_movemask_epi8(at_most(0xD7FF)) & 0xFFFF;
  if constexpr (kStop != Stop::kLimits) {
    __m128i more = _mm_or_si128(equal(units, '"'), equal(units, '\\'));
    if constexpr (kStop == Stop::kEscapes) {
      const __m128i even = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xFFFE)));
      more = _mm_or_si128(_mm_or_si128(more, at_most(0x1F)), equal(units, '<'));
      more = _mm_or_si128(more, equal(even, 0x2028));  // U+2028 and U+2029
    }
    stops |= static_cast<unsigned>(_mm_movemask_epi8(more));
  }
  return stops;
}

// A bit for each byte of the units that are zero.
template <class Unit>
inline unsigned ZeroBits(__m128i units) {
  const __m128i zero = _mm_setzero_si128();
  return static_cast<unsigned>(_mm_movemask_epi8(sizeof(Unit) == 1 ? _mm_cmpeq_epi8(units, zero)
                                                                   : _mm_cmpeq_epi16(units, zero)));
}

// Units as bytes: one beyond ASCII becomes a byte that is no ASCII either.
inline __m128i Narrow(__m128i units) {
  // A later saturation is signed: what is above 0x7FFF would become 0.
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
inline __m128i LoadQuarterAsUnits(const char* from) {
  std::int32_t bytes;
  std::memcpy(&bytes, from, sizeof(bytes));
  return _mm_unpacklo_epi8(_mm_cvtsi32_si128(bytes), _mm_setzero_si128());
}
inline __m128i LoadHalfAsUnits(const Utf16Unit* from) { return LoadVector(from); }
inline void StoreBytes(char* to, __m128i bytes) { StoreVector(to, bytes); }
inline void StoreBytes(Utf16Unit* to, __m128i bytes) {
  StoreVector(to, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
  StoreVector(to + 8, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
}
#endif

// Copies ASCII between any two of the encodings. Gives where it stopped.
template <Stop kStop, class From, class To>
inline const From* CopyAscii(const From* from, const From* end, To*& to) {
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
  while (from != end && IsAscii(*from) && IsPlain<kStop>(*from)) *to++ = static_cast<To>(*from++);
  return from;
}

// The same where kCopySlack bytes can be read behind the end: no step for the last few is needed.
template <Stop kStop>
inline const char* CopyPaddedAscii(const char* from, const char* end, Utf16Unit*& to) {
#ifdef JSON_HAS_SSE2
  while (from < end) {
    const __m128i bytes = LoadVector(from);
    const int left = static_cast<int>(std::min<std::ptrdiff_t>(end - from, 16));
    const unsigned stops = StopBits<kStop>(bytes) | 1u << left;
    const int copied = std::countr_zero(stops);
    StoreBytes(to, bytes);
    from += copied;
    to += copied;
    if (copied < left) break;
  }
  return from;
#else
  return CopyAscii<kStop>(from, end, to);
#endif
}

// Copies all of an ASCII text, and writes not a unit more: the last step overlaps the one before.
inline void CopyExactAscii(std::string_view text, Utf16Unit* to) {
  const char* from = text.data();
  const char* const end = from + text.size();
#ifdef JSON_HAS_SSE2
  if (text.size() >= 16) {
    for (; end - from >= 16; from += 16, to += 16) StoreBytes(to, LoadVector(from));
    if (from != end) StoreBytes(to - (16 - (end - from)), LoadVector(end - 16));
    return;
  }
  if (text.size() >= 8) {
    StoreVector(to, LoadHalfAsUnits(from));
    StoreVector(to + (end - from - 8), LoadHalfAsUnits(end - 8));
    return;
  }
  if (text.size() >= 4) {
    StoreHalf(to, LoadQuarterAsUnits(from));
    StoreHalf(to + (end - from - 4), LoadQuarterAsUnits(end - 4));
    return;
  }
#endif
  std::copy(from, end, to);
}

// The first zero of a text, or its end.
template <class Unit>
inline const Unit* FindZero(const Unit* from, const Unit* end) {
#ifdef JSON_HAS_SSE2
  constexpr std::ptrdiff_t kStep = 16 / sizeof(Unit);
  for (; end - from >= kStep; from += kStep) {
    const unsigned zeros = ZeroBits<Unit>(LoadVector(from));
    if (zeros != 0) return from + std::countr_zero(zeros) / sizeof(Unit);
  }
#endif
  return std::find(from, end, Unit{});
}

// The text up to a zero that is known to come. Whole blocks are read, at addresses where that does
// not leave a page.
inline Utf16View UpToZero(const Utf16Unit* text) {
  const Utf16Unit* at = text;
#ifdef JSON_HAS_SSE2
  const auto misplaced = [&at] { return reinterpret_cast<std::uintptr_t>(at) % 16; };
  if (misplaced() % sizeof(Utf16Unit) == 0) {
    for (; misplaced() != 0; ++at) {
      if (*at == 0) return {text, static_cast<std::size_t>(at - text)};
    }
    unsigned zeros = 0;
    while (zeros = ZeroBits<Utf16Unit>(LoadVector(at)), zeros == 0) at += 8;
    return {text, static_cast<std::size_t>(at - text) + std::countr_zero(zeros) / 2};
  }
#endif
  while (*at != 0) ++at;
  return {text, static_cast<std::size_t>(at - text)};
}

// Copies text up to a surrogate or what comes behind them.
template <Stop kStop>
inline const Utf16Unit* CopyWide(const Utf16Unit* from, const Utf16Unit* end, Utf16Unit*& to) {
#ifdef JSON_HAS_SSE2
  while (end - from >= 8) {
    const __m128i units = LoadVector(from);
    const unsigned stops = WideStopBits<kStop>(units);
    StoreVector(to, units);
    const int copied = stops != 0 ? std::countr_zero(stops) / 2 : 8;
    from += copied;
    to += copied;
    if (stops != 0) return from;
  }
  // Four to seven are left: two halves that overlap.
  if (const auto left = end - from; left >= 4) {
    const __m128i first = LoadHalf(from), last = LoadHalf(end - 4);
    if (WideStopBits<kStop>(_mm_unpacklo_epi64(first, last)) == 0) {
      StoreHalf(to, first);
      StoreHalf(to + left - 4, last);
      to += left;
      return end;
    }
  }
#endif
  for (; from != end && *from < 0xD800 && IsPlain<kStop>(*from); *to++ = *from++) {
    if (kStop == Stop::kEscapes && (*from == 0x2028 || *from == 0x2029)) break;
  }
  return from;
}

}  // namespace base
