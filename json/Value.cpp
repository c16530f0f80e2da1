#include "json/Value.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace base {

namespace {

std::string_view KeyOf(const DictionaryEntry& entry) { return *entry.key.GetIfString(); }

bool KeyLess(const DictionaryEntry& a, const DictionaryEntry& b) { return KeyOf(a) < KeyOf(b); }

// Two overlapping words instead of a call: most texts in messages are this short.
void CopyInline(std::byte* to, const char* from, std::size_t size) {
  const auto copy_ends = [&](auto word) {
    std::memcpy(&word, from, sizeof(word));
    auto last = word;
    std::memcpy(&last, from + size - sizeof(word), sizeof(word));
    std::memcpy(to, &word, sizeof(word));
    std::memcpy(to + size - sizeof(word), &last, sizeof(word));
  };
  if (size >= 8) {
    copy_ends(std::uint64_t{});
  } else if (size >= 4) {
    copy_ends(std::uint32_t{});
  } else {
    for (std::size_t i = 0; i < size; ++i) to[i] = static_cast<std::byte>(from[i]);
  }
}

}  // namespace

DictionaryValue::DictionaryValue(std::span<Value> pairs) {
  entries_.reserve(pairs.size() / 2);
  for (std::size_t i = 0; i + 1 < pairs.size(); i += 2)
    entries_.Append({std::move(pairs[i]), std::move(pairs[i + 1])});
  const auto misplaced = [](const auto& a, const auto& b) { return !KeyLess(a, b); };
  if (std::adjacent_find(entries_.begin(), entries_.end(), misplaced) == entries_.end()) return;

  std::stable_sort(entries_.begin(), entries_.end(), KeyLess);
  std::size_t kept = 0;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    const bool replaced = i + 1 < entries_.size() && KeyOf(entries_[i]) == KeyOf(entries_[i + 1]);
    if (!replaced) entries_[kept++] = std::move(entries_[i]);
  }
  entries_.Truncate(kept);
}

Value::Value(Type type, const char* bytes, std::size_t size) : Value(type, 0) {
  if (size <= kInlineBytes) {
    CopyInline(content_.storage, bytes, size);
    content_.size = static_cast<std::uint8_t>(size);
  } else {
    Put(CompactArray<char>(bytes, size));
    content_.size = kOwner;
  }
}

void Value::Destroy() {
  switch (type()) {
    case Type::kDictionary:
      return std::destroy_at(Object<DictionaryValue>());
    case Type::kList:
      return std::destroy_at(Object<ListValue>());
    default:
      return std::destroy_at(Object<CompactArray<char>>());
  }
}

}  // namespace base
