// Reads and writes the text of a message with the library nlohmann::json. NlohmannDocument
// converts the text to UTF-8 with the platform's converter. NlohmannUtf16Document leaves this
// conversion to the library.
#pragma once

#include <nlohmann/json.hpp>

#include "Workloads.h"

namespace bench {

class NlohmannDocument {
 public:
  explicit NlohmannDocument(TextView text) : json_(nlohmann::json::parse(ToUtf8(text))) {}
  std::int32_t Int() { return json_[next_++].get<std::int32_t>(); }
  HandedOut String() { return HandOutUtf8(json_[next_++].get_ref<const std::string&>()); }

 protected:
  explicit NlohmannDocument(nlohmann::json json) : json_(std::move(json)) {}

 private:
  nlohmann::json json_;
  std::size_t next_ = 0;
};

class NlohmannUtf16Document : public NlohmannDocument {
 public:
  explicit NlohmannUtf16Document(TextView text)
      : NlohmannDocument(nlohmann::json::parse(text.begin(), text.end())) {}
};

inline Text WriteNlohmann(const Values& values) {
  nlohmann::json json = nlohmann::json::array();
  for (const Value& value : values) {
    if (value.kind == Kind::kInt) {
      json.push_back(value.number);
    } else {
      json.push_back(ToUtf8(value.text));
    }
  }
  return ToUtf16(json.dump());
}

}  // namespace bench
