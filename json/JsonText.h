// JSON text as it grows, in UTF-16, and how numbers and strings stand in it.
// Used in every process that loads the module.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "json/Digits.h"

namespace base {

class JsonText {
 public:
  JsonText() {}  // "= default" would let it be filled with zeros first
  JsonText(const JsonText&) = delete;
  JsonText& operator=(const JsonText&) = delete;
  ~JsonText() {
    if (begin_ != small_) std::free(begin_);
  }

  Utf16View View() const { return {begin_, size_}; }
  // The text as it is with this behind it, for which there must be room.
  Utf16View ViewWith(char last) const {
    begin_[size_] = static_cast<Utf16Unit>(last);
    return {begin_, size_ + 1};
  }

  // Text is put where there is room, by pointer, and belongs to this from Finish on. Room gives the
  // end, with room for so many units behind it; RoomBehind the same for an end that is not finished
  // yet. When they throw std::bad_alloc, the text is as it was.
  Utf16Unit* Room(std::size_t units) { return RoomBehind(begin_ + size_, units); }
  Utf16Unit* RoomBehind(Utf16Unit* end, std::size_t units) {
    return static_cast<std::size_t>(begin_ + capacity_ - end) >= units ? end : Grow(end, units);
  }
  void Finish(const Utf16Unit* end) { size_ = end - begin_; }

  // What these put ends where they say.
  struct PutText {
    Utf16Unit* end;
    bool exact;  // false if a noncharacter became U+FFFD
  };
  // A string with its quotes, behind an end that is not finished yet.
  PutText PutString(Utf16Unit* end, Utf16View text);
  PutText PutString(Utf16Unit* end, std::string_view ascii);  // kCopySlack can be read behind it

 private:
  static constexpr std::size_t kSmallCapacity = 120;  // most requests fit

  Utf16Unit* Grow(const Utf16Unit* end, std::size_t units);
  template <class Unit>
  PutText PutAnyString(Utf16Unit* end, std::basic_string_view<Unit> text);

  Utf16Unit* begin_ = small_;
  std::size_t size_ = 0;
  std::size_t capacity_ = kSmallCapacity;
  Utf16Unit small_[kSmallCapacity];
};

// Longer strings, in bytes of UTF-8, are refused; a unit is at most three of them.
constexpr std::size_t kMaxStringBytes = 2147483647;
inline bool MayBeTooLong(std::size_t units) { return units > kMaxStringBytes / 3; }

// These put text where there is room, and give its end.
inline Utf16Unit* PutAscii(Utf16Unit* to, std::string_view text) {
  return std::copy(text.begin(), text.end(), to);
}

constexpr std::size_t kMaxIntUnits = 11 + 3;  // the last digits are put by fours
inline Utf16Unit* PutInt(Utf16Unit* to, std::int32_t value) {
  auto magnitude = static_cast<std::uint32_t>(value);
  if (value < 0) {
    *to++ = '-';
    magnitude = 0 - magnitude;
  }
  return PutNumber(magnitude, to);
}

}  // namespace base
