// Runs in the client and in the broker. The functions of an endpoint that read complete messages,
// as bytes or as text.
#include <algorithm>
#include <new>

#include "UTILITY/JbPipe.h"
#include "logging/Log.h"
#include "memory/ZeroSearch.h"

namespace {

constexpr std::size_t kFirstReadSize = 256;
static_assert(kFirstReadSize % sizeof(wchar_t) == 0,
              "ReadString may append a byte to a message of odd size");
// A buffer below this size grows by the factor 16, a larger buffer by the factor 2.
constexpr std::size_t kLargeBuffer = 0x10000000;
constexpr DWORD kPumpMilliseconds = 1;

// Calls `allocate`, which allocates `bytes` bytes. Returns false and logs an error if memory is
// exhausted.
template <class Allocate>
bool TryToAllocate(std::size_t bytes, Allocate allocate) {
  try {
    allocate();
    return true;
  } catch (const std::bad_alloc&) {
    LOG_ERROR("Failed to allocate %zu bytes", bytes);
    return false;
  }
}

bool GrowBuffer(PipeMessage& message, std::size_t capacity) {
  return TryToAllocate(capacity, [&] {
    // The new buffer is not initialised, because most of a large buffer is never used.
    auto bytes = std::make_unique_for_overwrite<BYTE[]>(capacity);
    std::copy_n(message.bytes.get(), message.size, bytes.get());
    message.bytes = std::move(bytes);
    message.capacity = capacity;
  });
}

}  // namespace

bool CJbPipe::ReadBuffer(std::vector<BYTE>& bytes) {
  ThrowIfShutDown();
  bytes.clear();
  PipeMessage message;
  if (!ReadMessage(message)) return false;
  const BYTE* const begin = message.bytes.get();
  return TryToAllocate(message.size, [&] { bytes.assign(begin, begin + message.size); });
}

bool CJbPipe::ReadMessage(PipeMessage& message) {
  if (!IsReady(State::kConnected)) throw PipeException("Invalid state in ReadBuffer");
  LOG_VERBOSE("Start reading");
  if (!GrowBuffer(message, kFirstReadSize)) return false;
  OVERLAPPED overlapped = MakeOverlapped();
  for (;;) {
    const DWORD error = ReadPart(message, overlapped);
    if (error == ERROR_SUCCESS) break;
    if (error != ERROR_MORE_DATA) return false;
    const std::size_t factor = message.capacity < kLargeBuffer ? 16 : 2;
    if (!GrowBuffer(message, message.capacity * factor)) return false;
  }
  LOG_VERBOSE("End reading");
  return true;
}

// Reads as much of the message as fits into the buffer. Returns ERROR_MORE_DATA if the message is
// longer. Logs all other errors.
DWORD CJbPipe::ReadPart(PipeMessage& message, OVERLAPPED& overlapped) {
  const BOOL started = ::ReadFile(pipe_.Get(), message.bytes.get() + message.size,
                                  static_cast<DWORD>(message.capacity - message.size),
                                  nullptr /*bytes read*/, &overlapped);
  const DWORD startError = started ? ERROR_SUCCESS : ::GetLastError();
  if (!started && startError != ERROR_IO_PENDING && startError != ERROR_MORE_DATA) {
    LOG_ERROR("ReadFile failed (%i)", startError);
    return startError;
  }
  const DWORD wait = pumpMessages_ ? PumpUntilIo() : WaitForIo();
  if (wait == WAIT_TIMEOUT || wait == WAIT_FAILED) {
    LOG_ERROR("WaitForSingleObject timeout or failed (%i)", wait);
    ::CancelIo(pipe_.Get());
  }
  DWORD read = 0;
  const BOOL whole = ::GetOverlappedResult(pipe_.Get(), &overlapped, &read, TRUE /*wait*/);
  const DWORD error = whole ? ERROR_SUCCESS : ::GetLastError();
  message.size += read;
  if (!whole && error != ERROR_MORE_DATA) LOG_ERROR("GetOverlappedResult failed");
  return error;
}

DWORD CJbPipe::PumpUntilIo() const {
  const std::uint64_t start = ::GetTickCount64();
  for (;;) {
    const DWORD wait = ::WaitForSingleObject(ioEvent_.Get(), kPumpMilliseconds);
    if (wait == WAIT_OBJECT_0 || wait == WAIT_FAILED) return wait;
    MSG message;
    ::PeekMessageW(&message, nullptr /*any window*/, WM_USER, 0xFFFFFFFF, PM_NOREMOVE);
    if (::GetTickCount64() - start > timeout_) return WAIT_TIMEOUT;
    ::Sleep(kPumpMilliseconds);
  }
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
  // If the size is odd, append a zero as the high byte of the last UTF-16 unit. The buffer has room
  // for this byte, because all capacities are even.
  if (size % sizeof(wchar_t) != 0) message.bytes[size++] = 0;
  const auto* const begin = reinterpret_cast<const wchar_t*>(message.bytes.get());
  text = {begin, base::FindZero(begin, begin + size / sizeof(wchar_t))};
  return true;
}
