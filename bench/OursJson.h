// This module's JSON floor alone, where there is no archive: natively.
#pragma once

#include <optional>

#include "Workloads.h"
#include "json/JsonReader.h"
#include "json/JsonWriter.h"

namespace bench {

class OursDocument {
 public:
  explicit OursDocument(TextView text) : document_(base::ReadJson(text)) {}
  std::int32_t Int() { return *Next().GetIfInt(); }
  HandedOut String() {
    const std::string_view utf8 = *Next().GetIfString();
    HandedOut text(base::Utf16Length(utf8), u'\0');
    base::CopyAsUtf16(utf8, text.data());
    return text;
  }

 private:
  base::ValueView Next() {
    const base::ValueView value = document_->values.At(next_);
    next_ = document_->values.StartBehind(value);
    return value;
  }

  const std::optional<base::Document> document_;
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
