#include "tools/faults/FaultSchedule.h"

#include <nlohmann/json.hpp>

#include "tessel/Text.h"

namespace tools {

namespace {

struct RequestHead {
  std::optional<int> command;
  std::optional<std::string> element;
};

// Returns the command and the element's id of a request. A value that the request does not have,
// for example because it is broken, stays empty.
RequestHead HeadOf(const std::wstring& request) {
  const auto values =
      nlohmann::json::parse(tessel::Narrow(request), nullptr /*callback*/, false /*throws*/);
  RequestHead head;
  if (!values.is_array()) return head;
  if (!values.empty() && values[0].is_number_integer()) head.command = values[0].get<int>();
  if (values.size() > 2 && values[2].is_string()) head.element = values[2].get<std::string>();
  return head;
}

bool Fits(const FaultRule& rule, const RequestHead& head) {
  if (rule.kind == FaultKind::kVanishBefore) return false;
  if (rule.kind == FaultKind::kHugeCount && !IsAnsweredWithCount(head.command.value_or(0)))
    return false;
  return (!rule.command || rule.command == head.command) &&
         (!rule.element || rule.element == head.element);
}

}  // namespace

FaultSchedule::FaultSchedule(const std::vector<FaultRule>& rules, unsigned seed) : random_(seed) {
  for (const FaultRule& rule : rules) rules_.push_back({rule});
}

const FaultRule* FaultSchedule::OnConnect() {
  return First([](const FaultRule& rule) { return rule.kind == FaultKind::kVanishBefore; });
}

const FaultRule* FaultSchedule::OnRequest(const std::wstring& request) {
  return First([head = HeadOf(request)](const FaultRule& rule) { return Fits(rule, head); });
}

// Returns the first rule that fits and whose conditions "call" and "chance" are met, or null. Does
// not stop at this rule, because the call must be counted for every rule that fits.
template <class Predicate>
const FaultRule* FaultSchedule::First(Predicate fits) {
  const FaultRule* first = nullptr;
  for (CountedRule& counted : rules_) {
    if (!fits(counted.rule)) continue;
    ++counted.calls;
    if (first == nullptr && IsDue(counted)) first = &counted.rule;
  }
  return first;
}

bool FaultSchedule::IsDue(const CountedRule& counted) {
  const FaultRule& rule = counted.rule;
  if (rule.call && *rule.call != counted.calls) return false;
  return rule.chance == 1 || random_() < rule.chance * 4294967296.0;
}

}  // namespace tools
