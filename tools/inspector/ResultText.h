// tessel. What result codes mean to its user, and how the tool ends on them.
#pragma once

#include <stdexcept>
#include <string>

enum class ExitCode : int {
  kSuccess = 0,
  kNothingThere = 1,      // no element, or none alone, or no such ancestor
  kUsage = 2,             // wrong command line, or no one window
  kUnreachable = 3,       // no broker: not started, not connected, no answer
  kRefused = 4,           // the broker's own status
  kUnexpectedAnswer = 5,  // an answer that is no answer to the request
};

// SceneBroker's status for an element that has not what is asked for.
inline constexpr int kStatusNotSupported = 102;

// Ends the tool; the message has been made for its user.
class InspectorError : public std::runtime_error {
 public:
  InspectorError(ExitCode exitCode, const std::string& message)
      : std::runtime_error(message), exitCode(exitCode) {}

  const ExitCode exitCode;
};

// "cannot WHAT: REASON; CURE", with the address.
InspectorError RefusalError(ExitCode exitCode, const std::string& what,
                            const std::string& reasonAndCure, const std::string& address);

// The error of a call that gave `code`. `what` completes "cannot ...".
InspectorError CallError(const std::string& what, const std::string& address, int code);

// For the help text.
std::string ExitCodeHelp();
