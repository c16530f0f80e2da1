#include "json/JsonReader.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "json/JsonNumber.h"
#include "json/Utf8.h"

namespace base {

namespace {

constexpr int kMaxDepth = 199;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// The value of `count` hexadecimal digits at `text`, or -1.
int HexValue(const char* text, std::size_t count) {
  int value = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const char c = text[i];
    const int lower = c | 0x20;
    if (IsDigit(c)) {
      value = value * 16 + (c - '0');
    } else if (lower >= 'a' && lower <= 'f') {
      value = value * 16 + (lower - 'a' + 10);
    } else {
      return -1;
    }
  }
  return value;
}

class Reader {
 public:
  explicit Reader(std::string_view text) : at_(text.data()), end_(at_ + text.size()) {
    // As much as the text takes itself: typical lists then grow once, if at all.
    values_.reserve(text.size() / sizeof(Value) + 4);
  }

  std::optional<Value> ReadDocument() {
    if (Rest().starts_with("\xEF\xBB\xBF")) at_ += 3;
    SkipGap();
    if (!ReadValue()) return std::nullopt;
    SkipGap();
    if (end_ - at_ > 1) return std::nullopt;
    return std::move(values_[0]);
  }

 private:
  // These append one value to values_ (a member two) and leave at_ behind it, or return false.
  bool ReadValue();
  bool ReadList();
  bool ReadDictionary();
  bool ReadMember();
  bool ReadString();
  bool ReadNumber();
  bool ReadWord(std::string_view word, Value&& value);

  // Reads all between the bracket at at_ and `close`, both included.
  template <bool (Reader::*ReadItem)()>
  bool ReadItems(char close);
  // Appends to text_ what the escape at at_ stands for.
  bool ReadEscape();
  bool ReadHexEscape(std::size_t digits);
  // Stops at a quote or backslash; false if the text ends first or is no UTF-8.
  bool SkipStringRun();
  bool SkipDigits();
  bool AtDelimiter() const;
  void SkipGap();
  bool SkipComment();

  // Zero at the end: no token has that byte, so most callers need no test of their own.
  char Peek() const { return at_ != end_ ? *at_ : '\0'; }
  std::string_view Rest() const { return {at_, static_cast<std::size_t>(end_ - at_)}; }
  bool Accept(char c) {
    if (Peek() != c) return false;
    ++at_;
    return true;
  }

  const char* at_;
  const char* const end_;
  int depth_ = 0;
  ListValue values_;  // the finished values of all open lists and dictionaries, outermost first
  std::string text_;  // the string being read, once it has an escape
};

bool Reader::ReadValue() {
  switch (Peek()) {
    case '"':
      return ReadString();
    case '[':
      return ReadList();
    case '{':
      return ReadDictionary();
    case 't':
      return ReadWord("true", Value(true));
    case 'f':
      return ReadWord("false", Value(false));
    case 'n':
      return ReadWord("null", Value());
    default:
      return ReadNumber();
  }
}

bool Reader::ReadWord(std::string_view word, Value&& value) {
  if (!Rest().starts_with(word)) return false;
  at_ += word.size();
  values_.Append(std::move(value));
  return true;
}

template <bool (Reader::*ReadItem)()>
bool Reader::ReadItems(char close) {
  if (++depth_ > kMaxDepth) return false;
  ++at_;
  SkipGap();
  if (!Accept(close)) {
    do {
      SkipGap();
      if (!(this->*ReadItem)()) return false;
      SkipGap();
    } while (Accept(','));
    if (!Accept(close)) return false;
  }
  --depth_;
  return true;
}

bool Reader::ReadList() {
  const std::size_t first = values_.size();
  if (!ReadItems<&Reader::ReadValue>(']')) return false;
  values_.Append(Value(ListValue(values_.TakeTail(first))));
  return true;
}

bool Reader::ReadDictionary() {
  const std::size_t first = values_.size();
  if (!ReadItems<&Reader::ReadMember>('}')) return false;
  DictionaryValue dictionary(std::span(values_.begin() + first, values_.size() - first));
  values_.Truncate(first);
  values_.Append(Value(std::move(dictionary)));
  return true;
}

bool Reader::ReadMember() {
  if (Peek() != '"' || !ReadString()) return false;
  SkipGap();
  if (!Accept(':')) return false;
  SkipGap();
  return ReadValue();
}

bool Reader::ReadString() {
  const char* run = ++at_;
  if (!SkipStringRun()) return false;
  if (*at_ == '"') {
    values_.Append(Value(std::string_view(run, at_++ - run)));
    return true;
  }
  text_.assign(run, at_);
  while (*at_ != '"') {
    if (!ReadEscape()) return false;
    run = at_;
    if (!SkipStringRun()) return false;
    text_.append(run, at_);
  }
  ++at_;
  values_.Append(Value(std::string_view(text_)));
  return true;
}

bool Reader::SkipStringRun() {
  for (;;) {
    at_ = SkipPlain(at_, end_);
    if (at_ == end_) return false;
    if (*at_ == '"' || *at_ == '\\') return true;
    do {
      const CodePoint next = DecodeUtf8(at_, end_);
      if (!next.valid) return false;
      at_ += next.length;
    } while (at_ != end_ && !IsAscii(*at_));
  }
}

bool Reader::ReadEscape() {
  static constexpr std::string_view kLetters = "\"\\/bfnrtv";
  static constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t\v";
  if (end_ - ++at_ < 1) return false;
  const char letter = *at_++;
  if (letter == 'u') return ReadHexEscape(4);
  if (letter == 'x') return ReadHexEscape(2);
  const std::size_t index = kLetters.find(letter);
  if (index == std::string_view::npos) return false;
  text_.push_back(kMeanings[index]);
  return true;
}

bool Reader::ReadHexEscape(std::size_t digits) {
  const auto read = [this](std::size_t count) {
    if (Rest().size() < count) return -1;
    const int value = HexValue(at_, count);
    at_ += count;
    return value;
  };
  int code = read(digits);
  if (code < 0 || (code >= 0xDC00 && code <= 0xDFFF)) return false;
  if (code >= 0xD800 && code <= 0xDBFF) {
    if (!Accept('\\') || !Accept('u')) return false;
    const int low = read(4);
    if (low < 0xDC00 || low > 0xDFFF) return false;
    code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
  }
  AppendUtf8(static_cast<char32_t>(code), text_);
  return true;
}

bool Reader::ReadNumber() {
  const char* const start = at_;
  const bool negative = Accept('-');
  const char* const digits = at_;
  std::uint64_t magnitude = 0;  // may wrap around where the digits are too many for an integer
  const char* digit = digits;
  for (; digit != end_ && IsDigit(*digit); ++digit)
    magnitude = magnitude * 10 + static_cast<unsigned>(*digit - '0');
  at_ = digit;
  const auto count = at_ - digits;
  if (count == 0 || (count > 1 && *digits == '0')) return false;

  const bool fraction = Accept('.');
  if (fraction && !SkipDigits()) return false;
  const bool exponent = Accept('e') || Accept('E');
  if (exponent && !Accept('-')) Accept('+');
  if (exponent && !SkipDigits()) return false;
  if (!AtDelimiter()) return false;

  if (!fraction && !exponent && count <= 10 && magnitude <= 0x7FFFFFFFu + negative) {
    const auto value = static_cast<std::int64_t>(magnitude);
    values_.Append(Value(static_cast<std::int32_t>(negative ? -value : value)));
    return true;
  }
  const auto value = ParseDouble({start, static_cast<std::size_t>(at_ - start)});
  if (value) values_.Append(Value(*value));
  return value.has_value();
}

bool Reader::SkipDigits() {
  const char* const start = at_;
  while (IsDigit(Peek())) ++at_;
  return at_ != start;
}

bool Reader::AtDelimiter() const {
  if (at_ == end_) return true;
  return *at_ == ',' || *at_ == ']' || *at_ == '}' || IsBlank(*at_);
}

void Reader::SkipGap() {
  // Compact messages have no gaps: most calls end here.
  if (Peek() > ' ' && Peek() != '/') [[likely]]
    return;
  while (IsBlank(Peek()) ? (++at_, true) : Peek() == '/' && SkipComment()) {
  }
}

// An unterminated comment is none: its slash then stands where nothing may.
bool Reader::SkipComment() {
  const std::string_view rest = Rest();
  if (rest.starts_with("//")) {
    while (at_ != end_ && *at_ != '\n' && *at_ != '\r') ++at_;
    return true;
  }
  const std::size_t close = rest.starts_with("/*") ? rest.find("*/", 2) : std::string_view::npos;
  if (close == std::string_view::npos) return false;
  at_ += close + 2;
  return true;
}

}  // namespace

std::optional<Value> ReadJson(std::string_view utf8) { return Reader(utf8).ReadDocument(); }

}  // namespace base
