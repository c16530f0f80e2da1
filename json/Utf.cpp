#include "json/Utf.h"

namespace base {

namespace {

// Copies as many whole vectors of ASCII as there are, but never a unit more than there is text: the
// target has no room behind it.
const char* CopyAsciiVectors(const char* from, const char* end, Utf16Unit*& to) {
#ifdef JSON_HAS_SSE2
  for (; end - from >= 16; from += 16, to += 16) {
    const __m128i bytes = LoadAsBytes(from);
    if (StopBits<Stop::kNonAscii>(bytes) != 0) return from;
    StoreBytes(to, bytes);
  }
  if (end - from >= 8) {
    const __m128i bytes = LoadHalfAsBytes(from);
    if (StopBits<Stop::kNonAscii>(bytes) != 0) return from;
    StoreHalf(to, bytes);
    from += 8;
    to += 8;
  }
#endif
  return from;
}

}  // namespace

std::size_t Utf16Length(std::string_view utf8) {
  // One for each byte that starts a code point, one more for each that starts a surrogate pair.
  std::size_t units = 0;
  for (const char byte : utf8) {
    units += static_cast<signed char>(byte) >= static_cast<signed char>(0xC0);
    units += static_cast<unsigned char>(byte) >= 0xF0;
  }
  return units;
}

void CopyAsUtf16(std::string_view utf8, Utf16Unit* to) {
  const char* from = utf8.data();
  const char* const end = from + utf8.size();
  while (from = CopyAsciiVectors(from, end, to), from != end) {
    for (int i = 0; i < kScalarRun && from != end; ++i) {
      const CodePoint next = Decode(from, end);
      from += next.length;
      to = PutUtf16(next.code, to);
    }
  }
}

}  // namespace base
