// Runs in the client. Makes C++ exceptions work inside a function of the C interface that runs on
// a stack that its caller has allocated. Some libraries that let other languages call C functions
// allocate such a stack.
#pragma once

namespace tessel::c {

// Hides the thread's list of exception handlers if the first handler of the list is not on the
// current stack. The destructor restores the list.
//
// Only Wine keeps this list: Windows has no such list in 64-bit programs. To find the handler of
// an exception, Wine goes from the inner functions to the outer ones. At each function it first
// calls the handlers that lie at lower addresses, because on a single stack these belong to inner
// functions. But if the current stack was allocated by the caller, at higher addresses than the
// normal stack of the thread, then every handler on the normal stack lies lower and is called,
// even the outermost one. That handler ends the process before our `catch` is found (seen with
// Wine 8).
class HandlersOfOtherStacks {
 public:
  HandlersOfOtherStacks();
  ~HandlersOfOtherStacks();
  HandlersOfOtherStacks(const HandlersOfOtherStacks&) = delete;

 private:
  void* const first_;
};

}  // namespace tessel::c
