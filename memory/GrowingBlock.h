// Memory that grows at its end; small contents stand within the object, without an allocation.
// Used in every process that loads the module.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>

#include "json/SpareBlock.h"

namespace base {

// kSlack units can be read and written behind all that there is room for.
template <class Unit, std::size_t kSmallCapacity, std::size_t kSlack>
class GrowingBlock {
  static_assert(std::is_trivially_copyable_v<Unit>);

 public:
  GrowingBlock() {}  // "= default" would let it be filled with zeros first
  GrowingBlock(GrowingBlock&& other) noexcept : size_(other.size_) {  // leaves the other empty
    if (other.begin_ == other.small_) {
      std::copy_n(other.small_, size_, small_);
    } else {
      begin_ = std::exchange(other.begin_, other.small_);
      capacity_ = std::exchange(other.capacity_, kSmallCapacity);
    }
    other.size_ = 0;
  }
  GrowingBlock(const GrowingBlock&) = delete;
  GrowingBlock& operator=(const GrowingBlock&) = delete;
  ~GrowingBlock() {
    if (begin_ != small_) FreeBlock(Allocated());  // a call saved for most
  }

  std::size_t size() const { return size_; }
  Unit* begin() const { return begin_; }
  Unit* end() const { return begin_ + size_; }

  // Content is put where there is room, by pointer, and belongs to the block from Finish on. Room
  // gives the end with room for so many units behind it, RoomBehind the same for an end that is not
  // finished yet: both may move the block. When they throw std::bad_alloc, it is as it was.
  Unit* Room(std::size_t units) { return RoomBehind(end(), units); }
  Unit* RoomBehind(Unit* end, std::size_t units) {
    return RoomLeft(end) >= units ? end : Grow(end, units, FastCapacity(end));
  }
  std::size_t RoomLeft(const Unit* end) const { return begin_ + capacity_ - end; }
  // As RoomBehind, for who knows how much will come.
  Unit* ExpectBehind(Unit* end, std::size_t units) {
    return RoomLeft(end) >= units ? end : Grow(end, units, capacity_ + capacity_ / 4);
  }
  void Finish(const Unit* end) { size_ = end - begin_; }

  // Gives back what a large block has too much.
  void Trim() {
    const std::size_t surplus = (capacity_ - size_) * sizeof(Unit);
    if (begin_ == small_ || surplus < std::max(kWorthIt, size_ * sizeof(Unit) / kShare)) return;
    void* const trimmed = std::realloc(begin_, BytesOf(size_));
    if (trimmed != nullptr) Use({trimmed, BytesOf(size_)});
  }

 private:
  // What too much is worth to be given back: less would cost more than it frees, and leave no block
  // that fits the next message of the kind.
  static constexpr std::size_t kWorthIt = 4096;
  static constexpr std::size_t kShare = 8;

  // Copies cost time, room that is never written no more than its promise: small blocks grow fast.
  // The first content may be the only one, and gets what it asks for.
  std::size_t FastCapacity(const Unit* end) const {
    constexpr std::size_t kLarge = 0x80000 / sizeof(Unit);
    return end == begin_ ? 0 : capacity_ * (capacity_ < kLarge ? 8 : 2);
  }
  Unit* Grow(const Unit* end, std::size_t units, std::size_t least_capacity) {
    const std::size_t used = end - begin_;
    const bool isSmall = begin_ == small_;
    const MemoryBlock grown = GrowBlock(Allocated(), isSmall ? 0 : used * sizeof(Unit),
                                        BytesOf(std::max(least_capacity, used + units)));
    if (grown.at == nullptr) throw std::bad_alloc();
    Use(grown);
    if (isSmall) std::copy_n(small_, used, begin_);
    return begin_ + used;
  }

  static std::size_t BytesOf(std::size_t capacity) { return (capacity + kSlack) * sizeof(Unit); }
  MemoryBlock Allocated() const {
    return begin_ == small_ ? MemoryBlock{} : MemoryBlock{begin_, BytesOf(capacity_)};
  }
  void Use(MemoryBlock block) {
    begin_ = static_cast<Unit*>(block.at);
    capacity_ = block.bytes / sizeof(Unit) - kSlack;
  }

  Unit* begin_ = small_;
  std::size_t size_ = 0;
  std::size_t capacity_ = kSmallCapacity;
  alignas(std::max_align_t) Unit small_[kSmallCapacity + kSlack];
};

}  // namespace base
