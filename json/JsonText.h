// How numbers and strings stand in JSON text, in UTF-16.
// Used in every process that loads the module.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "json/Digits.h"
#include "memory/GrowingBlock.h"

namespace base {

// Text as it grows. Most requests fit the object.
using TextBlock = GrowingBlock<Utf16Unit, 120, 0>;

// These put text where there is room for it, and give its end.
inline Utf16Unit* PutAscii(Utf16Unit* to, std::string_view text) {
  return std::copy(text.begin(), text.end(), to);
}

constexpr std::size_t kMaxIntUnits = 11;  // digits are put by fours, which takes no more than that
inline Utf16Unit* PutInt(Utf16Unit* to, std::int32_t value) {
  auto magnitude = static_cast<std::uint32_t>(value);
  if (value < 0) {
    *to++ = '-';
    magnitude = 0 - magnitude;
  }
  return PutNumber(magnitude, to);
}

// Longer strings, in bytes of UTF-8, are refused; a unit is at most three of them.
constexpr std::size_t kMaxStringBytes = 2147483647;
inline bool MayBeTooLong(std::size_t units) { return units > kMaxStringBytes / 3; }

// What PutString put ends there.
struct PutText {
  Utf16Unit* end;
  bool exact;  // false if a noncharacter became U+FFFD
};
// A string with its quotes, behind an end of the block that is not finished yet. An unpaired
// surrogate becomes U+FFFD. Behind ASCII, kCopySlack bytes can be read.
PutText PutString(TextBlock& block, Utf16Unit* end, Utf16View text);
PutText PutString(TextBlock& block, Utf16Unit* end, std::string_view ascii);

}  // namespace base
