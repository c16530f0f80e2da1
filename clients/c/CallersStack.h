// Runs in the client. Makes exceptions work on a stack that the caller has made itself, as some
// foreign function interfaces do.
#pragma once

namespace tessel::c {

// Hides the thread's list of exception handlers if its first entry is not on the current stack.
//
// Wine keeps this list, and takes each entry below the current stack pointer for a function that
// has returned. On a stack above the thread's own one, this is true for the outermost handler, and
// that one ends the process before our `catch` is found (seen with Wine 8). Windows has no such
// list in 64-bit programs.
class HandlersOfOtherStacks {
 public:
  HandlersOfOtherStacks();
  ~HandlersOfOtherStacks();
  HandlersOfOtherStacks(const HandlersOfOtherStacks&) = delete;

 private:
  void* const first_;
};

}  // namespace tessel::c
