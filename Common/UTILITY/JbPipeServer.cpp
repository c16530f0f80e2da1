// Runs in the broker. The server role of an endpoint: creates an instance of the pipe and serves
// one client after the other.
#include "UTILITY/JbPipe.h"
#include "UTILITY/TimedRetry.h"
#include "UTILITY/VistaSpecific.h"
#include "logging/Log.h"

namespace {

constexpr DWORD kTakenNameMilliseconds = 200;  // the pause while the pipe's name is in use
constexpr DWORD kDefaultTimeoutMilliseconds = 20000;

}  // namespace

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

// Returns true if no further attempt is needed: the pipe is created, or cannot be created at all.
bool CJbPipe::TryCreateInstance(const std::wstring& name, bool firstInstance) {
  const DWORD openMode = PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED |
                         (firstInstance ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0);
  pipe_.Reset(::CreateNamedPipeW(
      name.c_str(), openMode, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT,
      firstInstance ? 1 : 0 /*most instances*/, 0 /*out buffer*/, 0 /*in buffer*/,
      kDefaultTimeoutMilliseconds, GetPipeSecurityAttributes()));
  if (pipe_) return true;
  const DWORD error = ::GetLastError();
  if (error != ERROR_PIPE_BUSY) {
    LOG_ERROR("CreateServerPipe: cannot create pipe! errCode=%d", error);
    return true;
  }
  LOG_WARNING("CreateServerPipe: sPipeName='%ls' is busy; retrying...", name.c_str());
  ::Sleep(kTakenNameMilliseconds);
  return false;
}

bool CJbPipe::WaitClientToConnect(std::uint32_t timeout, std::uint32_t* timedOut) {
  if (!server_) throw PipeException("Cannot call WaitClientToConnect for client pipe");
  ThrowIfShutDown();
  if (!IsReady(State::kListening)) throw PipeException("Invalid state in WaitClientToConnect");
  LOG_VERBOSE("Wait client to connect");
  if (timedOut != nullptr) *timedOut = 0;

  OVERLAPPED overlapped = MakeOverlapped();
  if (!StartWait(overlapped)) return GiveUpWait();
  const bool expired =
      timeout != INFINITE && ::WaitForSingleObject(ioEvent_.Get(), timeout) == WAIT_TIMEOUT;
  if (expired) ::CancelIo(pipe_.Get());
  if (timedOut != nullptr) *timedOut = expired ? 1 : 0;
  return FinishWait(overlapped, expired);
}

bool CJbPipe::StartWait(OVERLAPPED& overlapped) {
  const BOOL connected = ::ConnectNamedPipe(pipe_.Get(), &overlapped);
  const DWORD error = connected ? ERROR_SUCCESS : ::GetLastError();
  switch (error) {
    case ERROR_SUCCESS:
    case ERROR_PIPE_LISTENING:
      return true;
    case ERROR_IO_PENDING:
      // Shutdown ends this wait by a connection to the pipe. But if Shutdown has already tried to
      // connect, before the call of ConnectNamedPipe, nothing would end the wait. So cancel it
      // here.
      if (!shutDown_) return true;
      CancelWait(overlapped);
      return false;
    case ERROR_PIPE_CONNECTED:
      LOG_VERBOSE("Pipe client already connected");
      ::SetEvent(ioEvent_.Get());
      return true;
    case ERROR_NO_DATA:
      LOG_VERBOSE("The pipe is being closed; continue");
      // A client connected and left again. Without DisconnectNamedPipe, ConnectNamedPipe would
      // return this error for ever.
      ::DisconnectNamedPipe(pipe_.Get());
      return false;
    default:
      LOG_ERROR("ConnectNamedPipe failed with last err %u", error);
      return false;
  }
}

void CJbPipe::CancelWait(OVERLAPPED& overlapped) {
  DWORD none = 0;
  ::CancelIo(pipe_.Get());
  ::GetOverlappedResult(pipe_.Get(), &overlapped, &none, TRUE /*wait*/);
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

// Called when a wait for a client has failed for any reason. Throws PipeShutdownException if the
// endpoint is shut down. Otherwise returns false.
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

void CJbPipe::Shutdown(std::uint32_t timeout) {
  if (!server_) throw PipeException("Shutdown can be called only for server pipe");
  shutDown_ = true;
  // A connection to this endpoint's own pipe wakes a thread that waits for a client.
  CJbPipe knock;
  knock.SetTimeout(timeout);
  knock.SetPipeName(baseName_);
  knock.SetAppendProcessId(appendProcessId_);
  knock.ConnectToServerPipe(::GetCurrentProcessId());
}
