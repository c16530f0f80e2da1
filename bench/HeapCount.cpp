#include "HeapCount.h"

#include <malloc.h>

#include <algorithm>

namespace bench {

namespace {

// Single-threaded programs: no lock.
HeapUse use;

// Both heaps put a word before each block and give out multiples of 16 bytes.
std::size_t FootprintOf(void* block) {
#ifdef _WIN32
  const std::size_t size = ::_msize(block);
#else
  const std::size_t size = ::malloc_usable_size(block);
#endif
  return (size + sizeof(std::size_t) + 15) / 16 * 16;
}

void* Added(void* block) {
  if (block == nullptr) return nullptr;
  use.bytes += FootprintOf(block);
  use.peak = std::max(use.peak, use.bytes);
  ++use.blocks;
  ++use.allocations;
  return block;
}

void Remove(void* block) {
  if (block == nullptr) return;
  use.bytes -= FootprintOf(block);
  --use.blocks;
}

}  // namespace

HeapUse CurrentHeap() { return use; }
void ResetHeapPeak() { use.peak = use.bytes; }

}  // namespace bench

extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);

void* __wrap_malloc(std::size_t size) { return bench::Added(__real_malloc(size)); }
void* __wrap_calloc(std::size_t count, std::size_t size) {
  return bench::Added(__real_calloc(count, size));
}
void* __wrap_realloc(void* block, std::size_t size) {
  bench::Remove(block);
  return bench::Added(__real_realloc(block, size));
}
void __wrap_free(void* block) {
  bench::Remove(block);
  __real_free(block);
}
}
