#include "json/JsonReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "json/Digits.h"
#include "json/JsonNumber.h"
#include "json/MemberOrder.h"

namespace base {

namespace {

constexpr std::size_t kSampled = 512;  // what is read tells what so many times as much will need
constexpr int kMaxDepth = 199;
constexpr char32_t kMaxCodePoint = 0x10FFFF;
constexpr char32_t kNoCodePoint = kMaxCodePoint + 1;

// No text needs more packed bytes than this: "", is the worst, with a head for three units. The
// last element of all has no comma.
std::size_t MostPacked(std::size_t units) {
  return units / 3 * packed::kTextHead + 2 * packed::kTextHead;
}

// The inverse, for room for two heads at least.
std::size_t UnitsThatFit(std::size_t room) {
  return (room - 2 * packed::kTextHead) / packed::kTextHead * 3 + 2;
}

bool IsDigit(char32_t c) { return c >= '0' && c <= '9'; }

bool IsBlank(char32_t c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// The value of a hexadecimal digit, or -1.
int HexDigit(char32_t c) {
  if (IsDigit(c)) return static_cast<int>(c - '0');
  const char32_t lower = c | 0x20;
  return lower >= 'a' && lower <= 'f' ? static_cast<int>(lower - 'a' + 10) : -1;
}

// Reads units straight into a block that has room for all that the text up to end_ can hold, so
// that nothing is copied, converted or measured in between.
template <class Unit>
class Reader {
 public:
  using Text = std::basic_string_view<Unit>;

  Reader(Text text, ListValue& values, std::size_t step)
      : start_(text.data()),
        at_(start_),
        limit_(start_ + text.size()),
        end_(limit_),
        step_(step),
        values_(values),
        to_(values.Room(MostPacked(std::min(text.size(), step)))) {}

  std::optional<ValueType> ReadDocument() {
    SkipByteOrderMark();
    SkipGap();
    ValueType type = ValueType::kList;
    if (Peek() == '[') {
      if (!ReadElements()) return std::nullopt;
    } else {
      to_ = values_.Room(MostPacked(end_ - at_));
      const char* const root = to_;
      if (!ReadValue()) return std::nullopt;
      type = ValueView(root).type();
    }
    SkipGap();
    if (end_ - at_ > 1 || (at_ != end_ && !IsAsciiOrByte(*at_))) return std::nullopt;
    values_.Finish(to_);
    values_.Trim();
    return type;
  }

 private:
  bool ReadElements();
  bool ReadElement();
  bool MakeStep();

  // These append one value at to_ (a member two, list items one or more) and leave at_ behind it,
  // or return false. A gap may stand before items.
  bool ReadValue();
  bool ReadListItems();
  bool ReadList();
  bool ReadDictionary();
  bool ReadMember();
  bool ReadString();
  bool ReadNumber();
  void ReadShortInts();
  bool ReadDouble(Text number);
  bool ReadWord(const char* rest);

  // Reads all between the bracket at at_ and `close`, both included.
  template <bool (Reader::*ReadItem)()>
  bool ReadItems(char close);
  // The string as ASCII (To: char) or in UTF-16, its text from `to` on. Without an end if the text
  // ends first, is ill-formed, or cannot be kept as To.
  template <class To>
  To* ReadText(To* to);
  template <class To>
  bool ReadRun(To*& to);
  // What the escape at at_ stands for; kNoCodePoint if it is none.
  char32_t ReadEscape();
  char32_t ReadHexEscape(int digits);
  int ReadHex(int digits);
  bool SkipFractionAndExponent();
  bool SkipDigits();
  bool AtDelimiter() const;
  void SkipByteOrderMark();
  void SkipGap() {
    // Compact messages have no gaps: most calls end here.
    if (Peek() <= ' ' || Peek() == '/') [[unlikely]]
      SkipBlanksAndComments();
  }
  void SkipBlanksAndComments();
  bool SkipComment();

  static bool IsAsciiOrByte(char) { return true; }
  static bool IsAsciiOrByte(Utf16Unit unit) { return IsAscii(unit); }

  void StartStep() {
    end_ = at_ + std::min<std::size_t>(limit_ - at_, UnitsThatFit(values_.RoomLeft(to_)));
  }
  std::size_t ExpectedSize(std::size_t units) const;

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

  const Unit* const start_;
  const Unit* at_;
  const Unit* const limit_;  // where the text ends
  const Unit* end_;          // where the step ends
  std::size_t step_;
  int depth_ = 0;
  ListValue& values_;
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
      Put(ValueType::kBoolean, packed::Flag{true});
      return ReadWord("true");
    case 'f':
      Put(ValueType::kBoolean, packed::Flag{false});
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
      if (!(this->*ReadItem)()) return false;
      SkipGap();
    } while (Accept(','));
    if (!Accept(close)) return false;
  }
  --depth_;
  return true;
}

// The list that is the document. Room for all that a large text might hold would cost more than
// its reading: its elements are read in steps for which there is room.
template <class Unit>
bool Reader<Unit>::ReadElements() {
  ++depth_;
  ++at_;
  SkipGap();
  if (Accept(']')) return true;
  StartStep();
  do {
    while (!ReadElement()) {
      if (!MakeStep()) return false;
    }
  } while (Accept(','));
  end_ = limit_;
  return Accept(']');
}

// List items and the gaps around them; false, and as it was, unless all ends before the step does.
template <class Unit>
bool Reader<Unit>::ReadElement() {
  const Unit* const start = at_;
  char* const to = to_;
  if (ReadListItems()) {
    SkipGap();
    if (Peek() == ',' || Peek() == ']') return true;
  }
  at_ = start;
  to_ = to;
  depth_ = 1;
  members_.clear();
  return false;
}

// A step that starts at at_, and holds all the rest if one was not enough. False if that was the
// last one.
template <class Unit>
bool Reader<Unit>::MakeStep() {
  if (end_ == limit_) return false;
  const std::size_t rest = limit_ - at_;
  if (static_cast<std::size_t>(end_ - at_) >= step_) step_ = rest;
  const std::size_t step = std::min(step_, rest);
  const std::size_t room = MostPacked(step);
  if (values_.RoomLeft(to_) < room) {
    const std::size_t units = std::min<std::size_t>(rest - step, kSampled * (at_ - start_));
    to_ = values_.ExpectBehind(to_, room + ExpectedSize(units + units / 32));
  }
  StartStep();
  return true;
}

// What so many units take if they are like those before.
template <class Unit>
std::size_t Reader<Unit>::ExpectedSize(std::size_t units) const {
  const auto size = static_cast<double>(to_ - values_.end());
  return static_cast<std::size_t>(size / static_cast<double>(at_ - start_) *
                                  static_cast<double>(units));
}

template <class Unit>
bool Reader<Unit>::ReadListItems() {
  ReadShortInts();
  SkipGap();
  return ReadValue();
}

template <class Unit>
bool Reader<Unit>::ReadList() {
  PutType(ValueType::kList);
  if (!ReadItems<&Reader::ReadListItems>(']')) return false;
  PutType(ValueType::kEnd);
  return true;
}

template <class Unit>
bool Reader<Unit>::ReadDictionary() {
  PutType(ValueType::kDictionary);
  const std::size_t first = members_.size();
  if (!ReadItems<&Reader::ReadMember>('}')) return false;
  to_ = SortMembers(std::span(members_).subspan(first), to_);
  members_.resize(first);
  PutType(ValueType::kEnd);
  return true;
}

template <class Unit>
bool Reader<Unit>::ReadMember() {
  SkipGap();
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
  char* const text = start + packed::kTextHead;
  const Unit* const first = ++at_;
  ValueType type = ValueType::kString;
  const char* end = ReadText(text);
  if (end == nullptr) {
    // Not ASCII, most likely, and then all of it is kept in UTF-16.
    at_ = first;
    type = ValueType::kWideString;
    end = reinterpret_cast<const char*>(ReadText(reinterpret_cast<Utf16Unit*>(text)));
  }
  if (end != nullptr) to_ = packed::PutTextHead(start, type, end);
  return end != nullptr;
}

template <class Unit>
template <class To>
To* Reader<Unit>::ReadText(To* to) {
  while (ReadRun(to)) {
    if (*at_++ == '"') return to;
    const char32_t code = ReadEscape();
    if (code > (sizeof(To) == 1 ? 0x7F : kMaxCodePoint)) return nullptr;
    to = Encode(code, to);
  }
  return nullptr;
}

// Copies text up to a quote or backslash. False if the text ends first, is ill-formed, or cannot be
// kept as To.
template <class Unit>
template <class To>
bool Reader<Unit>::ReadRun(To*& to) {
  for (;;) {
    if constexpr (sizeof(Unit) == sizeof(To) && sizeof(To) > 1) {
      at_ = CopyWide<Stop::kStringEnds>(at_, end_, to);
    } else {
      at_ = CopyAscii<Stop::kStringEnds>(at_, end_, to);
    }
    if (at_ == end_) return false;
    if (*at_ == '"' || *at_ == '\\') return true;
    const CodePoint next = Decode(at_, end_);
    if (!next.valid || sizeof(To) == 1) return false;
    at_ += next.length;
    to = Encode(next.code, to);
  }
}

template <class Unit>
char32_t Reader<Unit>::ReadEscape() {
  static constexpr std::string_view kLetters = "\"\\/bfnrtv";
  static constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t\v";
  if (at_ == end_) return kNoCodePoint;
  const Unit letter = *at_++;
  if (letter == 'u') return ReadHexEscape(4);
  if (letter == 'x') return ReadHexEscape(2);
  const std::size_t index =
      IsAscii(letter) ? kLetters.find(static_cast<char>(letter)) : std::string_view::npos;
  return index != std::string_view::npos ? kMeanings[index] : kNoCodePoint;
}

template <class Unit>
char32_t Reader<Unit>::ReadHexEscape(int digits) {
  const int code = ReadHex(digits);
  if (code < 0 || (code >= 0xDC00 && code <= 0xDFFF)) return kNoCodePoint;
  if (code < 0xD800 || code > 0xDFFF) return code;
  if (!Accept('\\') || !Accept('u')) return kNoCodePoint;
  const int low = ReadHex(4);
  if (low < 0xDC00 || low > 0xDFFF) return kNoCodePoint;
  return 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
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

// The numbers of ordinary messages come in runs: few digits and a comma each. Leaves at_ behind the
// last comma, so that a value must follow.
template <class Unit>
void Reader<Unit>::ReadShortInts() {
#ifdef JSON_HAS_SSE2
  const Unit* at = at_;
  char* to = to_;
  const Unit* block = nullptr;
  while (at != block && end_ - at >= NumberBits::kUnits + 8 && IsDigit(*at)) {
    block = at;
    NumberBits bits = FindNumbers(block);
    while (const int count = bits.CountShort()) {
      if (count > 1 && *at == '0') break;
      to = packed::Put(to, ValueType::kInteger, ReadShortNumber(at, count));
      at += count + 1;
      bits.Skip(count + 1);
    }
  }
  at_ = at;
  to_ = to;
#endif
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

  const bool whole = AtDelimiter();
  if (whole && count <= 10 && magnitude <= 0x7FFFFFFFu + negative) {
    const auto value = static_cast<std::int64_t>(magnitude);
    Put(ValueType::kInteger, static_cast<std::int32_t>(negative ? -value : value));
    return true;
  }
  if (!whole && !SkipFractionAndExponent()) return false;
  return ReadDouble(Text(start, at_ - start));
}

// False unless a delimiter stands behind them.
template <class Unit>
bool Reader<Unit>::SkipFractionAndExponent() {
  if (Accept('.') && !SkipDigits()) return false;
  if (Accept('e') || Accept('E')) {
    if (!Accept('-')) Accept('+');
    if (!SkipDigits()) return false;
  }
  return AtDelimiter();
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
void Reader<Unit>::SkipBlanksAndComments() {
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

std::optional<ValueType> ReadJson(std::string_view utf8, ListValue& values, std::size_t step) {
  return Reader<char>(utf8, values, step).ReadDocument();
}

std::optional<ValueType> ReadJson(Utf16View text, ListValue& values, std::size_t step) {
  return Reader<Utf16Unit>(text, values, step).ReadDocument();
}

}  // namespace base
