#include "tools/inspector/ResultText.h"

#include "TesselSilverlight.h"
#include "tools/shared/ConsoleText.h"

namespace {

struct ResultText {
  int code;
  const char* name;
  const char* meaning;
  const char* cure;
  ExitCode exitCode;
};

constexpr char kReadTheLog[] = "read the module's log (TESSEL_LOG_LEVEL=ERROR in the registry)";

constexpr ResultText kResultTexts[] = {
    {SL_FAILURE, "SL_FAILURE",
     "an injection of another client held the mutex, or it is not to be had", "try again",
     ExitCode::kUnreachable},
    {SL_CANNOT_READ, "SL_CANNOT_READ", "the broker sent no answer, or left",
     "look whether the broker still runs, and try again", ExitCode::kUnreachable},
    {SL_CANNOT_CONNECT, "SL_CANNOT_CONNECT", "the broker's pipe does not take the request",
     "look whether the broker is busy or has ended, and try again", ExitCode::kUnreachable},
    {SL_BROKER_NOT_STARTED, "SL_BROKER_NOT_STARTED",
     "no broker serves this address and scheme, and none could be started",
     "start one (SceneBroker SCENE --scheme SCHEME), and compare --address, --scheme and --window "
     "with what it prints; without --scheme the tailored one must run",
     ExitCode::kUnreachable},
    {SL_INJECTOR_NOT_STARTED, "SL_INJECTOR_NOT_STARTED",
     "no running broker shows this window's content, and there is no injector",
     "compare --window with the window that the broker prints, or put slinject.exe beside the "
     "module",
     ExitCode::kUnreachable},
    {SL_INJECTION_FAILED, "SL_INJECTION_FAILED",
     "no running broker shows this window's content, and the injection failed",
     "compare --window with the window that the broker prints", ExitCode::kUnreachable},
    {SL_NOT_SERVED, "SL_NOT_SERVED", "the broker does not show the content of this window",
     "compare --window with the window that the broker prints", ExitCode::kRefused},
    {SL_ARCHIVE_FAILURE, "SL_ARCHIVE_FAILURE", "the broker's answer is not what was asked for",
     "look whether the broker is of this version", ExitCode::kUnexpectedAnswer},
    {100, "the broker's status", "SceneBroker does not know the command",
     "look whether the broker is of this version", ExitCode::kRefused},
    {101, "the broker's status", "SceneBroker does not know the element",
     "find the element anew: the broker may have been started again", ExitCode::kRefused},
    {102, "the broker's status", "the element has no such attribute, or is no list",
     "compare with the scene file, or ask another element", ExitCode::kRefused},
    {103, "the broker's status", "SceneBroker could not read the request",
     "look whether the broker is of this version", ExitCode::kRefused},
};

ResultText TextOf(int code) {
  for (const ResultText& text : kResultTexts) {
    if (text.code == code) return text;
  }
  if (code > 0) {
    return {code, "the broker's status", "the broker refused",
            "read the broker's own documentation", ExitCode::kRefused};
  }
  return {code, "no name", "the call failed", kReadTheLog, ExitCode::kUnexpectedAnswer};
}

}  // namespace

InspectorError CallError(const std::string& what, const std::string& address, int code) {
  const ResultText text = TextOf(code);
  return {text.exitCode, "cannot " + what + "\n  address: " + tools::Printable(address) +
                             "\n  code:    " + std::to_string(code) + " (" + text.name +
                             "): " + text.meaning + "\n  to do:   " + text.cure};
}

std::string ExitCodeHelp() {
  return "Exit codes:\n"
         "  0  done\n"
         "  1  no element at the point, no focus, or no such parent\n"
         "  2  wrong command line, or no one window of that title or handle\n"
         "  3  no broker: not started, not connected, or no answer\n"
         "  4  the broker refused, with a status of its own\n"
         "  5  an answer that does not fit the request, or any other failure";
}
