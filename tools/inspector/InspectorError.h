// Part of tessel. Errors that end the tool: a message for the user and an exit code.
#pragma once

#include <windows.h>

#include <optional>
#include <stdexcept>
#include <string>

#include "tessel/Client.h"

// docs/inspector.md lists the exit codes, and so does ExitCodeHelp().
enum class ExitCode : int {
  kSuccess = 0,
  kNothingThere = 1,     // no element, more than one element, or no such ancestor
  kUsage = 2,            // wrong command line, not exactly one window, or another -5
  kNotStarted = 3,       // -9
  kRefused = 4,          // the broker refused, with -8 or with a positive status
  kFailed = 5,           // an answer that does not fit the request, or any other failure
  kNotConnected = 6,     // -7
  kNoAnswer = 7,         // -6
  kInjectionFailed = 8,  // -10 and -11
  kTimedOut = 9,         // a wait that timed out
  kInterrupted = 130,    // Ctrl-C
};

// What went wrong, in parts, for the error as JSON.
struct Failure {
  std::optional<int> code = {};  // the result code, if a call returned one
  std::string name = {};         // the name of the code
  std::string meaning = {};
  std::string cure = {};
};

class InspectorError : public std::runtime_error {
 public:
  // The message is "MEANING; CURE".
  InspectorError(ExitCode exitCode, const std::string& meaning, const std::string& cure)
      : InspectorError(exitCode, meaning + "; " + cure, Failure{.meaning = meaning, .cure = cure}) {
  }
  InspectorError(ExitCode exitCode, const std::string& message, const Failure& failure)
      : std::runtime_error(message), exitCode(exitCode), failure(failure) {}

  const ExitCode exitCode;
  const Failure failure;
};

// Makes the message "cannot WHAT: REASON; CURE", followed by the address.
InspectorError MakeRefusal(ExitCode exitCode, const std::string& what, const std::string& reason,
                           const std::string& cure, const std::string& address);

// Makes the error for a call that failed. `what` completes the message "cannot ...". `scheme` is
// the scheme of the call. If no broker or the wrong broker has answered, the message shows the
// pipes that a call with this scheme tries.
InspectorError MakeCallFailure(const std::string& what, const tessel::Error& error, DWORD scheme);

// Prints the error to standard error, as text or as one line of JSON. Returns the exit code.
int PrintError(const InspectorError& error, bool json);

// Returns the section of the help text that lists the exit codes.
std::string ExitCodeHelp();
