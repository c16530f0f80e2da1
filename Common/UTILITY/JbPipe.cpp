#include "UTILITY/JbPipe.h"

#include <algorithm>
#include <cwchar>
#include <new>

#include "UTILITY/TimedRetry.h"
#include "UTILITY/VistaSpecific.h"
#include "logging/Log.h"
#include "memory/ZeroSearch.h"

namespace {

constexpr DWORD kBusyRetryMilliseconds = 200;
constexpr DWORD kConnectRetryMilliseconds = 50;
constexpr DWORD kServerDefaultTimeout = 20000;
constexpr std::size_t kFirstReadSize = 256;
constexpr std::size_t kLargeBuffer = 0x10000000;

}  // namespace

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

bool CJbPipe::CreateServerPipe(std::uint32_t retryTimeout, bool firstInstance) {
  ThrowIfShutDown();
  if (!IsUnused()) throw PipeException("Invalid state in CreateServerPipe");
  LOG_VERBOSE("CreateServerPipe: start");
  if (!CreateIoEvent()) {
    LOG_ERROR("CreateServerPipe: cannot create event; errCode: %d", ::GetLastError());
    return false;
  }
  const std::wstring name = BuildPipeName(::GetCurrentProcessId());
  TimedRetry(static_cast<std::int32_t>(retryTimeout)).Run([&] {
    return TryCreateInstance(name, firstInstance);
  });
  if (!pipe_) {
    LOG_ERROR("CreateServerPipe: could not create pipe");
    return false;
  }
  state_ = State::kListening;
  server_ = true;
  LOG_VERBOSE("CreateServerPipe: end");
  return true;
}

// True when there is nothing left to try.
bool CJbPipe::TryCreateInstance(const std::wstring& name, bool firstInstance) {
  const DWORD openMode = PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED |
                         (firstInstance ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0);
  pipe_.Reset(::CreateNamedPipeW(
      name.c_str(), openMode, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT,
      firstInstance ? 1 : 0 /*most instances*/, 0 /*out buffer*/, 0 /*in buffer*/,
      kServerDefaultTimeout, GetPipeSecurityAttributes()));
  if (pipe_) return true;
  const DWORD error = ::GetLastError();
  if (error != ERROR_PIPE_BUSY) {
    LOG_ERROR("CreateServerPipe: cannot create pipe! errCode=%d", error);
    return true;
  }
  LOG_WARNING("CreateServerPipe: sPipeName='%ls' is busy; retrying...", name.c_str());
  ::Sleep(kBusyRetryMilliseconds);
  return false;
}

bool CJbPipe::WaitClientToConnect(std::uint32_t timeout, std::uint32_t* timedOut) {
  if (!server_) throw PipeException("Cannot call WaitClientToConnect for client pipe");
  ThrowIfShutDown();
  if (!IsReady(State::kListening)) throw PipeException("Invalid state in WaitClientToConnect");
  LOG_VERBOSE("Wait client to connect");
  if (timedOut != nullptr) *timedOut = 0;

  OVERLAPPED overlapped = MakeOverlapped();
  const BOOL connected = ::ConnectNamedPipe(pipe_.Get(), &overlapped);
  const DWORD error = connected ? ERROR_SUCCESS : ::GetLastError();
  switch (error) {
    case ERROR_SUCCESS:
    case ERROR_PIPE_LISTENING:
      break;
    case ERROR_IO_PENDING:
      // A shutdown between the test above and the start of the wait may have knocked in vain.
      if (shutDown_) {
        DWORD none = 0;
        ::CancelIo(pipe_.Get());
        ::GetOverlappedResult(pipe_.Get(), &overlapped, &none, TRUE /*wait*/);
        throw PipeShutdownException();
      }
      break;
    case ERROR_PIPE_CONNECTED:
      LOG_VERBOSE("Pipe client already connected");
      ::SetEvent(ioEvent_.Get());
      break;
    case ERROR_NO_DATA:
      LOG_VERBOSE("The pipe is being closed; continue");
      // The client came and went. Left as it is, the instance would give this error for ever.
      ::DisconnectNamedPipe(pipe_.Get());
      return GiveUpWait();
    default:
      LOG_ERROR("ConnectNamedPipe failed with last err %u", error);
      return GiveUpWait();
  }

  bool expired = false;
  if (timeout != INFINITE && ::WaitForSingleObject(ioEvent_.Get(), timeout) == WAIT_TIMEOUT) {
    ::CancelIo(pipe_.Get());
    expired = true;
  }
  if (timedOut != nullptr) *timedOut = expired ? 1 : 0;
  return FinishWait(overlapped, expired);
}

bool CJbPipe::FinishWait(OVERLAPPED& overlapped, bool timedOut) {
  DWORD none = 0;
  if (!::GetOverlappedResult(pipe_.Get(), &overlapped, &none, TRUE /*wait*/)) {
    if (timedOut) {
      LOG_VERBOSE("WaitClientToConnect timeout");
    } else {
      LOG_ERROR("GetOverlappedResult failed");
    }
    return GiveUpWait();
  }
  LOG_VERBOSE("Client connected");
  ThrowIfShutDown();
  state_ = State::kConnected;
  return true;
}

// A wait that fails in a shutdown ends as a shutdown, whatever made it fail.
bool CJbPipe::GiveUpWait() {
  ThrowIfShutDown();
  return false;
}

bool CJbPipe::DisconnectClient() {
  LOG_VERBOSE("Start DisconnectClient");
  if (!server_) throw PipeException("Cannot call DisconnectClient for client pipe");
  if (state_ != State::kConnected || !pipe_) {
    throw PipeException("Invalid state in DisconnectClient");
  }
  const bool done = ::FlushFileBuffers(pipe_.Get()) && ::DisconnectNamedPipe(pipe_.Get());
  state_ = State::kListening;
  LOG_VERBOSE("End DisconnectClient");
  return done;
}

bool CJbPipe::ConnectToServerPipe(std::uint32_t serverProcessId) {
  if (!IsUnused()) throw PipeException("Invalid state in CreateServerPipe");
  LOG_VERBOSE("Start ConnectToServerPipe");
  if (!CreateIoEvent()) {
    LOG_ERROR("Cannot create event");
    return false;
  }
  const std::uint64_t start = ::GetTickCount64();
  for (;;) {
    const std::wstring name = BuildPipeName(serverProcessId);
    pipe_.Reset(::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0 /*sharing*/,
                              nullptr /*security*/, OPEN_EXISTING, FILE_FLAG_OVERLAPPED,
                              nullptr /*template*/));
    if (pipe_) break;
    const DWORD error = ::GetLastError();
    if (error == ERROR_ACCESS_DENIED) {
      LOG_ERROR("Cannot open server pipe: E_ACCESSDENIED");
      return false;
    }
    if (error == ERROR_FILE_NOT_FOUND) {
      LOG_ERROR("Cannot open server pipe: ERROR_FILE_NOT_FOUND");
      return false;
    }
    if (::GetTickCount64() - start > timeout_) {
      LOG_ERROR("Cannot open server pipe! Error = %d", error);
      return false;
    }
    ::Sleep(kConnectRetryMilliseconds);
  }
  DWORD mode = PIPE_READMODE_MESSAGE;
  if (!::SetNamedPipeHandleState(pipe_.Get(), &mode, nullptr /*collection*/,
                                 nullptr /*collection*/)) {
    LOG_ERROR("SetNamedPipeHandleState failed");
    Close();
    return false;
  }
  state_ = State::kConnected;
  LOG_VERBOSE("End ConnectToServerPipe");
  return true;
}

bool CJbPipe::AttachToServerPipe(HANDLE pipe) {
  if (pipe == nullptr) throw PipeException("Invalid pipe handle");
  if (!IsUnused()) throw PipeException("Invalid state in AttachToServerPipe");
  LOG_VERBOSE("Start AttachToServerPipe");
  if (!CreateIoEvent()) {
    LOG_ERROR("Cannot create event");
    return false;
  }
  pipe_.Reset(pipe);
  state_ = State::kConnected;
  LOG_VERBOSE("End AttachToServerPipe");
  return true;
}

HANDLE CJbPipe::DuplicatePipeHandle(std::uint32_t processId) {
  // The empty value, -1, would duplicate as this process.
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

bool CJbPipe::ServerPipeExists(std::uint32_t serverProcessId, std::int32_t timeout) {
  if (!IsUnused() || server_) throw PipeException("Invalid state in CreateServerPipe");
  LOG_VERBOSE("Start ServerPipeExists");
  const std::wstring name = BuildPipeName(serverProcessId);
  const std::uint64_t start = ::GetTickCount64();
  for (;;) {
    if (::WaitNamedPipeW(name.c_str(), 1 /*ms*/) || ::GetLastError() == ERROR_SEM_TIMEOUT) {
      LOG_VERBOSE("End ServerPipeExists");
      return true;
    }
    if (static_cast<std::int64_t>(::GetTickCount64() - start) > timeout) {
      LOG_VERBOSE("Timeout");
      LOG_VERBOSE("End ServerPipeExists");
      return false;
    }
    ::Sleep(5);
  }
}

bool CJbPipe::ReadBuffer(std::vector<BYTE>& bytes) {
  ThrowIfShutDown();
  bytes.clear();
  PipeMessage message;
  if (!ReadMessage(message)) return false;
  bytes.assign(message.bytes.get(), message.bytes.get() + message.size);
  return true;
}

bool CJbPipe::ReadMessage(PipeMessage& message) {
  if (!IsReady(State::kConnected)) throw PipeException("Invalid state in ReadBuffer");
  LOG_VERBOSE("Start reading");
  OVERLAPPED overlapped = MakeOverlapped();
  if (!GrowBuffer(message, kFirstReadSize)) return false;
  for (;;) {
    const BOOL started = ::ReadFile(pipe_.Get(), message.bytes.get() + message.size,
                                    static_cast<DWORD>(message.capacity - message.size),
                                    nullptr /*bytes read*/, &overlapped);
    const DWORD error = started ? ERROR_SUCCESS : ::GetLastError();
    if (!started && error != ERROR_IO_PENDING && error != ERROR_MORE_DATA) {
      LOG_ERROR("ReadFile failed (%i)", error);
      return false;
    }
    const DWORD wait = pumpMessages_ ? PumpUntilIo() : WaitForIo();
    if (wait == WAIT_TIMEOUT || wait == WAIT_FAILED) {
      LOG_ERROR("WaitForSingleObject timeout or failed (%i)", wait);
      ::CancelIo(pipe_.Get());
    }
    DWORD read = 0;
    const BOOL whole = ::GetOverlappedResult(pipe_.Get(), &overlapped, &read, TRUE /*wait*/);
    const DWORD readError = whole ? ERROR_SUCCESS : ::GetLastError();
    message.size += read;
    if (whole) {
      LOG_VERBOSE("End reading");
      return true;
    }
    if (readError != ERROR_MORE_DATA) {
      LOG_ERROR("GetOverlappedResult failed");
      return false;
    }
    const std::size_t factor = message.capacity < kLargeBuffer ? 16 : 2;
    if (!GrowBuffer(message, message.capacity * factor)) return false;
  }
}

bool CJbPipe::GrowBuffer(PipeMessage& message, std::size_t capacity) {
  try {
    // Left as it comes: most of a large buffer is never touched.
    auto bytes = std::make_unique_for_overwrite<BYTE[]>(capacity);
    std::copy_n(message.bytes.get(), message.size, bytes.get());
    message.bytes = std::move(bytes);
    message.capacity = capacity;
    return true;
  } catch (const std::bad_alloc&) {
    LOG_ERROR("Failed to allocate %zu bytes", capacity);
    return false;
  }
}

DWORD CJbPipe::WaitForIo() const { return ::WaitForSingleObject(ioEvent_.Get(), timeout_); }

DWORD CJbPipe::PumpUntilIo() const {
  const std::uint64_t start = ::GetTickCount64();
  for (;;) {
    const DWORD wait = ::WaitForSingleObject(ioEvent_.Get(), 1 /*ms*/);
    if (wait == WAIT_OBJECT_0 || wait == WAIT_FAILED) return wait;
    MSG message;
    ::PeekMessageW(&message, nullptr /*any window*/, WM_USER, 0xFFFFFFFF, PM_NOREMOVE);
    if (::GetTickCount64() - start > timeout_) return WAIT_TIMEOUT;
    ::Sleep(1);
  }
}

bool CJbPipe::WriteBuffer(const BYTE* data, std::size_t length) {
  ThrowIfShutDown();
  if (data == nullptr) {
    LOG_ERROR("Nothing to write");
    return false;
  }
  if (!IsReady(State::kConnected)) throw PipeException("Invalid state in WriteBuffer");
  LOG_VERBOSE("Start writing");
  OVERLAPPED overlapped = MakeOverlapped();
  if (!::WriteFile(pipe_.Get(), data, static_cast<DWORD>(length), nullptr /*bytes written*/,
                   &overlapped) &&
      ::GetLastError() != ERROR_IO_PENDING) {
    return false;
  }
  const DWORD wait = WaitForIo();
  if (wait == WAIT_TIMEOUT || wait == WAIT_FAILED) {
    LOG_ERROR("WaitForSingleObject timeout or failed");
    ::CancelIo(pipe_.Get());
  }
  DWORD written = 0;
  const BOOL done = ::GetOverlappedResult(pipe_.Get(), &overlapped, &written, TRUE /*wait*/);
  LOG_VERBOSE("End writing");
  return done;
}

bool CJbPipe::WriteBuffer(const std::vector<BYTE>& bytes) {
  return WriteBuffer(bytes.empty() ? nullptr : bytes.data(), bytes.size());
}

bool CJbPipe::ReadString(std::wstring& text) {
  ThrowIfShutDown();
  text.clear();
  PipeMessage message;
  std::wstring_view read;
  if (!ReadString(message, read)) return false;
  text = read;
  return true;
}

bool CJbPipe::ReadString(PipeMessage& message, std::wstring_view& text) {
  ThrowIfShutDown();
  message = {};
  text = {};
  if (!ReadMessage(message)) {
    LOG_ERROR("ReadBuffer failed");
    return false;
  }
  std::size_t size = message.size;
  // An odd last byte is a unit of its own, with a zero above it. Only an even size fills the
  // buffer.
  if (size % sizeof(wchar_t) != 0) message.bytes[size++] = 0;
  const auto* const begin = reinterpret_cast<const wchar_t*>(message.bytes.get());
  text = {begin, base::FindZero(begin, begin + size / sizeof(wchar_t))};
  return true;
}

bool CJbPipe::WriteString(std::wstring_view text) {
  ThrowIfShutDown();
  const auto* data = text.empty() ? nullptr : reinterpret_cast<const BYTE*>(text.data());
  if (!WriteBuffer(data, text.size() * sizeof(wchar_t))) {
    LOG_ERROR("WriteBuffer failed");
    return false;
  }
  return true;
}

void CJbPipe::Shutdown(std::uint32_t timeout) {
  if (!server_) throw PipeException("Shutdown can be called only for server pipe");
  shutDown_ = true;
  // A connection to the pipe itself wakes a server that waits.
  CJbPipe knock;
  knock.SetTimeout(timeout);
  knock.SetPipeName(baseName_);
  knock.SetAppendProcessId(appendProcessId_);
  knock.ConnectToServerPipe(::GetCurrentProcessId());
}
