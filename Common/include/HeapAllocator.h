// Runs in the client and in the broker. The allocator of all vectors in the interface. A client
// creates such a vector, TesselSLB_x64.dll fills it, and the client destroys it. Therefore the
// vector's storage is on the process heap, which the client and the DLL share.
#pragma once

#include <windows.h>

#include <cstddef>
#include <new>
#include <type_traits>

#ifdef TESSELSLB_BUILD
#include "logging/Log.h"
#else
#include <cwchar>

#include "TesselTrace.h"
#endif

namespace heap_allocator {

#ifdef TESSELSLB_BUILD
inline void ReportNullPointer() { LOG_WARNING("HeapAllocator: null pointer on deallocate"); }
inline void ReportHeapFreeFailure(DWORD error) {
  LOG_ERROR("HeapAllocator: HeapFree failed err=%d", error);
}
#else
// In a client the allocator logs through DTrace, which TesselSLB_x64.dll exports.
inline void ReportNullPointer() { DTrace(1, L"HeapAllocator: null pointer on deallocate"); }
inline void ReportHeapFreeFailure(DWORD error) {
  wchar_t text[64];
  std::swprintf(text, sizeof(text) / sizeof(*text), L"HeapAllocator: HeapFree failed err=%d",
                static_cast<int>(error));
  DTrace(2, text);
}
#endif

}  // namespace heap_allocator

template <class T>
class HeapAllocator {
 public:
  using value_type = T;
  using is_always_equal = std::true_type;
  using propagate_on_container_move_assignment = std::true_type;

  HeapAllocator() noexcept = default;
  template <class U>
  HeapAllocator(const HeapAllocator<U>&) noexcept {}

  // Returns storage for `count` objects. Throws std::bad_alloc.
  T* allocate(std::size_t count) {
    if (count > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_alloc();
    void* storage = ::HeapAlloc(::GetProcessHeap(), 0 /*flags*/, count * sizeof(T));
    if (storage == nullptr) throw std::bad_alloc();
    return static_cast<T*>(storage);
  }

  void deallocate(T* storage, std::size_t /*count*/) noexcept {
    if (storage == nullptr) {
      heap_allocator::ReportNullPointer();
    } else if (!::HeapFree(::GetProcessHeap(), 0 /*flags*/, storage)) {
      heap_allocator::ReportHeapFreeFailure(::GetLastError());
    }
  }
};

template <class T, class U>
bool operator==(const HeapAllocator<T>&, const HeapAllocator<U>&) noexcept {
  return true;
}
template <class T, class U>  // C++17 does not derive this operator from ==
bool operator!=(const HeapAllocator<T>&, const HeapAllocator<U>&) noexcept {
  return false;
}
