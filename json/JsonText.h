// Runs in the client and in the broker. Writes numbers and strings as JSON text in UTF-16.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "json/Digits.h"
#include "memory/GrowingBlock.h"

namespace base {

// A text that grows. Most requests fit into the object itself and need no allocation.
using TextBlock = GrowingBlock<Utf16Unit, 120>;

// PutAscii and PutInt write to a place that has room for the text, and return the end of the text.
inline Utf16Unit* PutAscii(Utf16Unit* to, std::string_view text) {
  return std::copy(text.begin(), text.end(), to);
}

// Room for this many units is enough for every number that PutInt writes. The longest number is
// "-2147483648". For a number of one to three digits, PutNumber writes four units and returns the
// end of the number; this needs less room.
constexpr std::size_t kMaxIntUnits = 11;
inline Utf16Unit* PutInt(Utf16Unit* to, std::int32_t value) {
  auto magnitude = static_cast<std::uint32_t>(value);
  if (value < 0) {
    *to++ = '-';
    magnitude = 0 - magnitude;
  }
  return PutNumber(magnitude, to);
}

// A writer refuses strings with more than this number of bytes in UTF-8. One UTF-16 unit becomes at
// most three bytes, so a string of few units needs no exact count.
constexpr std::size_t kMaxStringBytes = 2147483647;
inline bool MayBeTooLong(std::size_t units) { return units > kMaxStringBytes / 3; }

struct PutText {
  Utf16Unit* end;
  bool exact;  // false if a noncharacter was replaced by U+FFFD
};
// Writes a string with its quotes at `end`, which may be after the end that was passed to the last
// Finish. Makes room for the string. An unpaired surrogate becomes U+FFFD.
PutText PutString(TextBlock& block, Utf16Unit* end, Utf16View text);
PutText PutString(TextBlock& block, Utf16Unit* end, std::string_view ascii);

}  // namespace base
