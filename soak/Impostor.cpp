#include "Impostor.h"

#include <stdexcept>

#include "Nonsense.h"

namespace soak {

namespace {

constexpr int kMostTries = 4000;  // 20 seconds, because there are 5 ms between two attempts
constexpr DWORD kExchangeMilliseconds = 20000;

}  // namespace

Impostor::Impostor(const std::wstring& pipeName)
    : event_(::CreateEventW(nullptr, TRUE /*manual reset*/, FALSE, nullptr)) {
  for (int i = 0; i < kMostTries && pipe_ == INVALID_HANDLE_VALUE; ++i) {
    if (i > 0) ::Sleep(5);
    pipe_ = ::CreateNamedPipeW(pipeName.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                               PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT,
                               1 /*instances*/, 0, 0, 0, nullptr);
  }
  if (pipe_ == INVALID_HANDLE_VALUE) throw std::runtime_error("an impostor does not get the pipe");
  overlapped_.hEvent = event_;
}

Impostor::~Impostor() {
  ::CloseHandle(pipe_);
  ::CloseHandle(event_);
}

void Impostor::Serve(const Phase& phase, DWORD milliseconds, std::minstd_rand& random) {
  const ULONGLONG end = ::GetTickCount64() + milliseconds;
  while (Connect(end)) {
    char request[4000];
    if (phase.kind != PhaseKind::kHangingUp &&
        Finish(::ReadFile(pipe_, request, sizeof(request), nullptr, &overlapped_),
               kExchangeMilliseconds)) {
      if (phase.kind == PhaseKind::kNonsense) Answer(AllNonsense()[phase.detail].bytes);
      if (phase.kind == PhaseKind::kSilent) AwaitLeave(end);
      if (phase.kind == PhaseKind::kSlow) {
        ::Sleep(random() % 300);
        Answer(MessageOf(L"[" + std::to_wstring(kSlowStatus) + L"]"));
      }
    }
    ::DisconnectNamedPipe(pipe_);
  }
}

// Returns false if no client connects before `end`. A client that connects just as the time ends
// stays connected, and the next call of Connect finds it.
bool Impostor::Connect(ULONGLONG end) {
  for (ULONGLONG now; (now = ::GetTickCount64()) < end;) {
    const BOOL done = ::ConnectNamedPipe(pipe_, &overlapped_);
    const DWORD error = ::GetLastError();
    if (!done && error == ERROR_PIPE_CONNECTED) return true;
    if (Finish(done, static_cast<DWORD>(end - now))) return true;
    if (error == ERROR_NO_DATA) ::DisconnectNamedPipe(pipe_);  // the client has already left
  }
  return false;
}

bool Impostor::Finish(BOOL done, DWORD milliseconds) {
  if (!done && ::GetLastError() != ERROR_IO_PENDING) return false;
  if (::WaitForSingleObject(event_, milliseconds) == WAIT_TIMEOUT) ::CancelIo(pipe_);
  DWORD bytes = 0;
  return ::GetOverlappedResult(pipe_, &overlapped_, &bytes, TRUE) != 0;
}

void Impostor::Answer(const std::string& bytes) {
  const auto size = static_cast<DWORD>(bytes.size());
  if (Finish(::WriteFile(pipe_, bytes.data(), size, nullptr, &overlapped_), kExchangeMilliseconds))
    ::FlushFileBuffers(pipe_);
}

void Impostor::AwaitLeave(ULONGLONG end) {
  while (::GetTickCount64() < end && ::PeekNamedPipe(pipe_, nullptr, 0, nullptr, nullptr, nullptr))
    ::Sleep(10);
}

void AwaitNoPipe(const std::wstring& pipeName) {
  for (int i = 0; i < kMostTries; ++i) {
    if (!::WaitNamedPipeW(pipeName.c_str(), 1 /*ms*/) && ::GetLastError() == ERROR_FILE_NOT_FOUND)
      return;
    ::Sleep(5);
  }
  throw std::runtime_error("a pipe does not go");
}

}  // namespace soak
