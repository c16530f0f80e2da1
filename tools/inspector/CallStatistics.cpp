#include "tools/inspector/CallStatistics.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "tools/inspector/Report.h"

namespace {

// Returns milliseconds with three digits after the point.
double Milliseconds(CallStatistics::Clock::duration duration) {
  return std::round(std::chrono::duration<double, std::micro>(duration).count()) / 1000;
}

std::string TextOf(CallStatistics::Clock::duration duration) {
  char text[40];
  std::snprintf(text, sizeof(text), "%.3f ms", Milliseconds(duration));
  return text;
}

}  // namespace

void CallStatistics::Sum::Add(Clock::duration duration) {
  ++calls;
  total += duration;
  longest = std::max(longest, duration);
}

void CallStatistics::Begin(const std::string& function) {
  current_ = &*functions_.try_emplace(function).first;
  begin_ = Clock::now();
}

void CallStatistics::End() noexcept {
  const Clock::duration duration = Clock::now() - begin_;
  if (longest_ == nullptr || duration > total_.longest) longest_ = current_;
  total_.Add(duration);
  current_->second.Add(duration);
}

std::string CallStatistics::Lines() const {
  std::string text = "calls: " + std::to_string(total_.calls) + ", " + TextOf(total_.total);
  if (longest_ != nullptr) text += ", longest: " + longest_->first + ", " + TextOf(total_.longest);
  for (const auto& [function, sum] : functions_) {
    text += "\n  " + function + ": " + std::to_string(sum.calls) + ", " + TextOf(sum.total) +
            ", longest: " + TextOf(sum.longest);
  }
  return text + '\n';
}

std::string CallStatistics::JsonLine() const {
  const auto json = [](const Sum& sum) {
    return Json{{"calls", sum.calls},
                {"milliseconds", Milliseconds(sum.total)},
                {"longest", Milliseconds(sum.longest)}};
  };
  Json stats = json(total_);
  stats["longestFunction"] = longest_ != nullptr ? Json(longest_->first) : Json();
  stats["functions"] = Json::object();
  for (const auto& [function, sum] : functions_) stats["functions"][function] = json(sum);
  return LineOf(Json{{"stats", stats}});
}
