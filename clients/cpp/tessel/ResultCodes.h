// Runs in any program. The table that explains all result codes to users.
#pragma once

#include "TesselCodes.h"
#include "wire/Statuses.h"

namespace tessel {

// The codes that the client libraries add to those of the module (SLResult).
enum ClientResult : int {
  kOutOfMemory = -101,  // only in the C interface; the C++ library throws std::bad_alloc
  kBadHandle = -102,    // only in the C interface
  kTimedOut = -103,     // a condition was not met in time
};

struct ResultCode {
  int number;
  const char* name;
  const char* meaning;
  const char* cure;
};

// Every SLResult, the E_NOTIMPL that GetElementValue returns, the codes of the client libraries,
// and the statuses that brokers should use. The meanings of the statuses begin with "usually",
// because a broker may give the same number another meaning.
inline constexpr ResultCode kResultCodes[] = {
    {SL_SUCCESS, "SL_SUCCESS", "the broker has done what it was asked", "nothing"},
    {SL_FAILURE, "SL_FAILURE",
     "the broker refused a release, or the mutex for injections could not be obtained: another "
     "client held it for too long, or it cannot be opened",
     "try again"},
    {SL_INVALID_ARGUMENT, "SL_INVALID_ARGUMENT",
     "the window does not exist or no longer exists, or an argument is empty that must not be",
     "compare the window with the one that the broker prints, and fill in the argument"},
    {SL_CANNOT_READ, "SL_CANNOT_READ", "the broker sent no answer, or left",
     "check that the broker still runs, and try again"},
    {SL_CANNOT_CONNECT, "SL_CANNOT_CONNECT", "the broker's pipe does not take the request",
     "check that the broker still runs and is not busy, and try again"},
    {SL_NOT_SERVED, "SL_NOT_SERVED",
     "the broker of this scheme and address does not show the content of this window",
     "compare window and scheme with what the broker prints, or leave out the scheme"},
    {SL_BROKER_NOT_STARTED, "SL_BROKER_NOT_STARTED",
     "no broker that runs serves this address, scheme and window, and none could be started",
     "start one (SceneBroker SCENE --scheme SCHEME), and compare address, scheme and window with "
     "what it prints; without a scheme the tailored broker must run"},
    {SL_INJECTOR_NOT_STARTED, "SL_INJECTOR_NOT_STARTED",
     "no running broker shows this window's content, and there is no injector",
     "compare the window with the one that the broker prints, or put slinject.exe beside the "
     "module"},
    {SL_INJECTION_FAILED, "SL_INJECTION_FAILED",
     "no running broker shows this window's content, and the injection failed",
     "compare the window with the one that the broker prints"},
    {SL_ARCHIVE_FAILURE, "SL_ARCHIVE_FAILURE", "the broker's answer does not fit the request",
     "see with tessel doctor which program answers; if it is a broker, check that it has the same "
     "version"},
    {SL_INVALID_OBJECT, "SL_INVALID_OBJECT",
     "the element's process, window, scheme, address or id is not known",
     "check that the window still exists, and find the element again"},
    {static_cast<int>(0x80004001), "E_NOTIMPL", "the module does not have this function",
     "use another function"},
    {kOutOfMemory, "TESSEL_OUT_OF_MEMORY", "memory is exhausted",
     "free what the program does not need, or end other programs"},
    {kBadHandle, "TESSEL_BAD_HANDLE",
     "the handle is 0, was freed before, or names an object of another kind",
     "use the handle that the library returned, and use it until it is freed"},
    {kTimedOut, "TESSEL_TIMED_OUT", "the condition was not met in time",
     "compare what was seen last with what was expected, or wait longer"},
    {wire::kUnknownCommand, "BROKER_UNKNOWN_COMMAND",
     "a status of the broker, usually: it does not know the command",
     "check that the broker has the same version"},
    {wire::kUnknownElement, "BROKER_UNKNOWN_ELEMENT",
     "a status of the broker, usually: it does not know the element",
     "find the element again: the broker may have been started again"},
    {wire::kNotSupported, "BROKER_NOT_SUPPORTED",
     "a status of the broker, usually: the element has no such attribute, state or item, is not a "
     "list, or is not below the other element",
     "see the element's items (tessel items) and states (tessel tree); the broker's documentation "
     "names the attributes"},
    {wire::kMalformedRequest, "BROKER_MALFORMED_REQUEST",
     "a status of the broker, usually: it could not read the request",
     "check that the values are allowed and that the broker has the same version"},
    {wire::kNotRecorded, "BROKER_NOT_RECORDED",
     "a status of the broker, usually: it replays a recording, and the request differs from the "
     "recorded one",
     "see the deviation that SceneBroker has printed, and send the recorded requests in their "
     "order"},
};

// Returns the explanation of a result code. A number that is not in the table is a status of the
// broker, and only the broker knows its meaning.
constexpr ResultCode DescribeResult(int number) {
  for (const ResultCode& code : kResultCodes) {
    if (code.number == number) return code;
  }
  return {number, "the broker's own status", "it refused", "read the broker's own documentation"};
}

}  // namespace tessel
