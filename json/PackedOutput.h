// Runs in the client and in the broker. The output of the JSON reader. Appends values to a list,
// after the reader has made room for the values of the next piece of text.
#pragma once

#include <cassert>
#include <cstddef>

#include "json/ListValue.h"

namespace base {

// Of all values, empty strings need the most bytes for the length of their text: `"",` is three
// units and becomes the head of a string (its type and length), ten bytes. An int and its comma are
// two units and become six bytes. A bracket is one unit and becomes two bytes.
constexpr std::size_t kDensestUnits = 3;
constexpr std::size_t kDensestBytes = packed::kTextHead;
// Additional room for the last string of the input. This string may take less than three units of
// the input, because no comma follows it, or because the input ends inside the string, after the
// opening quote and one unit.
constexpr std::size_t kExtraBytes = packed::kTextHead + sizeof(Utf16Unit);

// Returns the greatest number of bytes that the values of a text of `units` units can need.
constexpr std::size_t MostPacked(std::size_t units) {
  return units / kDensestUnits * kDensestBytes + kExtraBytes;
}

// Returns the greatest n for which the values of every text of n units fit into `room` bytes, which
// means MostPacked(n) <= room. `room` must be at least MostPacked(0).
constexpr std::size_t UnitsThatFit(std::size_t room) {
  assert(room >= kExtraBytes);
  return (room - kExtraBytes) / kDensestBytes * kDensestUnits + kDensestUnits - 1;
}

// The caller makes room for a piece of text, and then writes only the values of this piece. No
// write checks the room, because the check would cost more than the write. Debug builds assert that
// there is room: for a string before it is written, for other values after they are written.
class PackedOutput {
 public:
  // Makes room for the values of `units` units of text. `values` must be empty.
  PackedOutput(ListValue& values, std::size_t units)
      : values_(values), to_(values.Reserve(MostPacked(units))) {}

  char* to() const { return to_; }
  std::size_t size() const { return to_ - values_.begin(); }
  std::size_t UnitsWithRoom() const { return UnitsThatFit(values_.RoomAfter(to_)); }

  bool HasRoom(std::size_t units) const { return values_.RoomAfter(to_) >= MostPacked(units); }
  // Makes room for the values of `units` more units of text. May move the values written so far.
  void MakeRoom(std::size_t units) { to_ = values_.ReserveAfter(to_, MostPacked(units)); }
  // Makes room for the values of the next `units` units of text, and for about `extraBytes` more,
  // so that the text after them needs no new block.
  void MakeRoom(std::size_t units, std::size_t extraBytes) {
    to_ = values_.ReserveEstimateAfter(to_, MostPacked(units) + extraBytes);
  }

  void PutType(ValueType type) { MoveTo(packed::PutType(to_, type)); }
  template <class T>
  void Put(ValueType type, T value) {
    MoveTo(packed::Put(to_, type, value));
  }
  // The caller writes the text of the next string to this place, at most `units` units of UTF-16.
  // Then the caller calls PutString with the end of the text.
  char* StringText([[maybe_unused]] std::size_t units) const {
    assert(units == 0 || values_.RoomAfter(to_) >= packed::kTextHead + units * sizeof(Utf16Unit));
    return to_ + packed::kTextHead;
  }
  void PutString(ValueType type, const char* end) { MoveTo(packed::PutTextHead(to_, type, end)); }

  // Moves the write position back to an earlier place, or forward to the end of values that the
  // caller has written itself.
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
