#include "tools/inspector/log/LoggedCommand.h"

#include "tessel/Text.h"
#include "tools/inspector/InspectorError.h"

namespace {

// Quotes an argument for programs that split their command line by the usual rules of Windows: a
// backslash is only special before a double quote, and there each backslash is doubled.
std::wstring QuotedArgument(const std::wstring& argument) {
  if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == argument.npos) return argument;
  std::wstring quoted = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t unit : argument) {
    if (unit == L'"') quoted.append(backslashes + 1, L'\\');
    backslashes = unit == L'\\' ? backslashes + 1 : 0;
    quoted += unit;
  }
  return quoted.append(backslashes, L'\\') += L'"';
}

}  // namespace

tools::Handle StartCommand(const std::vector<std::string>& arguments) {
  std::wstring line;
  for (const std::string& argument : arguments) {
    if (!line.empty()) line += L' ';
    line += QuotedArgument(tessel::Wide(argument));
  }
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  if (!::CreateProcessW(nullptr /*program*/, line.data(), nullptr /*process security*/,
                        nullptr /*thread security*/, TRUE /*inherit handles*/, 0 /*flags*/,
                        nullptr /*environment*/, nullptr /*directory*/, &startup, &started)) {
    throw InspectorError(ExitCode::kUsage,
                         "cannot start " + tessel::Quoted(arguments.front()) + ": error " +
                             std::to_string(::GetLastError()),
                         "check the name of the program");
  }
  ::CloseHandle(started.hThread);
  return tools::Handle(started.hProcess);
}
