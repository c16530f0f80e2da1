#include "tools/faults/RuleText.h"

#include <algorithm>
#include <charconv>

#include "tessel/Text.h"
#include "tools/faults/FaultRule.h"

namespace tools {

namespace {

using tessel::Quoted;

// Returns false unless the whole text is a number of this type.
template <class Number>
bool Parse(const std::string& text, Number& number) {
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  return read.ec == std::errc() && read.ptr == end;
}

}  // namespace

bool RuleText::Skip(char character) {
  if (IsAtEnd() || text_[next_] != character) return false;
  ++next_;
  return true;
}

std::string RuleText::ReadUntil(const char* ends) {
  const std::size_t start = next_;
  next_ = std::min(text_.find_first_of(ends, start), text_.size());
  return text_.substr(start, next_ - start);
}

int RuleText::ReadInteger(const char* ends, int least, int most) {
  const std::size_t start = next_;
  const std::string text = ReadUntil(ends);
  int number = 0;
  if (!Parse(text, number) || number < least || number > most) {
    Refuse(start, Quoted(text) + " is not allowed; write an integer from " + std::to_string(least) +
                      " to " + std::to_string(most));
  }
  return number;
}

double RuleText::ReadChance(const char* ends) {
  const std::size_t start = next_;
  const std::string text = ReadUntil(ends);
  double chance = 0;
  if (!Parse(text, chance) || !(chance > 0 && chance <= 1)) {
    Refuse(start,
           Quoted(text) + " is not allowed; write a number above 0 and up to 1, such as 0.25");
  }
  return chance;
}

std::string RuleText::ReadId(char end) {
  const std::size_t start = next_;
  std::string id;
  for (; !IsAtEnd() && text_[next_] != end; ++next_) {
    if (text_[next_] == '\\' && ++next_ == text_.size()) {
      Refuse(next_ - 1, "a backslash ends the rule; write two backslashes for one");
    }
    id += text_[next_];
  }
  if (id.empty()) Refuse(start, "the id is empty; write an id, or leave element out");
  return id;
}

void RuleText::Refuse(std::size_t position, const std::string& reason) const {
  const std::size_t character = tessel::Wide(text_.substr(0, position)).size() + 1;
  throw FaultRuleError(Quoted(text_) + ", character " + std::to_string(character) + ": " + reason);
}

}  // namespace tools
