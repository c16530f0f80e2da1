#include "json/JsonText.h"

#include "json/TextCopy.h"

namespace base {

namespace {

constexpr std::size_t kMaxEscape = 6;
// A string is written in pieces of at most this number of units, with one test for room before each
// piece.
constexpr std::size_t kPiece = 512;

bool IsNoncharacter(char32_t code) {
  return (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFE) == 0xFFFE;
}

Utf16Unit* PutEscape(char32_t code, Utf16Unit* to) {
  static constexpr std::string_view kCharacters = "\b\t\n\f\r\"\\";
  static constexpr std::string_view kLetters = "btnfr\"\\";
  const std::size_t index =
      code < 0x80 ? kCharacters.find(static_cast<char>(code)) : std::string_view::npos;
  *to++ = '\\';
  if (index != std::string_view::npos) {
    *to++ = static_cast<Utf16Unit>(kLetters[index]);
    return to;
  }
  *to++ = 'u';
  for (int shift = 12; shift >= 0; shift -= 4)
    *to++ = static_cast<Utf16Unit>("0123456789ABCDEF"[code >> shift & 0xF]);
  return to;
}

template <class Unit>
PutText PutPiece(const Unit* text, const Unit* end, Utf16Unit* to) {
  for (bool exact = true;;) {
    if constexpr (sizeof(Unit) == 1) {
      text = CopyAscii<Stop::kEscapes>(text, end, to);
    } else {
      text = CopyWide<Stop::kEscapes>(text, end, to);
    }
    if (text == end) return {to, exact};
    const CodePoint next = Decode(text, end);
    text += next.length;
    if (next.code < 0x80 || next.code == 0x2028 || next.code == 0x2029) {
      to = PutEscape(next.code, to);
    } else if (IsNoncharacter(next.code)) {
      to = Encode(kReplacement, to);
      exact = false;
    } else {
      to = Encode(next.code, to);
    }
  }
}

template <class Unit>
PutText PutAnyString(TextBlock& block, Utf16Unit* end, std::basic_string_view<Unit> text) {
  // Reserve memory for a long text at once. This assumes that most of the text needs no escapes.
  end = block.ReserveAfter(end, 2 + text.size() + std::min(text.size(), kPiece) * kMaxEscape);
  PutText put = {end, true};
  *put.end++ = '"';
  while (!text.empty()) {
    std::size_t size = std::min(text.size(), kPiece);
    // Do not separate the two surrogates of a pair.
    if (size < text.size() && IsHighSurrogate(text[size - 1])) --size;
    put.end = block.ReserveAfter(put.end, size * kMaxEscape);
    const PutText piece = PutPiece(text.data(), text.data() + size, put.end);
    put = {piece.end, put.exact && piece.exact};
    text.remove_prefix(size);
  }
  put.end = block.ReserveAfter(put.end, 1);
  *put.end++ = '"';
  return put;
}

}  // namespace

PutText PutString(TextBlock& block, Utf16Unit* end, Utf16View text) {
  return PutAnyString(block, end, text);
}

PutText PutString(TextBlock& block, Utf16Unit* end, std::string_view ascii) {
  return PutAnyString(block, end, ascii);
}

}  // namespace base
