#include "json/SpareBlock.h"

#include <cstdlib>
#include <cstring>

namespace base {

namespace {

bool IsKept(std::size_t bytes) { return bytes >= kLeastSpareBytes && bytes <= kMostSpareBytes; }

constinit SpareSlot spare;

// Enough, but not twice as much.
MemoryBlock TakeSpare(std::size_t bytes) {
  const MemoryBlock taken = spare.Exchange({});
  if (taken.bytes >= bytes && taken.bytes / 2 < bytes) return taken;
  FreeBlock(taken);
  return {};
}

}  // namespace

SpareSlot::~SpareSlot() { std::free(head_.exchange(nullptr)); }

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
