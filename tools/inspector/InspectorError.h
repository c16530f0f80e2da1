// tessel. How it ends when it cannot do what it was told: the message and the exit code.
#pragma once

#include <stdexcept>
#include <string>

enum class ExitCode : int {
  kSuccess = 0,
  kNothingThere = 1,      // no element, or not exactly one, or no such ancestor
  kUsage = 2,             // wrong command line, or not exactly one window
  kUnreachable = 3,       // no broker: not started, not connected, no answer
  kRefused = 4,           // the broker's own status
  kUnexpectedAnswer = 5,  // an answer that does not fit the request
};

// Ends the tool; the message has been made for its user.
class InspectorError : public std::runtime_error {
 public:
  InspectorError(ExitCode exitCode, const std::string& message)
      : std::runtime_error(message), exitCode(exitCode) {}

  const ExitCode exitCode;
};

// "cannot WHAT: REASON; CURE", with the address.
InspectorError MakeRefusal(ExitCode exitCode, const std::string& what,
                           const std::string& reasonAndCure, const std::string& address);

// For a call that returned `code`. `what` completes "cannot ...".
InspectorError MakeCallFailure(const std::string& what, const std::string& address, int code);

// For the help text.
std::string ExitCodeHelp();
