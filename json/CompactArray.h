// An array as big as one pointer: size and capacity stand in the heap block, an empty one has no
// block. Elements move by copying their bytes, which suits every type that json keeps in one.
// Used in every process that loads the module.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace base {

struct ArrayBlock {
  std::size_t size;
  std::size_t capacity;
};

// A block for `capacity` items with the items of `old`, which it frees. No template, and not in
// this header, so that an append stays a few instructions.
ArrayBlock* GrowBlock(ArrayBlock* old, std::size_t capacity, std::size_t item_size);

template <typename T>
class CompactArray {
 public:
  CompactArray() = default;
  CompactArray(const T* items, std::size_t count) {
    reserve(count);
    if (count != 0) AppendBytesOf(items, count);
  }
  CompactArray(CompactArray&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  CompactArray& operator=(CompactArray&& other) noexcept {
    CompactArray taken(std::move(other));
    std::swap(block_, taken.block_);
    return *this;
  }
  ~CompactArray() {
    Truncate(0);
    ::operator delete(block_);
  }

  void Append(T&& item) {
    if (!block_ || block_->size == block_->capacity)
      block_ = GrowBlock(block_, std::max<std::size_t>(4, size() * 2), sizeof(T));
    ::new (static_cast<void*>(end())) T(std::move(item));
    ++block_->size;
  }
  void reserve(std::size_t count) {
    if (count > capacity()) block_ = GrowBlock(block_, count, sizeof(T));
  }
  void Truncate(std::size_t count) {
    if (count >= size()) return;
    std::destroy(begin() + count, end());
    block_->size = count;
  }
  // Moves the items from `first` on into an array of their own, which is at most half empty.
  CompactArray TakeTail(std::size_t first) {
    CompactArray tail;
    if (first == 0 && size() >= capacity() / 2) {
      std::swap(block_, tail.block_);
    } else if (first < size()) {
      tail.reserve(size() - first);
      tail.AppendBytesOf(begin() + first, size() - first);
      block_->size = first;
    }
    return tail;
  }

  std::size_t size() const { return block_ ? block_->size : 0; }
  bool empty() const { return size() == 0; }
  T& operator[](std::size_t index) { return begin()[index]; }
  const T& operator[](std::size_t index) const { return begin()[index]; }
  T* begin() { return Items(); }
  T* end() { return begin() + size(); }
  const T* begin() const { return Items(); }
  const T* end() const { return begin() + size(); }

 private:
  std::size_t capacity() const { return block_ ? block_->capacity : 0; }
  T* Items() const {
    static_assert(sizeof(ArrayBlock) % alignof(T) == 0);
    return block_ ? reinterpret_cast<T*>(block_ + 1) : nullptr;
  }
  void AppendBytesOf(const T* items, std::size_t count) {
    std::memcpy(static_cast<void*>(end()), items, count * sizeof(T));
    block_->size += count;
  }

  ArrayBlock* block_ = nullptr;
};

}  // namespace base
