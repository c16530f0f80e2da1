#include "tools/scenebroker/ReplayRun.h"

#include "tools/pipe/ServerPipe.h"
#include "tools/pipe/StopOnConsoleEvent.h"
#include "tools/scenebroker/Replay.h"
#include "tools/scenebroker/SceneReport.h"
#include "tools/scenebroker/SceneWindow.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"
#include "wire/Addresses.h"

namespace {

void Serve(tools::ServerPipe& server, Replay& replay) {
  const auto answer = [&replay](const std::wstring& request) {
    const bool hadDeviation = replay.FirstDeviation().has_value();
    const std::wstring answer = replay.Answer(request);
    if (!hadDeviation && replay.FirstDeviation()) PrintDeviation(*replay.FirstDeviation());
    PrintServed(tessel::Narrow(request), tessel::Narrow(answer));
    return answer;
  };
  server.Serve(answer, [](bool /*delivered*/) {});
}

}  // namespace

bool RunReplay(const std::wstring& path) {
  const tools::Recording recording = tools::ReadRecording(path);
  const auto& [address, scheme, title] = recording.header;
  Replay replay(recording.exchanges);
  tools::ServerPipe server(wire::PipeName(tools::SchemeFromName(scheme), address));
  {
    const tools::StopOnConsoleEvent stopOnConsoleEvent(server);
    NoticeWindows none;
    const SceneWindow window(title, none, [&server] { server.Stop(); });
    PrintReplayFacts(recording, window.Handle());
    Serve(server, replay);
  }
  PrintReplaySummary(replay);
  return !replay.FirstDeviation();
}
