#include "json/ListValue.h"

#include <algorithm>

namespace base {

namespace {

// Copies UTF-16. An unpaired surrogate becomes U+FFFD.
char* CopyWellFormed(Utf16View text, char* to) {
  auto* units = reinterpret_cast<Utf16Unit*>(to);
  const Utf16Unit* from = text.data();
  const Utf16Unit* const end = from + text.size();
  while (from = CopyWide<Stop::kLimits>(from, end, units), from != end) {
    const CodePoint next = Decode(from, end);
    from += next.length;
    units = Encode(next.code, units);
  }
  return reinterpret_cast<char*>(units);
}

}  // namespace

std::size_t Utf8Length(const StringView& text) {
  std::size_t length = text.ascii.size();
  // A pair of surrogates becomes four bytes of UTF-8, so each surrogate counts as two bytes.
  for (const Utf16Unit unit : text.wide)
    length += IsAscii(unit) ? 1 : unit < 0x800 || IsSurrogate(unit) ? 2 : 3;
  return length;
}

std::string ToUtf8(const StringView& text) {
  std::string utf8(text.ascii);
  const Utf16Unit* from = text.wide.data();
  const Utf16Unit* const end = from + text.wide.size();
  while (from != end) {
    char bytes[4];
    const CodePoint next = Decode(from, end);
    from += next.length;
    utf8.append(bytes, Encode(next.code, bytes));
  }
  return utf8;
}

void ListValue::AppendString(Utf16View text) {
  char* const start = Reserve(packed::kTextHead + text.size() * sizeof(Utf16Unit));
  char* to = start + packed::kTextHead;
  const Utf16Unit* const end = text.data() + text.size();
  if (CopyAscii<Stop::kLimits>(text.data(), end, to) == end) {
    Finish(packed::PutTextHead(start, ValueType::kString, to));
  } else {
    to = CopyWellFormed(text, start + packed::kTextHead);
    Finish(packed::PutTextHead(start, ValueType::kWideString, to));
  }
}

void ListValue::AppendBinary(std::string_view bytes) {
  char* const start = Reserve(packed::kTextHead + packed::Even(bytes.size()));
  char* const end = std::copy(bytes.begin(), bytes.end(), start + packed::kTextHead);
  Finish(packed::PutTextHead(start, ValueType::kBinary, end));
}

}  // namespace base
