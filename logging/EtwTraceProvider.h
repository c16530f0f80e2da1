// Both processes. A classic event-tracing provider: registration, the session's control callback,
// and the writing of events while a session listens.
#pragma once

#include <windows.h>
// evntrace.h needs windows.h before it
#include <evntrace.h>
#include <wmistr.h>

#include <atomic>

namespace logging {

// The system's trace functions, as the providers call them. Wine registers a provider but never
// calls it back and has no session to write to, so a test puts its own in before the first log
// call.
struct TraceFunctions {
  decltype(&::RegisterTraceGuidsW) registerGuids;
  decltype(&::UnregisterTraceGuids) unregisterGuids;
  decltype(&::GetTraceLoggerHandle) getLoggerHandle;
  decltype(&::GetTraceEnableLevel) getEnableLevel;
  decltype(&::GetTraceEnableFlags) getEnableFlags;
  decltype(&::TraceEvent) traceEvent;
};
extern TraceFunctions traceFunctions;

}  // namespace logging

namespace base::win {

class EtwTraceProvider {
 public:
  EtwTraceProvider(const GUID& provider, const GUID& eventClass);
  virtual ~EtwTraceProvider();
  EtwTraceProvider(const EtwTraceProvider&) = delete;
  EtwTraceProvider& operator=(const EtwTraceProvider&) = delete;

  ULONG Register();
  ULONG Unregister();

  bool IsEnabledFor(UCHAR eventLevel) const {
    return session_.load() != 0 && eventLevel <= enableLevel_.load();
  }
  ULONG EnableFlags() const { return enableFlags_.load(); }

  ULONG Write(EVENT_TRACE_HEADER* event) const;

 protected:
  // Called on the system's thread after the level and the flags were taken over, or cleared.
  virtual void OnEventsEnabled(UCHAR /*sessionLevel*/) {}
  virtual void OnEventsDisabled() {}

 private:
  static ULONG WINAPI ControlCallback(WMIDPREQUESTCODE request, PVOID context, ULONG* reserved,
                                      PVOID buffer);
  ULONG Enable(PVOID buffer);
  ULONG Disable();

  const GUID provider_;
  const GUID eventClass_;
  TRACEHANDLE registration_ = 0;
  std::atomic<TRACEHANDLE> session_{0};
  std::atomic<UCHAR> enableLevel_{0};
  std::atomic<ULONG> enableFlags_{0};
};

}  // namespace base::win
