// One life of a scene broker.
#pragma once

#include <string>

#include "Program.h"
#include "SharedState.h"

namespace soak {

class BrokerLife {
 public:
  // Waits until it serves.
  BrokerLife(DWORD run, int broker);

  const std::wstring& PipeName() const { return pipeName_; }
  Life Facts() const { return life_; }

  void Kill() const;
  void Suspend() const { program_.Suspend(); }
  void Resume() const { program_.Resume(); }
  // False if it did not end well or objects were not released. No client may hold one.
  bool CloseInOrder() const;

 private:
  std::string Fact(const std::string& output, const std::string& key) const;

  Program program_;
  std::wstring pipeName_;
  Life life_ = {};
};

}  // namespace soak
