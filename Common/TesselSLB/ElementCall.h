// Client process. The frame of every element export: validity, request, round trip, and what
// becomes of the failures. Its lines in the log carry the export's own place.
#pragma once

#include "TesselSLB/BrokerRoundTrip.h"

// Where a call stands. Clang 14 has no std::source_location with GNU's library.
struct CallSite {
  const char* file;
  int line;

  static constexpr CallSite current(const char* file = __builtin_FILE(),
                                    int line = __builtin_LINE()) {
    return {file, line};
  }
};

// Whether the record names an element.
bool IsValid(const SLElemData& record);

// The same, with a line in the log when it does not.
bool CheckObject(const SLElemData& record, CallSite site = CallSite::current());

// `prefix` stands before the message.
void LogRoundTripFailure(const CallSite& site, const char* prefix, int code);
void LogArchiveFailure(const CallSite& site, const char* prefix,
                       const Tessel::ArchiveException& failure);

// Gives `element` the window, process and scheme of `source`, and the object of that id.
void NameObject(SLElemData& element, const SLElemData& source, CComBSTR& objectId);

// The same with the address: an element of the same content.
void NameElement(SLElemData& element, const SLElemData& source, CComBSTR& objectId);

// An answer that ends early leaves the remaining fields as they were.
void ReadRectangle(JArchive& answer, RECT& rect);

// For commands that carry nothing after the object.
inline void NoArguments(JArchive& /*request*/) {}

// For commands whose answer ends with the status.
inline void NoResults(JArchive& /*answer*/) {}

// Request and answer of one call; `scheme` is found when it is not known yet.
template <class WriteRequest, class ReadAnswer>
int CallBroker(DWORD& scheme, const SLElemData& record, WriteRequest writeRequest,
               ReadAnswer readAnswer, const char* prefix, const CallSite& site) {
  try {
    JArchive request;
    writeRequest(request);
    JArchive answer;
    const int code = DispatchToBroker(scheme, request, answer, record.hwnd, SourceUriOf(record));
    if (code != SL_SUCCESS) {
      LogRoundTripFailure(site, prefix, code);
      return code;
    }
    readAnswer(answer);
    return SL_SUCCESS;
  } catch (const Tessel::ArchiveException& failure) {
    LogArchiveFailure(site, prefix, failure);
    return SL_ARCHIVE_FAILURE;
  }
}

// About an element that the caller has checked. `prefix` goes before what the frame logs.
template <class WriteArguments, class ReadAnswer>
int CallObject(wire::Command command, const SLElemData& object, WriteArguments writeArguments,
               ReadAnswer readAnswer, const char* prefix = "",
               CallSite site = CallSite::current()) {
  DWORD scheme = object.uriScheme;
  const auto writeRequest = [&](JArchive& request) {
    BuildObjectRequest(command, object, request);
    writeArguments(request);
  };
  return CallBroker(scheme, object, writeRequest, readAnswer, prefix, site);
}

// About a window, or an element of it: fills in the record's process and scheme.
template <class WriteArguments, class ReadAnswer>
int CallWindow(wire::Command command, SLElemData& window, WriteArguments writeArguments,
               ReadAnswer readAnswer, CallSite site = CallSite::current()) {
  const auto writeRequest = [&](JArchive& request) {
    BuildWindowRequest(command, window, request);
    writeArguments(request);
  };
  return CallBroker(window.uriScheme, window, writeRequest, readAnswer, "" /*prefix*/, site);
}
