// Runs in the client and in the broker. Finds the zero that ends a text, 16 bytes at a time.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace base {

// Returns one bit for each of the 16 bytes in `units`. All bits of a unit are set if the unit is
// zero, otherwise none.
template <class Unit>
inline unsigned ZeroBits(__m128i units) {
  const __m128i zero = _mm_setzero_si128();
  return static_cast<unsigned>(_mm_movemask_epi8(sizeof(Unit) == 1 ? _mm_cmpeq_epi8(units, zero)
                                                                   : _mm_cmpeq_epi16(units, zero)));
}

// Returns the first zero in [from, end), or `end` if there is none.
template <class Unit>
inline const Unit* FindZero(const Unit* from, const Unit* end) {
  constexpr std::ptrdiff_t kStep = 16 / sizeof(Unit);
  for (; end - from >= kStep; from += kStep) {
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    const unsigned zeros = ZeroBits<Unit>(units);
    if (zeros != 0) return from + std::countr_zero(zeros) / sizeof(Unit);
  }
  return std::find(from, end, Unit{});
}

// Returns a text without its terminating zero. Reads 16 bytes at a time at addresses that are
// multiples of 16. So it may read bytes after the zero, but never from another page.
template <class Unit>
inline std::basic_string_view<Unit> UpToZero(const Unit* text) {
  const Unit* at = text;
  const auto misplaced = [&at] { return reinterpret_cast<std::uintptr_t>(at) % 16; };
  // A UTF-16 text at an odd address never reaches a multiple of 16, so it is read unit by unit.
  for (; misplaced() != 0; ++at) {
    if (*at == Unit{}) return {text, static_cast<std::size_t>(at - text)};
  }
  for (;; at += 16 / sizeof(Unit)) {
    const unsigned zeros = ZeroBits<Unit>(_mm_load_si128(reinterpret_cast<const __m128i*>(at)));
    if (zeros == 0) continue;
    return {text, static_cast<std::size_t>(at - text) + std::countr_zero(zeros) / sizeof(Unit)};
  }
}

}  // namespace base
