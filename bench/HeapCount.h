// Counts the heap use of this program. The linker replaces malloc and the related functions by
// wrappers, so every allocation of the program and of its static libraries is counted.
#pragma once

#include <cstddef>

namespace bench {

struct HeapUse {
  std::size_t bytes;        // bytes in use, including the heap's overhead for each block
  std::size_t blocks;       // blocks in use
  std::size_t peak;         // the most bytes in use since ResetHeapPeak
  std::size_t allocations;  // the number of all allocations so far
  // The sum of the requested sizes of all allocations. A reallocation counts only if the new size
  // does not fit into the old block.
  std::size_t asked;
};
HeapUse CurrentHeap();
void ResetHeapPeak();

}  // namespace bench
