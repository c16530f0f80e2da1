// Part of tessel. One line of `tessel doctor`: what a step of a call has found, and the cure if the
// step is broken.
#pragma once

#include <string>

#include "tools/inspector/Report.h"

struct Step {
  enum class State {
    kFound,   // as a call needs it
    kNote,    // does not stop this call, or could not be checked
    kBroken,  // stops a call, or makes it hard to find out why a call fails
  };

  std::string name;
  State state = State::kFound;
  std::string finding;
  std::string cure;  // empty if there is nothing to do
  Json facts = Json::object();
};
