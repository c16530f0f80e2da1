// Reads and writes the text of a message with RapidJSON, used in three ways: with text that the
// platform's converter has converted to UTF-8, with the same UTF-8 text parsed in situ, and with
// UTF-16 throughout.
#pragma once

// Switches on RapidJSON's fast code, which is off by default.
#define RAPIDJSON_SSE2
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "Workloads.h"

namespace bench {

using Utf16 = rapidjson::UTF16<Unit>;

class RapidUtf16Document {
 public:
  // In this version of RapidJSON, Parse takes a length only for UTF-8. For UTF-16 it needs the zero
  // that ends every text here.
  explicit RapidUtf16Document(TextView text) { document_.Parse(text.data()); }
  std::int32_t Int() { return document_[next_++].GetInt(); }
  HandedOut String() {
    const auto& value = document_[next_++];
    return HandOut(TextView(value.GetString(), value.GetStringLength()));
  }

 private:
  rapidjson::GenericDocument<Utf16> document_;
  rapidjson::SizeType next_ = 0;
};

class RapidUtf8Document {
 public:
  explicit RapidUtf8Document(TextView text) {
    const std::string utf8 = ToUtf8(text);
    document_.Parse(utf8.data(), utf8.size());
  }
  std::int32_t Int() { return document_[next_++].GetInt(); }
  HandedOut String() {
    const auto& value = document_[next_++];
    return HandOutUtf8({value.GetString(), value.GetStringLength()});
  }

 protected:
  RapidUtf8Document() = default;

  rapidjson::Document document_;
  rapidjson::SizeType next_ = 0;
};

// Parses in situ: the strings of the document are not copied but stay in the text, `utf8_`.
class RapidInSituDocument : public RapidUtf8Document {
 public:
  explicit RapidInSituDocument(TextView text) : utf8_(ToUtf8(text)) {
    document_.ParseInsitu(utf8_.data());
  }

 private:
  std::string utf8_;
};

using RapidUtf16Buffer = rapidjson::GenericStringBuffer<Utf16>;
inline TextView ViewOf(const RapidUtf16Buffer& buffer) {
  return {buffer.GetString(), buffer.GetSize() / sizeof(Unit)};
}

// Returns RapidJSON's own buffer and not a copy, because a program could send the text directly
// from the buffer.
inline RapidUtf16Buffer WriteRapidUtf16(const Values& values) {
  RapidUtf16Buffer buffer;
  rapidjson::Writer<RapidUtf16Buffer, Utf16, Utf16> writer(buffer);
  writer.StartArray();
  for (const Value& value : values) {
    if (value.kind == Kind::kInt) {
      writer.Int(value.number);
    } else {
      writer.String(value.text.data(), static_cast<rapidjson::SizeType>(value.text.size()));
    }
  }
  writer.EndArray();
  return buffer;
}

inline Text WriteRapidUtf8(const Values& values) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  writer.StartArray();
  for (const Value& value : values) {
    if (value.kind == Kind::kInt) {
      writer.Int(value.number);
    } else {
      const std::string utf8 = ToUtf8(value.text);
      writer.String(utf8.data(), static_cast<rapidjson::SizeType>(utf8.size()));
    }
  }
  writer.EndArray();
  return ToUtf16({buffer.GetString(), buffer.GetSize()});
}

}  // namespace bench
