#include "json/JsonWriter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "json/Check.h"
#include "json/Digits.h"

namespace base {

namespace {

constexpr std::size_t kMaxNumber = 32;
constexpr std::size_t kMaxEscape = 6;
constexpr std::size_t kMaxStringBytes = 2147483647;
constexpr std::size_t kPiece = 512;  // of a string: is written without a check for room
constexpr std::size_t kChunk = 4096;

bool IsNoncharacter(char32_t code) {
  return (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFE) == 0xFFFE;
}

// Writes into a small chunk that stays in the processor's cache, and from there into the text: a
// text that is made as large as it may become costs a second pass that fills it with zeros.
class Writer {
 public:
  explicit Writer(Utf16Text& out) : out_(out) {}

  bool WriteDocument(const ListValue& list) {
    out_.clear();
    // Elements take about as many units in a text as bytes in the list, or fewer. What fits the
    // chunk is allocated when its size is known.
    if (list.ByteSize() > kChunk) out_.reserve(list.ByteSize());
    at_ = list.begin();
    end_ = list.end();
    if (WriteList()) {
      Flush();
      return true;
    }
    out_.clear();
    return false;
  }

 private:
  // These write what stands at at_ and leave it behind that.
  bool WriteValue();
  bool WriteOther(ValueView value);
  bool WriteList();
  bool WriteDictionary();
  bool WriteString(const StringView& text);
  template <class Unit>
  void WriteUnits(std::basic_string_view<Unit> text);
  template <class Unit>
  void WritePiece(const Unit* text, const Unit* end);
  void WriteCodePoint(char32_t code);
  void WriteEscape(char32_t code);
  void WriteInt(std::int32_t value);
  bool WriteDouble(double value);

  bool AtEnd() const { return at_ == end_ || ValueView(at_).type() == ValueType::kEnd; }
  void SkipEnd() {
    if (at_ != end_) at_ += packed::kTypeSize;
  }

  // Makes room for as many units more; Put does not check.
  void Ensure(std::size_t units) {
    if (static_cast<std::size_t>(chunk_ + kChunk - to_) < units) Flush();
  }
  void Flush() {
    out_.append(chunk_, to_ - chunk_);
    to_ = chunk_;
  }
  void Put(char c) { *to_++ = static_cast<Utf16Unit>(c); }
  void Put(std::string_view ascii) { to_ = std::copy(ascii.begin(), ascii.end(), to_); }

  Utf16Text& out_;
  const char* at_ = nullptr;
  const char* end_ = nullptr;
  Utf16Unit chunk_[kChunk];
  Utf16Unit* to_ = chunk_;
};

// Most elements of a message are ints: they pass without a call and a jump by the type.
inline bool Writer::WriteValue() {
  Ensure(kMaxNumber);
  const ValueView value(at_);
  const std::optional<std::int32_t> number = value.GetIfInt();
  if (!number) return WriteOther(value);
  at_ += packed::kTypeSize + sizeof(*number);
  WriteInt(*number);
  return true;
}

bool Writer::WriteOther(ValueView value) {
  at_ = value.End();
  if (const std::optional<StringView> text = value.GetIfString()) return WriteString(*text);
  switch (value.type()) {
    case ValueType::kNull:
      Put("null");
      return true;
    case ValueType::kBoolean:
      Put(*value.GetIfBool() ? "true" : "false");
      return true;
    case ValueType::kDouble:
      return WriteDouble(*value.GetIfDouble());
    case ValueType::kDictionary:
      return WriteDictionary();
    case ValueType::kList:
      return WriteList();
    default:
      return false;
  }
}

bool Writer::WriteList() {
  Ensure(2);
  Put('[');
  while (!AtEnd()) {
    if (!WriteValue()) return false;
    if (AtEnd()) break;
    Ensure(1);
    Put(',');
  }
  SkipEnd();
  Ensure(1);
  Put(']');
  return true;
}

bool Writer::WriteDictionary() {
  Put('{');
  while (!AtEnd()) {
    if (!WriteValue()) return false;
    Ensure(1);
    Put(':');
    if (!WriteValue()) return false;
    if (AtEnd()) break;
    Ensure(1);
    Put(',');
  }
  SkipEnd();
  Ensure(1);
  Put('}');
  return true;
}

inline void Writer::WriteInt(std::int32_t value) {
  auto magnitude = static_cast<std::uint32_t>(value);
  if (value < 0) {
    Put('-');
    magnitude = 0 - magnitude;
  }
  to_ = PutNumber(magnitude, to_);
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
  // Only a text that may be too long is measured: it has at most three bytes a unit.
  if (Utf16Length(text) > kMaxStringBytes / 3 && Utf8Length(text) > kMaxStringBytes) {
    ReportCheckFailed("utf8.size() <= 2147483647");
    return false;
  }
  Put('"');
  WriteUnits(text.ascii);
  WriteUnits(text.wide);
  Ensure(1);
  Put('"');
  return true;
}

template <class Unit>
void Writer::WriteUnits(std::basic_string_view<Unit> text) {
  while (!text.empty()) {
    std::size_t size = std::min(text.size(), kPiece);
    if (size < text.size() && IsSurrogate(text[size])) --size;  // a pair stays together
    Ensure(size * kMaxEscape + kCopySlack);
    WritePiece(text.data(), text.data() + size);
    text.remove_prefix(size);
  }
}

template <class Unit>
void Writer::WritePiece(const Unit* text, const Unit* end) {
  for (;;) {
    if constexpr (sizeof(Unit) == 1) {
      text = CopyPaddedAscii<Stop::kEscapes>(text, end, to_);
    } else {
      text = CopyWide<Stop::kEscapes>(text, end, to_);
    }
    if (text == end) return;
    const CodePoint next = Decode(text, end);
    text += next.length;
    WriteCodePoint(next.code);
  }
}

void Writer::WriteCodePoint(char32_t code) {
  if (code < 0x80 || code == 0x2028 || code == 0x2029) {
    WriteEscape(code);
  } else {
    to_ = Encode(IsNoncharacter(code) ? kReplacement : code, to_);
  }
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

bool WriteJson(const ListValue& list, Utf16Text& out) { return Writer(out).WriteDocument(list); }

}  // namespace base
