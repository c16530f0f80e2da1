// SceneBroker's main program. Serves a scene to the module's clients, as the broker of real content
// would. Prints facts about the scene at the start, then each request and its answer, and a summary
// at the end.
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>

#include "tools/faults/FaultOptions.h"
#include "tools/faults/FaultyPipe.h"
#include "tools/scenebroker/HostChannel.h"
#include "tools/scenebroker/HostModule.h"
#include "tools/scenebroker/NoticeWindows.h"
#include "tools/scenebroker/SceneReader.h"
#include "tools/scenebroker/SceneReport.h"
#include "tools/scenebroker/SceneService.h"
#include "tools/scenebroker/SceneWindow.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"
#include "wire/Addresses.h"

namespace {

using tessel::Narrow;
using tessel::Wide;

constexpr int kFailure = 1;

struct Options {
  std::string scene;
  std::string scheme = "tailored";
  std::string dll;
  int additionalWindows = 0;
  tools::FaultOptions faults;
};

std::optional<int> ReadOptions(Options& options) {
  CLI::App app(
      "Serves a scene, a form described by a JSON file, to clients of TesselSLB_x64.dll until "
      "Ctrl-C.",
      "SceneBroker");
  app.allow_windows_style_options(false);  // "/x" is a path, not an option
  app.add_option("scene", options.scene, "The scene file")->required()->type_name("SCENE");
  tools::AddSchemeOption(app, options.scheme, "The scheme to serve")->capture_default_str();
  app.add_option("--dll", options.dll,
                 "The module. The default is TesselSLB_x64.dll in the folder of this program")
      ->type_name("PATH");
  app.add_option("--additional-windows", options.additionalWindows,
                 "How many of the module's additional windows to create; each is notified of every "
                 "change")
      ->check(CLI::Range(0, kMostNoticeWindows))
      ->type_name("COUNT")
      ->capture_default_str();
  tools::AddFaultOptions(app, options.faults);
  app.footer(
      "Exit codes: 0 stopped by Ctrl-C or by closing the window, 1 the scene cannot be shown or "
      "served,\n2 wrong command line, 4 ended by the fault crash.");
  return tools::ParseCommandLine(app);
}

std::wstring DefaultModulePath() {
  std::wstring path(32768, L'\0');
  path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.rfind(L'\\') + 1) + L"TesselSLB_x64.dll";
}

// Windows calls the console handler on a separate thread and passes only the event, so the handler
// finds the server in `serverToStop`. The mutex keeps the server alive while the handler uses it.
std::mutex serverMutex;
tools::RequestServer* serverToStop = nullptr;

// For the first Ctrl-C or Ctrl-Break, stops the server and returns TRUE; the broker then ends in
// order. For a second Ctrl-C or Ctrl-Break, and for any other event, returns FALSE, and Windows
// ends the process. This is needed if the last answer waits for a client that never reads it.
BOOL WINAPI OnConsoleEvent(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  const std::lock_guard lock(serverMutex);
  return serverToStop != nullptr && serverToStop->Stop();
}

class StopOnConsoleEvent {
 public:
  explicit StopOnConsoleEvent(tools::RequestServer& server) {
    Set(&server);
    ::SetConsoleCtrlHandler(&OnConsoleEvent, TRUE /*add*/);
  }
  ~StopOnConsoleEvent() { Set(nullptr); }
  StopOnConsoleEvent(const StopOnConsoleEvent&) = delete;
  StopOnConsoleEvent& operator=(const StopOnConsoleEvent&) = delete;

 private:
  static void Set(tools::RequestServer* server) {
    const std::lock_guard lock(serverMutex);
    serverToStop = server;
  }
};

void Serve(tools::RequestServer& server, ServedScene& served, const NoticeWindows& notices) {
  SceneService service(served, ::GetCurrentProcessId());
  const auto answer = [&](const std::wstring& request) {
    const std::string text = Narrow(request);
    const SceneAnswer answer = service.Answer(text);
    PrintServed(text, answer.text);
    if (answer.changedBy != 0) notices.Post(answer.changedBy);
    return Wide(answer.text);
  };
  server.Serve(answer, [&](bool delivered) { served.objects.Settle(delivered); });
}

// The module's channel cannot misbehave, so faults need another server.
std::unique_ptr<tools::RequestServer> OpenServer(const Options& options, const HostModule& module,
                                                 const std::wstring& address) {
  const SLUriScheme scheme = tools::SchemeFromName(options.scheme);
  if (!options.faults.rules.empty()) {
    return std::make_unique<tools::FaultyPipe>(wire::PipeName(scheme, address),
                                               options.faults.Schedule(), &PrintFault);
  }
  auto channel = std::make_unique<HostChannel>(module);
  channel->Open(scheme, address);
  return channel;
}

void Run(const Options& options) {
  ServedScene served(ReadSceneFile(Wide(options.scene)));
  const HostModule module(options.dll.empty() ? DefaultModulePath() : Wide(options.dll));
  NoticeWindows notices(module, options.additionalWindows);
  const auto server = OpenServer(options, module, Wide(served.scene.address));
  {
    const StopOnConsoleEvent stopOnConsoleEvent(*server);
    const SceneWindow window(Wide(served.scene.title), notices, [&server] { server->Stop(); });
    if (!options.faults.rules.empty()) PrintSeed(options.faults.seed);
    PrintFacts(served, options.scheme, window.Handle(), notices.Handles());
    Serve(*server, served, notices);
  }
  PrintSummary(served.objects);
}

}  // namespace

int main() {
  tools::PrepareConsole();
  Options options;
  if (const std::optional<int> code = ReadOptions(options)) return *code;
  try {
    Run(options);
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "SceneBroker: " << error.what() << std::endl;
    return kFailure;
  }
}
