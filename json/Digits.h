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

#ifdef JSON_HAS_SSE2
// A bit each for the digits and for the commas among the next 32 units: so the ends of several
// numbers are found at once, and none waits for the digits of the one before.
struct NumberBits {
  static constexpr int kUnits = 32;
  static constexpr int kMaxDigits = 8;

  // How many digits stand before the next comma; 0 if none, too many, or something else as well.
  int CountShort() const {
    const int count = std::countr_one(digits);
    return count <= kMaxDigits && (commas >> count & 1) != 0 ? count : 0;
  }
  void Skip(int units) {
    digits >>= units;
    commas >>= units;
  }

  std::uint32_t digits = 0;
  std::uint32_t commas = 0;
};
template <class Unit>
inline NumberBits FindNumbers(const Unit* text) {
  NumberBits bits;
  for (int place = 0; place < NumberBits::kUnits; place += 16) {
    const __m128i bytes = LoadAsBytes(text + place);
    const __m128i values = _mm_sub_epi8(bytes, _mm_set1_epi8('0'));
    const __m128i digits = _mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(9)), values);
    const __m128i commas = _mm_cmpeq_epi8(bytes, _mm_set1_epi8(','));
    bits.digits |= static_cast<std::uint32_t>(_mm_movemask_epi8(digits)) << place;
    bits.commas |= static_cast<std::uint32_t>(_mm_movemask_epi8(commas)) << place;
  }
  return bits;
}

// The number of one to eight digits that the text starts with; eight units can be read.
template <class Unit>
inline std::int32_t ReadShortNumber(const Unit* text, int count) {
  const __m128i values = _mm_sub_epi16(LoadHalfAsUnits(text), _mm_set1_epi16('0'));
  const __m128i bytes = _mm_packus_epi16(values, values);
  auto digits = static_cast<std::uint64_t>(_mm_cvtsi128_si64(bytes)) << (8 * (8 - count));
  // Neighbours become one number: of two digits, then of four, then of eight.
  digits = (digits * 10 + (digits >> 8)) & 0x00FF00FF00FF00FF;
  digits = (digits * 100 + (digits >> 16)) & 0x0000FFFF0000FFFF;
  return static_cast<std::int32_t>(digits * 10000 + (digits >> 32));
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
