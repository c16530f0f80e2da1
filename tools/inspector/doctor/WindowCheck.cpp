#include "tools/inspector/doctor/WindowCheck.h"

#include <vector>

#include "tessel/Text.h"
#include "tessel/WindowSearch.h"
#include "tools/inspector/ProcessFacts.h"
#include "tools/inspector/WindowList.h"
#include "tools/shared/ConsoleText.h"

namespace {

constexpr std::size_t kMostListed = 3;

std::string NameOf(HWND window) {
  return tessel::HandleText(window) + ' ' + tessel::Quoted(tessel::WindowTitle(window));
}

std::string ListText(const std::vector<HWND>& windows) {
  std::string text;
  for (std::size_t i = 0; i < windows.size() && i < kMostListed; ++i) {
    text += (i == 0 ? "" : ", ") + NameOf(windows[i]);
  }
  return windows.size() > kMostListed ? text + ", ..." : text;
}

WindowFinding Missing(const std::string& finding, const std::string& cure) {
  return {0, {"window", Step::State::kBroken, finding, cure}};
}

std::string BitsText(const ProcessFacts& process) {
  if (!process.is64Bit) return {};
  return *process.is64Bit ? ", 64-bit" : ", 32-bit";
}

// Adds a cure if the injector could not open the window's process.
void AddIntegrity(Step& step, const ProcessFacts& process) {
  if (!process.integrity) {
    step.state = Step::State::kNote;
    step.finding += ", integrity unknown: this user may not read it";
    step.cure = "run the client as administrator, if a broker must be injected";
    return;
  }
  const std::string name = IntegrityName(*process.integrity);
  step.finding += ", integrity " + name;
  step.facts["integrity"] = name;
  const ProcessFacts own = ReadProcessFacts(::GetCurrentProcessId());
  if (*process.integrity <= own.integrity.value_or(*process.integrity)) return;
  step.state = Step::State::kNote;
  step.cure =
      "run the client as administrator, if a broker must be injected: the process of the window "
      "has a higher integrity than this one";
}

WindowFinding Found(HWND window) {
  const ProcessFacts process = ReadProcessFacts(ProcessOfWindow(window));
  Step step = {"window",
               Step::State::kFound,
               NameOf(window) + ", " + ProcessText(process) + BitsText(process),
               "",
               {{"window", tessel::HandleText(window)}, {"process", process.id}}};
  AddIntegrity(step, process);
  return {process.id, step};
}

}  // namespace

WindowFinding CheckWindow(const std::string& handleOrTitle) {
  const std::string wanted = tessel::Quoted(handleOrTitle);
  if (const HWND window = tools::HandleFromText(handleOrTitle)) {
    if (::IsWindow(window)) return Found(window);
    return Missing("no window has the handle " + tessel::HandleText(window),
                   "the window may have been closed; see tessel windows --address URI");
  }
  const std::vector<HWND> windows = tessel::WindowsWithTitle(tessel::Wide(handleOrTitle));
  if (windows.size() == 1) return Found(windows.front());
  if (windows.empty()) {
    return Missing("no top-level window has the title " + wanted,
                   "the title must match exactly; see tessel windows --address URI" +
                       SimilarTitles(handleOrTitle));
  }
  return Missing(std::to_string(windows.size()) + " windows have the title " + wanted,
                 "give the handle of one of them: " + ListText(windows));
}

std::string WindowsText(DWORD process) {
  std::vector<HWND> windows;
  for (const ListedWindow& listed : VisibleWindowsOf(process)) windows.push_back(listed.window);
  const std::string owner = "process " + std::to_string(process);
  if (windows.empty()) return owner + " shows no window";
  return owner + " has the windows " + ListText(windows);
}
