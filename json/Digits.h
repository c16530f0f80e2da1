// Decimal digits without a branch for each: their number is what a processor cannot foresee.
// Used in every process that loads the module.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "json/TextCopy.h"

namespace base {

struct ShortNumber {
  std::uint32_t value;
  int digits;
};

#ifdef JSON_HAS_SSE2
// The digits that the next eight units start with, of which all can be read. None if there are
// eight or more.
template <class Unit>
inline ShortNumber ReadShortNumber(const Unit* text) {
  const __m128i values = _mm_sub_epi16(LoadHalfAsUnits(text), _mm_set1_epi16('0'));
  const __m128i beyond = _mm_subs_epu16(values, _mm_set1_epi16(9));
  const __m128i is_digit = _mm_cmpeq_epi16(beyond, _mm_setzero_si128());
  const __m128i both = _mm_packs_epi16(is_digit, is_digit);
  const int count = std::countr_one(static_cast<unsigned char>(_mm_movemask_epi8(both)));
  if (count == 0 || count == 8) return {0, 0};
  const __m128i bytes = _mm_packus_epi16(values, values);
  auto digits = static_cast<std::uint64_t>(_mm_cvtsi128_si64(bytes)) << (8 * (8 - count));
  // Neighbours become one number: of two digits, then of four, then of eight.
  digits = (digits * 10 + (digits >> 8)) & 0x00FF00FF00FF00FF;
  digits = (digits * 100 + (digits >> 16)) & 0x0000FFFF0000FFFF;
  digits = digits * 10000 + (digits >> 32);
  return {static_cast<std::uint32_t>(digits), count};
}
#endif

// The two digits of each number below 100, as units in the order of memory.
constexpr auto kDigitPairs = [] {
  std::array<std::uint32_t, 100> pairs{};
  for (std::uint32_t i = 0; i < 100; ++i) pairs[i] = ('0' + i / 10) | ('0' + i % 10) << 16;
  return pairs;
}();

// `number` is below 10000. `to` has room for four units. Gives the end.
inline Utf16Unit* PutFourDigits(std::uint32_t number, Utf16Unit* to, int leading_zeros) {
  std::uint64_t units = kDigitPairs[number / 100] | std::uint64_t{kDigitPairs[number % 100]} << 32;
  units >>= 16 * leading_zeros;
  static_assert(std::endian::native == std::endian::little);
  std::memcpy(to, &units, sizeof(units));
  return to + (4 - leading_zeros);
}

inline Utf16Unit* PutNumber(std::uint32_t number, Utf16Unit* to) {
  int leading_zeros = (number < 1000) + (number < 100) + (number < 10);
  if (number >= 10000) {
    to = PutNumber(number / 10000, to);
    number %= 10000;
    leading_zeros = 0;
  }
  return PutFourDigits(number, to, leading_zeros);
}

}  // namespace base
