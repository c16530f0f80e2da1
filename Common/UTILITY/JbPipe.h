// Both processes. One end of a message-mode named pipe: the broker's process serves it, the
// client's process opens it. One message carries one whole text.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "internal/SafeObject.h"

// Misuse of an endpoint: wrong state, wrong role. Derives from nothing.
class PipeException {
 public:
  explicit PipeException(const char* message) : message_(message) {}
  const char* Message() const { return message_; }

 private:
  const char* message_;  // a literal
};

// The endpoint was shut down.
class PipeShutdownException {};

// One message as it was read.
struct PipeMessage {
  std::unique_ptr<BYTE[]> bytes;
  std::size_t size = 0;
  std::size_t capacity = 0;
};

// Time-outs are in milliseconds. Functions return true on success, and false when a system call
// fails. Such a failure is logged, except in DisconnectClient, in DuplicatePipeHandle, and for a
// write that fails at once. Misuse throws PipeException. Only one thread at a time may use an
// endpoint; a second one may call Shutdown.
class IJbPipe {
 public:
  // Server. Creates the pipe. While the name is taken it tries again, until the time-out.
  virtual bool CreateServerPipe(std::uint32_t retryTimeout, bool firstInstance) = 0;
  // Server. `timedOut` receives 1 when no client came in time, else 0; it may be null. INFINITE
  // waits without limit.
  virtual bool WaitClientToConnect(std::uint32_t timeout, std::uint32_t* timedOut) = 0;
  // Server. Waits until the client has read everything, then disconnects it.
  virtual bool DisconnectClient() = 0;
  // Client. Waits for a busy server until the endpoint's time-out, but not for a missing one.
  virtual bool ConnectToServerPipe(std::uint32_t serverProcessId) = 0;
  // Client. Takes ownership of an open pipe handle. Null and INVALID_HANDLE_VALUE are misuse.
  virtual bool AttachToServerPipe(HANDLE pipe) = 0;
  // Returns a handle that is valid in that process, or null.
  virtual HANDLE DuplicatePipeHandle(std::uint32_t processId) = 0;
  virtual void Close() = 0;
  virtual bool ServerPipeExists(std::uint32_t serverProcessId, std::int32_t timeout) = 0;
  virtual void SetPipeName(const std::wstring& baseName) = 0;
  virtual void SetAppendProcessId(bool append) = 0;
  virtual bool ReadString(std::wstring& text) = 0;
  virtual bool WriteString(std::wstring_view text) = 0;
  virtual bool ReadBuffer(std::vector<BYTE>& bytes) = 0;
  virtual bool WriteBuffer(const BYTE* data, std::size_t length) = 0;
  virtual bool WriteBuffer(const std::vector<BYTE>& bytes) = 0;
  // Limits each wait of a read, each wait of a write, and the tries to connect.
  virtual void SetTimeout(std::uint32_t timeout) = 0;
  // While a read waits, messages sent to the thread's windows are dispatched.
  virtual void SetPumpMessages(bool pump) = 0;
  // Server, callable from another thread. Wakes a server that waits for a client. Until Close,
  // CreateServerPipe, WaitClientToConnect and all reads and writes throw PipeShutdownException.
  virtual void Shutdown(std::uint32_t timeout) = 0;
  virtual ~IJbPipe() = default;
};

class CJbPipe final : public IJbPipe {
 public:
  CJbPipe() = default;
  CJbPipe(const CJbPipe&) = delete;
  CJbPipe& operator=(const CJbPipe&) = delete;

  bool CreateServerPipe(std::uint32_t retryTimeout, bool firstInstance) override;
  bool WaitClientToConnect(std::uint32_t timeout, std::uint32_t* timedOut) override;
  bool DisconnectClient() override;
  bool ConnectToServerPipe(std::uint32_t serverProcessId) override;
  bool AttachToServerPipe(HANDLE pipe) override;
  HANDLE DuplicatePipeHandle(std::uint32_t processId) override;
  void Close() override;
  bool ServerPipeExists(std::uint32_t serverProcessId, std::int32_t timeout) override;
  void SetPipeName(const std::wstring& baseName) override { baseName_ = baseName; }
  void SetAppendProcessId(bool append) override { appendProcessId_ = append; }
  bool ReadString(std::wstring& text) override;
  // The same without a copy: `text` points into `message`.
  bool ReadString(PipeMessage& message, std::wstring_view& text);
  bool WriteString(std::wstring_view text) override;
  bool ReadBuffer(std::vector<BYTE>& bytes) override;
  bool WriteBuffer(const BYTE* data, std::size_t length) override;
  bool WriteBuffer(const std::vector<BYTE>& bytes) override;
  void SetTimeout(std::uint32_t timeout) override { timeout_ = timeout; }
  void SetPumpMessages(bool pump) override { pumpMessages_ = pump; }
  void Shutdown(std::uint32_t timeout) override;
  ~CJbPipe() override;

 private:
  enum class State : std::uint32_t { kNone = 0, kListening = 1, kConnected = 2 };

  std::wstring BuildPipeName(std::uint32_t processId) const;
  bool IsUnused() const { return state_ == State::kNone && !ioEvent_ && !pipe_; }
  bool IsReady(State state) const { return state_ == state && ioEvent_ && pipe_; }
  void ThrowIfShutDown() const;

  bool CreateIoEvent();
  bool TryCreateInstance(const std::wstring& name, bool firstInstance);
  bool StartWait(OVERLAPPED& overlapped);
  void CancelWait(OVERLAPPED& overlapped);
  bool FinishWait(OVERLAPPED& overlapped, bool timedOut);
  bool GiveUpWait();
  DWORD OpenPipe(const std::wstring& name);
  OVERLAPPED MakeOverlapped() const;
  DWORD WaitForIo() const;
  DWORD PumpUntilIo() const;
  bool ReadMessage(PipeMessage& message);
  DWORD ReadPart(PipeMessage& message, OVERLAPPED& overlapped);

  std::uint32_t timeout_ = 3000;
  SafeHandle ioEvent_;  // manual reset
  SafeFile pipe_;
  State state_ = State::kNone;
  bool server_ = false;
  bool pumpMessages_ = false;
  std::wstring baseName_ = L"\\\\.\\pipe\\Tessel.Orbitane.JavaBridge.Pipe.Name_v8.0";
  bool appendProcessId_ = true;
  std::atomic<bool> shutDown_{false};
};
