#include "logging/StackDump.h"

#include <windows.h>
// dbghelp.h needs windows.h before it
#include <dbghelp.h>

#include <mutex>

namespace logging {
namespace {

constexpr DWORD kMostFrames = 62;
constexpr DWORD kLongestName = 100;

bool PrepareSymbols() {
  ::SymSetOptions(SYMOPT_UNDNAME | SYMOPT_DEFERRED_LOADS);
  return ::SymInitialize(::GetCurrentProcess(), nullptr /*search path*/, TRUE /*all modules*/);
}

void AppendFrame(TextBuffer& out, void* address) {
  struct {
    SYMBOL_INFO info;
    char name[kLongestName];
  } symbol = {};
  symbol.info.SizeOfStruct = sizeof(symbol.info);
  symbol.info.MaxNameLen = kLongestName;
  DWORD64 offset = 0;
  if (::SymFromAddr(::GetCurrentProcess(), reinterpret_cast<DWORD64>(address), &offset,
                    &symbol.info)) {
    out.AppendFormat("\n\t%s [0x%p+%I64u]", symbol.info.Name, address, offset);
  } else {
    out.AppendFormat("\n\t(No symbol) [0x%p]", address);
  }
}

}  // namespace

void AppendStackDump(TextBuffer& out) {
  void* frames[kMostFrames];
  const USHORT count =
      ::RtlCaptureStackBackTrace(1 /*without this function*/, kMostFrames, frames, nullptr);

  // The symbol functions are for one thread at a time.
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  static const bool symbolsReady = PrepareSymbols();
  out.AppendFormat("\nBacktrace%s:", symbolsReady ? "" : " (no symbols)");
  for (USHORT i = 0; i < count; ++i) AppendFrame(out, frames[i]);
}

}  // namespace logging
