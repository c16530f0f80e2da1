// Part of SceneBroker and the endurance programs. Reads the text of a fault rule from left to
// right.
#pragma once

#include <string>

namespace tools {

// All functions except Position, IsAtEnd and Skip throw FaultRuleError.
class RuleText {
 public:
  explicit RuleText(const std::string& text) : text_(text) {}

  std::size_t Position() const { return next_; }
  bool IsAtEnd() const { return next_ == text_.size(); }

  // Reads this character if it is the next one. Otherwise returns false.
  bool Skip(char character);
  // Reads up to one of the characters `ends`, or up to the end of the text. Does not read the
  // character itself.
  std::string ReadUntil(const char* ends);

  // These functions read a value up to one of the characters `ends`, or up to the end of the text.
  int ReadInteger(const char* ends, int least, int most);
  double ReadChance(const char* ends);
  // Reads an element's id up to `end`, or up to the end of the text. If the id itself contains
  // `end` or a backslash, the rule has a backslash before that character.
  std::string ReadId(char end);

  // Throws FaultRuleError. `reason` says what is wrong at the position, and the cure.
  [[noreturn]] void Refuse(std::size_t position, const std::string& reason) const;

 private:
  const std::string text_;
  std::size_t next_ = 0;
};

}  // namespace tools
