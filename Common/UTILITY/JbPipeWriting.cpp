// Runs in the client and in the broker. The functions of an endpoint that write complete messages,
// as bytes or as text.
#include "UTILITY/JbPipe.h"
#include "logging/Log.h"

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

bool CJbPipe::WriteString(std::wstring_view text) {
  ThrowIfShutDown();
  const auto* data = text.empty() ? nullptr : reinterpret_cast<const BYTE*>(text.data());
  if (!WriteBuffer(data, text.size() * sizeof(wchar_t))) {
    LOG_ERROR("WriteBuffer failed");
    return false;
  }
  return true;
}
