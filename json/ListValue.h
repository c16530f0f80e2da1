// A JSON list in one block of memory: its elements stand one behind the other, each as a type and
// its content. An int takes five bytes, and a list of any length one allocation.
// Used in every process that loads the module.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "json/Utf.h"

namespace base {

enum class ValueType : std::uint8_t {
  kNull = 0,
  kBoolean,
  kInteger,
  kDouble,
  kString,
  kBinary,
  kDictionary,  // strings and values in turn, sorted by key in byte order, one value per key
  kList
};

// How elements stand in a block. Behind those of a nested list or dictionary stands kEnd.
namespace packed {

constexpr auto kEnd = static_cast<ValueType>(8);
constexpr std::size_t kBytesHead = 1 + sizeof(std::size_t);  // of a string: its type and length
constexpr std::size_t kMaxFixedSize = 1 + sizeof(double);

template <class T>
T Load(const char* from) {
  T object;
  std::memcpy(&object, from, sizeof(T));
  return object;
}

inline char* PutType(char* to, ValueType type) {
  *to = static_cast<char>(type);
  return to + 1;
}
template <class T>
char* Put(char* to, ValueType type, T object) {
  std::memcpy(to + 1, &object, sizeof(T));
  return PutType(to, type) + sizeof(T);
}
// For a string whose bytes stand from to + kBytesHead to `end` already.
inline char* PutBytesHead(char* to, ValueType type, const char* end) {
  return Put(to, type, static_cast<std::size_t>(end - to) - kBytesHead) + (end - to - kBytesHead);
}

}  // namespace packed

// One element where it stands in a list; good until the list changes. For a null, boolean, number,
// string or binary; of a list or dictionary it is the start.
class ValueView {
 public:
  explicit ValueView(const char* at) : at_(at) {}

  ValueType type() const { return static_cast<ValueType>(*at_); }
  std::optional<bool> GetIfBool() const { return CopyIf<bool>(ValueType::kBoolean); }
  std::optional<std::int32_t> GetIfInt() const { return CopyIf<std::int32_t>(ValueType::kInteger); }
  std::optional<double> GetIfDouble() const { return CopyIf<double>(ValueType::kDouble); }
  std::optional<std::string_view> GetIfString() const {
    return type() == ValueType::kString ? std::optional(Bytes()) : std::nullopt;
  }
  // Where the next element starts.
  const char* End() const;

 private:
  template <typename T>
  std::optional<T> CopyIf(ValueType wanted) const {
    return type() == wanted ? std::optional<T>(packed::Load<T>(at_ + 1)) : std::nullopt;
  }
  std::string_view Bytes() const {
    return {at_ + packed::kBytesHead, packed::Load<std::size_t>(at_ + 1)};
  }

  const char* at_;
};

inline const char* ValueView::End() const {
  switch (type()) {
    case ValueType::kBoolean:
      return at_ + 1 + sizeof(bool);
    case ValueType::kInteger:
      return at_ + 1 + sizeof(std::int32_t);
    case ValueType::kDouble:
      return at_ + 1 + sizeof(double);
    case ValueType::kString:
    case ValueType::kBinary:
      return Bytes().data() + Bytes().size();
    default:
      return at_ + 1;
  }
}

class ListValue {
 public:
  ListValue() = default;
  ListValue(ListValue&& other) noexcept
      : block_(std::move(other.block_)),
        size_(std::exchange(other.size_, 0)),
        capacity_(std::exchange(other.capacity_, 0)) {}

  void AppendNull() { Finish(packed::PutType(Room(1), ValueType::kNull)); }
  void AppendBool(bool value) { AppendFixed(ValueType::kBoolean, value); }
  void AppendInt(std::int32_t value) { AppendFixed(ValueType::kInteger, value); }
  void AppendDouble(double value) { AppendFixed(ValueType::kDouble, value); }
  void AppendString(std::string_view utf8) { AppendBytes(ValueType::kString, utf8); }
  void AppendString(Utf16View text);  // an unpaired surrogate becomes U+FFFD
  void AppendBinary(std::string_view bytes) { AppendBytes(ValueType::kBinary, bytes); }

  // Elements are found by where they start, in bytes from the first. One behind another.
  std::size_t ByteSize() const { return size_; }
  ValueView At(std::size_t start) const { return ValueView(block_.get() + start); }
  std::size_t StartBehind(ValueView element) const { return element.End() - block_.get(); }
  const char* begin() const { return block_.get(); }
  const char* end() const { return block_.get() + size_; }

  // For who writes packed elements himself: room for that many bytes behind the last element, and
  // where these elements end. Finish gives back what a large block has too much.
  char* Room(std::size_t bytes) {
    if (capacity_ - size_ < bytes) Grow(bytes);
    return block_.get() + size_;
  }
  void Finish(const char* end) { size_ = end - block_.get(); }
  void Trim();

 private:
  struct FreeBlock {
    void operator()(char* block) const { std::free(block); }
  };

  void Grow(std::size_t bytes);
  void AppendBytes(ValueType type, std::string_view bytes);
  template <class T>
  void AppendFixed(ValueType type, T value) {
    Finish(packed::Put(Room(packed::kMaxFixedSize), type, value));
  }

  std::unique_ptr<char, FreeBlock> block_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace base
