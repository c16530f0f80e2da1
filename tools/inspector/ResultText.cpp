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

constexpr char kBrokersStatus[] = "the broker's own status";

constexpr ResultText kResultTexts[] = {
    {SL_FAILURE, "SL_FAILURE",
     "an injection of another client held the mutex, or it is not to be had", "try again",
     ExitCode::kUnreachable},
    {SL_INVALID_ARGUMENT, "SL_INVALID_ARGUMENT", "there is no such window, or no more",
     "compare --window with the window that the broker prints", ExitCode::kUsage},
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
    {SL_NOT_SERVED, "SL_NOT_SERVED",
     "the broker of this scheme and address does not show the content of this window",
     "compare --window and --scheme with what the broker prints, or search without --scheme",
     ExitCode::kRefused},
    {SL_ARCHIVE_FAILURE, "SL_ARCHIVE_FAILURE", "the broker's answer is not what was asked for",
     "look whether the broker is of this version", ExitCode::kUnexpectedAnswer},
    {SL_INVALID_OBJECT, "SL_INVALID_OBJECT", "the element's process or scheme is not known",
     "look whether the window still exists, and try again", ExitCode::kUnexpectedAnswer},
    {100, kBrokersStatus, "as SceneBroker's: it does not know the command",
     "look whether the broker is of this version", ExitCode::kRefused},
    {101, kBrokersStatus, "as SceneBroker's: it does not know the element",
     "find the element anew: the broker may have been started again", ExitCode::kRefused},
    {kStatusNotSupported, kBrokersStatus,
     "as SceneBroker's: the element has no such attribute, state or item, is no list, or is not "
     "below the other one",
     "see what it has with tessel tree, or ask another element", ExitCode::kRefused},
    {103, kBrokersStatus, "as SceneBroker's: it could not read the request",
     "look whether the values are allowed and the broker is of this version", ExitCode::kRefused},
};

ResultText TextOf(int code) {
  for (const ResultText& text : kResultTexts) {
    if (text.code == code) return text;
  }
  return {code, kBrokersStatus, "it refused", "read the broker's own documentation",
          ExitCode::kRefused};
}

}  // namespace

InspectorError RefusalError(ExitCode exitCode, const std::string& what,
                            const std::string& reasonAndCure, const std::string& address) {
  return {exitCode,
          "cannot " + what + ": " + reasonAndCure + "\n  address: " + tools::Printable(address)};
}

InspectorError CallError(const std::string& what, const std::string& address, int code) {
  const ResultText text = TextOf(code);
  return {text.exitCode, "cannot " + what + "\n  address: " + tools::Printable(address) +
                             "\n  code:    " + std::to_string(code) + " (" + text.name +
                             "): " + text.meaning + "\n  to do:   " + text.cure};
}

std::string ExitCodeHelp() {
  return "Exit codes:\n"
         "  0  done\n"
         "  1  no such element: none at the point, no focus, no such ancestor, no one match\n"
         "  2  wrong command line, or no one window of that title or handle\n"
         "  3  no broker: not started, not connected, or no answer\n"
         "  4  the broker refused, with a status of its own\n"
         "  5  an answer that does not fit the request, or any other failure";
}
