// Part of SceneBroker. The module's host channel: reads requests and writes answers.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "TesselHost.h"
#include "TesselSilverlight.h"
#include "tools/scenebroker/HostModule.h"

class HostChannel {
 public:
  // Throws std::runtime_error if the module does not export the channel's functions.
  explicit HostChannel(const HostModule& module);

  // Throws std::runtime_error if the channel cannot be opened.
  void Open(SLUriScheme scheme, const std::wstring& address);

  // Runs until Stop is called. Passes each request to `answer`, and writes the text that `answer`
  // returns. Then calls `sent`: with true if the client received the text, otherwise with false.
  // Throws std::runtime_error if the channel fails and cannot recover.
  void Serve(const std::function<std::wstring(const std::wstring&)>& answer,
             const std::function<void(bool)>& sent);

  // Closes the channel, which ends Serve. May be called from any thread, any number of times.
  // Returns true for the first call, and false for later calls, which do nothing.
  bool Stop();

 private:
  // Returns the code of ReadMessage. If the code is 0, `request` holds the message.
  int Read(std::wstring& request);

  decltype(&InitComm) init_ = nullptr;
  decltype(&ReadMessage) read_ = nullptr;
  decltype(&WriteMessage) write_ = nullptr;
  decltype(&UninitComm) uninit_ = nullptr;
  std::atomic<bool> stopped_ = false;
  std::wstring buffer_ = std::wstring(1024, L'\0');
};
