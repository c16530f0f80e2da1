// Runs in the client and in the broker. A block of memory that grows at its end. Small contents are
// stored inside the object and need no allocation.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>

namespace base {

// A writer reserves room, writes through the returned pointer, and calls Finish with the new end.
// The writes themselves check nothing. Debug builds assert that every end lies within the capacity.
template <class Unit, std::size_t kSmallCapacity>
class GrowingBlock {
  static_assert(std::is_trivially_copyable_v<Unit>);

 public:
  // Not "= default", because GrowingBlock{} would then fill the object with zeros.
  GrowingBlock() {}
  GrowingBlock(GrowingBlock&& other) noexcept : size_(other.size_) {  // `other` is empty afterwards
    if (other.IsSmall()) {
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
    if (!IsSmall()) std::free(begin_);
  }

  std::size_t size() const { return size_; }
  Unit* begin() const { return begin_; }
  Unit* end() const { return begin_ + size_; }

  // Reserve and ReserveAfter make room for `units` more units. They return the place for these
  // units, because the block may have moved. Reserve continues at the end that was passed to the
  // last Finish. ReserveAfter continues at `end`, the end of content that was written after the
  // last Finish. If they throw std::bad_alloc, the block is unchanged.
  Unit* Reserve(std::size_t units) { return ReserveAfter(end(), units); }
  Unit* ReserveAfter(Unit* end, std::size_t units) {
    return RoomAfter(end) >= units ? end : Grow(end, units, FastCapacity(end));
  }
  // Does the same as ReserveAfter, for a caller that has estimated how much content will follow. If
  // the block must grow, it grows just enough for `units` units, or by a quarter if that is more.
  Unit* ReserveEstimateAfter(Unit* end, std::size_t units) {
    return RoomAfter(end) >= units ? end : Grow(end, units, capacity_ + capacity_ / 4);
  }

  // Returns whether `end` lies within the capacity.
  bool Holds(const Unit* end) const { return begin_ <= end && end <= begin_ + capacity_; }
  std::size_t RoomAfter(const Unit* end) const {
    assert(Holds(end));
    return begin_ + capacity_ - end;
  }

  // Makes `end` the end of the content.
  void Finish(const Unit* end) {
    assert(Holds(end));
    size_ = end - begin_;
  }

  // Returns unused memory to the heap if there is enough of it (see kLeastTrim).
  void Trim() {
    const std::size_t unused = (capacity_ - size_) * sizeof(Unit);
    if (IsSmall() || size_ == 0 || unused < std::max(kLeastTrim, size_ * sizeof(Unit) / kTrimShare))
      return;
    if (void* const trimmed = std::realloc(begin_, BytesOf(size_))) Use(trimmed, size_);
  }

 private:
  // Trim shrinks the block only if at least 4 KiB, and at least 1/8 of the content, are unused.
  // Otherwise the call would cost more time than the memory is worth.
  static constexpr std::size_t kLeastTrim = 4096;
  static constexpr std::size_t kTrimShare = 8;

  // Unused capacity is nearly free, copying is not: small blocks grow by 8x, large ones by 2x. The
  // first content may be the only one, so its block has exactly the requested size.
  std::size_t FastCapacity(const Unit* end) const {
    constexpr std::size_t kLarge = 0x80000 / sizeof(Unit);
    return end == begin_ ? 0 : capacity_ * (capacity_ < kLarge ? 8 : 2);
  }

  Unit* Grow(const Unit* end, std::size_t units, std::size_t leastCapacity) {
    const std::size_t used = end - begin_;
    const std::size_t capacity = std::max(leastCapacity, used + units);
    const bool wasSmall = IsSmall();
    void* const grown = std::realloc(wasSmall ? nullptr : begin_, BytesOf(capacity));
    if (grown == nullptr) throw std::bad_alloc();
    Use(grown, capacity);
    if (wasSmall) std::copy_n(small_, used, begin_);
    return begin_ + used;
  }

  static std::size_t BytesOf(std::size_t capacity) { return capacity * sizeof(Unit); }
  bool IsSmall() const { return begin_ == small_; }
  void Use(void* block, std::size_t capacity) {
    begin_ = static_cast<Unit*>(block);
    capacity_ = capacity;
  }

  Unit* begin_ = small_;
  std::size_t size_ = 0;
  std::size_t capacity_ = kSmallCapacity;
  alignas(std::max_align_t) Unit small_[kSmallCapacity];
};

}  // namespace base
