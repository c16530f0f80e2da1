// Counts what this program has on the heap. Every allocation of its own code and of the libraries
// linked into it, operator new included, goes through here: the linker wraps malloc and its kin.
#pragma once

#include <cstddef>

namespace bench {

struct HeapUse {
  std::size_t bytes;        // in use, each block with what the heap itself adds to it
  std::size_t blocks;       // in use
  std::size_t peak;         // most bytes since ResetHeapPeak
  std::size_t allocations;  // so far
  std::size_t asked;        // sum of the sizes of all allocations so far, shrinking ones left out
};
HeapUse CurrentHeap();
void ResetHeapPeak();

}  // namespace bench
