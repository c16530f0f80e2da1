// Part of tessel. Stands between clients and a broker, and records the conversation.
#pragma once

#include <string>

#include "tools/inspector/InspectorOptions.h"
#include "tools/pipe/ServerPipe.h"
#include "tools/recording/Recorder.h"

// Throws std::runtime_error if the tap's pipe or the recording cannot be created, and when the
// recording cannot be written.
class Tap {
 public:
  // The tap serves `clientPipe`, and asks the broker that serves `brokerPipe`. The recording says
  // that it was made with the scheme `clientScheme`.
  Tap(const InspectorOptions& options, const std::string& clientScheme,
      const std::wstring& clientPipe, const std::wstring& brokerPipe);

  // Runs until Ctrl-C. Prints each exchange.
  void Run();

 private:
  std::wstring Answer(const std::wstring& request);
  std::wstring Pass(const std::wstring& request);
  void Begin(const std::wstring& title);
  void PrintExchange(const tools::Exchange& exchange) const;

  const InspectorOptions& options_;
  const std::string clientScheme_;
  const std::wstring clientPipe_, brokerPipe_;
  tools::ServerPipe server_;
  tools::Recorder recorder_;
  bool hasBegun_ = false;
  std::string failure_;  // why the broker did not answer the last request
};
