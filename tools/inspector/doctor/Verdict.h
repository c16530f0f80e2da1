// Part of tessel. Decides how a call would end.
#pragma once

#include <string>

#include "tools/inspector/doctor/Findings.h"

// The exit codes of `tessel doctor`. docs/inspector.md lists them, and so does DoctorCodeHelp().
enum class DoctorCode : int {
  kServed = 0,
  kCanStart = 10,
  kModule = 11,
  kAddress = 12,
  kWindow = 13,
  kScheme = 14,
  kCannotOpen = 15,
  kNoAnswer = 16,
  kNotABroker = 17,
  kRefuses = 18,
  kLauncher = 19,
  kPackage = 20,
  kInjector = 21,
  kInjectionLock = 22,
  kOtherWindow = 23,
};

struct Verdict {
  DoctorCode code;
  std::string result;
  std::string cure;  // empty if there is nothing to do
};

// Returns the section of the help text that lists the exit codes.
std::string DoctorCodeHelp();

Verdict Judge(const Findings& findings);
