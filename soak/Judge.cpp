#include "Judge.h"

#include <cstdio>

#include "TesselSilverlight.h"

namespace soak {

namespace {

// All brokers of a run have the scheme SL_TAILORED_URI. If such a broker answers "not served", a
// call that searches finds no other broker and cannot start one, so it returns another code.
int AfterSearch(const Call& call, int status) {
  return call.operation.searches && status == SL_NOT_SERVED ? SL_BROKER_NOT_STARTED : status;
}

int AnswerOf(const Call& call, DWORD process) {
  return AfterSearch(call, call.process == process ? call.status : SL_NOT_SERVED);
}

bool Allows(const Call& call, const Phase& phase, int code) {
  switch (phase.kind) {
    case PhaseKind::kServing:
    case PhaseKind::kSuspended:
      return code == AnswerOf(call, phase.detail);
    case PhaseKind::kEnding:
      return code == AnswerOf(call, phase.detail) || code == SL_CANNOT_READ ||
             code == SL_CANNOT_CONNECT || code == SL_BROKER_NOT_STARTED;
    case PhaseKind::kAbsent:
      return code == SL_BROKER_NOT_STARTED;
    case PhaseKind::kStarting:  // no client knows the new process id yet
      return code == SL_BROKER_NOT_STARTED || code == AfterSearch(call, SL_NOT_SERVED);
    case PhaseKind::kNonsense:
      return code ==
             AfterSearch(call, OutcomeOf(AllNonsense()[phase.detail], call.operation.answer));
    case PhaseKind::kVanishing:
      return code == SL_CANNOT_READ;
    case PhaseKind::kHangingUp:  // the impostor disconnects before or after the request is written
      return code == SL_CANNOT_CONNECT || code == SL_CANNOT_READ;
    case PhaseKind::kSlow:
      return code == kSlowStatus;
    // One call waits for the answer, all other calls wait for a connection.
    case PhaseKind::kSilent:
      return code == SL_CANNOT_READ || code == SL_CANNOT_CONNECT;
    case PhaseKind::kClosing:
      return code == SL_CANNOT_READ || code == SL_CANNOT_CONNECT || code == SL_BROKER_NOT_STARTED;
  }
  return false;
}

template <class... Arguments>
void Report(SharedState& state, const char* format, Arguments... arguments) {
  const long index = state.reports++;
  if (index >= SharedState::kReports) return;
  std::snprintf(state.report[index], sizeof(state.report[index]), format, arguments...);
}

// Writes the names of the phases from number `began` to number `ended` into `text`, for a report.
void Describe(const Timeline& timeline, long began, long ended, char (&text)[120]) {
  int length = 0;
  for (long moment = began; moment <= ended && length < 100; ++moment) {
    const Phase phase = timeline.At(moment);
    length += std::snprintf(text + length, sizeof(text) - length, "%s%s",
                            moment == began ? "" : ", ", kPhaseNames[static_cast<int>(phase.kind)]);
    if (phase.kind == PhaseKind::kNonsense && length < 100)
      length += std::snprintf(text + length, sizeof(text) - length, " %lu", phase.detail);
  }
}

bool IsKnownCode(int code) { return code >= kLowestCode && code < kLowestCode + kCodes; }

}  // namespace

bool Judge(SharedState& state, const Timeline& timeline, const Call& call, long began, long ended,
           int code) {
  bool allowed = false, byImpostor = false;
  for (long moment = began; moment <= ended; ++moment) {
    const Phase phase = timeline.At(moment);
    if (!Allows(call, phase, code)) continue;
    allowed = true;
    byImpostor = byImpostor || phase.kind == PhaseKind::kNonsense;
  }
  const int row = began == ended ? static_cast<int>(timeline.At(began).kind) : kPhaseKinds;
  if (IsKnownCode(code)) ++state.codes[row][code - kLowestCode];
  if (!allowed) {
    ++state.unexpected;
    char phases[120] = {};
    Describe(timeline, began, ended, phases);
    Report(state, "%s (undisturbed: %d) ended with %d: broker %s", call.operation.name, call.status,
           code, phases);
  }
  return code == SL_SUCCESS && allowed && !byImpostor;
}

void ReportWrong(SharedState& state, const Operation& operation) {
  ++state.wrong;
  Report(state, "%s returned a wrong result", operation.name);
}

}  // namespace soak
