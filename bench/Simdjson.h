// simdjson, natively and for reading only. Its parser is kept, as its makers advise: it then
// allocates nothing for a document.
#pragma once

#include <simdjson.h>

#include "Workloads.h"

namespace bench {

class SimdjsonDocument {
 public:
  explicit SimdjsonDocument(TextView text) {
    static simdjson::dom::parser parser;
    const std::string utf8 = ToUtf8(text);
    next_ = parser.parse(utf8).get_array().value().begin();
  }
  std::int32_t Int() {
    const auto number = static_cast<std::int32_t>((*next_).get_int64().value());
    ++next_;
    return number;
  }
  HandedOut String() {
    HandedOut text = HandOutUtf8((*next_).get_string().value());
    ++next_;
    return text;
  }

 private:
  simdjson::dom::array::iterator next_;
};

// Parses each value only when it is read, which works once and in order.
class SimdjsonOnDemandDocument {
 public:
  explicit SimdjsonOnDemandDocument(TextView text) : utf8_(ToUtf8(text)) {
    static simdjson::ondemand::parser parser;
    const std::size_t length = utf8_.size();
    utf8_.resize(length + simdjson::SIMDJSON_PADDING);
    document_ = parser.iterate(utf8_.data(), length, utf8_.size());
    next_ = document_.get_array().value().begin().value();
  }
  std::int32_t Int() {
    const auto number = static_cast<std::int32_t>((*next_).get_int64().value());
    ++next_;
    return number;
  }
  HandedOut String() {
    HandedOut text = HandOutUtf8((*next_).get_string().value());
    ++next_;
    return text;
  }

 private:
  std::string utf8_;
  simdjson::ondemand::document document_;
  simdjson::ondemand::array_iterator next_;
};

}  // namespace bench
