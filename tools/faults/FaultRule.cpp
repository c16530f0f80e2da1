#include "tools/faults/FaultRule.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <vector>

#include "tessel/Text.h"
#include "wire/Commands.h"

namespace tools {

namespace {

using tessel::Quoted;

std::string FaultNames() {
  std::string names;
  for (const FaultForm& form : kFaultForms)
    names += (names.empty() ? "" : ", ") + std::string(form.name);
  return names;
}

class RuleParser {
 public:
  explicit RuleParser(const std::string& text) : text_(text) { rule_.text = text; }

  FaultRule Parse() {
    ReadFault();
    if (next_ == text_.size()) return rule_;
    if (!Skip('@')) Refuse(next_, "conditions begin with @; write @ here");
    do ReadCondition();
    while (Skip(','));
    return rule_;
  }

 private:
  void ReadFault() {
    const std::size_t start = next_;
    const std::string name = ReadUntil("=@,");
    const auto* const form = std::ranges::find(kFaultForms, name, &FaultForm::name);
    if (form == std::end(kFaultForms)) {
      Refuse(start, "there is no fault " + Quoted(name) + "; use one of " + FaultNames());
    }
    rule_.kind = form->kind;
    const std::size_t afterName = next_;
    const bool hasNumber = Skip('=');
    if (form->number == nullptr && hasNumber)
      Refuse(afterName, name + " has no number; leave it out");
    if (form->number == nullptr) return;
    if (!hasNumber) Refuse(afterName, "the number is missing; write " + name + '=' + form->number);
    rule_.number = ReadNumber(form->least, form->most);
  }

  void ReadCondition() {
    const std::size_t start = next_;
    const std::string name = ReadUntil("=,");
    if (std::ranges::find(kConditions, name) == std::end(kConditions)) {
      Refuse(start, "there is no condition " + Quoted(name) +
                        "; use one of command, call, element, chance");
    }
    if (std::ranges::find(seen_, name) != seen_.end()) {
      Refuse(start, "the condition " + name + " stands twice; leave one out");
    }
    seen_.push_back(name);
    if (!Skip('=')) Refuse(next_, "the value is missing; write " + name + "=VALUE");
    if (name == "command") rule_.command = ReadNumber(1, kMost);
    if (name == "call") rule_.call = ReadNumber(1, kMost);
    if (name == "element") rule_.element = ReadElement();
    if (name == "chance") rule_.chance = ReadChance();
    CheckCondition(start, name);
  }

  // Refuses a condition under which the fault could never happen.
  void CheckCondition(std::size_t start, const std::string& name) const {
    if (rule_.kind == FaultKind::kVanishBefore && (name == "command" || name == "element")) {
      Refuse(start, "the broker vanishes before it knows the " + name + "; use vanish-after");
    }
    if (rule_.kind == FaultKind::kHugeCount && name == "command" &&
        !IsAnsweredWithCount(*rule_.command)) {
      Refuse(start, "answers to this command have no count; use command 8, 9, 16 or 18");
    }
  }

  int ReadNumber(int least, int most) {
    const std::size_t start = next_;
    const std::string text = ReadUntil("@,");
    int number = 0;
    if (!IsWholeNumber(text, number) || number < least || number > most) {
      Refuse(start, Quoted(text) + " is not allowed; write an integer from " +
                        std::to_string(least) + " to " + std::to_string(most));
    }
    return number;
  }

  double ReadChance() {
    const std::size_t start = next_;
    const std::string text = ReadUntil(",");
    double chance = 0;
    if (!IsWholeNumber(text, chance) || !(chance > 0 && chance <= 1)) {
      Refuse(start,
             Quoted(text) + " is not allowed; write a number above 0 and up to 1, such as 0.25");
    }
    return chance;
  }

  // In an id, a backslash stands before a comma or a backslash.
  std::string ReadElement() {
    const std::size_t start = next_;
    std::string id;
    for (; next_ < text_.size() && text_[next_] != ','; ++next_) {
      if (text_[next_] == '\\' && ++next_ == text_.size()) {
        Refuse(next_ - 1, "a backslash ends the rule; write two backslashes for one");
      }
      id += text_[next_];
    }
    if (id.empty()) Refuse(start, "the id is empty; write an id, or leave element out");
    return id;
  }

  std::string ReadUntil(const char* ends) {
    const std::size_t start = next_;
    next_ = std::min(text_.find_first_of(ends, start), text_.size());
    return text_.substr(start, next_ - start);
  }

  bool Skip(char character) {
    if (next_ == text_.size() || text_[next_] != character) return false;
    ++next_;
    return true;
  }

  template <class Number>
  static bool IsWholeNumber(const std::string& text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end;
  }

  [[noreturn]] void Refuse(std::size_t position, const std::string& reason) const {
    const std::size_t character = tessel::Wide(text_.substr(0, position)).size() + 1;
    throw FaultRuleError(Quoted(text_) + ", character " + std::to_string(character) + ": " +
                         reason);
  }

  static constexpr int kMost = 2147483647;
  static constexpr const char* kConditions[] = {"command", "call", "element", "chance"};

  const std::string& text_;
  std::size_t next_ = 0;
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
