#include "tools/inspector/InspectorError.h"

#include <iostream>

#include "tools/inspector/BrokerPipes.h"
#include "tools/inspector/Report.h"
#include "tools/inspector/StartupPaths.h"

namespace {

ExitCode ExitCodeOf(int code) {
  switch (code) {
    case SL_INVALID_ARGUMENT:
      return ExitCode::kUsage;
    case SL_CANNOT_READ:
      return ExitCode::kNoAnswer;
    case SL_CANNOT_CONNECT:
      return ExitCode::kNotConnected;
    case SL_BROKER_NOT_STARTED:
      return ExitCode::kNotStarted;
    case SL_INJECTOR_NOT_STARTED:
    case SL_INJECTION_FAILED:
      return ExitCode::kInjectionFailed;
    case SL_NOT_SERVED:
      return ExitCode::kRefused;
    case tessel::kTimedOut:
      return ExitCode::kTimedOut;
    default:
      return code > SL_SUCCESS ? ExitCode::kRefused : ExitCode::kFailed;
  }
}

std::string Existing(bool exists) { return exists ? " (exists)" : " (does not exist)"; }

std::string LauncherLine() {
  const std::wstring path = LauncherPath();
  return "\n  launcher: " + tessel::Narrow(path) + Existing(FileExists(path));
}

std::string PipeLines(const tessel::Error& error, DWORD scheme) {
  std::string lines;
  for (const BrokerPipe& pipe : PipesToTry(scheme, error.address)) {
    lines += "\n  pipe:    " + tessel::Narrow(pipe.name) + Existing(pipe.exists);
  }
  return lines;
}

// Returns the lines that help to find out why no broker or the wrong broker has answered. Returns
// an empty text for all other codes.
std::string HelpLines(const tessel::Error& error, DWORD scheme) {
  const bool isUnreachable =
      error.BrokerIsLost() || ExitCodeOf(error.code) == ExitCode::kInjectionFailed;
  const bool isWrong = error.code == SL_NOT_SERVED || error.code == SL_ARCHIVE_FAILURE;
  if (!isUnreachable && !isWrong) return {};
  return PipeLines(error, scheme) + (isUnreachable ? LauncherLine() : "") +
         "\n  see:     tessel doctor (checks each step of a call), tessel log, tessel explain " +
         std::to_string(error.code) + ", docs/not-working.md";
}

Json ValueOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

std::string JsonLine(const InspectorError& error) {
  const Failure& failure = error.failure;
  const Json members = {{"code", failure.code ? Json(*failure.code) : Json()},
                        {"name", ValueOrNull(failure.name)},
                        {"meaning", failure.meaning},
                        {"cure", ValueOrNull(failure.cure)},
                        {"exit", static_cast<int>(error.exitCode)}};
  return LineOf(Json{{"error", members}});
}

}  // namespace

InspectorError MakeRefusal(ExitCode exitCode, const std::string& what, const std::string& reason,
                           const std::string& cure, const std::string& address) {
  return {
      exitCode,
      "cannot " + what + ": " + reason + "; " + cure + "\n  address: " + tessel::Printable(address),
      Failure{.meaning = "cannot " + what + ": " + reason, .cure = cure}};
}

InspectorError MakeCallFailure(const std::string& what, const tessel::Error& error, DWORD scheme) {
  const std::string address = "\n  address: " + tessel::Printable(tessel::Narrow(error.address));
  const Failure failure = {error.code, error.name, error.meaning, error.cure};
  // For some failures, the client library writes its own meaning in place of the one in the table
  // of codes. Such a meaning explains enough, so the message leaves out the code.
  if (error.meaning != tessel::DescribeResult(error.code).meaning) {
    return {ExitCodeOf(error.code),
            "cannot " + what + ": " + error.meaning + "; " + error.cure + address, failure};
  }
  return {ExitCodeOf(error.code),
          "cannot " + what + address + "\n  code:    " + std::to_string(error.code) + " (" +
              error.name + "): " + error.meaning + "\n  to do:   " + error.cure +
              HelpLines(error, scheme),
          failure};
}

int PrintError(const InspectorError& error, bool json) {
  std::cerr << (json ? JsonLine(error) : "tessel: " + std::string(error.what()) + '\n')
            << std::flush;
  return static_cast<int>(error.exitCode);
}

std::string ExitCodeHelp() {
  return "Exit codes:\n"
         "  0  done\n"
         "  1  no such element: none at the point, no focus, no such ancestor, not exactly one "
         "match\n"
         "  2  wrong command line, or not exactly one window with that title or handle\n"
         "  3  no broker runs, and none could be started (code -9)\n"
         "  4  the broker refused: code -8 or a positive status\n"
         "  5  the answer does not fit the request, or any other failure\n"
         "  6  the broker's pipe does not take the request (code -7)\n"
         "  7  the broker did not answer (code -6)\n"
         "  8  no broker could be injected (codes -10 and -11)\n"
         "  9  a wait timed out\n"
         "  130  ended by Ctrl-C";
}
