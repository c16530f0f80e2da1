// Runs in the client and in the broker. The grammar of JSON strings.
#pragma once

#include <cstddef>
#include <string_view>

#include "json/PackedOutput.h"
#include "json/TextCopy.h"
#include "json/TextInput.h"

namespace base {

constexpr char32_t kMaxCodePoint = 0x10FFFF;
constexpr char32_t kNoCodePoint = kMaxCodePoint + 1;

// Returns the value of a hexadecimal digit, or -1 for any other character.
inline int HexDigit(char32_t c) {
  if (IsDigit(c)) return static_cast<int>(c - '0');
  const char32_t lower = c | 0x20;
  return lower >= 'a' && lower <= 'f' ? static_cast<int>(lower - 'a' + 10) : -1;
}

// Reads `digits` hexadecimal digits and returns their value, or -1 if another character comes
// first.
template <class Unit>
int ReadHex(TextInput<Unit>& in, int digits) {
  int value = 0;
  for (; digits > 0; --digits, ++in.at) {
    const int digit = HexDigit(in.Peek());
    if (digit < 0) return -1;
    value = value * 16 + digit;
  }
  return value;
}

// Reads the digits of an escape "\xHH" or "\uHHHH". Returns the code point, or kNoCodePoint if the
// escape is wrong. After the escape of a high surrogate, also reads the escape of a low surrogate,
// which must follow.
template <class Unit>
char32_t ReadHexEscape(TextInput<Unit>& in, int digits) {
  const int code = ReadHex(in, digits);
  if (code < 0 || (code >= 0xDC00 && code <= 0xDFFF)) return kNoCodePoint;
  if (code < 0xD800 || code > 0xDFFF) return code;
  if (!in.AcceptWord("\\u")) return kNoCodePoint;
  const int low = ReadHex(in, 4);
  if (low < 0xDC00 || low > 0xDFFF) return kNoCodePoint;
  return 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
}

// Reads an escape after its backslash. Returns the code point, or kNoCodePoint if the escape is
// wrong.
template <class Unit>
char32_t ReadEscape(TextInput<Unit>& in) {
  static constexpr std::string_view kLetters = "\"\\/bfnrtv";
  static constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t\v";
  if (in.Accept('u')) return ReadHexEscape(in, 4);
  if (in.Accept('x')) return ReadHexEscape(in, 2);
  if (in.Left() == 0 || !IsAscii(*in.at)) return kNoCodePoint;
  const std::size_t index = kLetters.find(static_cast<char>(*in.at));
  if (index == std::string_view::npos) return kNoCodePoint;
  ++in.at;
  return kMeanings[index];
}

// Copies up to the next quote or backslash. Returns false if the text ends first, is ill-formed, or
// cannot be stored in units of type To (char holds only ASCII).
template <class Unit, class To>
bool ReadPlainText(TextInput<Unit>& in, To*& to) {
  for (;;) {
    if constexpr (sizeof(Unit) == sizeof(To) && sizeof(To) > 1) {
      in.at = CopyWide<Stop::kStringEnds>(in.at, in.end, to);
    } else {
      in.at = CopyAscii<Stop::kStringEnds>(in.at, in.end, to);
    }
    if (in.Left() == 0) return false;
    if (*in.at == '"' || *in.at == '\\') return true;
    const CodePoint next = Decode(in.at, in.end);
    if (!next.valid || sizeof(To) == 1) return false;
    in.at += next.length;
    to = Encode(next.code, to);
  }
}

// Copies a string after its opening quote, as ASCII (To is char) or as UTF-16. Returns the end of
// the copy. Returns null if the string is wrong or cannot be stored in units of type To.
template <class Unit, class To>
To* ReadStringText(TextInput<Unit>& in, To* to) {
  constexpr char32_t kLimit = sizeof(To) == 1 ? 0x7F : kMaxCodePoint;
  while (ReadPlainText(in, to)) {
    if (in.Accept('"')) return to;
    ++in.at;
    const char32_t code = ReadEscape(in);
    if (code > kLimit) return nullptr;
    to = Encode(code, to);
  }
  return nullptr;
}

// string = '"' { unit | escape } '"'
// A `unit` is a byte of UTF-8 or a unit of UTF-16, except for quotes and backslashes.
template <class Unit>
bool ReadString(TextInput<Unit>& in, PackedOutput& out) {
  if (!in.Accept('"')) return false;
  const Unit* const text = in.at;
  if (const char* const end = ReadStringText(in, out.StringText(in.Left()))) {
    out.PutString(ValueType::kString, end);
    return true;
  }
  // The string probably is not ASCII. Read it again, and store all of it in UTF-16.
  in.at = text;
  auto* const units = reinterpret_cast<Utf16Unit*>(out.StringText(in.Left()));
  const Utf16Unit* const end = ReadStringText(in, units);
  if (end == nullptr) return false;
  out.PutString(ValueType::kWideString, reinterpret_cast<const char*>(end));
  return true;
}

}  // namespace base
