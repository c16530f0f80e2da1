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
  ::SymSetOptions(::SymGetOptions() | SYMOPT_UNDNAME | SYMOPT_DEFERRED_LOADS);
  return ::SymInitialize(::GetCurrentProcess(), nullptr /*search path*/, TRUE /*all modules*/);
}

bool FindSymbol(void* address, SYMBOL_INFO& symbol, DWORD64& offset) {
  // The symbol functions are for one thread at a time.
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  // Fails when the host prepared them itself; the symbols are there all the same.
  [[maybe_unused]] static const bool prepared = PrepareSymbols();
  return ::SymFromAddr(::GetCurrentProcess(), reinterpret_cast<DWORD64>(address), &offset, &symbol);
}

void AppendFrame(TextBuffer& out, void* address) {
  struct {
    SYMBOL_INFO info;
    char name[kLongestName];
  } symbol = {};
  symbol.info.SizeOfStruct = sizeof(symbol.info);
  symbol.info.MaxNameLen = kLongestName;
  DWORD64 offset = 0;
  if (FindSymbol(address, symbol.info, offset)) {
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
  out.Append("\nBacktrace:");
  for (USHORT i = 0; i < count; ++i) AppendFrame(out, frames[i]);
}

}  // namespace logging
