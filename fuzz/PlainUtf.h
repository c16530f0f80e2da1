// A second implementation of UTF-8 and UTF-16, written for clarity and not for speed. The fuzzers
// compare the conversions of json/ with this implementation. The two implementations share no code.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "json/Utf.h"

namespace plain {

inline bool IsSurrogate(std::uint32_t code) { return code / 0x800 == 0x1B; }

// The code points that the writer replaces with U+FFFD.
inline bool IsNoncharacter(std::uint32_t code) {
  return code % 0x10000 >= 0xFFFE || (code >= 0xFDD0 && code < 0xFDF0);
}

inline std::string Utf8(std::uint32_t code) {
  std::string bytes;
  const auto add = [&](std::uint32_t byte) { bytes += static_cast<char>(byte); };
  if (code <= 0x7F) {
    add(code);
    return bytes;
  }
  if (code <= 0x7FF) {
    add(192 + code / 64);
  } else {
    if (code <= 0xFFFF) {
      add(224 + code / 4096);
    } else {
      add(240 + code / 262144);
      add(128 + code / 4096 % 64);
    }
    add(128 + code / 64 % 64);
  }
  add(128 + code % 64);
  return bytes;
}

inline base::Utf16Text Utf16(std::uint32_t code) {
  if (code < 0x10000) return base::Utf16Text(1, static_cast<base::Utf16Unit>(code));
  return {static_cast<base::Utf16Unit>(0xD800 + (code - 0x10000) / 1024),
          static_cast<base::Utf16Unit>(0xDC00 + (code - 0x10000) % 1024)};
}

// Returns whether some code point has a well-formed UTF-8 form of `length` bytes that begins with
// `bytes`.
inline bool CanBegin(std::string_view bytes, std::size_t length) {
  static constexpr std::uint32_t kLowest[] = {0, 0, 0x80, 0x800, 0x10000};
  // The smallest and the largest code point whose UTF-8 form begins with `bytes`.
  std::uint64_t low = static_cast<unsigned char>(bytes[0]) & (0x7F >> length), high = low;
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned byte = i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0;
    if (i < bytes.size() && byte / 64 != 2) return false;
    low = low * 64 + (i < bytes.size() ? byte % 64 : 0);
    high = high * 64 + (i < bytes.size() ? byte % 64 : 63);
  }
  low = std::max<std::uint64_t>(low, kLowest[length]);
  high = std::min<std::uint64_t>(high, 0x10FFFF);
  const bool surrogates_only = low >= 0xD800 && high <= 0xDFFF;
  return low <= high && !surrogates_only;
}

// Returns the first code point of `bytes`, which must not be empty. If `bytes` does not begin with
// well-formed UTF-8, the result is not valid, and its `length` is the length of the ill-formed
// part. This part has at least one byte. It ends before the first byte that no valid code point can
// have at that place.
inline base::CodePoint First(std::string_view bytes) {
  const auto lead = static_cast<unsigned char>(bytes[0]);
  if (lead < 0x80) return {lead, 1, true};
  const std::size_t length = lead / 32 == 6 ? 2 : lead / 16 == 14 ? 3 : lead / 8 == 30 ? 4 : 0;
  if (length == 0 || !CanBegin(bytes.substr(0, 1), length)) return {0, 1, false};
  std::size_t count = 1;
  while (count < length && count < bytes.size() && CanBegin(bytes.substr(0, count + 1), length))
    ++count;
  if (count < length) return {0, count, false};
  std::uint32_t code = lead & (0x7F >> length);
  for (std::size_t i = 1; i < length; ++i) code = code * 64 + bytes[i] % 64u;
  return {code, length, true};
}

inline std::u32string Decode(std::string_view bytes, bool* well_formed) {
  std::u32string codes;
  *well_formed = true;
  while (!bytes.empty()) {
    const base::CodePoint first = First(bytes);
    codes += first.valid ? first.code : 0xFFFD;
    *well_formed = *well_formed && first.valid;
    bytes.remove_prefix(first.length);
  }
  return codes;
}

inline std::u32string Decode(base::Utf16View text) {
  std::u32string codes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::uint32_t unit = text[i], next = i + 1 < text.size() ? text[i + 1] : 0;
    if (unit / 1024 == 54 && next / 1024 == 55) {
      codes += 0x10000 + unit % 1024 * 1024 + next % 1024;
      ++i;
    } else {
      codes += IsSurrogate(unit) ? 0xFFFD : unit;
    }
  }
  return codes;
}

template <class Text, class Encode>
Text Encoded(const std::u32string& codes, Encode encode) {
  Text text;
  for (const char32_t code : codes) text += encode(code);
  return text;
}
inline std::string ToUtf8(const std::u32string& codes) { return Encoded<std::string>(codes, Utf8); }
inline base::Utf16Text ToUtf16(const std::u32string& codes) {
  return Encoded<base::Utf16Text>(codes, Utf16);
}

}  // namespace plain
