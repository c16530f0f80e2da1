#include "json/SpareBlock.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

namespace base {

namespace {

bool IsKept(std::size_t bytes) { return bytes >= kLeastSpareBytes && bytes <= kMostSpareBytes; }

class Slot {
 public:
  ~Slot() { std::free(head_.exchange(nullptr)); }

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

constinit Slot spare;

// Enough, but not twice as much.
MemoryBlock TakeSpare(std::size_t bytes) {
  const MemoryBlock taken = spare.Exchange({});
  if (taken.bytes >= bytes && taken.bytes / 2 < bytes) return taken;
  FreeBlock(taken);
  return {};
}

}  // namespace

MemoryBlock GrowBlock(MemoryBlock block, std::size_t used, std::size_t bytes) {
  if (IsKept(bytes)) {
    const MemoryBlock taken = TakeSpare(bytes);
    if (taken.at != nullptr) {
      if (used > 0) std::memcpy(taken.at, block.at, used);
      FreeBlock(block);
      return taken;
    }
  }
  void* const grown = std::realloc(block.at, bytes);
  return grown == nullptr ? MemoryBlock{} : MemoryBlock{grown, bytes};
}

void FreeBlock(MemoryBlock block) {
  std::free(IsKept(block.bytes) ? spare.Exchange(block).at : block.at);
}

}  // namespace base
