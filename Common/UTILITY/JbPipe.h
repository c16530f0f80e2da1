// Runs in the client and in the broker. One end (endpoint) of a named pipe in message mode. The
// broker's process creates the pipe, and the client's process opens it. Each message contains one
// complete text.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "internal/SafeObject.h"

// Thrown when an endpoint is misused, for example in the wrong state or role. Has no base class.
class PipeException {
 public:
  explicit PipeException(const char* message) : message_(message) {}
  const char* Message() const { return message_; }

 private:
  const char* message_;  // a string literal, so nobody frees it
};

// Thrown by the functions of an endpoint after Shutdown.
class PipeShutdownException {};

// The bytes of a message, as read from the pipe.
struct PipeMessage {
  std::unique_ptr<BYTE[]> bytes;
  std::size_t size = 0;
  std::size_t capacity = 0;
};

// Time-outs are in milliseconds. Functions return true on success, and false if a system call
// fails. The failure is logged, except in DisconnectClient, in DuplicatePipeHandle, and when a
// write fails at once. Misuse throws PipeException. Only one thread at a time may use an endpoint,
// but a second thread may call Shutdown. Parameters with the name `serverProcessId` matter only
// after SetAppendProcessId(true), the default.
class IJbPipe {
 public:
  // Server only. Creates the pipe. While the system returns ERROR_PIPE_BUSY (the pipe already has
  // as many instances as it allows), tries again until the time-out. If `firstInstance` is true,
  // fails if the pipe already exists.
  virtual bool CreateServerPipe(std::uint32_t retryTimeout, bool firstInstance) = 0;
  // Server only. Waits until a client connects. A time-out of INFINITE waits without limit.
  // `timedOut` may be null. Otherwise `*timedOut` receives 1 if no client connected in time, else
  // 0.
  virtual bool WaitClientToConnect(std::uint32_t timeout, std::uint32_t* timedOut) = 0;
  // Server only. Waits until the client has read everything that was written, then disconnects the
  // client.
  virtual bool DisconnectClient() = 0;
  // Client only. Opens the pipe. If the pipe is busy, tries again until the endpoint's time-out. If
  // there is no such pipe, fails at once.
  virtual bool ConnectToServerPipe(std::uint32_t serverProcessId) = 0;
  // Client only. Takes ownership of an open pipe handle. Throws PipeException for null and for
  // INVALID_HANDLE_VALUE.
  virtual bool AttachToServerPipe(HANDLE pipe) = 0;
  // Duplicates the pipe's handle into the process `processId`. Returns null on failure.
  virtual HANDLE DuplicatePipeHandle(std::uint32_t processId) = 0;
  virtual void Close() = 0;
  // Returns true if the pipe exists or appears within the time-out.
  virtual bool ServerPipeExists(std::uint32_t serverProcessId, std::int32_t timeout) = 0;
  virtual void SetPipeName(const std::wstring& baseName) = 0;
  // If `append` is true, the pipe's name is the base name followed by the server's process id.
  virtual void SetAppendProcessId(bool append) = 0;
  virtual bool ReadString(std::wstring& text) = 0;
  virtual bool WriteString(std::wstring_view text) = 0;
  virtual bool ReadBuffer(std::vector<BYTE>& bytes) = 0;
  virtual bool WriteBuffer(const BYTE* data, std::size_t length) = 0;
  virtual bool WriteBuffer(const std::vector<BYTE>& bytes) = 0;
  // `timeout` limits each single wait in a read or a write, and how long ConnectToServerPipe tries.
  virtual void SetTimeout(std::uint32_t timeout) = 0;
  // If `pump` is true, a read that waits lets the windows of its thread receive sent messages.
  virtual void SetPumpMessages(bool pump) = 0;
  // Server only. Wakes a thread that waits in WaitClientToConnect, by connecting to the pipe.
  // `timeout` limits the attempt to connect. After Shutdown, some functions throw
  // PipeShutdownException until Close is called: CreateServerPipe, WaitClientToConnect, and all
  // reads and writes.
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
  // Reads a text without copying it: `text` points into `message`.
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
  SafeHandle ioEvent_;  // a manual-reset event
  SafeFile pipe_;
  State state_ = State::kNone;
  bool server_ = false;
  bool pumpMessages_ = false;
  std::wstring baseName_ = L"\\\\.\\pipe\\Tessel.Orbitane.JavaBridge.Pipe.Name_v8.0";
  bool appendProcessId_ = true;
  std::atomic<bool> shutDown_{false};
};
