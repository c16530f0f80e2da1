// Makes the same system calls, in the same order, that the module (the DLL) makes for one element
// call to a running broker, and nothing else. Decodes nothing and logs nothing.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdlib>
#include <string>

#include "ResidentServer.h"
#include "wire/Timeouts.h"

namespace bench {

// What a client does while all instances of the pipe are busy.
enum class WhileBusy {
  kWait,   // waits for a free instance of the pipe, as the module does
  kSleep,  // sleeps 50 ms before it tries again, as the module did in the past
};

class BareCall {
 public:
  BareCall(const std::wstring& pipeName, const std::wstring& request,
           WhileBusy whileBusy = WhileBusy::kWait)
      : name_(pipeName.c_str()),
        request_(request.data()),
        requestBytes_(static_cast<DWORD>(request.size() * sizeof(wchar_t))),
        whileBusy_(whileBusy) {}

  // Makes the whole call. Returns the size of the answer in bytes.
  std::size_t Run() {
    Probe();
    Connect();
    Write();
    Read();
    Close();
    return total_;
  }

  // The steps of the call.
  void Probe() {
    ::GetTickCount64();
    if (!::WaitNamedPipeW(name_, 1 /*ms*/) && ::GetLastError() != ERROR_SEM_TIMEOUT)
      Fail("no pipe");
  }

  void Connect() {
    event_ = ::CreateEventW(nullptr /*security*/, TRUE /*manual reset*/, TRUE /*signalled*/,
                            nullptr /*name*/);
    ::GetTickCount64();
    for (;;) {
      pipe_ =
          ::CreateFileW(name_, GENERIC_READ | GENERIC_WRITE, 0 /*sharing*/, nullptr /*security*/,
                        OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr /*template*/);
      if (pipe_ != INVALID_HANDLE_VALUE) break;
      if (::GetLastError() != ERROR_PIPE_BUSY) Fail("the pipe does not open");
      if (whileBusy_ == WhileBusy::kSleep || !WaitForInstance()) ::Sleep(50);
    }
    DWORD mode = PIPE_READMODE_MESSAGE;
    ::SetNamedPipeHandleState(pipe_, &mode, nullptr /*collection*/, nullptr /*collection*/);
  }

  void Write() {
    OVERLAPPED overlapped = MakeOverlapped();
    ::WriteFile(pipe_, request_, requestBytes_, nullptr /*bytes written*/, &overlapped);
    if (!Finish(overlapped)) Fail("the request is not written");
  }

  void Read() {
    capacity_ = 256;
    total_ = 0;
    auto* buffer = static_cast<char*>(std::malloc(capacity_));
    OVERLAPPED overlapped = MakeOverlapped();
    for (;;) {
      ::ReadFile(pipe_, buffer + total_, static_cast<DWORD>(capacity_ - total_),
                 nullptr /*bytes read*/, &overlapped);
      const bool whole = Finish(overlapped);
      total_ += transferred_;
      if (whole) break;
      if (::GetLastError() != ERROR_MORE_DATA) Fail("the answer is not read");
      capacity_ *= 16;
      buffer = static_cast<char*>(std::realloc(buffer, capacity_));
    }
    std::free(buffer);
  }

  void Close() {
    ::CloseHandle(event_);
    ::CloseHandle(pipe_);
  }

 private:
  bool WaitForInstance() const {
    return ::WaitNamedPipeW(name_, 50 /*ms*/) || ::GetLastError() == ERROR_SEM_TIMEOUT;
  }

  OVERLAPPED MakeOverlapped() const {
    OVERLAPPED overlapped = {};
    overlapped.hEvent = event_;
    return overlapped;
  }
  bool Finish(OVERLAPPED& overlapped) {
    ::WaitForSingleObject(event_, wire::kPipeTimeoutMilliseconds);
    return ::GetOverlappedResult(pipe_, &overlapped, &transferred_, TRUE /*wait*/);
  }

  const wchar_t* const name_;
  const wchar_t* const request_;
  const DWORD requestBytes_;
  const WhileBusy whileBusy_;
  HANDLE event_ = nullptr;
  HANDLE pipe_ = nullptr;
  DWORD transferred_ = 0;
  std::size_t capacity_ = 0;
  std::size_t total_ = 0;
};

}  // namespace bench
