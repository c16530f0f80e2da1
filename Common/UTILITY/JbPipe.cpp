// Runs in the client and in the broker. The functions that both roles of a pipe endpoint, server
// and client, share.
#include "UTILITY/JbPipe.h"

#include "logging/Log.h"

CJbPipe::~CJbPipe() { Close(); }

std::wstring CJbPipe::BuildPipeName(std::uint32_t processId) const {
  return appendProcessId_ ? baseName_ + std::to_wstring(processId) : baseName_;
}

void CJbPipe::ThrowIfShutDown() const {
  if (shutDown_) throw PipeShutdownException();
}

bool CJbPipe::CreateIoEvent() {
  ioEvent_.Reset(::CreateEventW(nullptr /*security*/, TRUE /*manual reset*/, TRUE /*signalled*/,
                                nullptr /*name*/));
  return static_cast<bool>(ioEvent_);
}

OVERLAPPED CJbPipe::MakeOverlapped() const {
  OVERLAPPED overlapped = {};
  overlapped.hEvent = ioEvent_.Get();
  return overlapped;
}

DWORD CJbPipe::WaitForIo() const { return ::WaitForSingleObject(ioEvent_.Get(), timeout_); }

HANDLE CJbPipe::DuplicatePipeHandle(std::uint32_t processId) {
  // Without a pipe the handle is -1, which is also the pseudo handle of the current process. So
  // DuplicateHandle would give the process `processId` full access to the current process.
  if (!pipe_) return nullptr;
  const SafeHandle process(::OpenProcess(PROCESS_DUP_HANDLE, FALSE /*inheritable*/, processId));
  HANDLE duplicate = nullptr;
  if (!process || !::DuplicateHandle(::GetCurrentProcess(), pipe_.Get(), process.Get(), &duplicate,
                                     0 /*access*/, FALSE /*inheritable*/, DUPLICATE_SAME_ACCESS)) {
    return nullptr;
  }
  return duplicate;
}

void CJbPipe::Close() {
  LOG_VERBOSE("Start Close");
  ioEvent_.Reset();
  pipe_.Reset();
  state_ = State::kNone;
  server_ = false;
  shutDown_ = false;
  LOG_VERBOSE("End Close");
}
