// Client process. The frame of every element export: validity, request, round trip, and what
// becomes of the failures. Its lines in the log carry the export's own place.
#pragma once

#include <source_location>

#include "TesselSLB/BrokerRoundTrip.h"

using CallSite = std::source_location;

// Whether the record names an element; logs when it does not.
bool CheckObject(const SLElemData& record, CallSite site = CallSite::current());

void LogRoundTripFailure(const CallSite& site, int code);
void LogArchiveFailure(const CallSite& site, const Tessel::ArchiveException& failure);

// Gives `element` the window, process and scheme of `source`, and the object of that id.
void NameElement(SLElemData& element, const SLElemData& source, CComBSTR& objectId);

// For calls whose command carries nothing behind the object.
inline void NoArguments(JArchive& /*request*/) {}

// Request and answer of one call; `scheme` is found when it is not known yet.
template <class WriteRequest, class ReadAnswer>
int CallBroker(DWORD& scheme, const SLElemData& record, WriteRequest writeRequest,
               ReadAnswer readAnswer, const CallSite& site) {
  try {
    JArchive request;
    writeRequest(request);
    JArchive answer;
    const int code = DispatchToBroker(scheme, request, answer, record.hwnd, AddressOf(record));
    if (code != SL_SUCCESS) {
      LogRoundTripFailure(site, code);
      return code;
    }
    readAnswer(answer);
    return SL_SUCCESS;
  } catch (const Tessel::ArchiveException& failure) {
    LogArchiveFailure(site, failure);
    return SL_ARCHIVE_FAILURE;
  }
}

// About an element that the caller has checked.
template <class WriteArguments, class ReadAnswer>
int CallObject(Command command, const SLElemData& object, WriteArguments writeArguments,
               ReadAnswer readAnswer, CallSite site = CallSite::current()) {
  DWORD scheme = object.uriScheme;
  const auto writeRequest = [&](JArchive& request) {
    BuildObjectRequest(command, object, request);
    writeArguments(request);
  };
  return CallBroker(scheme, object, writeRequest, readAnswer, site);
}

// About a window, or an element of it: fills in the record's process and scheme.
template <class WriteArguments, class ReadAnswer>
int CallWindow(Command command, SLElemData& window, WriteArguments writeArguments,
               ReadAnswer readAnswer, CallSite site = CallSite::current()) {
  const auto writeRequest = [&](JArchive& request) {
    BuildWindowRequest(command, window, request);
    writeArguments(request);
  };
  return CallBroker(window.uriScheme, window, writeRequest, readAnswer, site);
}
