// Reads the text of a message with simdjson, a library that only reads JSON. Linux only. The
// parsers are static and thus reused, as the documentation of simdjson advises, so they need no
// new memory for each document.
#pragma once

#include <simdjson.h>

#include "Workloads.h"

namespace bench {

// The common part of the two classes below, which use the two interfaces of simdjson. Iterator is
// the interface's iterator over the values of an array.
template <class Iterator>
class SimdjsonReader {
 public:
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

 protected:
  Iterator next_;
};

class SimdjsonDocument : public SimdjsonReader<simdjson::dom::array::iterator> {
 public:
  explicit SimdjsonDocument(TextView text) {
    static simdjson::dom::parser parser;
    const std::string utf8 = ToUtf8(text);
    next_ = parser.parse(utf8).get_array().value().begin();
  }
};

// Parses each value only when it is read. So each value can be read only once and in order.
class SimdjsonOnDemandDocument : public SimdjsonReader<simdjson::ondemand::array_iterator> {
 public:
  explicit SimdjsonOnDemandDocument(TextView text) : utf8_(ToUtf8(text)) {
    static simdjson::ondemand::parser parser;
    const std::size_t length = utf8_.size();
    utf8_.resize(length + simdjson::SIMDJSON_PADDING);
    document_ = parser.iterate(utf8_.data(), length, utf8_.size());
    next_ = document_.get_array().value().begin().value();
  }

 private:
  std::string utf8_;
  simdjson::ondemand::document document_;
};

}  // namespace bench
