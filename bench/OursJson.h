// This module's JSON floor alone, where there is no archive: natively.
#pragma once

#include <optional>

#include "Workloads.h"
#include "json/JsonReader.h"
#include "json/JsonWriter.h"

namespace bench {

class OursDocument {
 public:
  explicit OursDocument(TextView text) : value_(base::ReadJson(ToUtf8(text))) {}
  std::int32_t Int() { return *Next().GetIfInt(); }
  HandedOut String() { return HandOutUtf8(*Next().GetIfString()); }

 private:
  const base::Value& Next() { return (*value_->GetIfList())[next_++]; }

  std::optional<base::Value> value_;
  std::size_t next_ = 0;
};

inline Text WriteOurs(const Values& values) {
  base::ListValue list;
  for (const Value& value : values) {
    list.Append(value.kind == Kind::kInt ? base::Value(value.number)
                                         : base::Value(std::string_view(ToUtf8(value.text))));
  }
  std::string utf8;
  base::WriteJson(list, utf8);
  return ToUtf16(utf8);
}

}  // namespace bench
