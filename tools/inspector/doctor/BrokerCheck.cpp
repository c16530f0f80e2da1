#include "tools/inspector/doctor/BrokerCheck.h"

#include <optional>

#include "tessel/Text.h"
#include "tools/inspector/ProcessFacts.h"
#include "tools/inspector/doctor/FocusMessages.h"
#include "tools/inspector/doctor/WindowCheck.h"
#include "tools/pipe/PipeExchange.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"
#include "wire/Addresses.h"
#include "wire/Statuses.h"

namespace {

using tools::PipeEnd;

constexpr std::size_t kLongestAnswer = 32768;  // in UTF-16 units; longer than any id

// The time before the deadline that is kept free for the release of the element. It can be short,
// because the broker has just answered another request.
constexpr ULONGLONG kReleaseMilliseconds = 200;

constexpr std::size_t kMostShown = 60;  // units of an answer that is shown

struct Conclusion {
  BrokerState state;
  std::string finding;
  std::string cure = {};
};

// A program that is no broker but serves the broker's pipe must end, because the broker cannot
// create its pipe while the program runs.
std::string CureByEnding(DWORD server) {
  return "end process " + std::to_string(server) + ", then start the broker";
}

std::string CureByRestarting(DWORD server) {
  return "if this process is the broker, see whether it hangs, and restart it; if not, " +
         CureByEnding(server);
}

// Makes the conclusion for a broker that shows the window, and releases the element with the focus
// that the broker has handed out.
Conclusion ConcludeElement(const std::wstring& pipe, DWORD windowProcess, const std::wstring& id,
                           ULONGLONG deadline) {
  if (id.empty()) {
    return {BrokerState::kShowsWindow, "shows this window, nothing has the focus"};
  }
  const auto release =
      tools::ExchangeMessages(pipe, ReleaseRequest(windowProcess, id), deadline, kLongestAnswer);
  const bool isReleased = release.end == PipeEnd::kAnswered && ConfirmsRelease(release.answer);
  return {BrokerState::kShowsWindow, "shows this window, the focus is on " + tessel::Quoted(id) +
                                         (isReleased ? "" : ", which could not be released")};
}

Conclusion ConcludeStatus(int status, DWORD windowProcess, DWORD server) {
  const std::string number = std::to_string(status);
  if (status != wire::kNotServed) {
    return {BrokerState::kRefuses, "the broker refuses with status " + number,
            "look up the status: tessel explain " + number};
  }
  return {BrokerState::kShowsOthers,
          "the broker does not show process " + std::to_string(windowProcess),
          "check --window; " + WindowsText(server)};
}

Conclusion ConcludeFailure(PipeEnd end, DWORD server) {
  switch (end) {
    case PipeEnd::kAbsent:
      return {BrokerState::kAbsent, "there is no such pipe"};
    case PipeEnd::kDenied:
      return {BrokerState::kCannotOpen, "access is denied",
              "run the broker and its client as the same user; the pipe must also admit clients of "
              "low integrity"};
    case PipeEnd::kBusy:
      return {BrokerState::kCannotOpen,
              "the pipe stays busy: a client uses it, or the server hangs",
              "end the client that does not read its answer, or restart the broker"};
    case PipeEnd::kNotMessages:
      return {BrokerState::kNotABroker, "the pipe is not in message mode", CureByEnding(server)};
    case PipeEnd::kLeft:
      return {BrokerState::kNoAnswer, "the server disconnects without an answer",
              CureByRestarting(server)};
    case PipeEnd::kSilent:
      return {BrokerState::kNoAnswer, "no answer in time (a call waits 18 s)",
              CureByRestarting(server)};
    default:
      return {BrokerState::kNotABroker, "the answer is too long", CureByEnding(server)};
  }
}

Step::State StateOf(BrokerState state) {
  if (state == BrokerState::kShowsWindow) return Step::State::kFound;
  const bool isNote = state == BrokerState::kAbsent || state == BrokerState::kNotAsked;
  return isNote ? Step::State::kNote : Step::State::kBroken;
}

Step StepOf(SLUriScheme scheme, const std::wstring& pipe, DWORD server,
            const Conclusion& conclusion) {
  const std::string name = tools::NameOfScheme(scheme);
  std::string finding = tools::PrintablePath(pipe);
  if (server != 0) finding += ", served by " + ProcessText(ReadProcessFacts(server));
  Step step = {name + " broker",
               StateOf(conclusion.state),
               finding + ": " + conclusion.finding,
               conclusion.cure,
               {{"scheme", name}, {"pipe", tessel::Narrow(pipe)}}};
  if (server != 0) step.facts["process"] = server;
  return step;
}

Conclusion Ask(const std::wstring& pipe, DWORD windowProcess, ULONGLONG deadline, DWORD& server) {
  if (windowProcess == 0 && tools::PipeExists(pipe)) {
    server = tools::ServerOf(pipe);
    return {BrokerState::kNotAsked, "exists; not asked, because there is no such window"};
  }
  const tools::PipeExchange asked = tools::ExchangeMessages(
      pipe, FocusRequest(windowProcess), deadline - kReleaseMilliseconds, kLongestAnswer);
  server = asked.serverProcess;
  if (asked.end != PipeEnd::kAnswered) return ConcludeFailure(asked.end, server);
  const std::optional<FocusAnswer> answer = ParseFocusAnswer(asked.answer);
  if (!answer) {
    return {
        BrokerState::kNotABroker,
        "the answer is not one of a broker: " + tessel::Quoted(asked.answer.substr(0, kMostShown)),
        CureByEnding(server)};
  }
  if (answer->status != wire::kSuccess) {
    return ConcludeStatus(answer->status, windowProcess, server);
  }
  return ConcludeElement(pipe, windowProcess, answer->id, deadline);
}

}  // namespace

BrokerFinding CheckBroker(SLUriScheme scheme, const std::wstring& address, DWORD windowProcess,
                          ULONGLONG deadline) {
  const std::wstring pipe = wire::PipeName(scheme, address);
  DWORD server = 0;
  const Conclusion conclusion = Ask(pipe, windowProcess, deadline, server);
  return {scheme, conclusion.state, server, StepOf(scheme, pipe, server, conclusion)};
}
