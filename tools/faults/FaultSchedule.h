// Part of SceneBroker and the endurance programs. Decides which rule applies to which call.
#pragma once

#include <random>
#include <vector>

#include "tools/faults/FaultRule.h"

namespace tools {

class FaultSchedule {
 public:
  // `seed` decides the result of the condition "chance". The same seed and the same calls lead to
  // the same faults.
  FaultSchedule(const std::vector<FaultRule>& rules, unsigned seed);

  // Call OnConnect when a client has connected. If it returns null, read the request and call
  // OnRequest. Both return the first rule that applies, or null. The rule lives as long as this
  // object.
  const FaultRule* OnConnect();
  const FaultRule* OnRequest(const std::wstring& request);

 private:
  struct CountedRule {
    FaultRule rule;
    int calls = 0;  // the number of calls that met the rule's command and element
  };

  template <class Predicate>
  const FaultRule* First(Predicate fits);
  bool IsDue(const CountedRule& counted);

  std::vector<CountedRule> rules_;
  std::mt19937 random_;
};

}  // namespace tools
