#include "tools/inspector/Tap.h"

#include "tools/inspector/Report.h"
#include "tools/inspector/WindowList.h"
#include "tools/pipe/PipeExchange.h"
#include "tools/pipe/StopOnConsoleEvent.h"
#include "tools/recording/RecordingLines.h"
#include "tools/recording/RequestText.h"
#include "tools/shared/ConsoleText.h"
#include "wire/Timeouts.h"

namespace {

using tessel::Narrow;
using tessel::Printable;

// A client waits just as long for an answer. If the tap waited longer, the recording would hold
// answers that no client received.
constexpr ULONGLONG kAnswerMilliseconds = wire::kPipeTimeoutMilliseconds;
constexpr std::size_t kLongestAnswer = 0x7FFFFFFF;  // in UTF-16 units

std::string NoAnswer(tools::PipeEnd end) {
  switch (end) {
    case tools::PipeEnd::kAbsent:
      return "the broker's pipe is gone";
    case tools::PipeEnd::kDenied:
      return "this user may not open the broker's pipe";
    case tools::PipeEnd::kBusy:
      return "the broker's pipe stays busy";
    case tools::PipeEnd::kNotMessages:
      return "the broker's pipe is not in message mode";
    case tools::PipeEnd::kSilent:
      return "the broker sent nothing in time";
    default:
      return "the broker disconnected";
  }
}

}  // namespace

Tap::Tap(const InspectorOptions& options, const std::string& clientScheme,
         const std::wstring& clientPipe, const std::wstring& brokerPipe)
    : options_(options),
      clientScheme_(clientScheme),
      clientPipe_(clientPipe),
      brokerPipe_(brokerPipe),
      server_(clientPipe),
      recorder_(tessel::Wide(options.record)) {}

void Tap::Run() {
  const tools::StopOnConsoleEvent stopOnConsoleEvent(server_);
  if (!options_.json) {
    tools::PrintLine("address: " + Printable(options_.address));
    tools::PrintLine("pipe: " + Narrow(clientPipe_));
    tools::PrintLine("broker: " + Narrow(brokerPipe_));
    tools::PrintLine("ready");
  }
  server_.Serve([this](const std::wstring& request) { return Answer(request); },
                [](bool /*delivered*/) {});
  if (!hasBegun_) Begin(L"");
  if (!options_.json) tools::PrintLine("recorded: " + std::to_string(recorder_.Exchanges()));
}

// The header of the recording holds the title of a window of the process that shows the content.
// The first request names this process, so the header is written when the first request arrives.
std::wstring Tap::Answer(const std::wstring& request) {
  if (!hasBegun_) Begin(TitleOfProcess(tools::ProcessOf(request).value_or(0)));
  const tools::Exchange exchange =
      recorder_.Record(request, [this](const std::wstring& text) { return Pass(text); });
  PrintExchange(exchange);
  return exchange.answer;
}

// Returns an empty text if the broker does not answer. The client then gets no answer either.
std::wstring Tap::Pass(const std::wstring& request) {
  const tools::PipeExchange asked = tools::ExchangeMessages(
      brokerPipe_, request, ::GetTickCount64() + kAnswerMilliseconds, kLongestAnswer);
  const bool hasAnswered = asked.end == tools::PipeEnd::kAnswered;
  failure_ = hasAnswered ? "" : NoAnswer(asked.end);
  return hasAnswered ? asked.answer : L"";
}

void Tap::Begin(const std::wstring& title) {
  const tools::RecordingHeader header = {tessel::Wide(options_.address), clientScheme_, title};
  recorder_.Begin(header);
  if (options_.json) tools::PrintLine(tools::LineOf(header));
  hasBegun_ = true;
}

void Tap::PrintExchange(const tools::Exchange& exchange) const {
  if (options_.json) return tools::PrintLine(tools::LineOf(exchange));
  const std::string answer =
      failure_.empty() ? Printable(Narrow(exchange.answer)) : "no answer: " + failure_;
  tools::PrintLine("served: " + Printable(Narrow(exchange.request)) + " -> " + answer);
}
