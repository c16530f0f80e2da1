#include "tools/faults/FaultyPipe.h"

#include <utility>

#include "tools/faults/SpoiltAnswer.h"

namespace tools {

FaultyPipe::FaultyPipe(const std::wstring& pipeName, FaultSchedule schedule, FaultFunction onFault)
    : pipe_(pipeName), schedule_(std::move(schedule)), onFault_(std::move(onFault)) {}

void FaultyPipe::Serve(const AnswerFunction& answer, const SentFunction& sent) {
  for (; pipe_.Accept(); pipe_.Disconnect()) {
    if (const FaultRule* const fault = schedule_.OnConnect()) {
      onFault_(*fault, L"");
    } else {
      ServeClient(answer, sent);
    }
  }
}

void FaultyPipe::ServeClient(const AnswerFunction& answer, const SentFunction& sent) {
  const auto message = pipe_.Read();
  if (!message) return;
  const std::wstring request = TextOfMessage(*message);
  const FaultRule* const fault = schedule_.OnRequest(request);
  if (fault == nullptr) {
    sent(Send(answer(request)));
    return;
  }
  onFault_(*fault, request);
  Misbehave(*fault, request, answer, sent);
}

void FaultyPipe::Misbehave(const FaultRule& fault, const std::wstring& request,
                           const AnswerFunction& answer, const SentFunction& sent) {
  const auto milliseconds = static_cast<DWORD>(fault.number);
  switch (fault.kind) {
    case FaultKind::kVanishBefore:  // OnRequest does not return this fault
    case FaultKind::kVanishAfter:
      break;
    case FaultKind::kCrash:
      ::TerminateProcess(::GetCurrentProcess(), kCrashExitCode);
      break;
    case FaultKind::kHang:
      pipe_.AwaitLeave();
      break;
    case FaultKind::kDelay:
      pipe_.Pause(milliseconds);
      sent(Send(answer(request)));
      break;
    case FaultKind::kDeaf:
      sent(Send(answer(request)));
      pipe_.Disconnect();
      pipe_.Pause(milliseconds);
      break;
    case FaultKind::kLong:
      sent(Send(SpoiltAnswer(fault, answer(request))));
      break;
    case FaultKind::kVanishDuring:
      pipe_.DisconnectDuringWrite(MessageOfText(SpoiltAnswer(fault, answer(request))));
      sent(false);
      break;
    case FaultKind::kStatus:
    case FaultKind::kHugeCount:
      Send(SpoiltAnswer(fault, L""));
      break;
    case FaultKind::kWrongType:
    case FaultKind::kTooFew:
    case FaultKind::kBrokenJson:
      Send(SpoiltAnswer(fault, answer(request)));
      sent(false);
      break;
  }
}

}  // namespace tools
