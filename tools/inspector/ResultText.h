// tessel. What result codes mean to its user, and how the tool ends on them.
#pragma once

#include <stdexcept>
#include <string>

enum class ExitCode : int {
  kSuccess = 0,
  kNothingThere = 1,      // no element at the point, no focus, no such parent
  kUsage = 2,             // wrong command line, or no one window
  kUnreachable = 3,       // no broker: not started, not connected, no answer
  kRefused = 4,           // the broker's own status
  kUnexpectedAnswer = 5,  // an answer that is no answer to the request
};

// Ends the tool; the message has been made for its user.
class InspectorError : public std::runtime_error {
 public:
  InspectorError(ExitCode exitCode, const std::string& message)
      : std::runtime_error(message), exitCode(exitCode) {}

  const ExitCode exitCode;
};

// The error of a call that gave `code`. `what` completes "cannot ...".
InspectorError CallError(const std::string& what, const std::string& address, int code);

// For the help text.
std::string ExitCodeHelp();
