// Runs in the client and in the broker. A JSON list in one block of memory. Its elements follow one
// another, each as a type and its content. An int takes six bytes: two for the type, four for the
// number. A list uses at most one allocated block.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "json/TextCopy.h"
#include "memory/GrowingBlock.h"
#include "memory/ZeroSearch.h"

namespace base {

enum class ValueType : std::uint16_t {
  kNull = 0,
  kBoolean,
  kInteger,
  kDouble,
  kString,
  kBinary,
  // Contains strings (the keys) and values in turn. The keys are sorted by their UTF-8 bytes, and
  // each key occurs once.
  kDictionary,
  kList,
  // Not types of JSON values, used only in the memory block of a list:
  kEnd,        // the end of a nested list or dictionary
  kWideString  // a string that is not ASCII, in UTF-16
};

// The layout of elements in a block. Each element starts at an even offset, because UTF-16 text
// needs an even address.
namespace packed {

constexpr std::size_t kTypeSize = sizeof(ValueType);
// The size of the head of a text: its type and its length in bytes.
constexpr std::size_t kTextHead = kTypeSize + sizeof(std::size_t);

using Flag = std::uint16_t;

constexpr std::size_t Even(std::size_t size) { return size + size % 2; }

template <class T>
T Load(const char* from) {
  T object;
  std::memcpy(&object, from, sizeof(T));
  return object;
}

inline char* PutType(char* to, ValueType type) {
  std::memcpy(to, &type, sizeof(type));
  return to + kTypeSize;
}
template <class T>
char* Put(char* to, ValueType type, T object) {
  std::memcpy(PutType(to, type), &object, sizeof(T));
  return to + kTypeSize + sizeof(T);
}
// Writes the type and the length of a string, whose bytes are already in [to + kTextHead, end).
// Returns the place of the next element.
inline char* PutTextHead(char* to, ValueType type, const char* end) {
  const auto size = static_cast<std::size_t>(end - to) - kTextHead;
  return Put(to, type, size) + Even(size);
}

}  // namespace packed

// A string in a list, either in `ascii` or in `wide`. The other of these two members is empty.
// `wide` is well-formed UTF-16.
struct StringView {
  std::string_view ascii;
  Utf16View wide;
};

// Refers to one element in a list. Valid until the list changes. Of a nested list or dictionary,
// the view covers only the type. The nested elements come next in the block, and after them kEnd.
class ValueView {
 public:
  explicit ValueView(const char* at) : at_(at) {}

  ValueType type() const {
    return PackedType() == ValueType::kWideString ? ValueType::kString : PackedType();
  }
  ValueType PackedType() const { return packed::Load<ValueType>(at_); }
  std::optional<bool> GetIfBool() const {
    const std::optional<packed::Flag> flag = CopyIf<packed::Flag>(ValueType::kBoolean);
    return flag ? std::optional<bool>(*flag != 0) : std::nullopt;
  }
  std::optional<std::int32_t> GetIfInt() const { return CopyIf<std::int32_t>(ValueType::kInteger); }
  std::optional<double> GetIfDouble() const { return CopyIf<double>(ValueType::kDouble); }
  std::optional<StringView> GetIfString() const;
  // Returns the start of the next element.
  const char* End() const;
  std::size_t ByteSize() const { return End() - at_; }

 private:
  template <typename T>
  std::optional<T> CopyIf(ValueType wanted) const {
    return PackedType() == wanted ? std::optional<T>(packed::Load<T>(at_ + packed::kTypeSize))
                                  : std::nullopt;
  }
  std::size_t TextSize() const { return packed::Load<std::size_t>(at_ + packed::kTypeSize); }

  const char* at_;
};

inline std::optional<StringView> ValueView::GetIfString() const {
  const char* const text = at_ + packed::kTextHead;
  if (PackedType() == ValueType::kString) return StringView{{text, TextSize()}, {}};
  if (PackedType() != ValueType::kWideString) return std::nullopt;
  const auto* const units = reinterpret_cast<const Utf16Unit*>(text);
  return StringView{{}, {units, TextSize() / sizeof(Utf16Unit)}};
}

inline const char* ValueView::End() const {
  switch (PackedType()) {
    case ValueType::kBoolean:
      return at_ + packed::kTypeSize + sizeof(packed::Flag);
    case ValueType::kInteger:
      return at_ + packed::kTypeSize + sizeof(std::int32_t);
    case ValueType::kDouble:
      return at_ + packed::kTypeSize + sizeof(double);
    case ValueType::kString:
    case ValueType::kBinary:
    case ValueType::kWideString:
      return at_ + packed::kTextHead + packed::Even(TextSize());
    default:
      return at_ + packed::kTypeSize;
  }
}

inline StringView UpToZero(const StringView& text) {
  const auto cut = [](auto view) {
    const auto* const end = view.data() + view.size();
    return view.substr(0, FindZero(view.data(), end) - view.data());
  };
  if (text.wide.empty()) return {cut(text.ascii), {}};
  return {{}, cut(text.wide)};
}
inline std::size_t Utf16Length(const StringView& text) {
  return text.ascii.size() + text.wide.size();
}
// Writes exactly the number of units that Utf16Length returns for `text`.
inline void CopyAsUtf16(const StringView& text, Utf16Unit* to) {
  to = std::copy(text.ascii.begin(), text.ascii.end(), to);
  std::copy(text.wide.begin(), text.wide.end(), to);
}
std::size_t Utf8Length(const StringView& text);
std::string ToUtf8(const StringView& text);

class ListValue {
 public:
  void AppendBool(bool value) { AppendFixed(ValueType::kBoolean, packed::Flag{value}); }
  void AppendInt(std::int32_t value) { AppendFixed(ValueType::kInteger, value); }
  void AppendDouble(double value) { AppendFixed(ValueType::kDouble, value); }
  void AppendString(Utf16View text);  // an unpaired surrogate becomes U+FFFD
  void AppendBinary(std::string_view bytes);

  // At() takes the offset of an element in bytes, which is less than ByteSize().
  std::size_t ByteSize() const { return block_.size(); }
  ValueView At(std::size_t start) const { return ValueView(block_.begin() + start); }
  const char* begin() const { return block_.begin(); }
  const char* end() const { return block_.end(); }

  // These functions are for callers that write packed elements directly. The comments in
  // GrowingBlock describe them.
  char* Reserve(std::size_t bytes) { return block_.Reserve(bytes); }
  char* ReserveAfter(char* end, std::size_t bytes) { return block_.ReserveAfter(end, bytes); }
  char* ReserveEstimateAfter(char* end, std::size_t bytes) {
    return block_.ReserveEstimateAfter(end, bytes);
  }
  bool Holds(const char* end) const { return block_.Holds(end); }
  std::size_t RoomAfter(const char* end) const { return block_.RoomAfter(end); }
  void Finish(const char* end) { block_.Finish(end); }
  void Trim() { block_.Trim(); }

 private:
  template <class T>
  void AppendFixed(ValueType type, T value) {
    Finish(packed::Put(Reserve(packed::kTypeSize + sizeof(T)), type, value));
  }

  // Most answers fit into these 216 bytes of the object itself and need no allocation.
  GrowingBlock<char, 216> block_;
};

}  // namespace base
