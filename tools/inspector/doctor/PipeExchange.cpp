#include "tools/inspector/doctor/PipeExchange.h"

#include <algorithm>

#include "tools/shared/Handle.h"

namespace {

constexpr std::size_t kLongestAnswer = 32768;  // in UTF-16 units
constexpr DWORD kRetryMilliseconds = 10;

DWORD MillisecondsUntil(ULONGLONG deadline) {
  const ULONGLONG now = ::GetTickCount64();
  return now < deadline ? static_cast<DWORD>(deadline - now) : 0;
}

// Opens the pipe so that a foreign server cannot act in the name of this user.
HANDLE OpenOnce(const std::wstring& pipe) {
  return ::CreateFileW(pipe.c_str(), GENERIC_READ | GENERIC_WRITE, 0 /*sharing*/,
                       nullptr /*security*/, OPEN_EXISTING,
                       FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION,
                       nullptr /*template*/);
}

// Returns an empty handle and sets `end` if the pipe cannot be opened.
tools::Handle Open(const std::wstring& pipe, ULONGLONG deadline, PipeEnd& end) {
  for (;;) {
    tools::Handle opened = tools::OwnHandle(OpenOnce(pipe));
    if (opened) return opened;
    const DWORD error = ::GetLastError();
    end = error == ERROR_FILE_NOT_FOUND  ? PipeEnd::kAbsent
          : error == ERROR_ACCESS_DENIED ? PipeEnd::kDenied
                                         : PipeEnd::kBusy;
    if (end != PipeEnd::kBusy || MillisecondsUntil(deadline) == 0) return {};
    ::Sleep(std::min(kRetryMilliseconds, MillisecondsUntil(deadline)));
  }
}

// One read or write that can be given up.
class Transfer {
 public:
  explicit Transfer(HANDLE pipe) : pipe_(pipe) { overlapped_.hEvent = event_.get(); }

  OVERLAPPED* Overlapped() { return &overlapped_; }

  // `started` is the result of the call that started the transfer. Returns ERROR_SUCCESS,
  // WAIT_TIMEOUT or the error of the transfer.
  DWORD Finish(BOOL started, ULONGLONG deadline) {
    if (!started && ::GetLastError() != ERROR_IO_PENDING) return ::GetLastError();
    const bool inTime =
        ::WaitForSingleObject(event_.get(), MillisecondsUntil(deadline)) == WAIT_OBJECT_0;
    if (!inTime) ::CancelIoEx(pipe_, &overlapped_);
    const BOOL done = ::GetOverlappedResult(pipe_, &overlapped_, &bytes_, TRUE /*wait*/);
    if (done) return ERROR_SUCCESS;
    return inTime ? ::GetLastError() : static_cast<DWORD>(WAIT_TIMEOUT);
  }

  DWORD Bytes() const { return bytes_; }

 private:
  const HANDLE pipe_;
  const tools::Handle event_{::CreateEventW(nullptr, TRUE /*manual reset*/, FALSE, nullptr)};
  OVERLAPPED overlapped_ = {};
  DWORD bytes_ = 0;
};

PipeEnd EndOf(DWORD error) {
  switch (error) {
    case ERROR_SUCCESS:
      return PipeEnd::kAnswered;
    case WAIT_TIMEOUT:
      return PipeEnd::kSilent;
    case ERROR_MORE_DATA:
      return PipeEnd::kTooLong;
    default:
      return PipeEnd::kLeft;
  }
}

PipeEnd Write(HANDLE pipe, const std::wstring& text, ULONGLONG deadline) {
  Transfer writing(pipe);
  const auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
  return EndOf(writing.Finish(
      ::WriteFile(pipe, text.data(), size, nullptr /*written*/, writing.Overlapped()), deadline));
}

PipeEnd Read(HANDLE pipe, std::wstring& text, ULONGLONG deadline) {
  Transfer reading(pipe);
  text.resize(kLongestAnswer);
  const auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
  const PipeEnd end = EndOf(reading.Finish(
      ::ReadFile(pipe, text.data(), size, nullptr /*read*/, reading.Overlapped()), deadline));
  text.resize(reading.Bytes() / sizeof(wchar_t));
  return end;
}

}  // namespace

// A pipe that exists but stays busy ends the wait with ERROR_SEM_TIMEOUT.
bool PipeExists(const std::wstring& pipe) {
  return ::WaitNamedPipeW(pipe.c_str(), 1 /*ms*/) || ::GetLastError() == ERROR_SEM_TIMEOUT;
}

PipeExchange ExchangeMessages(const std::wstring& name, const std::wstring& request,
                              ULONGLONG deadline) {
  PipeExchange result = {PipeEnd::kNotMessages, 0, {}};
  const tools::Handle pipe = Open(name, deadline, result.end);
  if (!pipe) return result;
  ::GetNamedPipeServerProcessId(pipe.get(), &result.serverProcess);
  DWORD mode = PIPE_READMODE_MESSAGE;
  if (!::SetNamedPipeHandleState(pipe.get(), &mode, nullptr, nullptr)) return result;
  result.end = Write(pipe.get(), request, deadline);
  if (result.end == PipeEnd::kAnswered) result.end = Read(pipe.get(), result.answer, deadline);
  return result;
}
