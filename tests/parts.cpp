// Takes the place of the programs that the module starts or talks to. The file name
// (sllauncher.exe, slinject.exe) or the first argument (broker, mute) selects the role. The
// launcher and the injector write how they were started into a file in their folder.
#include <windows.h>
// shellapi.h needs windows.h before it
#include <shellapi.h>

#include <iostream>
#include <sstream>

#include "TesselHost.h"
#include "support/ChildProcess.h"
#include "support/RawClient.h"
#include "support/Text.h"
#include "tessel/Text.h"
#include "wire/Commands.h"

namespace {

using std::filesystem::path;

const std::wstring kReleaseRequest =
    L'[' + std::to_wstring(static_cast<int>(wire::Command::kRelease)) + L',';

// Appends to the file: the command line, the current folder, the start-up flags and the show
// command, and the process id.
void RecordStart(const path& file) {
  STARTUPINFOW startup = {};
  ::GetStartupInfoW(&startup);
  std::ofstream(file, std::ios::app)
      << tessel::Narrow(::GetCommandLineW()) << '\n'
      << tessel::Narrow(std::filesystem::current_path().wstring()) << '\n'
      << startup.dwFlags << ' ' << startup.wShowWindow << '\n'
      << ::GetCurrentProcessId() << std::endl;
}

// Prints each request and sends the next answer. In requests and answers, ' stands for ". There are
// three special answers. "silent" waits until the client has given up. An answer that begins with
// "*" is repeated for ever. An answer that begins with "~" is sent without the "~". But if the
// request is a release, [0,true] is sent instead.
int Serve(DWORD scheme, const std::wstring& address, const std::vector<std::wstring>& answers) {
  std::cout << "InitComm " << InitComm(scheme, 60000, address.c_str()) << std::endl;
  for (auto answer = answers.begin(); answer != answers.end();) {
    wchar_t request[2000] = {};
    DWORD size = 2000;
    if (ReadMessage(request, &size) != SL_CHANNEL_SUCCESS) return 3;
    std::string printed = tessel::Narrow(request);
    std::replace(printed.begin(), printed.end(), '"', '\'');
    std::cout << printed << std::endl;
    if (*answer == L"silent") ::Sleep(25000);
    std::wstring text = *answer;
    std::replace(text.begin(), text.end(), L'\'', L'"');
    const bool forEver = text.front() == L'*';
    const bool toRelease =
        text.front() == L'~' && std::wstring_view(request).starts_with(kReleaseRequest);
    WriteMessage(toRelease ? L"[0,true]" : text.c_str() + text.find_first_not_of(L"*~"));
    if (!forEver) ++answer;
  }
  return 0;
}

// Plays the launcher. It must start a tailored broker if one argument has the form
// /origin:ADDRESS/TailoredBroker/SLBroker.xap. If the host name in ADDRESS begins with "serve",
// this process becomes the broker: after 20 s if the name begins with "serve-late", else at once.
// In all other cases this process exits.
int Launch(const std::vector<std::wstring>& arguments) {
  const std::wstring origin = arguments.at(3).substr(wcslen(L"/origin:"));
  const std::size_t tail = origin.find(L"/TailoredBroker/SLBroker.xap");
  const bool tailored = tail != std::wstring::npos;
  const std::wstring address = tailored ? origin.substr(0, tail) : origin;
  const std::wstring name =
      tailored ? path(address).filename().wstring() : address.substr(0, address.find(L':'));
  RecordStart(TestFolder() + L"sllauncher-" + name + L".txt");
  if (!name.starts_with(L"serve")) return 1;
  if (name.starts_with(L"serve-late")) ::Sleep(20000);
  return Serve(SL_TAILORED_URI, address, {L"*[0,'launched']"});
}

// Plays the injector. The environment variable TEST_INJECTOR contains how long the injection takes
// in milliseconds, the exit code, and optionally the command line of a broker to start.
int Inject(const std::wstring& argument) {
  const path record = TestFolder() + L"slinject-" + argument.substr(wcslen(L"--pid=")) + L".txt";
  RecordStart(record);
  DWORD milliseconds = 0;
  int code = 0;
  std::wstring command;
  std::wistringstream setting(::_wgetenv(L"TEST_INJECTOR"));
  std::getline(setting >> milliseconds >> code >> std::ws, command);
  ::Sleep(milliseconds);
  // The ChildProcess is never deleted, because its destructor would end the broker.
  if (!command.empty()) (new ChildProcess(command))->ReadLine();
  std::ofstream(record, std::ios::app) << "end" << std::endl;
  return code;
}

// Sends a request and never reads the answer.
int StayMute(const std::wstring& pipe) {
  RawClient client(pipe);
  client.Send(L"[1]");
  ::Sleep(60000);
  return 0;
}

}  // namespace

int main() {
  int count = 0;
  wchar_t** words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  const std::vector<std::wstring> arguments(words, words + count);
  if (arguments[0] == L"sllauncher.exe") return Launch(arguments);
  if (arguments[0] == L"slinject.exe") return Inject(arguments.at(1));
  if (arguments.at(1) == L"mute") return StayMute(arguments.at(2));
  return Serve(std::stoul(arguments.at(2)), arguments.at(3),
               {arguments.begin() + 4, arguments.end()});
}
