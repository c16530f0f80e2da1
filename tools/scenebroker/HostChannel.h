// SceneBroker. The module's host channel: requests in, answers out.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "TesselHost.h"
#include "TesselSilverlight.h"
#include "tools/scenebroker/HostModule.h"

class HostChannel {
 public:
  // Throws std::runtime_error when the module lacks the channel.
  explicit HostChannel(const HostModule& module);

  // Opens the channel. Throws std::runtime_error when it cannot be.
  void Open(SLUriScheme scheme, const std::wstring& address);

  // Hands each request to `answer`, sends what it gives and tells `sent` whether the client got
  // it, until Stop is called. Throws std::runtime_error when the channel fails for good.
  void Serve(const std::function<std::wstring(const std::wstring&)>& answer,
             const std::function<void(bool)>& sent);

  // From any thread, any number of times; true for the first one.
  bool Stop();

 private:
  // The code of ReadMessage; on 0 `request` holds the message.
  int Read(std::wstring& request);

  decltype(&InitComm) init_ = nullptr;
  decltype(&ReadMessage) read_ = nullptr;
  decltype(&WriteMessage) write_ = nullptr;
  decltype(&UninitComm) uninit_ = nullptr;
  std::atomic<bool> stopped_ = false;
  std::wstring buffer_ = std::wstring(1024, L'\0');
};
