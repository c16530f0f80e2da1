#include "tools/scenebroker/HostChannel.h"

#include <stdexcept>

namespace {

// Without a pause, Serve would use a whole processor when each read fails immediately.
constexpr DWORD kPauseAfterFailureMilliseconds = 10;

// Returns whether a client caused the failure. If so, the channel can still serve other clients.
bool IsCausedByClient(int code) {
  return code == SL_CHANNEL_CANNOT_READ || code == SL_CHANNEL_CANNOT_WRITE ||
         code == SL_CHANNEL_NO_CLIENT;
}

}  // namespace

HostChannel::HostChannel(const HostModule& module) {
  module.Bind(init_, "InitComm");
  module.Bind(read_, "ReadMessage");
  module.Bind(write_, "WriteMessage");
  module.Bind(uninit_, "UninitComm");
}

void HostChannel::Open(SLUriScheme scheme, const std::wstring& address) {
  const int code = init_(scheme, INFINITE, address.c_str());
  if (code == SL_CHANNEL_NOT_CREATED) {
    throw std::runtime_error(
        "cannot create the pipe (code -4): another program serves it; tessel doctor names it; "
        "end that program, or choose another --scheme");
  }
  if (code != SL_CHANNEL_SUCCESS) {
    throw std::runtime_error("cannot open the channel (code " + std::to_string(code) +
                             "); read the module's log");
  }
}

void HostChannel::Serve(const AnswerFunction& answer, const SentFunction& sent) {
  std::wstring request;
  while (!stopped_) {
    int code = Read(request);
    if (code == SL_CHANNEL_SUCCESS) {
      code = write_(answer(request).c_str());
      sent(code == SL_CHANNEL_SUCCESS);
    }
    if (code == SL_CHANNEL_SUCCESS || stopped_) continue;
    if (!IsCausedByClient(code)) {
      throw std::runtime_error("the channel failed (code " + std::to_string(code) +
                               "); read the module's log and start the broker again");
    }
    ::Sleep(kPauseAfterFailureMilliseconds);
  }
}

bool HostChannel::Stop() {
  if (stopped_.exchange(true)) return false;
  uninit_();
  return true;
}

int HostChannel::Read(std::wstring& request) {
  for (;;) {
    auto size = static_cast<unsigned long>(buffer_.size());
    const int code = read_(buffer_.data(), &size);
    if (code == SL_CHANNEL_SUCCESS) request = buffer_.c_str();
    if (code != SL_CHANNEL_BUFFER_TOO_SMALL) return code;
    buffer_.resize(size);
  }
}
