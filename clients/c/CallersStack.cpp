#include "clients/c/CallersStack.h"

#include <windows.h>

#include <functional>

namespace tessel::c {
namespace {

using Handler = decltype(NT_TIB::ExceptionList);

NT_TIB& Thread() { return *reinterpret_cast<NT_TIB*>(::NtCurrentTeb()); }

bool IsOnCurrentStack(void* handler) {
  const std::less<void*> below;
  return !below(handler, Thread().StackLimit) && below(handler, Thread().StackBase);
}

}  // namespace

HandlersOfOtherStacks::HandlersOfOtherStacks() : first_(Thread().ExceptionList) {
  if (!IsOnCurrentStack(first_)) Thread().ExceptionList = reinterpret_cast<Handler>(~ULONG_PTR{});
}

HandlersOfOtherStacks::~HandlersOfOtherStacks() {
  Thread().ExceptionList = static_cast<Handler>(first_);
}

}  // namespace tessel::c
