// Runs in the client. The code that all exported element functions share: check the record, build
// the request, send it, read the answer, and turn failures into log lines and result codes. The log
// lines name the source file and line of the exported function.
#pragma once

#include "TesselSLB/BrokerRoundTrip.h"

// The source file and line of a call. Replaces std::source_location, which Clang 14 does not
// support with GNU's standard library.
struct CallSite {
  const char* file;
  int line;

  static constexpr CallSite current(const char* file = __builtin_FILE(),
                                    int line = __builtin_LINE()) {
    return {file, line};
  }
};

// Returns true if the record names an element: its scheme, window, process id, object id and
// address are all set.
bool IsValid(const SLElemData& record);

// Returns the same as IsValid. Logs an error if the record is not valid.
bool CheckObject(const SLElemData& record, CallSite site = CallSite::current());

// LogRoundTripFailure and LogArchiveFailure write an error line that begins with `prefix`.
void LogRoundTripFailure(const CallSite& site, const char* prefix, int code);
void LogArchiveFailure(const CallSite& site, const char* prefix,
                       const Tessel::ArchiveException& failure);

// Makes `element` name an object in the window, process and scheme of `source`. Moves the id out of
// `objectId`. Frees the old id of `element`, but does not release the old object.
void NameObject(SLElemData& element, const SLElemData& source, CComBSTR& objectId);

// Does the same as NameObject and also copies the address of `source`.
void NameElement(SLElemData& element, const SLElemData& source, CComBSTR& objectId);

// Reads the four sides of a rectangle. If the answer ends early, throws ArchiveException and leaves
// the remaining sides unchanged.
void ReadRectangle(JArchive& answer, RECT& rect);

// Used for commands without arguments after the object id.
inline void NoArguments(JArchive& /*request*/) {}

// Used for commands whose answer contains only the status.
inline void NoResults(JArchive& /*answer*/) {}

// Sends one request and reads its answer. If `scheme` is SL_NO_URI, finds the scheme of the broker
// that answers, and stores the found scheme in `scheme`. Logs a failure with `prefix` and `site`.
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

// Makes a call about an element that the caller has checked with CheckObject. Puts `prefix` before
// the messages that report a failure.
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

// Makes a call about a window or an element in a window. Sets the process id and the scheme of
// `window` if they are not known yet.
template <class WriteArguments, class ReadAnswer>
int CallWindow(wire::Command command, SLElemData& window, WriteArguments writeArguments,
               ReadAnswer readAnswer, CallSite site = CallSite::current()) {
  const auto writeRequest = [&](JArchive& request) {
    BuildWindowRequest(command, window, request);
    writeArguments(request);
  };
  return CallBroker(window.uriScheme, window, writeRequest, readAnswer, "" /*prefix*/, site);
}
