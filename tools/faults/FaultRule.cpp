#include "tools/faults/FaultRule.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include "tessel/Text.h"
#include "tools/faults/RuleText.h"
#include "wire/Commands.h"

namespace tools {

namespace {

using tessel::Quoted;

constexpr int kMost = 2147483647;
constexpr const char* kConditions[] = {"command", "call", "element", "chance"};

std::string_view NameOf(const FaultForm& form) { return form.name; }
std::string_view NameOf(const char* condition) { return condition; }

// Returns the names of all entries, separated by commas.
std::string NamesIn(const auto& entries) {
  std::string names;
  for (const auto& entry : entries) {
    names += names.empty() ? "" : ", ";
    names += NameOf(entry);
  }
  return names;
}

class RuleParser {
 public:
  explicit RuleParser(const std::string& text) : text_(text) { rule_.text = text; }

  FaultRule Parse() {
    ReadFault();
    if (text_.IsAtEnd()) return rule_;
    if (!text_.Skip('@')) text_.Refuse(text_.Position(), "conditions begin with @; write @ here");
    do ReadCondition();
    while (text_.Skip(','));
    return rule_;
  }

 private:
  void ReadFault() {
    const std::size_t start = text_.Position();
    const std::string name = text_.ReadUntil("=@,");
    const auto* const form = std::ranges::find(kFaultForms, name, &FaultForm::name);
    if (form == std::end(kFaultForms)) {
      text_.Refuse(start,
                   "there is no fault " + Quoted(name) + "; use one of " + NamesIn(kFaultForms));
    }
    rule_.kind = form->kind;
    ReadNumber(*form);
  }

  void ReadNumber(const FaultForm& form) {
    const std::size_t start = text_.Position();
    const std::string name = form.name;
    const bool hasNumber = text_.Skip('=');
    if (form.number == nullptr) {
      if (hasNumber) text_.Refuse(start, name + " has no number; leave it out");
      return;
    }
    if (!hasNumber) {
      text_.Refuse(start, "the number is missing; write " + name + '=' + form.number);
    }
    rule_.number = text_.ReadInteger("@,", form.least, form.most);
  }

  void ReadCondition() {
    const std::size_t start = text_.Position();
    const std::string name = text_.ReadUntil("=,");
    if (std::ranges::find(kConditions, name) == std::end(kConditions)) {
      text_.Refuse(
          start, "there is no condition " + Quoted(name) + "; use one of " + NamesIn(kConditions));
    }
    if (std::ranges::find(seen_, name) != seen_.end()) {
      text_.Refuse(start, "the condition " + name + " stands twice; leave one out");
    }
    seen_.push_back(name);
    if (!text_.Skip('=')) {
      text_.Refuse(text_.Position(), "the value is missing; write " + name + "=VALUE");
    }
    ReadValue(name);
    CheckCondition(start, name);
  }

  void ReadValue(const std::string& condition) {
    if (condition == "command") rule_.command = text_.ReadInteger(",", 1, kMost);
    if (condition == "call") rule_.call = text_.ReadInteger(",", 1, kMost);
    if (condition == "element") rule_.element = text_.ReadId(',');
    if (condition == "chance") rule_.chance = text_.ReadChance(",");
  }

  // Refuses a condition under which the fault could never happen.
  void CheckCondition(std::size_t start, const std::string& name) const {
    if (rule_.kind == FaultKind::kVanishBefore && (name == "command" || name == "element")) {
      text_.Refuse(start, "the broker vanishes before it knows the " + name + "; use vanish-after");
    }
    if (rule_.kind == FaultKind::kHugeCount && name == "command" &&
        !IsAnsweredWithCount(*rule_.command)) {
      text_.Refuse(start, "answers to this command have no count; use command 8, 9, 16 or 18");
    }
  }

  RuleText text_;
  FaultRule rule_;
  std::vector<std::string> seen_;
};

}  // namespace

FaultRule ParseFaultRule(const std::string& text) { return RuleParser(text).Parse(); }

bool IsAnsweredWithCount(int command) {
  using wire::Command;
  constexpr Command kCommands[] = {Command::kSelector, Command::kCollection, Command::kItems,
                                   Command::kAncestry};
  return std::ranges::find(kCommands, static_cast<Command>(command)) != std::end(kCommands);
}

}  // namespace tools
