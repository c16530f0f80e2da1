#include "tools/scenebroker/SceneReport.h"

#include <iostream>
#include <mutex>

#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"
#include "wire/Addresses.h"

namespace {

using tessel::Narrow;
using tessel::Printable;
using tessel::Wide;

// Holds a lock, so that the lines of two threads are not mixed. Flushes the output, because scripts
// and other programs wait for the lines.
void Print(const std::string& lines) {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  std::cout << lines << std::flush;
}

std::string Line(std::string_view key, std::string_view value) {
  return std::string(key).append(": ").append(value).append("\n");
}

std::string Line(std::string_view key, int value) { return Line(key, std::to_string(value)); }

// Returns the facts that clients need to find the content.
std::string ContentLines(const tools::RecordingHeader& content, HWND window) {
  const SLUriScheme scheme = tools::SchemeFromName(content.scheme);
  return Line("window", tessel::HandleText(window)) +
         Line("title", Printable(Narrow(content.title))) +
         Line("process", std::to_string(::GetCurrentProcessId())) +
         Line("address", Printable(Narrow(content.address))) + Line("scheme", content.scheme) +
         Line("pipe", Narrow(wire::PipeName(scheme, content.address)));
}

// Returns the line "element: ..." with a point and the id of the element. Lines with the parent's
// id, each attribute's or state's name, and the number of items follow if the element has these.
std::string ElementLines(const SceneMap& map, const SceneElement& element) {
  const POINT point = map.PointOf(element);
  std::string lines = Line("element", std::to_string(point.x) + ',' + std::to_string(point.y) +
                                          ' ' + Printable(element.id));
  if (!element.parent.empty()) lines += Line("parent", Printable(element.parent));
  for (const std::string& name : element.AttributeNames()) {
    lines += Line("attribute", Printable(name));
  }
  if (element.items) lines += Line("items", std::to_string(element.items->size()));
  return lines;
}

}  // namespace

void PrintFacts(const ServedScene& served, const std::string& scheme, HWND window,
                const std::vector<HWND>& noticeWindows) {
  const Scene& scene = served.scene;
  std::string lines = ContentLines({Wide(scene.address), scheme, Wide(scene.title)}, window);
  if (!scene.focus.empty()) lines += Line("focus", Printable(scene.focus));
  for (const SceneElement& element : scene.Elements()) {
    lines += ElementLines(served.map, element);
  }
  for (std::size_t i = 0; i < noticeWindows.size(); ++i) {
    lines += Line("additional window",
                  '#' + std::to_string(i) + ' ' + tessel::HandleText(noticeWindows[i]));
  }
  Print(lines + "ready\n");
}

void PrintSeed(unsigned seed) { Print(Line("seed", std::to_string(seed))); }

void PrintFault(const tools::FaultRule& rule, const std::wstring& request) {
  const std::string target = request.empty() ? "" : " for " + Narrow(request);
  Print(Line("fault", Printable(rule.text + target)));
}

void PrintServed(std::string_view request, std::string_view answer) {
  Print(Line("served",
             Printable(request) + " -> " + (answer.empty() ? "no answer" : Printable(answer))));
}

void PrintReplayFacts(const tools::Recording& recording, HWND window) {
  Print(ContentLines(recording.header, window) +
        Line("exchanges", static_cast<int>(recording.exchanges.size())) + "ready\n");
}

void PrintDeviation(const Replay::Deviation& deviation) {
  const std::string expected = deviation.expected ? Printable(Narrow(*deviation.expected))
                                                  : "no request: the recording ends here";
  Print(Line("deviation", "line " + std::to_string(deviation.line)) + Line("expected", expected) +
        Line("actual", Printable(Narrow(deviation.actual))));
}

void PrintReplaySummary(const Replay& replay) {
  Print(Line("replayed", static_cast<int>(replay.Replayed())) +
        Line("left", static_cast<int>(replay.Left())));
}

void PrintNotice(int window, int command) {
  Print(Line("notified", '#' + std::to_string(window) + " command " + std::to_string(command)));
}

void PrintSummary(const HeldObjects& objects) {
  const int ended = objects.Undelivered() + objects.Released();
  std::string lines =
      Line("handed out", objects.HandedOut()) + Line("undelivered", objects.Undelivered()) +
      Line("released", objects.Released()) + Line("still held", objects.HandedOut() - ended);
  for (const auto& [id, count] : objects.Held()) {
    lines += Line("held", std::to_string(count) + " x " + Printable(id));
  }
  Print(lines);
}
