// Runs in the client and in the broker. The input text of the JSON reader, with the operations that
// all rules of the grammar use.
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
  // Returns zero at the end. No token contains a zero, so most callers need no test for the end.
  Unit Peek() const { return at != end ? *at : Unit{}; }

  // The following functions move past the text that their names and arguments describe. They return
  // false if this text does not come next. AcceptWord may then have moved past a part of the word.
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
  // Skips blanks and comments. Compact messages have none, so most calls end at the first test.
  void SkipGap() {
    if (Peek() <= ' ' || Peek() == '/') [[unlikely]]
      SkipBlanksAndComments();
  }

  // Returns whether a number may end here.
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

  // Returns false if the slash does not begin a complete comment. Then the position stays at the
  // slash, and the grammar rejects the text.
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
