#include "tools/pipe/PipeExchange.h"

#include <algorithm>

#include "tools/pipe/ServerPipe.h"
#include "tools/pipe/Transfer.h"
#include "tools/shared/Handle.h"

namespace tools {
namespace {

constexpr DWORD kPartSize = 65536;  // bytes that one read asks for
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
Handle Open(const std::wstring& pipe, ULONGLONG deadline, PipeEnd& end) {
  for (;;) {
    Handle opened = OwnHandle(OpenOnce(pipe));
    if (opened) return opened;
    const DWORD error = ::GetLastError();
    end = error == ERROR_FILE_NOT_FOUND  ? PipeEnd::kAbsent
          : error == ERROR_ACCESS_DENIED ? PipeEnd::kDenied
                                         : PipeEnd::kBusy;
    if (end != PipeEnd::kBusy || MillisecondsUntil(deadline) == 0) return {};
    ::Sleep(std::min(kRetryMilliseconds, MillisecondsUntil(deadline)));
  }
}

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

PipeEnd Write(HANDLE pipe, const std::string& message, ULONGLONG deadline) {
  Transfer writing;
  const auto size = static_cast<DWORD>(message.size());
  const BOOL started = ::WriteFile(pipe, message.data(), size, nullptr, writing.Overlapped());
  return EndOf(writing.Finish(pipe, started, MillisecondsUntil(deadline)).error);
}

// Reads one message, in parts.
PipeEnd Read(HANDLE pipe, std::string& message, ULONGLONG deadline, std::size_t longest) {
  Transfer reading;
  for (;;) {
    const std::size_t size = message.size();
    message.resize(size + kPartSize);
    const BOOL started =
        ::ReadFile(pipe, message.data() + size, kPartSize, nullptr, reading.Overlapped());
    const auto [error, bytes] = reading.Finish(pipe, started, MillisecondsUntil(deadline));
    message.resize(size + bytes);
    if (error != ERROR_MORE_DATA || message.size() > longest) return EndOf(error);
  }
}

}  // namespace

// A pipe that exists but stays busy ends the wait with ERROR_SEM_TIMEOUT.
bool PipeExists(const std::wstring& pipe) {
  return ::WaitNamedPipeW(pipe.c_str(), 1 /*ms*/) || ::GetLastError() == ERROR_SEM_TIMEOUT;
}

DWORD ServerOf(const std::wstring& pipe) {
  const Handle opened = OwnHandle(OpenOnce(pipe));
  DWORD server = 0;
  if (opened) ::GetNamedPipeServerProcessId(opened.get(), &server);
  return server;
}

PipeExchange ExchangeMessages(const std::wstring& name, const std::wstring& request,
                              ULONGLONG deadline, std::size_t longest) {
  PipeExchange result = {PipeEnd::kNotMessages, 0, {}};
  const Handle pipe = Open(name, deadline, result.end);
  if (!pipe) return result;
  ::GetNamedPipeServerProcessId(pipe.get(), &result.serverProcess);
  DWORD mode = PIPE_READMODE_MESSAGE;
  if (!::SetNamedPipeHandleState(pipe.get(), &mode, nullptr, nullptr)) return result;
  result.end = Write(pipe.get(), MessageOfText(request), deadline);
  if (result.end != PipeEnd::kAnswered) return result;
  std::string answer;
  result.end = Read(pipe.get(), answer, deadline, longest * sizeof(wchar_t));
  result.answer = TextOfMessage(answer);
  return result;
}

}  // namespace tools
