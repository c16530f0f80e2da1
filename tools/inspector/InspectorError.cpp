#include "tools/inspector/InspectorError.h"

namespace {

ExitCode ExitCodeOf(int code) {
  switch (code) {
    case SL_INVALID_ARGUMENT:
      return ExitCode::kUsage;
    case SL_FAILURE:
    case SL_CANNOT_READ:
    case SL_CANNOT_CONNECT:
    case SL_BROKER_NOT_STARTED:
    case SL_INJECTOR_NOT_STARTED:
    case SL_INJECTION_FAILED:
      return ExitCode::kUnreachable;
    case SL_ARCHIVE_FAILURE:
    case SL_INVALID_OBJECT:
      return ExitCode::kUnexpectedAnswer;
    default:
      return ExitCode::kRefused;
  }
}

}  // namespace

InspectorError MakeRefusal(ExitCode exitCode, const std::string& what,
                           const std::string& reasonAndCure, const std::string& address) {
  return {exitCode,
          "cannot " + what + ": " + reasonAndCure + "\n  address: " + tessel::Printable(address)};
}

InspectorError MakeCallFailure(const std::string& what, const tessel::Error& error) {
  const std::string address = tessel::Narrow(error.address);
  // A meaning that is not the one of the table was written for this failure by the client library.
  // It explains enough, so the message leaves out the code.
  if (error.meaning != tessel::DescribeResult(error.code).meaning) {
    return MakeRefusal(ExitCodeOf(error.code), what, error.meaning + "; " + error.cure, address);
  }
  return {ExitCodeOf(error.code), "cannot " + what + "\n  address: " + tessel::Printable(address) +
                                      "\n  code:    " + std::to_string(error.code) + " (" +
                                      error.name + "): " + error.meaning +
                                      "\n  to do:   " + error.cure};
}

std::string ExitCodeHelp() {
  return "Exit codes:\n"
         "  0  done\n"
         "  1  no such element: none at the point, no focus, no such ancestor, not exactly one "
         "match\n"
         "  2  wrong command line, or not exactly one window with that title or handle\n"
         "  3  no broker: not started, not connected, or no answer\n"
         "  4  the broker refused, with a status of its own\n"
         "  5  the answer does not fit the request, or any other failure";
}
