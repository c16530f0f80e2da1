#include "json/ListValue.h"

#include <algorithm>
#include <limits>
#include <new>

namespace base {

namespace {

constexpr std::size_t kFirstCapacity = 112;
constexpr std::size_t kLargeBlock = 4096;

}  // namespace

void ListValue::AppendString(Utf16View text) {
  constexpr std::size_t kMost = std::numeric_limits<std::ptrdiff_t>::max() / (2 * kMaxUtf8PerUnit);
  if (text.size() > kMost) throw std::bad_alloc();
  char* const to = Room(packed::kBytesHead + text.size() * kMaxUtf8PerUnit + kCopySlack);
  Finish(packed::PutBytesHead(to, ValueType::kString, CopyAsUtf8(text, to + packed::kBytesHead)));
}

void ListValue::AppendBytes(ValueType type, std::string_view bytes) {
  char* const to = Room(packed::kBytesHead + bytes.size());
  std::copy(bytes.begin(), bytes.end(), to + packed::kBytesHead);
  Finish(packed::PutBytesHead(to, type, to + packed::kBytesHead + bytes.size()));
}

// Room that is never written costs address space only, so the block doubles.
void ListValue::Grow(std::size_t bytes) {
  const std::size_t capacity = std::max({kFirstCapacity, 2 * capacity_, size_ + bytes});
  char* const block = static_cast<char*>(std::realloc(block_.get(), capacity));
  if (block == nullptr) throw std::bad_alloc();
  static_cast<void>(block_.release());
  block_.reset(block);
  capacity_ = capacity;
}

void ListValue::Trim() {
  if (capacity_ < kLargeBlock || size_ == 0) return;
  char* const block = static_cast<char*>(std::realloc(block_.get(), size_));
  if (block == nullptr) return;
  static_cast<void>(block_.release());
  block_.reset(block);
  capacity_ = size_;
}

}  // namespace base
