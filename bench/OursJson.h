// Reads values from the text of a message, and writes values as such a text, with this project's
// JSON library. Used in the Linux benchmarks, because the archive (JArchive) needs Windows.
#pragma once

#include <memory>

#include "Workloads.h"
#include "json/JsonReader.h"
#include "json/ListText.h"

namespace bench {

class OursDocument {
 public:
  explicit OursDocument(TextView text) { base::ReadJson(text, values_); }
  std::int32_t Int() { return *Next().GetIfInt(); }
  HandedOut String() {
    const base::StringView read = *Next().GetIfString();
    HandedOut text(base::Utf16Length(read), u'\0');
    base::CopyAsUtf16(read, text.data());
    return text;
  }

 private:
  base::ValueView Next() {
    const base::ValueView value = values_.At(next_);
    next_ += value.ByteSize();
    return value;
  }

  base::ListValue values_;
  std::size_t next_ = 0;
};

// Returns the text of a list without a copy. An archive (JArchive) stores the values of a request
// in a ListText, too.
inline TextView ViewOf(const std::shared_ptr<base::ListText>& list) { return list->View(); }

inline std::shared_ptr<base::ListText> WriteOurs(const Values& values) {
  auto list = std::make_shared<base::ListText>();
  for (const Value& value : values) {
    if (value.kind == Kind::kInt) {
      list->AppendInt(value.number);
    } else {
      list->AppendString(value.text);
    }
  }
  return list;
}

}  // namespace bench
