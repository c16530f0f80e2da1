#include "tools/inspector/Tap.h"

#include <stdexcept>

#include "tools/inspector/ProcessTitle.h"
#include "tools/inspector/Report.h"
#include "tools/pipe/ClientPipe.h"
#include "tools/pipe/StopOnConsoleEvent.h"
#include "tools/recording/RecordingLines.h"
#include "tools/recording/RequestText.h"
#include "tools/shared/ConsoleText.h"

namespace {

using tessel::Narrow;
using tessel::Printable;

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

// The first request names the process whose window has the title that the recording needs.
std::wstring Tap::Answer(const std::wstring& request) {
  if (!hasBegun_) Begin(TitleOfProcess(tools::ProcessOf(request).value_or(0)));
  const tools::Exchange exchange =
      recorder_.Record(request, [this](const std::wstring& text) { return Pass(text); });
  PrintExchange(exchange);
  return exchange.answer;
}

// Returns an empty text if the broker does not answer. The client then gets no answer either.
std::wstring Tap::Pass(const std::wstring& request) {
  failure_.clear();
  try {
    return tools::AskPipe(brokerPipe_, request);
  } catch (const std::runtime_error& error) {
    failure_ = error.what();
    return L"";
  }
}

void Tap::Begin(const std::wstring& title) {
  recorder_.Begin({tessel::Wide(options_.address), clientScheme_, title});
  hasBegun_ = true;
}

void Tap::PrintExchange(const tools::Exchange& exchange) const {
  if (options_.json) return tools::PrintLine(tools::LineOf(exchange));
  const std::string answer =
      failure_.empty() ? Printable(Narrow(exchange.answer)) : "no answer: the tap " + failure_;
  tools::PrintLine("served: " + Printable(Narrow(exchange.request)) + " -> " + answer);
}
