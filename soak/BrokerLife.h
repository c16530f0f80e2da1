// One life of a scene broker, and what takes its place on the pipe between two lives.
#pragma once

#include <memory>
#include <random>
#include <string>

#include "Program.h"
#include "SharedState.h"

namespace soak {

class BrokerLife {
 public:
  // Waits until it serves, then tells the clients its process and window.
  BrokerLife(SharedState& state, DWORD run, int broker);

  void Kill() const { program_.Kill(); }
  // Closes it in order; false if it did not end well or objects were not released. While it ends no
  // client may hold one.
  bool CloseInOrder() const;
  const std::wstring& PipeName() const { return pipeName_; }

 private:
  std::string Fact(const std::string& output, const std::string& key) const;

  Program program_;
  std::wstring pipeName_;
  HWND window_ = nullptr;
};

enum class Misbehaviour { kNonsense, kVanishes, kIsSlow };
constexpr int kMisbehaviours = 3;

// Serves the pipe badly for so long.
void Misbehave(const std::wstring& pipeName, Misbehaviour how, DWORD milliseconds,
               std::minstd_rand& random);

}  // namespace soak
