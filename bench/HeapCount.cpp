#include "HeapCount.h"

#include <malloc.h>

#include <algorithm>

namespace bench {

namespace {

// This variable needs no lock, because the programs that use it have only one thread.
HeapUse use;

std::size_t UsableSize(void* block) {
#ifdef _WIN32
  return ::_msize(block);
#else
  return ::malloc_usable_size(block);
#endif
}

// Returns the memory that a block takes. The heaps of Linux and Windows add one word to each block
// and round the sum up to a multiple of 16 bytes.
std::size_t FootprintOf(void* block) {
  return (UsableSize(block) + sizeof(std::size_t) + 15) / 16 * 16;
}

void* Added(void* block, std::size_t asked) {
  if (block == nullptr) return nullptr;
  use.asked += asked;
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

void* __wrap_malloc(std::size_t size) { return bench::Added(__real_malloc(size), size); }
void* __wrap_calloc(std::size_t count, std::size_t size) {
  return bench::Added(__real_calloc(count, size), count * size);
}
void* __wrap_realloc(void* block, std::size_t size) {
  const bool grows = block == nullptr || size > bench::UsableSize(block);
  bench::Remove(block);
  return bench::Added(__real_realloc(block, size), grows ? size : 0);
}
void __wrap_free(void* block) {
  bench::Remove(block);
  __real_free(block);
}
}
