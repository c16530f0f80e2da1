// A JSON list that stands as text from its first element on: to write it out costs nothing more.
// Used in every process that loads the module.
#pragma once

#include "json/JsonText.h"

namespace base {

class ListText {
 public:
  ListText() { text_.Finish(PutAscii(text_.Room(2), "[")); }

  // Compact; good until the next append. The bracket belongs to the view alone, so that an append
  // which fails has nothing to mend.
  Utf16View View() const {
    *text_.end() = ']';
    return {text_.begin(), text_.size() + 1};
  }

  void AppendInt(std::int32_t value) { text_.Finish(PutInt(Start(kMaxIntUnits), value)); }
  void AppendBool(bool value) { text_.Finish(PutAscii(Start(5), value ? "true" : "false")); }

  // An unpaired surrogate becomes U+FFFD. False, and nothing appended, for what would not read back
  // as the same (a text with a noncharacter) and what a writer may refuse.
  bool AppendString(Utf16View text) {
    if (MayBeTooLong(text.size())) return false;
    const PutText put = PutString(text_, Start(0), text);
    if (put.exact) text_.Finish(text_.RoomBehind(put.end, 1));
    return put.exact;
  }

 private:
  // Where the next element goes, with room for so many units and the bracket.
  Utf16Unit* Start(std::size_t units) {
    Utf16Unit* const end = text_.Room(units + 2);
    *end = ',';
    return end + (text_.size() > 1 ? 1 : 0);
  }

  TextBlock text_;
};

}  // namespace base
