// SceneBroker's main program. Serves a scene to the module's clients, as the broker of real content
// would. Prints facts about the scene at the start, then each request and its answer, and a summary
// at the end.
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "tools/faults/FaultOptions.h"
#include "tools/faults/FaultyPipe.h"
#include "tools/pipe/StopOnConsoleEvent.h"
#include "tools/recording/Recorder.h"
#include "tools/scenebroker/HostChannel.h"
#include "tools/scenebroker/HostModule.h"
#include "tools/scenebroker/NoticeWindows.h"
#include "tools/scenebroker/ReplayRun.h"
#include "tools/scenebroker/SceneReader.h"
#include "tools/scenebroker/SceneReport.h"
#include "tools/scenebroker/SceneService.h"
#include "tools/scenebroker/SceneWindow.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"
#include "tools/shared/ModulePath.h"
#include "wire/Addresses.h"

namespace {

using tessel::Narrow;
using tessel::Wide;

constexpr int kFailure = 1;
constexpr int kDeviation = 3;

struct Options {
  std::string scene;
  std::string scheme = "tailored";
  std::string dll;
  int additionalWindows = 0;
  tools::FaultOptions faults;
  std::optional<std::string> record;  // the file to create
  std::optional<std::string> replay;  // the file to serve instead of a scene
};

// A replay takes everything from the recording, so it excludes all other options. Call this
// function after all other options were added.
void AddRecordingOptions(CLI::App& app, Options& options) {
  app.add_option("--record", options.record,
                 "Record the requests and answers in this file, which must not exist yet; it holds "
                 "what users type, passwords too")
      ->type_name("FILE")
      ->check(tools::RefuseEmpty)
      ->excludes(app.get_option("--fault"));  // a recording would not show the faults
  CLI::Option* const replay =
      app.add_option("--replay", options.replay, "Serve this recording instead of a scene")
          ->type_name("FILE")
          ->check(tools::RefuseEmpty);
  for (CLI::Option* const option : app.get_options()) {
    if (option != replay && option != app.get_help_ptr()) replay->excludes(option);
  }
  app.callback([&options] {
    if (options.scene.empty() && !options.replay) {
      throw CLI::RequiredError("a scene file, or --replay with a recording");
    }
  });
}

std::optional<int> ReadOptions(Options& options) {
  CLI::App app(
      "Serves a scene, a form described by a JSON file, or a recording to clients of "
      "TesselSLB_x64.dll until Ctrl-C.",
      "SceneBroker");
  app.allow_windows_style_options(false);  // "/x" is a path, not an option
  app.add_option("scene", options.scene, "The scene file")->type_name("SCENE");
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
  AddRecordingOptions(app, options);
  app.footer(
      "Exit codes: 0 stopped by Ctrl-C or by closing the window, 1 the scene or the recording "
      "cannot be\nshown, served or written, 2 wrong command line, 3 a request was not the recorded "
      "one, 4 ended by the\nfault crash.");
  return tools::ParseCommandLine(app);
}

// Returns null if nothing is to be recorded.
std::unique_ptr<tools::Recorder> BeginRecording(const Options& options, const Scene& scene) {
  if (!options.record) return nullptr;
  auto recorder = std::make_unique<tools::Recorder>(Wide(*options.record));
  recorder->Begin({Wide(scene.address), options.scheme, Wide(scene.title)});
  return recorder;
}

void Serve(tools::RequestServer& server, ServedScene& served, const NoticeWindows& notices,
           tools::Recorder* recorder) {
  SceneService service(served, ::GetCurrentProcessId());
  const auto answer = [&](const std::wstring& request) {
    const std::string text = Narrow(request);
    const SceneAnswer answer = service.Answer(text);
    PrintServed(text, answer.text);
    if (answer.changedBy != 0) notices.Post(answer.changedBy);
    return Wide(answer.text);
  };
  const auto recorded = [&](const std::wstring& request) {
    return recorder != nullptr ? recorder->Record(request, answer).answer : answer(request);
  };
  server.Serve(recorded, [&](bool delivered) { served.objects.Settle(delivered); });
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

void RunScene(const Options& options) {
  ServedScene served(ReadSceneFile(Wide(options.scene)));
  const HostModule module(options.dll.empty() ? tools::PathBesideProgram() : Wide(options.dll));
  NoticeWindows notices(module, options.additionalWindows);
  const auto server = OpenServer(options, module, Wide(served.scene.address));
  const auto recorder = BeginRecording(options, served.scene);
  {
    const tools::StopOnConsoleEvent stopOnConsoleEvent(*server);
    const SceneWindow window(Wide(served.scene.title), notices, [&server] { server->Stop(); });
    if (!options.faults.rules.empty()) PrintSeed(options.faults.seed);
    PrintFacts(served, options.scheme, window.Handle(), notices.Handles());
    Serve(*server, served, notices, recorder.get());
  }
  PrintSummary(served.objects);
}

int Run(const Options& options) {
  if (options.replay) return RunReplay(Wide(*options.replay)) ? 0 : kDeviation;
  RunScene(options);
  return 0;
}

}  // namespace

int main() {
  tools::PrepareConsole();
  Options options;
  if (const std::optional<int> code = ReadOptions(options)) return *code;
  try {
    return Run(options);
  } catch (const std::exception& error) {
    std::cerr << "SceneBroker: " << error.what() << std::endl;
    return kFailure;
  }
}
