// Part of tessel. What `tessel doctor` has found about one call, before it judges.
#pragma once

#include <vector>

#include "tools/inspector/doctor/BrokerCheck.h"
#include "tools/inspector/doctor/Step.h"
#include "tools/inspector/doctor/WindowCheck.h"

struct Findings {
  bool searches;  // whether the call names no scheme; only such a call can inject a broker
  Step module;
  Step address;
  WindowFinding window;
  std::vector<BrokerFinding> asked;   // the brokers that a call asks, in order; at least one
  std::vector<BrokerFinding> others;  // all other brokers that run
  Step launcher;
  Step package;
  Step injector;
  Step lock;
};
