// The text that the JSON reader reads, and what every rule of the grammar needs from it.
// Used in every process that loads the module.
#pragma once

#include <cstddef>
#include <string_view>

#include "json/Utf.h"

namespace base {

inline bool IsDigit(char32_t c) { return c >= '0' && c <= '9'; }
inline bool IsBlank(char32_t c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// Unit is char for UTF-8 and Utf16Unit for UTF-16.
template <class Unit>
struct TextInput {
  std::size_t Left() const { return end - at; }
  // Zero at the end. No token contains that unit, so most callers need no test for the end.
  Unit Peek() const { return at != end ? *at : Unit{}; }

  // These step over what they name. False if it is not there.
  bool Accept(char c) {
    if (Peek() != static_cast<Unit>(c)) return false;
    ++at;
    return true;
  }
  bool AcceptWord(std::string_view word) {
    for (const char c : word) {
      if (!Accept(c)) return false;
    }
    return true;
  }
  bool AcceptDigits() {
    const Unit* const start = at;
    while (IsDigit(Peek())) ++at;
    return at != start;
  }

  void SkipByteOrderMark() {
    if constexpr (sizeof(Unit) == 1) {
      if (std::string_view(at, Left()).starts_with("\xEF\xBB\xBF")) at += 3;
    } else if (Peek() == 0xFEFF) {
      ++at;
    }
  }
  // Blanks and comments. Compact messages have none, so most calls end at the first test.
  void SkipGap() {
    if (Peek() <= ' ' || Peek() == '/') [[unlikely]]
      SkipBlanksAndComments();
  }

  // Whether a number may end here.
  bool AtDelimiter() const {
    return at == end || *at == ',' || *at == ']' || *at == '}' || IsBlank(*at);
  }

  const Unit* at;
  const Unit* end;

 private:
  void SkipBlanksAndComments() {
    for (;;) {
      if (IsBlank(Peek())) {
        ++at;
      } else if (Peek() != '/' || !SkipComment()) {
        return;
      }
    }
  }

  // False for a comment that does not end. The grammar then meets its slash and refuses the text.
  bool SkipComment() {
    if (Left() < 2) return false;
    const Unit* next = at + 2;
    if (at[1] == '/') {
      while (next != end && *next != '\n' && *next != '\r') ++next;
      at = next;
      return true;
    }
    if (at[1] != '*') return false;
    for (; end - next >= 2; ++next) {
      if (next[0] != '*' || next[1] != '/') continue;
      at = next + 2;
      return true;
    }
    return false;
  }
};

}  // namespace base
