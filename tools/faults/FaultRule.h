// Part of SceneBroker and the endurance programs. A rule says how a broker misbehaves, and for
// which requests. docs/scene.md describes the text form of rules and the effect of each fault.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

namespace tools {

enum class FaultKind {
  kDelay,
  kHang,
  kVanishBefore,
  kVanishAfter,
  kVanishDuring,
  kStatus,
  kWrongType,
  kTooFew,
  kHugeCount,
  kBrokenJson,
  kLong,
  kDeaf,
  kCrash,
};

struct FaultForm {
  FaultKind kind;
  const char* name;
  const char* number;  // what the number of the fault means; null if the fault has no number
  int least, most;     // the range of the number
};

inline constexpr int kLongestPause = 3600000;
inline constexpr int kLongestText = 100000000;

// The form at index i belongs to the kind with the value i.
inline constexpr FaultForm kFaultForms[] = {
    {FaultKind::kDelay, "delay", "MS", 1, kLongestPause},
    {FaultKind::kHang, "hang", nullptr, 0, 0},
    {FaultKind::kVanishBefore, "vanish-before", nullptr, 0, 0},
    {FaultKind::kVanishAfter, "vanish-after", nullptr, 0, 0},
    {FaultKind::kVanishDuring, "vanish-during", nullptr, 0, 0},
    {FaultKind::kStatus, "status", "N", -2147483647 - 1, 2147483647},
    {FaultKind::kWrongType, "wrong-type", nullptr, 0, 0},
    {FaultKind::kTooFew, "too-few", nullptr, 0, 0},
    {FaultKind::kHugeCount, "huge-count", nullptr, 0, 0},
    {FaultKind::kBrokenJson, "broken-json", nullptr, 0, 0},
    {FaultKind::kLong, "long", "N", 1, kLongestText},
    {FaultKind::kDeaf, "deaf", "MS", 1, kLongestPause},
    {FaultKind::kCrash, "crash", nullptr, 0, 0},
};

struct FaultRule {
  std::string text;  // the rule as the user wrote it, in UTF-8
  FaultKind kind = FaultKind::kDelay;
  int number = 0;
  // The conditions. An absent condition is met by every request.
  std::optional<int> command;
  std::optional<int> call;  // counts from 1, among the requests that meet `command` and `element`
  std::optional<std::string> element;
  double chance = 1;  // from 0 to 1
};

// The message names the position in the text, counted from 1, what is wrong there, and the cure.
class FaultRuleError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws FaultRuleError if the text is not a rule.
FaultRule ParseFaultRule(const std::string& text);

// Returns whether answers to this command begin with a count.
bool IsAnsweredWithCount(int command);

}  // namespace tools
