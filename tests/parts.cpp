// Takes the place of the programs that the module starts or talks to. The file name
// (sllauncher.exe, slinject.exe) or the first argument (broker, mute) selects the role. The
// launcher and the injector write how they were started into a file in their folder.
#include <windows.h>
// shellapi.h needs windows.h before it
#include <shellapi.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "TesselHost.h"
#include "TesselSilverlight.h"
#include "support/ChildProcess.h"
#include "support/RawClient.h"
#include "support/Text.h"
#include "wire/Commands.h"

namespace {

using std::filesystem::path;

const std::wstring kReleaseRequest =
    L'[' + std::to_wstring(static_cast<int>(wire::Command::kRelease)) + L',';

void Print(const std::string& line) {
  std::puts(line.c_str());
  std::fflush(stdout);
}

// Appends to the file: the command line, the current folder, the start-up flags and the show
// command, and the process id.
void RecordStart(const path& file) {
  STARTUPINFOW startup = {};
  ::GetStartupInfoW(&startup);
  std::ofstream(file, std::ios::app) << Narrow(::GetCommandLineW()) << '\n'
                                     << Narrow(std::filesystem::current_path().c_str()) << '\n'
                                     << startup.dwFlags << ' ' << startup.wShowWindow << '\n'
                                     << ::GetCurrentProcessId() << std::endl;
}

template <class Function>
Function* Import(HMODULE module, const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

// Prints each request and sends the next answer. In an answer, ' stands for ". Special answers:
// "silent" waits until the client has given up. An answer after "*" is repeated for ever. An answer
// after "~" is [0,true] instead if the request is a release.
int Serve(const path& moduleFolder, DWORD scheme, const wchar_t* address,
          const std::vector<std::wstring>& answers) {
  const HMODULE module = ::LoadLibraryW((moduleFolder / L"TesselSLB_x64.dll").c_str());
  if (module == nullptr) return 2;
  const auto init = Import<decltype(InitComm)>(module, "InitComm");
  const auto read = Import<decltype(ReadMessage)>(module, "ReadMessage");
  const auto write = Import<decltype(WriteMessage)>(module, "WriteMessage");
  Print("InitComm " + std::to_string(init(scheme, 60000, address)));
  for (auto answer = answers.begin(); answer != answers.end();) {
    wchar_t request[2000] = {};
    DWORD size = 2000;
    if (read(request, &size) != SL_CHANNEL_SUCCESS) return 3;
    Print(Narrow(request));
    if (*answer == L"silent") ::Sleep(25000);
    std::wstring text = *answer;
    std::replace(text.begin(), text.end(), L'\'', L'"');
    const bool forEver = text.front() == L'*';
    const bool toRelease =
        text.front() == L'~' && std::wstring_view(request).starts_with(kReleaseRequest);
    write(toRelease ? L"[0,true]" : text.c_str() + text.find_first_not_of(L"*~"));
    if (!forEver) ++answer;
  }
  return 0;
}

// Plays the launcher. If the origin is a tailored one whose host begins with "serve", becomes the
// broker: after 20 s if the host begins with "serve-late", else at once. For any other origin
// exits.
int Launch(const std::vector<std::wstring>& arguments) {
  const path package = arguments.at(2).substr(wcslen(L"/emulate:"));
  const std::wstring origin = arguments.at(3).substr(wcslen(L"/origin:"));
  const std::size_t tail = origin.find(L"/TailoredBroker/SLBroker.xap");
  const bool tailored = tail != std::wstring::npos;
  const std::wstring address = tailored ? origin.substr(0, tail) : origin;
  const std::wstring name =
      tailored ? path(address).filename().wstring() : address.substr(0, address.find(L':'));
  RecordStart(TestFolder() + L"sllauncher-" + name + L".txt");
  if (!name.starts_with(L"serve")) return 1;
  if (name.starts_with(L"serve-late")) ::Sleep(20000);
  return Serve(package.parent_path(), SL_TAILORED_URI, address.c_str(), {L"*[0,'launched']"});
}

// Plays the injector. Reads the file slinject-PROCESS.in. The file contains how long the injection
// takes in milliseconds, the exit code, and optionally the command line of a broker to start.
int Inject(const std::wstring& argument) {
  const std::wstring name = TestFolder() + L"slinject-" + argument.substr(wcslen(L"--pid="));
  const path record = name + L".txt";
  RecordStart(record);
  DWORD milliseconds = 0;
  int code = 0;
  std::string command;
  std::ifstream settings((name + L".in").c_str());
  settings >> milliseconds >> code >> std::ws;
  std::getline(settings, command);
  ::Sleep(milliseconds);
  // The ChildProcess is never deleted, because its destructor would end the broker.
  if (!command.empty()) (new ChildProcess({command.begin(), command.end()}))->ReadLine();
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
  return Serve(TestFolder(), std::stoul(arguments.at(2)), words[3],
               {arguments.begin() + 4, arguments.end()});
}
