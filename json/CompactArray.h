// An array as big as one pointer: size and capacity stand in the heap block, an empty one has no
// block. Elements move by copying their bytes, which suits every type that json keeps in one.
// Used in every process that loads the module.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace base {

template <typename T>
class CompactArray {
 public:
  CompactArray() = default;
  CompactArray(const T* items, std::size_t count) {
    reserve(count);
    if (count != 0) AppendBytesOf(items, count);
  }
  CompactArray(CompactArray&& other) noexcept : header_(std::exchange(other.header_, nullptr)) {}
  CompactArray& operator=(CompactArray&& other) noexcept {
    CompactArray taken(std::move(other));
    std::swap(header_, taken.header_);
    return *this;
  }
  ~CompactArray() {
    Truncate(0);
    ::operator delete(header_);
  }

  void Append(T&& item) {
    if (size() == capacity()) reserve(std::max<std::size_t>(4, size() * 2));
    ::new (static_cast<void*>(begin() + header_->size)) T(std::move(item));
    ++header_->size;
  }
  void reserve(std::size_t count) {
    if (count <= capacity()) return;
    CompactArray grown;
    grown.header_ = Allocate(count);
    grown.TakeItems(*this, 0);
    std::swap(header_, grown.header_);
  }
  void Truncate(std::size_t count) {
    if (count >= size()) return;
    std::destroy(begin() + count, end());
    header_->size = count;
  }
  // Moves the items from `first` on into an array of their own, which is at most half empty.
  CompactArray TakeTail(std::size_t first) {
    CompactArray tail;
    if (first == 0 && size() >= capacity() / 2) {
      std::swap(header_, tail.header_);
    } else if (first < size()) {
      tail.header_ = Allocate(size() - first);
      tail.TakeItems(*this, first);
    }
    return tail;
  }

  std::size_t size() const { return header_ ? header_->size : 0; }
  bool empty() const { return size() == 0; }
  T& operator[](std::size_t index) { return begin()[index]; }
  const T& operator[](std::size_t index) const { return begin()[index]; }
  T* begin() { return Items(header_); }
  T* end() { return begin() + size(); }
  const T* begin() const { return Items(header_); }
  const T* end() const { return begin() + size(); }

 private:
  struct Header {
    std::size_t size;
    std::size_t capacity;
  };

  static T* Items(Header* header) { return header ? reinterpret_cast<T*>(header + 1) : nullptr; }
  static Header* Allocate(std::size_t count) {
    static_assert(sizeof(Header) % alignof(T) == 0);
    constexpr std::size_t kMost =
        (std::numeric_limits<std::ptrdiff_t>::max() - sizeof(Header)) / sizeof(T);
    if (count > kMost) throw std::bad_array_new_length();
    return ::new (::operator new(sizeof(Header) + count * sizeof(T))) Header{0, count};
  }
  std::size_t capacity() const { return header_ ? header_->capacity : 0; }
  void AppendBytesOf(const T* items, std::size_t count) {
    std::memcpy(static_cast<void*>(end()), items, count * sizeof(T));
    header_->size += count;
  }
  void TakeItems(CompactArray& from, std::size_t first) {
    if (first >= from.size()) return;
    AppendBytesOf(from.begin() + first, from.size() - first);
    from.header_->size = first;
  }

  Header* header_ = nullptr;
};

}  // namespace base
