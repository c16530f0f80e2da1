#include "TesselSLB/ElementCall.h"

#include "logging/Log.h"

namespace {

template <class... Arguments>
void LogErrorAt(const CallSite& site, const char* format, Arguments... arguments) {
  const logging::LogSite place(site.file, site.line, logging::kError);
  logging::WriteLog(place, format, arguments...);
}

}  // namespace

bool IsValid(const SLElemData& record) {
  return record.uriScheme != SL_NO_URI && record.hwnd != nullptr && record.processId != 0 &&
         ::SysStringLen(record.objectId) != 0 && !SourceUriOf(record).empty();
}

bool CheckObject(const SLElemData& record, CallSite site) {
  if (IsValid(record)) return true;
  LogErrorAt(site, "Invalid SL object");
  return false;
}

void LogRoundTripFailure(const CallSite& site, const char* prefix, int code) {
  LogErrorAt(site, "%sSendMessageToBroker failed with %d", prefix, code);
}

void LogArchiveFailure(const CallSite& site, const char* prefix,
                       const Tessel::ArchiveException& failure) {
  LogErrorAt(site, "%sArchive failure: '%s'", prefix, failure.Message().c_str());
}

void NameObject(SLElemData& element, const SLElemData& source, CComBSTR& objectId) {
  element.hwnd = source.hwnd;
  element.processId = source.processId;
  element.uriScheme = source.uriScheme;
  ::SysFreeString(element.objectId);
  element.objectId = objectId.Detach();
  if (element.processId == 0) ::GetWindowThreadProcessId(element.hwnd, &element.processId);
}

void NameElement(SLElemData& element, const SLElemData& source, CComBSTR& objectId) {
  element.sourceUri = source.sourceUri;
  NameObject(element, source, objectId);
}

void ReadRectangle(JArchive& answer, RECT& rect) {
  answer >> rect.left >> rect.top >> rect.right >> rect.bottom;
}
