// Part of tessel. Errors that end the tool: a message for the user and an exit code.
#pragma once

#include <stdexcept>
#include <string>

#include "tessel/Client.h"

enum class ExitCode : int {
  kSuccess = 0,
  kNothingThere = 1,      // no element, more than one element, or no such ancestor
  kUsage = 2,             // wrong command line, or not exactly one window
  kUnreachable = 3,       // the broker was not started, not connected, or did not answer
  kRefused = 4,           // the broker answered with a status of its own
  kUnexpectedAnswer = 5,  // an answer that does not fit the request
};

// main() prints the message as it is and returns the exit code.
class InspectorError : public std::runtime_error {
 public:
  InspectorError(ExitCode exitCode, const std::string& message)
      : std::runtime_error(message), exitCode(exitCode) {}

  const ExitCode exitCode;
};

// Makes the message "cannot WHAT: REASON; CURE", followed by the address.
InspectorError MakeRefusal(ExitCode exitCode, const std::string& what,
                           const std::string& reasonAndCure, const std::string& address);

// Makes the error for a call that failed. `what` completes the message "cannot ...".
InspectorError MakeCallFailure(const std::string& what, const tessel::Error& error);

// Returns the section of the help text that lists the exit codes.
std::string ExitCodeHelp();
