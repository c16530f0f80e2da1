// Part of SceneBroker. The options --fault and --seed.
#pragma once

#include <CLI/CLI.hpp>
#include <random>
#include <string>
#include <vector>

#include "tools/faults/FaultSchedule.h"

namespace tools {

struct FaultOptions {
  FaultSchedule Schedule() const;

  std::vector<std::string> rules;
  unsigned seed = std::random_device()();
};

// Refuses a wrong rule while the command line is parsed.
void AddFaultOptions(CLI::App& app, FaultOptions& options);

}  // namespace tools
