#include "tools/faults/SpoiltAnswer.h"

#include <nlohmann/json.hpp>

#include "tessel/Text.h"

namespace tools {

namespace {

using nlohmann::json;

// 16 MiB. A client reads a message in several parts. So it cannot read all of this text before the
// broker disconnects, even if other programs keep the broker from running for some milliseconds.
constexpr int kUnitsOfInterruptedText = 8 << 20;

std::wstring WithText(const std::wstring& answer, int units) {
  return answer.substr(0, answer.size() - 1) + L",\"" +
         std::wstring(static_cast<std::size_t>(units), L'x') + L"\"]";
}

std::wstring WithoutLastValue(const std::wstring& answer) {
  json values = json::parse(tessel::Narrow(answer));
  values.erase(values.size() - 1);
  return tessel::Wide(values.dump());
}

std::wstring WithWrongType(const std::wstring& answer) {
  json values = json::parse(tessel::Narrow(answer));
  json& last = values.back();
  last = last.is_number() ? json(last.dump()) : json(1);
  return tessel::Wide(values.dump());
}

}  // namespace

std::wstring SpoiltAnswer(const FaultRule& fault, const std::wstring& answer) {
  switch (fault.kind) {
    case FaultKind::kStatus:
      return L'[' + std::to_wstring(fault.number) + L']';
    case FaultKind::kHugeCount:
      return L"[0,2147483647]";
    case FaultKind::kVanishDuring:
      return WithText(answer, kUnitsOfInterruptedText);
    case FaultKind::kLong:
      return WithText(answer, fault.number);
    case FaultKind::kWrongType:
      return WithWrongType(answer);
    case FaultKind::kTooFew:
      return WithoutLastValue(answer);
    case FaultKind::kBrokenJson:
      return answer.substr(0, answer.size() / 2);
    default:
      return answer;
  }
}

}  // namespace tools
