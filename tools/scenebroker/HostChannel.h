// Part of SceneBroker. The module's host channel: reads requests and writes answers.
#pragma once

#include <atomic>
#include <string>

#include "TesselHost.h"
#include "TesselSilverlight.h"
#include "tools/pipe/RequestServer.h"
#include "tools/scenebroker/HostModule.h"

class HostChannel : public tools::RequestServer {
 public:
  // Throws std::runtime_error if the module does not export the channel's functions.
  explicit HostChannel(const HostModule& module);

  // Throws std::runtime_error if the channel cannot be opened.
  void Open(SLUriScheme scheme, const std::wstring& address);

  // Throws std::runtime_error if the channel fails and cannot recover.
  void Serve(const AnswerFunction& answer, const SentFunction& sent) override;
  bool Stop() override;

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
