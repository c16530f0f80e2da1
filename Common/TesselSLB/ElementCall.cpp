#include "TesselSLB/ElementCall.h"

#include "logging/Log.h"

namespace {

template <class... Arguments>
void LogErrorAt(const CallSite& site, const char* format, Arguments... arguments) {
  const logging::LogSite place(site.file_name(), static_cast<int>(site.line()), logging::kError);
  logging::WriteLog(place, format, arguments...);
}

bool IsValid(const SLElemData& record) {
  return record.uriScheme != SL_NO_URI && record.hwnd != nullptr && record.processId != 0 &&
         ::SysStringLen(record.objectId) != 0 && !AddressOf(record).empty();
}

}  // namespace

bool CheckObject(const SLElemData& record, CallSite site) {
  if (IsValid(record)) return true;
  LogErrorAt(site, "Invalid SL object");
  return false;
}

void LogRoundTripFailure(const CallSite& site, int code) {
  LogErrorAt(site, "SendMessageToBroker failed with %d", code);
}

void LogArchiveFailure(const CallSite& site, const Tessel::ArchiveException& failure) {
  LogErrorAt(site, "Archive failure: '%s'", failure.Message().c_str());
}

void NameElement(SLElemData& element, const SLElemData& source, CComBSTR& objectId) {
  element.hwnd = source.hwnd;
  element.processId = source.processId;
  element.uriScheme = source.uriScheme;
  ::SysFreeString(element.objectId);
  element.objectId = objectId.Detach();
  if (element.processId == 0) ::GetWindowThreadProcessId(element.hwnd, &element.processId);
}
