// Runs in the client and in the broker. A classic event-tracing provider. Trace sessions switch the
// provider on and off. It writes events while it is switched on.
#pragma once

#include <windows.h>
// evntrace.h needs windows.h before it
#include <evntrace.h>
#include <wmistr.h>

#include <atomic>

namespace logging {

// The system's trace functions. The providers call them through this table, so that a test can
// replace them before the first log call. Under Wine a test cannot use the real functions: Wine
// registers a provider, but never calls it back and has no trace sessions.
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
  // A thread of the system calls OnEventsEnabled and OnEventsDisabled, after the provider has
  // stored or cleared the level and the flags.
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
