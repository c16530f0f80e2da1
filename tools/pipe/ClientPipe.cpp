#include "tools/pipe/ClientPipe.h"

#include <windows.h>

#include <array>
#include <memory>
#include <stdexcept>

#include "tools/pipe/ServerPipe.h"
#include "wire/Timeouts.h"

namespace tools {
namespace {

constexpr DWORD kBusyCheckMilliseconds = 50;

struct HandleCloser {
  void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

[[noreturn]] void Fail(const std::string& step, DWORD error) {
  throw std::runtime_error("cannot " + step + " (error " + std::to_string(error) + ")");
}

// Waits while the pipe serves another client.
HANDLE Connect(const std::wstring& name) {
  const ULONGLONG start = ::GetTickCount64();
  for (;;) {
    const HANDLE pipe =
        ::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0 /*sharing*/, nullptr,
                      OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr /*template*/);
    if (pipe != INVALID_HANDLE_VALUE) return pipe;
    const DWORD error = ::GetLastError();
    const bool isLate = ::GetTickCount64() - start > wire::kPipeTimeoutMilliseconds;
    if (error != ERROR_PIPE_BUSY || isLate) Fail("connect", error);
    ::WaitNamedPipeW(name.c_str(), kBusyCheckMilliseconds);
  }
}

class ClientPipe {
 public:
  explicit ClientPipe(const std::wstring& name)
      : pipe_(Connect(name)), done_(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    overlapped_.hEvent = done_.get();
    DWORD mode = PIPE_READMODE_MESSAGE;
    if (!::SetNamedPipeHandleState(pipe_.get(), &mode, nullptr, nullptr)) {
      Fail("connect", ::GetLastError());
    }
  }

  void Write(const std::string& message) {
    const auto size = static_cast<DWORD>(message.size());
    const DWORD error =
        Finish(::WriteFile(pipe_.get(), message.data(), size, nullptr, &overlapped_));
    if (error != ERROR_SUCCESS) Fail("send the request", error);
  }

  std::string Read() {
    std::string message;
    std::array<char, 4096> part;
    for (;;) {
      const auto size = static_cast<DWORD>(part.size());
      const DWORD error = Finish(::ReadFile(pipe_.get(), part.data(), size, nullptr, &overlapped_));
      if (error != ERROR_SUCCESS && error != ERROR_MORE_DATA) Fail("receive the answer", error);
      message.append(part.data(), bytes_);
      if (error == ERROR_SUCCESS) return message;
    }
  }

 private:
  // Waits for the end of an operation, sets `bytes_`, and returns the error. `started` is what the
  // system's function returned.
  DWORD Finish(BOOL started) {
    const DWORD error = started ? ERROR_SUCCESS : ::GetLastError();
    if (error != ERROR_SUCCESS && error != ERROR_IO_PENDING && error != ERROR_MORE_DATA) {
      return error;
    }
    if (::WaitForSingleObject(done_.get(), wire::kPipeTimeoutMilliseconds) != WAIT_OBJECT_0) {
      ::CancelIo(pipe_.get());
    }
    const BOOL done = ::GetOverlappedResult(pipe_.get(), &overlapped_, &bytes_, TRUE /*wait*/);
    return done ? ERROR_SUCCESS : ::GetLastError();
  }

  const Handle pipe_, done_;
  OVERLAPPED overlapped_ = {};
  DWORD bytes_ = 0;
};

}  // namespace

// A pipe that serves another client exists, too, but the wait for it ends with a time-out.
bool PipeExists(const std::wstring& name) {
  return ::WaitNamedPipeW(name.c_str(), 1 /*millisecond*/) != 0 ||
         ::GetLastError() == ERROR_SEM_TIMEOUT;
}

std::wstring AskPipe(const std::wstring& name, const std::wstring& request) {
  ClientPipe pipe(name);
  pipe.Write(MessageOfText(request));
  return TextOfMessage(pipe.Read());
}

}  // namespace tools
