// Any program. The result codes of the element functions, in words for users.
#pragma once

#include "TesselCodes.h"
#include "wire/Statuses.h"

namespace tools {

struct ResultCode {
  int number;
  const char* name;
  const char* meaning;
  const char* cure;
};

// Every SLResult, what GetElementValue returns, and the statuses that brokers are recommended to
// use. The latter say "usually", because a broker may mean something else by the same number.
inline constexpr ResultCode kResultCodes[] = {
    {SL_SUCCESS, "SL_SUCCESS", "the broker has done what it was asked", "nothing"},
    {SL_FAILURE, "SL_FAILURE",
     "the broker refused a release, or the mutex of injections could not be had: another client "
     "held it for too long, or it cannot be opened",
     "try again"},
    {SL_INVALID_ARGUMENT, "SL_INVALID_ARGUMENT",
     "the window does not exist, or not any more, or an argument is empty that must not be",
     "compare the window with the one that the broker prints, and fill in the argument"},
    {SL_CANNOT_READ, "SL_CANNOT_READ", "the broker sent no answer, or left",
     "look whether the broker still runs, and try again"},
    {SL_CANNOT_CONNECT, "SL_CANNOT_CONNECT", "the broker's pipe does not take the request",
     "look whether the broker is busy or has ended, and try again"},
    {SL_NOT_SERVED, "SL_NOT_SERVED",
     "the broker of this scheme and address does not show the content of this window",
     "compare window and scheme with what the broker prints, or search without a scheme"},
    {SL_BROKER_NOT_STARTED, "SL_BROKER_NOT_STARTED",
     "no broker serves this address and scheme, and none could be started",
     "start one (SceneBroker SCENE --scheme SCHEME), and compare address, scheme and window with "
     "what it prints; without a scheme the tailored one must run"},
    {SL_INJECTOR_NOT_STARTED, "SL_INJECTOR_NOT_STARTED",
     "no running broker shows this window's content, and there is no injector",
     "compare the window with the one that the broker prints, or put slinject.exe beside the "
     "module"},
    {SL_INJECTION_FAILED, "SL_INJECTION_FAILED",
     "no running broker shows this window's content, and the injection failed",
     "compare the window with the one that the broker prints"},
    {SL_ARCHIVE_FAILURE, "SL_ARCHIVE_FAILURE", "the broker's answer is not what was asked for",
     "look whether the broker is of this version"},
    {SL_INVALID_OBJECT, "SL_INVALID_OBJECT",
     "the element's process, window, scheme, address or id is not known",
     "look whether the window still exists, and find the element again"},
    {static_cast<int>(0x80004001), "E_NOTIMPL", "the module does not have this function",
     "use another function"},
    {wire::kUnknownCommand, "BROKER_UNKNOWN_COMMAND",
     "a status of the broker, usually: it does not know the command",
     "look whether the broker is of this version"},
    {wire::kUnknownElement, "BROKER_UNKNOWN_ELEMENT",
     "a status of the broker, usually: it does not know the element",
     "find the element again: the broker may have been started again"},
    {wire::kNotSupported, "BROKER_NOT_SUPPORTED",
     "a status of the broker, usually: the element has no such attribute, state or item, is no "
     "list, or is not below the other one",
     "see what the element has (tessel tree), or ask another one"},
    {wire::kMalformedRequest, "BROKER_MALFORMED_REQUEST",
     "a status of the broker, usually: it could not read the request",
     "look whether the values are allowed and the broker is of this version"},
};

// Any other number is a status that only its broker knows.
constexpr ResultCode DescribeResult(int number) {
  for (const ResultCode& code : kResultCodes) {
    if (code.number == number) return code;
  }
  return {number, "the broker's own status", "it refused", "read the broker's own documentation"};
}

}  // namespace tools
