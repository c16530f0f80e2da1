// SceneBroker. Serves a scene to the module's clients, as the broker of real content would: start,
// facts, requests, summary.
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <mutex>
#include <string>

#include "Common/TesselSLB/BrokerAddress.h"
#include "tools/scenebroker/HostChannel.h"
#include "tools/scenebroker/SceneReader.h"
#include "tools/scenebroker/SceneService.h"
#include "tools/scenebroker/SceneWindow.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"

namespace {

using tools::Narrow;
using tools::Printable;
using tools::PrintLine;
using tools::Wide;

constexpr int kFailure = 1;

struct Options {
  std::string scene;
  std::string scheme = "tailored";
  std::string dll;
};

std::optional<int> ReadOptions(Options& options) {
  CLI::App app(
      "Serves a scene, a form described by a JSON file, to clients of TesselSLB_x64.dll until "
      "Ctrl-C.",
      "SceneBroker");
  app.allow_windows_style_options(false);  // "/x" is a path
  app.add_option("scene", options.scene, "The scene file")->required()->type_name("SCENE");
  tools::AddSchemeOption(app, options.scheme, "The scheme to serve")->capture_default_str();
  app.add_option("--dll", options.dll,
                 "The module; TesselSLB_x64.dll beside this program if absent")
      ->type_name("PATH");
  app.footer(
      "Exit codes: 0 stopped by Ctrl-C or by closing the window, 1 the scene cannot be shown or "
      "served,\n2 wrong command line.");
  return tools::ParseCommandLine(app);
}

std::wstring DefaultModulePath() {
  std::wstring path(32768, L'\0');
  path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.rfind(L'\\') + 1) + L"TesselSLB_x64.dll";
}

// The lines behind "element:" say what there is to ask for.
void PrintElement(const Scene& scene, const SceneElement& element) {
  const POINT point = scene.PointOf(element);
  PrintLine("element: " + std::to_string(point.x) + ',' + std::to_string(point.y) + ' ' +
            Printable(element.id));
  if (!element.parent.empty()) PrintLine("parent: " + Printable(element.parent));
  for (const std::string& name : element.AttributeNames()) {
    PrintLine("attribute: " + Printable(name));
  }
  if (element.items) PrintLine("items: " + std::to_string(element.items->size()));
}

void PrintFacts(const Scene& scene, HWND window, const std::string& scheme) {
  PrintLine("window: " + tools::HandleText(window));
  PrintLine("title: " + Printable(scene.title));
  PrintLine("process: " + std::to_string(::GetCurrentProcessId()));
  PrintLine("address: " + Printable(scene.address));
  PrintLine("scheme: " + scheme);
  PrintLine("pipe: " +
            Narrow(GetBrokerPipeName(tools::SchemeFromName(scheme), Wide(scene.address))));
  if (!scene.focus.empty()) PrintLine("focus: " + Printable(scene.focus));
  for (const SceneElement& element : scene.Elements()) PrintElement(scene, element);
  PrintLine("ready");
}

void PrintSummary(const HeldObjects& objects) {
  PrintLine("handed out: " + std::to_string(objects.HandedOut()));
  PrintLine("released: " + std::to_string(objects.Released()));
  PrintLine("still held: " + std::to_string(objects.HandedOut() - objects.Released()));
  for (const auto& [id, count] : objects.Held()) {
    PrintLine("held: " + std::to_string(count) + " x " + Printable(id));
  }
}

// The console calls its handler on a thread of its own, with nothing but the event: it finds the
// channel here, and the channel does not go while the handler is at it.
std::mutex channelMutex;
HostChannel* channelToStop = nullptr;

BOOL WINAPI OnConsoleEvent(DWORD /*event*/) {
  const std::lock_guard lock(channelMutex);
  if (channelToStop != nullptr) channelToStop->Stop();
  return TRUE;
}

class StopOnConsoleEvent {
 public:
  explicit StopOnConsoleEvent(HostChannel& channel) {
    Set(&channel);
    ::SetConsoleCtrlHandler(&OnConsoleEvent, TRUE /*add*/);
  }
  ~StopOnConsoleEvent() { Set(nullptr); }
  StopOnConsoleEvent(const StopOnConsoleEvent&) = delete;
  StopOnConsoleEvent& operator=(const StopOnConsoleEvent&) = delete;

 private:
  static void Set(HostChannel* channel) {
    const std::lock_guard lock(channelMutex);
    channelToStop = channel;
  }
};

void Run(const Options& options) {
  const Scene scene = ReadSceneFile(Wide(options.scene));
  HostChannel channel(options.dll.empty() ? DefaultModulePath() : Wide(options.dll));
  channel.Open(tools::SchemeFromName(options.scheme), Wide(scene.address));
  SceneService service(scene, ::GetCurrentProcessId());
  {
    const StopOnConsoleEvent stopOnConsoleEvent(channel);
    const SceneWindow window(Wide(scene.title), [&channel] { channel.Stop(); });
    PrintFacts(scene, window.Handle(), options.scheme);
    channel.Serve([&service](const std::wstring& request) {
      const std::string text = Narrow(request);
      const std::string answer = service.Answer(text);
      PrintLine("served: " + Printable(text) + " -> " + Printable(answer));
      return Wide(answer);
    });
  }
  PrintSummary(service.Objects());
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
