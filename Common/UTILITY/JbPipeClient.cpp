// Runs in the client and in the broker. The client role of an endpoint: finds and opens the pipe
// that a server has created. The broker's process uses this role in Shutdown.
#include "UTILITY/JbPipe.h"
#include "logging/Log.h"

namespace {

constexpr DWORD kBusyWaitMilliseconds = 50;  // the longest wait for a free instance of the pipe
constexpr DWORD kConnectRetryMilliseconds = 50;
constexpr DWORD kProbeWaitMilliseconds = 1;
constexpr DWORD kProbeRetryMilliseconds = 5;

// Calls `attempt` until it returns true, with a call of `pause` between two attempts. Returns false
// if an attempt fails after more than `timeout` milliseconds. A negative time-out allows one
// attempt.
template <class Attempt, class Pause>
bool Poll(std::int64_t timeout, Attempt attempt, Pause pause) {
  const std::uint64_t start = ::GetTickCount64();
  for (;;) {
    if (attempt()) return true;
    if (static_cast<std::int64_t>(::GetTickCount64() - start) > timeout) return false;
    pause();
  }
}

// Returns true if the pipe exists. Waits up to `wait` milliseconds for a free instance, and also
// returns true if all instances stay busy.
bool InstanceExists(const std::wstring& name, DWORD wait) {
  return ::WaitNamedPipeW(name.c_str(), wait) || ::GetLastError() == ERROR_SEM_TIMEOUT;
}

// Waits between two attempts to open the pipe. After ERROR_PIPE_BUSY the wait ends as soon as an
// instance is free.
void PauseConnecting(const std::wstring& name, DWORD error) {
  if (error == ERROR_PIPE_BUSY && InstanceExists(name, kBusyWaitMilliseconds)) return;
  ::Sleep(kConnectRetryMilliseconds);
}

void LogOpenFailure(DWORD error) {
  if (error == ERROR_ACCESS_DENIED) {
    LOG_ERROR("Cannot open server pipe: E_ACCESSDENIED");
  } else if (error == ERROR_FILE_NOT_FOUND) {
    LOG_ERROR("Cannot open server pipe: ERROR_FILE_NOT_FOUND");
  } else {
    LOG_ERROR("Cannot open server pipe! Error = %d", error);
  }
}

}  // namespace

bool CJbPipe::ConnectToServerPipe(std::uint32_t serverProcessId) {
  if (!IsUnused()) throw PipeException("Invalid state in CreateServerPipe");
  LOG_VERBOSE("Start ConnectToServerPipe");
  if (!CreateIoEvent()) {
    LOG_ERROR("Cannot create event");
    return false;
  }
  if (const DWORD error = OpenPipe(BuildPipeName(serverProcessId)); error != ERROR_SUCCESS) {
    LogOpenFailure(error);
    return false;
  }
  DWORD mode = PIPE_READMODE_MESSAGE;
  if (!::SetNamedPipeHandleState(pipe_.Get(), &mode, nullptr /*collection count*/,
                                 nullptr /*collection time-out*/)) {
    LOG_ERROR("SetNamedPipeHandleState failed");
    Close();
    return false;
  }
  state_ = State::kConnected;
  LOG_VERBOSE("End ConnectToServerPipe");
  return true;
}

// Opens the pipe. Returns ERROR_SUCCESS, or the error of the last attempt. Makes no further attempt
// if access is denied or there is no such pipe.
DWORD CJbPipe::OpenPipe(const std::wstring& name) {
  DWORD error = ERROR_SUCCESS;
  const auto isDecided = [&] {
    pipe_.Reset(::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0 /*sharing*/,
                              nullptr /*security*/, OPEN_EXISTING, FILE_FLAG_OVERLAPPED,
                              nullptr /*template*/));
    error = pipe_ ? ERROR_SUCCESS : ::GetLastError();
    return pipe_ || error == ERROR_ACCESS_DENIED || error == ERROR_FILE_NOT_FOUND;
  };
  Poll(timeout_, isDecided, [&] { PauseConnecting(name, error); });
  return error;
}

bool CJbPipe::AttachToServerPipe(HANDLE pipe) {
  if (pipe == nullptr || pipe == INVALID_HANDLE_VALUE) throw PipeException("Invalid pipe handle");
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

bool CJbPipe::ServerPipeExists(std::uint32_t serverProcessId, std::int32_t timeout) {
  if (!IsUnused() || server_) throw PipeException("Invalid state in CreateServerPipe");
  LOG_VERBOSE("Start ServerPipeExists");
  const std::wstring name = BuildPipeName(serverProcessId);
  const bool exists = Poll(
      timeout, [&] { return InstanceExists(name, kProbeWaitMilliseconds); },
      [] { ::Sleep(kProbeRetryMilliseconds); });
  if (!exists) LOG_VERBOSE("Timeout");
  LOG_VERBOSE("End ServerPipeExists");
  return exists;
}
