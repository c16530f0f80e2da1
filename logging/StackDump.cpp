#include "logging/StackDump.h"

#include <windows.h>
// dbghelp.h needs windows.h before it
#include <dbghelp.h>

#include <memory>
#include <mutex>

namespace logging {
namespace {

constexpr DWORD kMostFrames = 62;
constexpr DWORD kLongestName = 100;

// Not SafeHandle, because SafeHandle logs, and this code runs while a line is logged.
struct HandleCloser {
  void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using ProcessHandle = std::unique_ptr<void, HandleCloser>;

ProcessHandle DuplicateOwnProcess() {
  HANDLE duplicate = nullptr;
  ::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentProcess(), ::GetCurrentProcess(), &duplicate,
                    0 /*access*/, FALSE /*inheritable*/, DUPLICATE_SAME_ACCESS);
  return ProcessHandle(duplicate);
}

// Loads the symbols of this process and frees them again. The system keeps one set of symbols for
// each process handle. This class has a process handle of its own, because the host may already use
// the symbols of the handle GetCurrentProcess(). It also holds a lock, because only one thread at a
// time may call the symbol functions.
class Symbols {
 public:
  Symbols() {
    ::SymSetOptions(options_ | SYMOPT_UNDNAME | SYMOPT_DEFERRED_LOADS);
    initialised_ = ::SymInitialize(process_.get(), nullptr /*search path*/, TRUE /*all modules*/);
  }
  ~Symbols() {
    if (initialised_) ::SymCleanup(process_.get());
    ::SymSetOptions(options_);
  }
  Symbols(const Symbols&) = delete;
  Symbols& operator=(const Symbols&) = delete;

  bool Find(void* address, SYMBOL_INFO& symbol, DWORD64& offset) const {
    return ::SymFromAddr(process_.get(), reinterpret_cast<DWORD64>(address), &offset, &symbol);
  }

 private:
  static inline std::mutex mutex_;
  const std::lock_guard<std::mutex> lock_{mutex_};
  const ProcessHandle process_ = DuplicateOwnProcess();
  const DWORD options_ = ::SymGetOptions();
  bool initialised_ = false;
};

void AppendFrame(TextBuffer& out, const Symbols& symbols, void* address) {
  struct {
    SYMBOL_INFO info;
    char name[kLongestName];
  } symbol = {};
  symbol.info.SizeOfStruct = sizeof(symbol.info);
  symbol.info.MaxNameLen = kLongestName;
  DWORD64 offset = 0;
  if (symbols.Find(address, symbol.info, offset)) {
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
  const Symbols symbols;
  for (USHORT i = 0; i < count; ++i) AppendFrame(out, symbols, frames[i]);
}

}  // namespace logging
