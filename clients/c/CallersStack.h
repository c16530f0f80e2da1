// Runs in the client. Makes C++ exceptions work if the caller runs a function on a stack that the
// caller has allocated. Some libraries that call C functions from other languages do so.
#pragma once

namespace tessel::c {

// Hides the thread's list of exception handlers if its first entry is not on the current stack.
//
// Wine keeps this list. If an entry lies below the current stack pointer, Wine assumes that the
// function of the entry has returned. If the caller's own stack is in use and lies above the normal
// stack of the thread, all handlers on the normal stack are below the stack pointer. Then Wine
// wrongly assumes that the function of the outermost handler has returned, and this handler ends
// the process before our `catch` is found (seen with Wine 8). Windows has no such list in 64-bit
// programs.
class HandlersOfOtherStacks {
 public:
  HandlersOfOtherStacks();
  ~HandlersOfOtherStacks();
  HandlersOfOtherStacks(const HandlersOfOtherStacks&) = delete;

 private:
  void* const first_;
};

}  // namespace tessel::c
