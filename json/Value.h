// A JSON value in 16 bytes, with the list and the dictionary that hold such values.
// Used in every process that loads the module.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "json/CompactArray.h"

namespace base {

class Value;
struct DictionaryEntry;

class ListValue : public CompactArray<Value> {
 public:
  ListValue() = default;
  explicit ListValue(CompactArray<Value>&& items) noexcept : CompactArray(std::move(items)) {}
};

// Sorted by key in byte order, one value per key.
class DictionaryValue {
 public:
  DictionaryValue() = default;
  // Takes key, value, key, value ... where every key is a string; a repeated key's last value wins.
  explicit DictionaryValue(std::span<Value> pairs);

  std::size_t size() const { return entries_.size(); }
  const DictionaryEntry* begin() const { return entries_.begin(); }
  const DictionaryEntry* end() const;

 private:
  CompactArray<DictionaryEntry> entries_;
};

// Text and binary of up to 14 bytes stand in the value itself, all else in one heap block.
class Value {
 public:
  enum class Type : std::uint8_t {
    kNull = 0,
    kBoolean,
    kInteger,
    kDouble,
    kString,
    kBinary,
    kDictionary,
    kList
  };

  Value() = default;
  explicit Value(bool value) : Value(Type::kBoolean, 0) { Put(value); }
  explicit Value(std::int32_t value) : Value(Type::kInteger, 0) { Put(value); }
  explicit Value(double value) : Value(Type::kDouble, 0) { Put(value); }
  explicit Value(std::string_view utf8) : Value(Type::kString, utf8.data(), utf8.size()) {}
  explicit Value(const char* utf8) : Value(std::string_view(utf8)) {}
  explicit Value(const void*) = delete;  // any other pointer would become a boolean
  explicit Value(std::span<const std::byte> binary)
      : Value(Type::kBinary, reinterpret_cast<const char*>(binary.data()), binary.size()) {}
  explicit Value(DictionaryValue&& value) : Value(Type::kDictionary, kOwner) {
    Put(std::move(value));
  }
  explicit Value(ListValue&& value) : Value(Type::kList, kOwner) { Put(std::move(value)); }
  Value(Value&& other) noexcept : content_(std::exchange(other.content_, Content{})) {}
  Value& operator=(Value&& other) noexcept {
    Value taken(std::move(other));
    std::swap(content_, taken.content_);
    return *this;
  }
  ~Value() {
    if (content_.size == kOwner) Destroy();
  }

  Type type() const { return content_.type; }
  std::optional<bool> GetIfBool() const { return CopyIf<bool>(Type::kBoolean); }
  std::optional<std::int32_t> GetIfInt() const { return CopyIf<std::int32_t>(Type::kInteger); }
  std::optional<double> GetIfDouble() const { return CopyIf<double>(Type::kDouble); }
  // The views stay good until the value is changed, moved or destroyed.
  std::optional<std::string_view> GetIfString() const;
  const DictionaryValue* GetIfDictionary() const {
    return AddressIf<const DictionaryValue>(Type::kDictionary);
  }
  const ListValue* GetIfList() const { return AddressIf<const ListValue>(Type::kList); }
  ListValue* GetIfList() { return AddressIf<ListValue>(Type::kList); }

 private:
  static constexpr std::size_t kInlineBytes = 14;
  static constexpr std::size_t kObjectOffset = 6;
  static constexpr std::uint8_t kOwner = 0xFF;

  struct alignas(8) Content {
    Type type = Type::kNull;
    std::uint8_t size = 0;  // of inline bytes, or kOwner
    // Inline bytes from the start, anything else from kObjectOffset, where it is aligned.
    std::byte storage[kInlineBytes] = {};
  };

  Value(Type type, std::uint8_t size) : content_{type, size, {}} {}
  Value(Type type, const char* bytes, std::size_t size);
  void Destroy();

  template <typename T>
  void Put(T&& object) {
    ::new (static_cast<void*>(content_.storage + kObjectOffset))
        std::remove_cvref_t<T>(std::forward<T>(object));
  }
  template <typename T>
  T* Object() {
    return std::launder(reinterpret_cast<T*>(content_.storage + kObjectOffset));
  }
  template <typename T>
  const T* Object() const {
    return std::launder(reinterpret_cast<const T*>(content_.storage + kObjectOffset));
  }
  template <typename T>
  T* AddressIf(Type wanted) {
    return type() == wanted ? Object<T>() : nullptr;
  }
  template <typename T>
  T* AddressIf(Type wanted) const {
    return type() == wanted ? Object<T>() : nullptr;
  }
  template <typename T>
  std::optional<T> CopyIf(Type wanted) const {
    return type() == wanted ? std::optional<T>(*Object<T>()) : std::nullopt;
  }
  std::string_view Bytes() const {
    if (content_.size != kOwner)
      return {reinterpret_cast<const char*>(content_.storage), content_.size};
    const auto& block = *Object<CompactArray<char>>();
    return {block.begin(), block.size()};
  }

  Content content_;
};
static_assert(sizeof(Value) == 16);

struct DictionaryEntry {
  Value key;
  Value value;
};

inline const DictionaryEntry* DictionaryValue::end() const { return entries_.end(); }

inline std::optional<std::string_view> Value::GetIfString() const {
  return type() == Type::kString ? std::optional(Bytes()) : std::nullopt;
}

}  // namespace base
