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

bool IsLost(int code) { return code == SL_CANNOT_READ || code == SL_CANNOT_CONNECT; }

bool AllowsWithFault(const Call& call, tools::FaultKind fault, DWORD process, int code) {
  using tools::FaultKind;
  switch (fault) {
    case FaultKind::kDelay:
    case FaultKind::kLong:
    case FaultKind::kDeaf:
      return code == AnswerOf(call, process);
    // The broker serves one client at a time and does not answer. So one call waits for the answer,
    // and all other calls wait for a connection, until the time-out.
    case FaultKind::kHang:
      return IsLost(code);
    // The broker disconnects before or after the request is written.
    case FaultKind::kVanishBefore:
      return IsLost(code);
    case FaultKind::kVanishAfter:
    case FaultKind::kVanishDuring:
      return code == SL_CANNOT_READ;
    case FaultKind::kStatus:
      return code == kFaultStatus;
    case FaultKind::kWrongType:
    case FaultKind::kTooFew:
    case FaultKind::kBrokenJson:
      return code == SL_ARCHIVE_FAILURE;
    case FaultKind::kHugeCount:
      return code == (BeginsWithCount(call.operation.answer)
                          ? OutcomeOf(HugeCount(), call.operation.answer)
                          : AnswerOf(call, process));
    case FaultKind::kCrash:
      return code == AnswerOf(call, process) || IsLost(code) || code == SL_BROKER_NOT_STARTED;
  }
  return false;
}

bool Allows(const Call& call, const Phase& phase, int code) {
  switch (phase.kind) {
    case PhaseKind::kServing:
    case PhaseKind::kSuspended:
      return code == AnswerOf(call, phase.detail);
    case PhaseKind::kEnding:
      return code == AnswerOf(call, phase.detail) || IsLost(code) || code == SL_BROKER_NOT_STARTED;
    case PhaseKind::kAbsent:
      return code == SL_BROKER_NOT_STARTED;
    case PhaseKind::kStarting:  // no client knows the new process id yet
      return code == SL_BROKER_NOT_STARTED || code == AfterSearch(call, SL_NOT_SERVED);
    case PhaseKind::kNonsense:
      return code ==
             AfterSearch(call, OutcomeOf(AllNonsense()[phase.detail], call.operation.answer));
    case PhaseKind::kClosing:
      return IsLost(code) || code == SL_BROKER_NOT_STARTED;
    default:
      // The process id 0 means that the broker is still starting. Its pipe may not exist yet.
      if (phase.detail == 0 && code == SL_BROKER_NOT_STARTED) return true;
      return AllowsWithFault(call, FaultOf(phase.kind), phase.detail, code);
  }
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
                            moment == began ? "" : ", ", PhaseName(static_cast<int>(phase.kind)));
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
