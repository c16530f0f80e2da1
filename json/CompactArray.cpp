#include "json/CompactArray.h"

#include <limits>

namespace base {

ArrayBlock* GrowBlock(ArrayBlock* old, std::size_t capacity, std::size_t item_size) {
  constexpr std::size_t kMost = std::numeric_limits<std::ptrdiff_t>::max() - sizeof(ArrayBlock);
  if (capacity > kMost / item_size) throw std::bad_array_new_length();
  auto* const block =
      ::new (::operator new(sizeof(ArrayBlock) + capacity * item_size)) ArrayBlock{0, capacity};
  if (old) {
    block->size = old->size;
    std::memcpy(block + 1, old + 1, old->size * item_size);
    ::operator delete(old);
  }
  return block;
}

}  // namespace base
