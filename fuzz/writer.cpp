// Fuzzes the JSON writer with any values. The reader must read the same values from the text that
// the writer writes, except that noncharacters become U+FFFD.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <string>

#include "fuzz/ReaderProperties.h"
#include "fuzz/Require.h"
#include "json/JsonWriter.h"
#include "json/ListText.h"

namespace {

// The depth of nested values. With the outermost list it is 199, the most that the reader accepts.
constexpr int kMaxDepth = 198;
constexpr std::size_t kMaxString = 6000;

// Builds `values` from the input's bytes. Also builds `expected`, the values that must result when
// `values` are written and read again.
class Builder {
 public:
  Builder(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}

  base::ListValue values, expected;
  bool writable = true;
  base::ListText asText;
  bool allAsText = true;  // true while `asText` contains all values unchanged

  void Build() {
    while (at_ != end_) AddValue(0);
  }

 private:
  unsigned Byte() { return at_ != end_ ? *at_++ : 0u; }
  template <class T>
  T Number() {
    unsigned char bytes[sizeof(T)];
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(Byte());
    T number;
    std::memcpy(&number, bytes, sizeof(T));
    return number;
  }
  template <class Append>
  void AppendToAll(Append append) {
    append(values);
    append(expected);
    append(asText);
  }
  void AddType(base::ValueType type) {
    allAsText = false;
    for (base::ListValue* list : {&values, &expected})
      list->Finish(base::packed::PutType(list->Reserve(base::packed::kTypeSize), type));
  }

  void AddValue(int depth);
  void AddDouble();
  void AddString(std::size_t size, std::size_t times);
  void AddKey(const std::string& key);
  void AddDictionary(int depth);

  const std::uint8_t* at_;
  const std::uint8_t* const end_;
};

void Builder::AddValue(int depth) {
  const unsigned kind = Byte();
  switch (kind % 9) {
    case 0:
      return AddType(base::ValueType::kNull);
    case 1:
      return AppendToAll([kind](auto& list) { list.AppendBool(kind & 16); });
    case 2: {
      const auto number = Number<std::int32_t>();
      return AppendToAll([number](auto& list) { list.AppendInt(number); });
    }
    case 3:
      return AddDouble();
    case 4:
      return AddString(kind / 9, 1);
    case 5: {
      const std::size_t size = Byte();
      return AddString(size, Byte());
    }
    case 6:
      if (depth == kMaxDepth) return;
      AddType(base::ValueType::kList);
      while (at_ != end_ && *at_ % 9 != 8) AddValue(depth + 1);
      Byte();
      return AddType(base::ValueType::kEnd);
    case 7:
      return AddDictionary(depth);
    default:
      // Here kind % 9 is 8. The elements of a nested list never get here, because such a byte ends
      // the list (case 6). Elsewhere, a byte of at least 200 adds a binary value, which JSON cannot
      // hold. A smaller byte adds nothing.
      if (kind < 200) return;
      writable = allAsText = false;
      return values.AppendBinary("binary");
  }
}

void Builder::AddDouble() {
  const auto number = Number<double>();
  allAsText = false;
  writable = writable && std::isfinite(number);
  values.AppendDouble(number);
  expected.AppendDouble(number);
}

void Builder::AddString(std::size_t size, std::size_t times) {
  std::string piece;
  while (piece.size() < size && at_ != end_) piece += static_cast<char>(Byte());
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(piece.data());
  const base::Utf16Text units = UnitsOf(bytes, piece.size());
  base::Utf16Text text;
  do text += units;
  while (times-- > 1 && text.size() < kMaxString);
  values.AppendString(text);
  std::u32string codes = plain::Decode(base::Utf16View(text));
  const bool taken = asText.AppendString(text);
  Require(taken == std::none_of(codes.begin(), codes.end(), plain::IsNoncharacter),
          "a list kept as text accepts exactly the strings that read back the same");
  allAsText = taken && allAsText;
  std::replace_if(codes.begin(), codes.end(), plain::IsNoncharacter, 0xFFFD);
  expected.AppendString(plain::ToUtf16(codes));
}

// Keys are ASCII only. Otherwise two keys could become equal, because the writer replaces
// noncharacters with U+FFFD.
void Builder::AddKey(const std::string& key) {
  const base::Utf16Text text(key.begin(), key.end());
  values.AppendString(text);
  expected.AppendString(text);
}

void Builder::AddDictionary(int depth) {
  if (depth == kMaxDepth) return;
  AddType(base::ValueType::kDictionary);
  std::map<std::string, bool> keys;
  for (unsigned count = Byte() % 8; count > 0; --count) {
    std::string key;
    for (unsigned size = Byte() % 40; size > 0; --size) key += static_cast<char>(Byte() % 0x80);
    keys[key];
  }
  for (const auto& [key, unused] : keys) {
    AddKey(key);
    const std::size_t before = values.ByteSize();
    AddValue(depth + 1);
    if (values.ByteSize() == before) AddType(base::ValueType::kNull);
  }
  AddType(base::ValueType::kEnd);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Builder built(data, size);
  built.Build();
  base::Utf16Text text(1, 'o');
  const bool written = base::WriteJson(built.values, text);
  Require(written == built.writable, "exactly the values that JSON can hold are written");
  if (!written) {
    Require(text.empty(), "a refused list leaves no text");
    return 0;
  }
  Require(!built.allAsText || built.asText.View() == text, "a list kept as text has the same text");
  const auto read = Read(base::Utf16View(text));
  Require(read && read->type == base::ValueType::kList, "written text reads as a list");
  Require(SameValues(read->values, built.expected), "written text reads as the same values");
  return 0;
}
