#include "tools/pipe/Transfer.h"

namespace tools {

Transfer::Transfer() : done_(::CreateEventW(nullptr, TRUE /*manual reset*/, FALSE, nullptr)) {
  overlapped_.hEvent = done_.get();
}

// If a message is longer than the buffer, ReadFile may fail at once with ERROR_MORE_DATA. This is
// no failure here, because the buffer then holds a part of the message.
Transfer::Outcome Transfer::Finish(HANDLE pipe, BOOL started, DWORD milliseconds, HANDLE orEvent) {
  const DWORD error = started ? ERROR_SUCCESS : ::GetLastError();
  if (error != ERROR_SUCCESS && error != ERROR_IO_PENDING && error != ERROR_MORE_DATA) {
    return {error, 0};
  }
  const HANDLE events[] = {done_.get(), orEvent};
  const DWORD count = orEvent == nullptr ? 1 : 2;
  const bool inTime =
      ::WaitForMultipleObjects(count, events, FALSE /*all*/, milliseconds) == WAIT_OBJECT_0;
  if (!inTime) ::CancelIoEx(pipe, &overlapped_);
  DWORD bytes = 0;
  if (::GetOverlappedResult(pipe, &overlapped_, &bytes, TRUE /*wait*/)) return {0, bytes};
  return {inTime ? ::GetLastError() : static_cast<DWORD>(WAIT_TIMEOUT), bytes};
}

}  // namespace tools
