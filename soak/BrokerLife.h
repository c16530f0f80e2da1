// Runs in the conductor (soak_conductor). One SceneBroker process, from its start to its end.
#pragma once

#include <string>

#include "Program.h"
#include "SharedState.h"

namespace soak {

class BrokerLife {
 public:
  // Starts the broker and waits until it serves.
  BrokerLife(DWORD run, int broker);

  const std::wstring& PipeName() const { return pipeName_; }
  Life Facts() const { return life_; }

  void Kill() const;
  void Suspend() const { program_.Suspend(); }
  void Resume() const { program_.Resume(); }
  // Closes the broker's window and waits until the broker has ended. Returns false if the broker
  // ends with an error, or if its summary shows objects that clients have not released. When this
  // function is called, no client may hold an object.
  bool CloseInOrder() const;

 private:
  std::string Fact(const std::string& output, const std::string& key) const;

  Program program_;
  std::wstring pipeName_;
  Life life_ = {};
};

}  // namespace soak
