// Blocks of memory that are kept while nobody uses them. Of large ones one is: what comes fresh
// from the system costs a fault for each page, which together is more than to read or write a
// message. Used in every process that loads the module.
#pragma once

#include <atomic>
#include <cstddef>
#include <new>

namespace base {

// GrowBlock and FreeBlock keep none of other sizes: heaps do so themselves with smaller ones, and
// larger ones are not worth what the process would hold.
constexpr std::size_t kLeastSpareBytes = 0x10000;
constexpr std::size_t kMostSpareBytes = 0x800000;

struct MemoryBlock {
  void* at = nullptr;
  std::size_t bytes = 0;
};

// A place for one block of malloc's that nobody uses. Any thread may call.
class SpareSlot {
 public:
  ~SpareSlot();
  // Puts the block, or none, and gives what was there.
  MemoryBlock Exchange(MemoryBlock block) {
    Head* const given = block.at == nullptr ? nullptr : new (block.at) Head{block.bytes};
    Head* const taken = head_.exchange(given);
    return taken == nullptr ? MemoryBlock{} : MemoryBlock{taken, taken->bytes};
  }

 private:
  struct Head {  // stands where the block starts
    std::size_t bytes;
  };
  std::atomic<Head*> head_ = nullptr;
};

// The block, or another in its place, with room for at least so many bytes; the first `used` are
// kept. None, and the block stays as it is, when there is no memory. Any thread may call.
MemoryBlock GrowBlock(MemoryBlock block, std::size_t used, std::size_t bytes);
void FreeBlock(MemoryBlock block);

}  // namespace base
