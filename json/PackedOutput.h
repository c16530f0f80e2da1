// Where the JSON reader puts values: the end of a list, with room for all that the next units of
// text can become. Used in every process that loads the module.
#pragma once

#include <cassert>
#include <cstddef>

#include "json/ListValue.h"

namespace base {

// An empty string and its comma, "", are the text that needs the most room for its length: three
// units become the head of a string.
constexpr std::size_t kDensestUnits = 3;
constexpr std::size_t kDensestBytes = packed::kTextHead;
// A text may end with a string that has no comma, or with the start of a string: a quote and one
// unit.
constexpr std::size_t kExtraBytes = packed::kTextHead + sizeof(Utf16Unit);

// The most bytes that are written for a text of this length.
constexpr std::size_t MostPacked(std::size_t units) {
  return units / kDensestUnits * kDensestBytes + kExtraBytes;
}

// The inverse: how long a text may be whose values always fit `room` bytes. The extra bytes are
// always there, because what was read before ended with a comma.
constexpr std::size_t UnitsThatFit(std::size_t room) {
  assert(room >= kExtraBytes);
  return (room - kExtraBytes) / kDensestBytes * kDensestUnits + kDensestUnits - 1;
}

// The caller makes room for a piece of text and then puts only what that piece becomes. Nothing
// tests the room while values are put, because that would cost more than the values. Debug builds
// assert it.
class PackedOutput {
 public:
  // `values` must be empty. There is room for what `units` of text become.
  PackedOutput(ListValue& values, std::size_t units)
      : values_(values), to_(values.Reserve(MostPacked(units))) {}

  char* to() const { return to_; }
  std::size_t size() const { return to_ - values_.begin(); }
  std::size_t UnitsWithRoom() const { return UnitsThatFit(values_.RoomAfter(to_)); }

  // For what `units` of text become. May move what was put before.
  void MakeRoom(std::size_t units) { to_ = values_.ReserveAfter(to_, MostPacked(units)); }
  // The same where about `more` bytes will follow.
  void MakeRoom(std::size_t units, std::size_t more) {
    to_ = values_.ReserveEstimateAfter(to_, MostPacked(units) + more);
  }

  void PutType(ValueType type) { MoveTo(packed::PutType(to_, type)); }
  template <class T>
  void Put(ValueType type, T value) {
    MoveTo(packed::Put(to_, type, value));
  }
  // The text of the next string goes here; PutString then says where it ends.
  char* StringText() const { return to_ + packed::kTextHead; }
  void PutString(ValueType type, const char* end) { MoveTo(packed::PutTextHead(to_, type, end)); }

  // Back to an earlier place, or forward after values that were put by pointer.
  void MoveTo(char* to) {
    assert(values_.Holds(to));
    to_ = to;
  }

  void Finish() {
    values_.Finish(to_);
    values_.Trim();
  }

 private:
  ListValue& values_;
  char* to_;
};

}  // namespace base
