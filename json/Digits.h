// Runs in the client and in the broker. Reads and writes decimal digits without a branch for each
// digit, because processors cannot predict the number of digits.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "json/TextCopy.h"

namespace base {

// Marks the digits and the commas in 32 units of text, so that the ends of several numbers are
// found at once. The lowest bit stands for the first unit. A bit is set in `digits` if its unit is
// a digit, and in `commas` if its unit is a comma.
struct NumberBits {
  static constexpr int kUnits = 32;
  static constexpr int kMaxDigits = 8;

  // Returns the number of digits before the next comma. Returns 0 if there are no digits or more
  // than kMaxDigits, or if another unit comes before the comma.
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

// Returns the value of the first `count` digits of a text. `count` is 1 to 8. Always reads eight
// units, so eight units must be readable.
template <class Unit>
inline std::int32_t ReadShortNumber(const Unit* text, int count) {
  const __m128i values = _mm_sub_epi16(LoadHalfAsUnits(text), _mm_set1_epi16('0'));
  const __m128i bytes = _mm_packus_epi16(values, values);
  auto digits = static_cast<std::uint64_t>(_mm_cvtsi128_si64(bytes)) << (8 * (8 - count));
  // Combine neighbouring digits into numbers of two digits, then of four, then of eight.
  digits = (digits * 10 + (digits >> 8)) & 0x00FF00FF00FF00FF;
  digits = (digits * 100 + (digits >> 16)) & 0x0000FFFF0000FFFF;
  return static_cast<std::int32_t>(digits * 10000 + (digits >> 32));
}

// The two digits of each number below 100, as two units of UTF-16 in memory order.
constexpr auto kDigitPairs = [] {
  std::array<std::uint32_t, 100> pairs{};
  for (std::uint32_t i = 0; i < 100; ++i) pairs[i] = ('0' + i / 10) | ('0' + i % 10) << 16;
  return pairs;
}();

// Writes a number below 10000, and leaves out the first `leadingZeros` of its four digits. Returns
// the end of the digits. Always writes four units: those after the end have no meaning.
inline Utf16Unit* PutFourDigits(std::uint32_t number, Utf16Unit* to, int leadingZeros) {
  std::uint64_t units = kDigitPairs[number / 100] | std::uint64_t{kDigitPairs[number % 100]} << 32;
  units >>= 16 * leadingZeros;
  static_assert(std::endian::native == std::endian::little);
  std::memcpy(to, &units, sizeof(units));
  return to + (4 - leadingZeros);
}

inline Utf16Unit* PutNumber(std::uint32_t number, Utf16Unit* to) {
  int leadingZeros = (number < 1000) + (number < 100) + (number < 10);
  if (number >= 10000) {
    to = PutNumber(number / 10000, to);
    number %= 10000;
    leadingZeros = 0;
  }
  return PutFourDigits(number, to, leadingZeros);
}

}  // namespace base
