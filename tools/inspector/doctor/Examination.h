// Part of tessel. Checks each step that the module would take for a client's call. Does not load
// the module.
#pragma once

#include <filesystem>
#include <string>

#include "TesselCodes.h"
#include "tools/inspector/doctor/Findings.h"

struct ExaminedCall {
  std::string window;
  std::string address;
  SLUriScheme scheme;  // SL_NO_URI if the call searches
  std::filesystem::path module;
};

// Takes at most 3 s.
Findings Examine(const ExaminedCall& call);
