#include "logging/EtwTraceProvider.h"

namespace logging {

TraceFunctions traceFunctions = {&::RegisterTraceGuidsW,  &::UnregisterTraceGuids,
                                 &::GetTraceLoggerHandle, &::GetTraceEnableLevel,
                                 &::GetTraceEnableFlags,  &::TraceEvent};

}  // namespace logging

namespace base::win {

using logging::traceFunctions;

EtwTraceProvider::EtwTraceProvider(const GUID& provider, const GUID& eventClass)
    : provider_(provider), eventClass_(eventClass) {}

EtwTraceProvider::~EtwTraceProvider() { Unregister(); }

ULONG EtwTraceProvider::Register() {
  TRACE_GUID_REGISTRATION eventClass = {&eventClass_, nullptr};
  return traceFunctions.registerGuids(&ControlCallback, this, &provider_, 1 /*count*/, &eventClass,
                                      nullptr /*image path*/, nullptr /*resource name*/,
                                      &registration_);
}

ULONG EtwTraceProvider::Unregister() {
  if (registration_ == 0) return ERROR_SUCCESS;
  const TRACEHANDLE registration = registration_;
  registration_ = 0;
  session_ = 0;
  return traceFunctions.unregisterGuids(registration);
}

ULONG EtwTraceProvider::Write(EVENT_TRACE_HEADER* event) const {
  return traceFunctions.traceEvent(session_.load(), event);
}

ULONG WINAPI EtwTraceProvider::ControlCallback(WMIDPREQUESTCODE request, PVOID context,
                                               ULONG* /*reserved*/, PVOID buffer) {
  auto* self = static_cast<EtwTraceProvider*>(context);
  switch (request) {
    case WMI_ENABLE_EVENTS:
      return self->Enable(buffer);
    case WMI_DISABLE_EVENTS:
      return self->Disable();
    default:
      return ERROR_INVALID_PARAMETER;
  }
}

ULONG EtwTraceProvider::Enable(PVOID buffer) {
  ::SetLastError(ERROR_SUCCESS);
  const TRACEHANDLE session = traceFunctions.getLoggerHandle(buffer);
  if (session == TRACEHANDLE(-1)) return ::GetLastError();
  const UCHAR level = traceFunctions.getEnableLevel(session);
  enableLevel_ = level;
  enableFlags_ = traceFunctions.getEnableFlags(session);
  session_ = session;
  OnEventsEnabled(level);
  return ERROR_SUCCESS;
}

ULONG EtwTraceProvider::Disable() {
  session_ = 0;
  enableLevel_ = 0;
  enableFlags_ = 0;
  OnEventsDisabled();
  return ERROR_SUCCESS;
}

}  // namespace base::win
