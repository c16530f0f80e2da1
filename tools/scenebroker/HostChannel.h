// SceneBroker. The module's host channel, out of a module that is loaded at run time.
#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>

#include "TesselHost.h"
#include "TesselSilverlight.h"

class HostChannel {
 public:
  // Throws std::runtime_error when the module cannot be loaded or lacks the channel.
  explicit HostChannel(const std::wstring& modulePath);

  // Opens the channel. Throws std::runtime_error when it cannot be.
  void Open(SLUriScheme scheme, const std::wstring& address);

  // Hands each request to `answer` and sends what it gives, until Stop is called. Throws
  // std::runtime_error when the channel fails for good.
  void Serve(const std::function<std::wstring(const std::wstring&)>& answer);

  // From any thread, any number of times.
  void Stop();

 private:
  struct ModuleCloser {
    void operator()(HMODULE module) const { ::FreeLibrary(module); }
  };
  template <class Function>
  void Bind(Function& function, const char* name);

  // The code of ReadMessage; on 0 `request` holds the message.
  int Read(std::wstring& request);

  std::unique_ptr<std::remove_pointer_t<HMODULE>, ModuleCloser> module_;
  decltype(&InitComm) init_ = nullptr;
  decltype(&ReadMessage) read_ = nullptr;
  decltype(&WriteMessage) write_ = nullptr;
  decltype(&UninitComm) uninit_ = nullptr;
  std::atomic<bool> stopped_ = false;
  std::wstring buffer_ = std::wstring(1024, L'\0');
};
