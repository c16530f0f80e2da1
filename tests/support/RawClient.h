// A client that opens a broker's pipe itself, without the module.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "wire/Addresses.h"

// The pipe of the tailored broker for content without an address. For other content, the name
// continues with the scheme and the host of the address, in which most characters except for
// letters and digits are replaced by underscores.
inline const std::wstring kTailoredPipe = wire::PipeName(SL_TAILORED_URI, L"");

class RawClient {
 public:
  // Tries to connect for up to 5 s.
  explicit RawClient(const std::wstring& pipeName) {
    for (int i = 0; i < 1000 && pipe_ == INVALID_HANDLE_VALUE; ++i) {
      if (i != 0) ::Sleep(5);
      pipe_ = ::CreateFileW(pipeName.c_str(), GENERIC_READ | GENERIC_WRITE, 0 /*sharing*/, nullptr,
                            OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
    }
  }
  ~RawClient() { Leave(); }

  void Leave() {
    if (pipe_ == INVALID_HANDLE_VALUE) return;
    ::CancelIo(pipe_);
    if (!text_.empty()) Finish(sending_);
    ::CloseHandle(pipe_);
    pipe_ = INVALID_HANDLE_VALUE;
  }

  // Starts to send and returns at once. The pipe has no buffer, so the server receives the message
  // when it reads. Call this function once for each client.
  void Send(const std::wstring& text) {
    text_ = text;
    const auto size = static_cast<DWORD>(text_.size() * sizeof(wchar_t));
    const bool started = ::WriteFile(pipe_, text_.data(), size, nullptr, &sending_) ||
                         ::GetLastError() == ERROR_IO_PENDING;
    if (!started) text_.clear();  // Leave() must not wait for a write that has not started
  }

  // Returns an empty text if the server disconnects.
  std::wstring Receive() {
    wchar_t text[2000] = {};
    OVERLAPPED receiving = {0, 0, {{0, 0}}, received_.get()};
    const bool started = ::ReadFile(pipe_, text, sizeof(text), nullptr, &receiving) ||
                         ::GetLastError() == ERROR_IO_PENDING;
    return std::wstring(text, started ? Finish(receiving) / sizeof(wchar_t) : 0);
  }

 private:
  using Event = std::unique_ptr<void, decltype(&::CloseHandle)>;
  static Event MakeEvent() {
    return {::CreateEventW(nullptr, TRUE, FALSE, nullptr), ::CloseHandle};
  }

  DWORD Finish(OVERLAPPED& overlapped) {
    DWORD bytes = 0;
    return ::GetOverlappedResult(pipe_, &overlapped, &bytes, TRUE /*wait*/) ? bytes : 0;
  }

  const Event sent_ = MakeEvent(), received_ = MakeEvent();
  HANDLE pipe_ = INVALID_HANDLE_VALUE;
  OVERLAPPED sending_ = {0, 0, {{0, 0}}, sent_.get()};
  std::wstring text_;
};
