// This module's JSON floor alone, where there is no archive: natively.
#pragma once

#include "Workloads.h"
#include "json/JsonReader.h"
#include "json/JsonWriter.h"

namespace bench {

class OursDocument {
 public:
  explicit OursDocument(TextView text) { base::ReadJson(text, values_); }
  std::int32_t Int() { return *Next().GetIfInt(); }
  HandedOut String() {
    const base::StringView read = *Next().GetIfString();
    if (!read.wide.empty()) return HandOut(read.wide);
    HandedOut text(read.ascii.size(), u'\0');
    base::CopyAsUtf16(read, text.data());
    return text;
  }

 private:
  base::ValueView Next() {
    const base::ValueView value = values_.At(next_);
    next_ = values_.StartBehind(value);
    return value;
  }

  base::ListValue values_;
  std::size_t next_ = 0;
};

inline Text WriteOurs(const Values& values) {
  base::ListValue list;
  for (const Value& value : values) {
    if (value.kind == Kind::kInt) {
      list.AppendInt(value.number);
    } else {
      list.AppendString(base::Utf16View(value.text));
    }
  }
  Text text;
  base::WriteJson(list, text);
  return text;
}

}  // namespace bench
