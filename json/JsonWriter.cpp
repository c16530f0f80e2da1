#include "json/JsonWriter.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "json/Check.h"
#include "json/JsonText.h"

namespace base {

namespace {

constexpr std::size_t kMaxNumber = 32;

class Writer {
 public:
  explicit Writer(const ListValue& list) : at_(list.begin()), end_(list.end()) {}

  bool WriteList() { return WriteItems<&Writer::WriteValue>('[', ']'); }
  Utf16View Text() const { return {text_.begin(), text_.size()}; }

 private:
  // The functions return false if a value has no JSON form. WriteValue writes the element at `at_`,
  // WriteMember the key and the value there, WriteItems all elements or members up to the end of
  // the list. These three move `at_` past the elements that they write.
  bool WriteValue();
  bool WriteMember();
  template <bool (Writer::*WriteItem)()>
  bool WriteItems(char open, char close);
  bool WriteString(const StringView& text);
  bool WriteDouble(double value);

  bool AtEnd() const { return at_ == end_ || ValueView(at_).type() == ValueType::kEnd; }
  void Put(std::string_view ascii) { text_.Finish(PutAscii(text_.Reserve(ascii.size()), ascii)); }
  void Put(char c) { Put(std::string_view(&c, 1)); }

  const char* at_;
  const char* const end_;
  TextBlock text_;
};

bool Writer::WriteValue() {
  const ValueView value(at_);
  at_ = value.End();
  switch (value.type()) {
    case ValueType::kNull:
      Put("null");
      return true;
    case ValueType::kBoolean:
      Put(*value.GetIfBool() ? "true" : "false");
      return true;
    case ValueType::kInteger:
      text_.Finish(PutInt(text_.Reserve(kMaxIntUnits), *value.GetIfInt()));
      return true;
    case ValueType::kDouble:
      return WriteDouble(*value.GetIfDouble());
    case ValueType::kString:
      return WriteString(*value.GetIfString());
    case ValueType::kDictionary:
      return WriteItems<&Writer::WriteMember>('{', '}');
    case ValueType::kList:
      return WriteList();
    default:
      return false;
  }
}

bool Writer::WriteMember() {
  if (!WriteValue()) return false;
  Put(':');
  return WriteValue();
}

template <bool (Writer::*WriteItem)()>
bool Writer::WriteItems(char open, char close) {
  Put(open);
  for (bool first = true; !AtEnd(); first = false) {
    if (!first) Put(',');
    if (!(this->*WriteItem)()) return false;
  }
  if (at_ != end_) at_ += packed::kTypeSize;
  Put(close);
  return true;
}

bool Writer::WriteDouble(double value) {
  if (!std::isfinite(value)) return false;
  char digits[kMaxNumber];
  const std::string_view number(digits, std::to_chars(digits, digits + kMaxNumber, value).ptr);
  Put(number);
  if (number.find_first_of(".e") == std::string_view::npos) Put(".0");
  return true;
}

bool Writer::WriteString(const StringView& text) {
  if (MayBeTooLong(Utf16Length(text)) && Utf8Length(text) > kMaxStringBytes) {
    ReportCheckFailed("utf8.size() <= 2147483647");
    return false;
  }
  Utf16Unit* const end = text_.end();
  text_.Finish(
      (text.wide.empty() ? PutString(text_, end, text.ascii) : PutString(text_, end, text.wide))
          .end);
  return true;
}

}  // namespace

bool WriteJson(const ListValue& list, Utf16Text& out) {
  Writer writer(list);
  const bool written = writer.WriteList();
  out.assign(written ? writer.Text() : Utf16View());
  return written;
}

}  // namespace base
