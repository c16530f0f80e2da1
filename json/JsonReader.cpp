#include "json/JsonReader.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "json/JsonNumber.h"
#include "json/MemberOrder.h"

namespace base {

namespace {

constexpr int kMaxDepth = 199;

// No text needs more packed bytes than this for each of its units: "", is the worst.
constexpr std::size_t kMaxPackedPerUnit = 3;
// What is written beyond that before it is known to be needed: a string's head, vectors.
constexpr std::size_t kPackedSlack = packed::kBytesHead + 2 * kCopySlack;

bool IsDigit(char32_t c) { return c >= '0' && c <= '9'; }

bool IsBlank(char32_t c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// The value of a hexadecimal digit, or -1.
int HexDigit(char32_t c) {
  if (IsDigit(c)) return static_cast<int>(c - '0');
  const char32_t lower = c | 0x20;
  return lower >= 'a' && lower <= 'f' ? static_cast<int>(lower - 'a' + 10) : -1;
}

// Reads units straight into a block that has room for all that the text can hold, so that nothing
// is copied, converted or measured in between.
template <class Unit>
class Reader {
 public:
  using Text = std::basic_string_view<Unit>;

  explicit Reader(Text text) : at_(text.data()), end_(at_ + text.size()) {
    to_ = values_.Room(text.size() * kMaxPackedPerUnit + kPackedSlack);
  }

  std::optional<Document> ReadDocument() {
    SkipByteOrderMark();
    SkipGap();
    ValueType type = ValueType::kList;
    if (Peek() == '[') {
      if (!ReadItems<&Reader::ReadValue>(']')) return std::nullopt;
    } else {
      const char* const root = to_;
      if (!ReadValue()) return std::nullopt;
      type = ValueView(root).type();
    }
    SkipGap();
    if (end_ - at_ > 1 || (at_ != end_ && !IsAsciiOrByte(*at_))) return std::nullopt;
    values_.Finish(to_);
    values_.Trim();
    return Document{type, std::move(values_)};
  }

 private:
  // These append one value at to_ (a member two) and leave at_ behind it, or return false.
  bool ReadValue();
  bool ReadList();
  bool ReadDictionary();
  bool ReadMember();
  bool ReadString();
  bool ReadNumber();
  bool ReadDouble(Text number);
  bool ReadWord(const char* rest);

  // Reads all between the bracket at at_ and `close`, both included.
  template <bool (Reader::*ReadItem)()>
  bool ReadItems(char close);
  // Append to the string at to_: text up to a quote or backslash, what an escape stands for. The
  // first is false if the text ends first or is ill-formed.
  bool ReadStringRun();
  bool ReadEscape();
  bool ReadHexEscape(int digits);
  int ReadHex(int digits);
  bool SkipDigits();
  bool AtDelimiter() const;
  void SkipByteOrderMark();
  void SkipGap();
  bool SkipComment();

  static bool IsAsciiOrByte(char) { return true; }
  static bool IsAsciiOrByte(Utf16Unit unit) { return IsAscii(unit); }

  // Zero at the end: no token has that unit, so most callers need no test of their own.
  Unit Peek() const { return at_ != end_ ? *at_ : Unit{}; }
  bool Accept(char c) {
    if (Peek() != static_cast<Unit>(c)) return false;
    ++at_;
    return true;
  }
  void PutType(ValueType type) { to_ = packed::PutType(to_, type); }
  template <class T>
  void Put(ValueType type, T value) {
    to_ = packed::Put(to_, type, value);
  }

  const Unit* at_;
  const Unit* const end_;
  int depth_ = 0;
  ListValue values_;
  char* to_;                    // in the room behind values_
  std::vector<char*> members_;  // where those of all open dictionaries start, outermost first
};

template <class Unit>
bool Reader<Unit>::ReadValue() {
  switch (Peek()) {
    case '"':
      return ReadString();
    case '[':
      return ReadList();
    case '{':
      return ReadDictionary();
    case 't':
      Put(ValueType::kBoolean, true);
      return ReadWord("true");
    case 'f':
      Put(ValueType::kBoolean, false);
      return ReadWord("false");
    case 'n':
      PutType(ValueType::kNull);
      return ReadWord("null");
    default:
      return ReadNumber();
  }
}

template <class Unit>
bool Reader<Unit>::ReadWord(const char* rest) {
  for (; *rest != '\0'; ++rest) {
    if (!Accept(*rest)) return false;
  }
  return true;
}

template <class Unit>
template <bool (Reader<Unit>::*ReadItem)()>
bool Reader<Unit>::ReadItems(char close) {
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

template <class Unit>
bool Reader<Unit>::ReadList() {
  PutType(ValueType::kList);
  if (!ReadItems<&Reader::ReadValue>(']')) return false;
  PutType(packed::kEnd);
  return true;
}

template <class Unit>
bool Reader<Unit>::ReadDictionary() {
  PutType(ValueType::kDictionary);
  const std::size_t first = members_.size();
  if (!ReadItems<&Reader::ReadMember>('}')) return false;
  to_ = SortMembers(std::span(members_).subspan(first), to_);
  members_.resize(first);
  PutType(packed::kEnd);
  return true;
}

template <class Unit>
bool Reader<Unit>::ReadMember() {
  members_.push_back(to_);
  if (Peek() != '"' || !ReadString()) return false;
  SkipGap();
  if (!Accept(':')) return false;
  SkipGap();
  return ReadValue();
}

template <class Unit>
bool Reader<Unit>::ReadString() {
  char* const start = to_;
  to_ += packed::kBytesHead;
  ++at_;
  if (!ReadStringRun()) return false;
  while (*at_ != '"') {
    if (!ReadEscape() || !ReadStringRun()) return false;
  }
  ++at_;
  packed::PutBytesHead(start, ValueType::kString, to_);
  return true;
}

template <class Unit>
bool Reader<Unit>::ReadStringRun() {
  for (;;) {
    at_ = CopyPlain<Stop::kStringEnds>(at_, end_, to_);
    for (int i = 0; i < kScalarRun; ++i) {
      if (at_ == end_) return false;
      if (*at_ == '"' || *at_ == '\\') return true;
      const CodePoint next = Decode(at_, end_);
      if (!next.valid) return false;
      at_ += next.length;
      to_ = PutUtf8(next.code, to_);
    }
  }
}

template <class Unit>
bool Reader<Unit>::ReadEscape() {
  static constexpr std::string_view kLetters = "\"\\/bfnrtv";
  static constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t\v";
  if (end_ - ++at_ < 1) return false;
  const Unit letter = *at_++;
  if (letter == 'u') return ReadHexEscape(4);
  if (letter == 'x') return ReadHexEscape(2);
  const std::size_t index =
      IsAscii(letter) ? kLetters.find(static_cast<char>(letter)) : std::string_view::npos;
  if (index == std::string_view::npos) return false;
  *to_++ = kMeanings[index];
  return true;
}

template <class Unit>
bool Reader<Unit>::ReadHexEscape(int digits) {
  int code = ReadHex(digits);
  if (code < 0 || (code >= 0xDC00 && code <= 0xDFFF)) return false;
  if (code >= 0xD800 && code <= 0xDBFF) {
    if (!Accept('\\') || !Accept('u')) return false;
    const int low = ReadHex(4);
    if (low < 0xDC00 || low > 0xDFFF) return false;
    code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
  }
  to_ = PutUtf8(static_cast<char32_t>(code), to_);
  return true;
}

// The value of so many hexadecimal digits, or -1.
template <class Unit>
int Reader<Unit>::ReadHex(int digits) {
  int value = 0;
  for (; digits > 0; --digits) {
    const int digit = HexDigit(Peek());
    if (digit < 0) return -1;
    value = value * 16 + digit;
    ++at_;
  }
  return value;
}

template <class Unit>
bool Reader<Unit>::ReadNumber() {
  const Unit* const start = at_;
  const bool negative = Accept('-');
  const Unit* const digits = at_;
  std::uint64_t magnitude = 0;  // may wrap around where the digits are too many for an integer
  const Unit* digit = digits;
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
    Put(ValueType::kInteger, static_cast<std::int32_t>(negative ? -value : value));
    return true;
  }
  return ReadDouble(Text(start, at_ - start));
}

template <class Unit>
bool Reader<Unit>::ReadDouble(Text number) {
  const std::optional<double> value = ParseDouble(std::string(number.begin(), number.end()));
  if (value) Put(ValueType::kDouble, *value);
  return value.has_value();
}

template <class Unit>
bool Reader<Unit>::SkipDigits() {
  const Unit* const start = at_;
  while (IsDigit(Peek())) ++at_;
  return at_ != start;
}

template <class Unit>
bool Reader<Unit>::AtDelimiter() const {
  if (at_ == end_) return true;
  return *at_ == ',' || *at_ == ']' || *at_ == '}' || IsBlank(*at_);
}

template <>
void Reader<char>::SkipByteOrderMark() {
  if (Text(at_, end_ - at_).starts_with("\xEF\xBB\xBF")) at_ += 3;
}

template <>
void Reader<Utf16Unit>::SkipByteOrderMark() {
  if (Peek() == 0xFEFF) ++at_;
}

template <class Unit>
void Reader<Unit>::SkipGap() {
  // Compact messages have no gaps: most calls end here.
  if (Peek() > ' ' && Peek() != '/') [[likely]]
    return;
  while (IsBlank(Peek()) ? (++at_, true) : Peek() == '/' && SkipComment()) {
  }
}

// An unterminated comment is none: its slash then stands where nothing may.
template <class Unit>
bool Reader<Unit>::SkipComment() {
  if (end_ - at_ < 2) return false;
  const Unit* at = at_ + 2;
  if (at_[1] == '/') {
    while (at != end_ && *at != '\n' && *at != '\r') ++at;
    at_ = at;
    return true;
  }
  if (at_[1] != '*') return false;
  for (; end_ - at >= 2; ++at) {
    if (at[0] != '*' || at[1] != '/') continue;
    at_ = at + 2;
    return true;
  }
  return false;
}

}  // namespace

std::optional<Document> ReadJson(std::string_view utf8) {
  return Reader<char>(utf8).ReadDocument();
}

std::optional<Document> ReadJson(Utf16View text) { return Reader<Utf16Unit>(text).ReadDocument(); }

}  // namespace base
