#include "tools/scenebroker/Replay.h"

#include "tools/recording/RequestText.h"
#include "wire/Commands.h"
#include "wire/Statuses.h"

namespace {

bool IsRelease(const std::wstring& request) {
  return tools::CommandOf(request) == static_cast<int>(wire::Command::kRelease);
}

}  // namespace

Replay::Replay(const std::vector<tools::Exchange>& exchanges) {
  for (std::size_t i = 0; i < exchanges.size(); ++i) {
    const auto& [time, request, answer, milliseconds] = exchanges[i];
    if (IsRelease(request)) {
      releases_.emplace(tools::WithoutProcess(request), answer);
    } else {
      steps_.push_back({tools::LineNumber(i), tools::WithoutProcess(request), answer});
    }
  }
  steps_.push_back({tools::LineNumber(exchanges.size()), std::nullopt, L""});
}

std::wstring Replay::Answer(const std::wstring& request) {
  const std::wstring text = tools::WithoutProcess(request);
  if (IsRelease(request)) return AnswerRelease(text);
  const Step& step = steps_[next_];
  if (!deviation_ && step.request == text) {
    ++next_;
    return step.answer;
  }
  if (!deviation_) deviation_ = {step.line, step.request, text};
  return L'[' + std::to_wstring(wire::kNotRecorded) + L']';
}

// Returns the answers to equal releases in their recorded order. A release that is not in the
// recording succeeds, because the recording may have ended before the client released the element.
std::wstring Replay::AnswerRelease(const std::wstring& request) {
  const auto recorded = releases_.lower_bound(request);
  if (recorded == releases_.end() || recorded->first != request) return L"[0,true]";
  std::wstring answer = std::move(recorded->second);
  releases_.erase(recorded);
  return answer;
}
