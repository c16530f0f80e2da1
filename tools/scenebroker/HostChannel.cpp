#include "tools/scenebroker/HostChannel.h"

#include <stdexcept>

#include "tools/shared/ConsoleText.h"

namespace {

// What a client did, or did not do, and no reason to stop.
bool IsPassing(int code) {
  return code == SL_CHANNEL_CANNOT_READ || code == SL_CHANNEL_CANNOT_WRITE ||
         code == SL_CHANNEL_NO_CLIENT;
}

}  // namespace

HostChannel::HostChannel(const std::wstring& modulePath) {
  module_.reset(::LoadLibraryW(modulePath.c_str()));
  if (!module_) {
    throw std::runtime_error("cannot load " + tools::Narrow(modulePath) + " (error " +
                             std::to_string(::GetLastError()) +
                             "); put it beside the broker, or name it with --dll");
  }
  Bind(init_, "InitComm");
  Bind(read_, "ReadMessage");
  Bind(write_, "WriteMessage");
  Bind(uninit_, "UninitComm");
}

template <class Function>
void HostChannel::Bind(Function& function, const char* name) {
  auto* const address = reinterpret_cast<void*>(::GetProcAddress(module_.get(), name));
  if (address == nullptr) {
    throw std::runtime_error(std::string("the loaded module has no ") + name +
                             "; name TesselSLB_x64.dll with --dll");
  }
  function = reinterpret_cast<Function>(address);
}

void HostChannel::Open(SLUriScheme scheme, const std::wstring& address) {
  const int code = init_(scheme, INFINITE, address.c_str());
  if (code == SL_CHANNEL_NOT_CREATED) {
    throw std::runtime_error(
        "cannot create the pipe (code -4): another broker serves it; stop that one, or choose "
        "another --scheme");
  }
  if (code != SL_CHANNEL_SUCCESS) {
    throw std::runtime_error("cannot open the channel (code " + std::to_string(code) +
                             "); read the module's log");
  }
}

void HostChannel::Serve(const std::function<std::wstring(const std::wstring&)>& answer) {
  std::wstring request;
  while (!stopped_) {
    int code = Read(request);
    if (code == SL_CHANNEL_SUCCESS) code = write_(answer(request).c_str());
    if (code != SL_CHANNEL_SUCCESS && !IsPassing(code) && !stopped_) {
      throw std::runtime_error("the channel failed (code " + std::to_string(code) +
                               "); read the module's log and start the broker again");
    }
  }
}

void HostChannel::Stop() {
  if (!stopped_.exchange(true)) uninit_();
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
