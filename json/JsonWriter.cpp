#include "json/JsonWriter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "json/Check.h"

namespace base {

namespace {

constexpr std::size_t kFirstReserve = 1024;
constexpr std::size_t kMaxNumber = 32;
constexpr std::size_t kMaxEscape = 6;
constexpr std::size_t kMaxStringBytes = 2147483647;
constexpr std::size_t kPiece = 512;  // bytes of a string that are written without a check for room
constexpr std::size_t kChunk = 4096;

bool IsNoncharacter(char32_t code) {
  return (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFE) == 0xFFFE;
}

// So much of a longer text that it ends in no code point: before the last byte that continues none,
// unless four continue one another, of which the last is stray.
std::size_t PieceSize(std::string_view utf8) {
  for (std::size_t size = kPiece; size > kPiece - 4; --size) {
    if ((utf8[size] & 0xC0) != 0x80) return size;
  }
  return kPiece;
}

// Writes into a small chunk that stays in the processor's cache, and from there into the text: a
// text that is made as large as it may become costs a second pass that fills it with zeros.
class Writer {
 public:
  explicit Writer(Utf16Text& out) : out_(out) {}

  bool WriteDocument(const ListValue& list) {
    out_.clear();
    // Elements take about as many units in a text as bytes in the list.
    out_.reserve(std::max(kFirstReserve, list.ByteSize() + list.ByteSize() / 8));
    at_ = list.begin();
    end_ = list.end();
    const bool written = WriteList();
    if (written) Flush();
    if (!written) out_.clear();
    return written;
  }

 private:
  // These write what stands at at_ and leave it behind that.
  bool WriteValue();
  bool WriteList();
  bool WriteDictionary();
  bool WriteString(std::string_view utf8);
  void WritePiece(const char* text, const char* end);
  void WriteSpecial(const CodePoint& point);
  void WriteEscape(char32_t code);
  void WriteInt(std::int32_t value);
  bool WriteDouble(double value);

  bool AtEnd() const { return at_ == end_ || ValueView(at_).type() == packed::kEnd; }
  void SkipEnd() {
    if (at_ != end_) ++at_;
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

bool Writer::WriteValue() {
  Ensure(kMaxNumber);
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
      WriteInt(*value.GetIfInt());
      return true;
    case ValueType::kDouble:
      return WriteDouble(*value.GetIfDouble());
    case ValueType::kString:
      return WriteString(*value.GetIfString());
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

void Writer::WriteInt(std::int32_t value) {
  char digits[kMaxNumber];
  Put(std::string_view(digits, std::to_chars(digits, digits + kMaxNumber, value).ptr));
}

bool Writer::WriteDouble(double value) {
  if (!std::isfinite(value)) return false;
  char digits[kMaxNumber];
  const std::string_view number(digits, std::to_chars(digits, digits + kMaxNumber, value).ptr);
  Put(number);
  if (number.find_first_of(".e") == std::string_view::npos) Put(".0");
  return true;
}

bool Writer::WriteString(std::string_view utf8) {
  if (utf8.size() > kMaxStringBytes) {
    ReportCheckFailed("utf8.size() <= 2147483647");
    return false;
  }
  Put('"');
  while (!utf8.empty()) {
    const std::size_t size = utf8.size() > kPiece ? PieceSize(utf8) : utf8.size();
    Ensure(size * kMaxEscape + kCopySlack);
    WritePiece(utf8.data(), utf8.data() + size);
    utf8.remove_prefix(size);
  }
  Ensure(1);
  Put('"');
  return true;
}

void Writer::WritePiece(const char* text, const char* end) {
  while (text = CopyPlain<Stop::kEscapes>(text, end, to_), text != end) {
    for (int i = 0; i < kScalarRun && text != end; ++i) {
      const CodePoint next = Decode(text, end);
      text += next.length;
      const auto unit = static_cast<Utf16Unit>(next.code);
      const bool common = next.valid && next.code < 0x2028;
      if (common && (!IsAscii(unit) || IsPlain<Stop::kEscapes>(unit))) {
        *to_++ = unit;
      } else {
        WriteSpecial(next);
      }
    }
  }
}

void Writer::WriteSpecial(const CodePoint& point) {
  if (!point.valid || IsNoncharacter(point.code)) {
    *to_++ = static_cast<Utf16Unit>(kReplacement);
  } else if (point.code < 0x80 || point.code == 0x2028 || point.code == 0x2029) {
    WriteEscape(point.code);
  } else {
    to_ = PutUtf16(point.code, to_);
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
