// Numbers and strings as JSON text in UTF-16.
// Used in every process that loads the module.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "json/Digits.h"
#include "memory/GrowingBlock.h"

namespace base {

// Growing text. Most requests fit the object itself.
using TextBlock = GrowingBlock<Utf16Unit, 120>;

// Both write text to a place that has room for it, and return its end.
inline Utf16Unit* PutAscii(Utf16Unit* to, std::string_view text) {
  return std::copy(text.begin(), text.end(), to);
}

constexpr std::size_t kMaxIntUnits = 11;  // also holds for short numbers, which write four units
inline Utf16Unit* PutInt(Utf16Unit* to, std::int32_t value) {
  auto magnitude = static_cast<std::uint32_t>(value);
  if (value < 0) {
    *to++ = '-';
    magnitude = 0 - magnitude;
  }
  return PutNumber(magnitude, to);
}

// A writer refuses strings with more bytes of UTF-8. A unit of UTF-16 becomes at most three bytes.
constexpr std::size_t kMaxStringBytes = 2147483647;
inline bool MayBeTooLong(std::size_t units) { return units > kMaxStringBytes / 3; }

struct PutText {
  Utf16Unit* end;
  bool exact;  // false if a noncharacter became U+FFFD
};
// Both write a string with its quotes after `end`, which need not be finished yet. An unpaired
// surrogate becomes U+FFFD.
PutText PutString(TextBlock& block, Utf16Unit* end, Utf16View text);
PutText PutString(TextBlock& block, Utf16Unit* end, std::string_view ascii);

}  // namespace base
