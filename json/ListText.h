// Runs in the client and in the broker. A JSON list that is stored as JSON text, so that a finished
// list needs no conversion before it is sent.
#pragma once

#include <cassert>

#include "json/JsonText.h"

namespace base {

class ListText {
 public:
  ListText() { text_.Finish(PutAscii(text_.Reserve(2), "[")); }

  // Returns the list as compact JSON text, valid until the next append. Writes the closing bracket
  // after the content, where the next append overwrites it.
  Utf16View View() const {
    assert(text_.RoomAfter(text_.end()) > 0);
    *text_.end() = ']';
    return {text_.begin(), text_.size() + 1};
  }

  void AppendInt(std::int32_t value) { text_.Finish(PutInt(Start(kMaxIntUnits), value)); }
  void AppendBool(bool value) { text_.Finish(PutAscii(Start(5), value ? "true" : "false")); }

  // An unpaired surrogate becomes U+FFFD. Returns false and appends nothing if the text contains a
  // noncharacter or may be too long. WriteJson in JsonWriter.h handles these two cases.
  bool AppendString(Utf16View text) {
    if (MayBeTooLong(text.size())) return false;
    const PutText put = PutString(text_, Start(0), text);
    if (put.exact) text_.Finish(text_.ReserveAfter(put.end, 1));
    return put.exact;
  }

 private:
  // Writes a comma if the list has elements. Returns the place of the next element, with room for
  // at least `units` units and the closing bracket.
  Utf16Unit* Start(std::size_t units) {
    Utf16Unit* const end = text_.Reserve(units + 2);
    *end = ',';
    return end + (text_.size() > 1 ? 1 : 0);
  }

  TextBlock text_;
};

}  // namespace base
