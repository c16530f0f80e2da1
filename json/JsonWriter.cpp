#include "json/JsonWriter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "json/Check.h"
#include "json/Utf8.h"

namespace base {

namespace {

constexpr std::size_t kFirstReserve = 1024;
constexpr std::size_t kMaxNumber = 32;
constexpr std::size_t kMaxEscape = 6;
constexpr std::size_t kMaxStringBytes = 2147483647;

bool IsNoncharacter(char32_t code) {
  return (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFE) == 0xFFFE;
}

// Skips what is written as it stands.
const char* SkipUnchanged(const char* text, const char* end) {
  for (;;) {
    text = SkipPlain(text, end);
    if (text == end || IsAscii(*text)) return text;
    do {
      const CodePoint next = DecodeUtf8(text, end);
      const bool separator = next.code == 0x2028 || next.code == 0x2029;
      if (!next.valid || separator || IsNoncharacter(next.code)) return text;
      text += next.length;
    } while (text != end && !IsAscii(*text));
  }
}

// An estimate: few texts then outgrow their first block.
std::size_t TypicalSize(const ListValue& list) {
  constexpr std::size_t kTypicalItem = 8;
  std::size_t size = list.size() * kTypicalItem;
  for (const Value& item : list) size += item.GetIfString().value_or("").size();
  return size;
}

// Writes at a pointer into the string, which is cut to the written length at the end: an append of
// std::string for each small piece costs several times as much.
class Writer {
 public:
  Writer(std::string& out, std::size_t reserve) : out_(out) {
    out_.clear();
    out_.reserve(reserve);
    out_.resize(out_.capacity());
    at_ = out_.data();
  }

  bool WriteDocument(const ListValue& list) {
    const bool written = Write(list);
    out_.resize(written ? at_ - out_.data() : 0);
    return written;
  }

 private:
  bool Write(const Value& value);
  bool Write(const ListValue& list);
  bool Write(const DictionaryValue& dictionary);
  bool Write(std::string_view utf8);
  bool Write(double value);
  void Write(std::int32_t value);
  void WriteEscape(char32_t code);

  // Makes room for `bytes` more; Put does not check.
  void Ensure(std::size_t bytes) {
    const std::size_t used = at_ - out_.data();
    if (out_.size() - used >= bytes) return;
    out_.resize(std::max(out_.size() * 2, used + bytes));
    at_ = out_.data() + used;
  }
  void Put(char c) { *at_++ = c; }
  void Put(std::string_view text) { at_ = std::copy(text.begin(), text.end(), at_); }

  std::string& out_;
  char* at_;
};

bool Writer::Write(const Value& value) {
  Ensure(kMaxNumber);
  switch (value.type()) {
    case Value::Type::kNull:
      Put("null");
      return true;
    case Value::Type::kBoolean:
      Put(*value.GetIfBool() ? "true" : "false");
      return true;
    case Value::Type::kInteger:
      Write(*value.GetIfInt());
      return true;
    case Value::Type::kDouble:
      return Write(*value.GetIfDouble());
    case Value::Type::kString:
      return Write(*value.GetIfString());
    case Value::Type::kDictionary:
      return Write(*value.GetIfDictionary());
    case Value::Type::kList:
      return Write(*value.GetIfList());
    case Value::Type::kBinary:
      break;
  }
  return false;
}

bool Writer::Write(const ListValue& list) {
  Ensure(1);
  Put('[');
  for (const Value& item : list) {
    if (!Write(item)) return false;
    Ensure(1);
    Put(',');
  }
  Ensure(1);
  if (!list.empty()) --at_;
  Put(']');
  return true;
}

bool Writer::Write(const DictionaryValue& dictionary) {
  Put('{');
  for (const auto& [key, value] : dictionary) {
    if (!Write(key)) return false;
    Ensure(1);
    Put(':');
    if (!Write(value)) return false;
    Ensure(1);
    Put(',');
  }
  Ensure(1);
  if (dictionary.size() != 0) --at_;
  Put('}');
  return true;
}

void Writer::Write(std::int32_t value) { at_ = std::to_chars(at_, at_ + kMaxNumber, value).ptr; }

bool Writer::Write(double value) {
  if (!std::isfinite(value)) return false;
  const char* const start = at_;
  at_ = std::to_chars(at_, at_ + kMaxNumber, value).ptr;
  const bool reads_as_double = std::any_of(start, static_cast<const char*>(at_),
                                           [](char c) { return c == '.' || c == 'e'; });
  if (!reads_as_double) Put(".0");
  return true;
}

bool Writer::Write(std::string_view utf8) {
  if (utf8.size() > kMaxStringBytes) {
    ReportCheckFailed("utf8.size() <= 2147483647");
    return false;
  }
  const char* text = utf8.data();
  const char* const end = text + utf8.size();
  Ensure(utf8.size() + 2);
  Put('"');
  for (;;) {
    const char* const run = text;
    text = SkipUnchanged(text, end);
    Put(std::string_view(run, text - run));
    if (text == end) break;
    const CodePoint next = DecodeUtf8(text, end);
    text += next.length;
    // The rest's own length stays in hand, so that runs need no check.
    Ensure(kMaxEscape + (end - text) + 1);
    if (next.valid && !IsNoncharacter(next.code)) {
      WriteEscape(next.code);
    } else {
      Put("\xEF\xBF\xBD");
    }
  }
  Put('"');
  return true;
}

void Writer::WriteEscape(char32_t code) {
  static constexpr std::string_view kCharacters = "\b\t\n\f\r\"\\";
  static constexpr std::string_view kLetters = "btnfr\"\\";
  const std::size_t index =
      code < 0x80 ? kCharacters.find(static_cast<char>(code)) : std::string_view::npos;
  Put('\\');
  if (index != std::string_view::npos) return Put(kLetters[index]);
  Put('u');
  for (int shift = 12; shift >= 0; shift -= 4) Put("0123456789ABCDEF"[code >> shift & 0xF]);
}

}  // namespace

bool WriteJson(const ListValue& list, std::string& out) {
  return Writer(out, std::max(kFirstReserve, TypicalSize(list))).WriteDocument(list);
}

}  // namespace base
