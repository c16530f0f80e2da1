// Runs in the conductor (soak_conductor). One SceneBroker process, from its start to its end.
#pragma once

#include <string>

#include "Program.h"
#include "SharedState.h"

namespace soak {

class BrokerLife {
 public:
  // Starts the broker and waits until it serves. `options` is added to SceneBroker's command line.
  BrokerLife(DWORD run, int broker, const std::wstring& options);

  const std::wstring& PipeName() const { return pipeName_; }
  Life Facts() const { return life_; }

  void Kill() const;
  // Waits until the broker has ended by itself, and returns its exit code.
  DWORD AwaitEnd() const;
  void Suspend() const { program_.Suspend(); }
  void Resume() const { program_.Resume(); }
  // Closes the broker's window and waits until the broker has ended. Returns false if the broker
  // ends with an error, or if its summary shows objects that clients have not released. When this
  // function is called, no client may hold an object.
  bool CloseInOrder() const;

  // The number of faults that the broker has printed.
  long FaultCount() const;

 private:
  std::string OutputUntilReady() const;
  std::string Fact(const std::string& output, const std::string& key) const;

  Program program_;
  std::wstring pipeName_;
  Life life_ = {};
};

}  // namespace soak
