// Part of SceneBroker and the endurance programs. Serves a broker's pipe and misbehaves as rules
// say.
#pragma once

#include "tools/faults/FaultSchedule.h"
#include "tools/pipe/ServerPipe.h"

namespace tools {

// The exit code of a process that the fault "crash" has ended.
inline constexpr unsigned kCrashExitCode = 4;

class FaultyPipe : public RequestServer {
 public:
  // Called when a fault happens, before it has an effect. The request is empty if it was not read.
  using FaultFunction = std::function<void(const FaultRule& rule, const std::wstring& request)>;

  // Throws std::runtime_error if the pipe cannot be created.
  FaultyPipe(const std::wstring& pipeName, FaultSchedule schedule, FaultFunction onFault);

  // Some faults send nothing, or a text that does not depend on the right answer. For these
  // faults, calls neither `answer` nor `sent`. If a fault makes the answer unreadable for the
  // client, passes false to `sent`.
  void Serve(const AnswerFunction& answer, const SentFunction& sent) override;
  bool Stop() override { return pipe_.Stop(); }

 private:
  void ServeClient(const AnswerFunction& answer, const SentFunction& sent);
  void Misbehave(const FaultRule& fault, const std::wstring& request, const AnswerFunction& answer,
                 const SentFunction& sent);
  bool Send(const std::wstring& text) { return pipe_.Write(MessageOfText(text)); }

  ServerPipe pipe_;
  FaultSchedule schedule_;
  const FaultFunction onFault_;
};

}  // namespace tools
