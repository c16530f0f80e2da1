#include "tools/inspector/WindowList.h"

#include "tessel/Text.h"
#include "tessel/WindowSearch.h"
#include "tools/inspector/Nearest.h"
#include "tools/inspector/ProcessFacts.h"

namespace {

constexpr std::size_t kMostSimilarTitles = 5;

ListedWindow Listed(HWND window) {
  return {window, ProcessOfWindow(window), tessel::Narrow(tessel::WindowTitle(window))};
}

}  // namespace

DWORD ProcessOfWindow(HWND window) {
  DWORD process = 0;
  ::GetWindowThreadProcessId(window, &process);
  return process;
}

std::vector<ListedWindow> VisibleWindows() {
  std::vector<ListedWindow> windows;
  ::EnumWindows(
      [](HWND window, LPARAM parameter) -> BOOL {
        auto& list = *reinterpret_cast<std::vector<ListedWindow>*>(parameter);
        if (::IsWindowVisible(window)) list.push_back(Listed(window));
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&windows));
  return windows;
}

std::vector<ListedWindow> VisibleWindowsOf(DWORD process) {
  std::vector<ListedWindow> windows = VisibleWindows();
  std::erase_if(windows, [&](const ListedWindow& listed) { return listed.process != process; });
  return windows;
}

std::wstring TitleOfProcess(DWORD process) {
  for (const ListedWindow& listed : VisibleWindowsOf(process)) {
    if (!listed.title.empty()) return tessel::WindowTitle(listed.window);
  }
  return {};
}

std::string ImageNameOf(DWORD process) {
  const std::wstring path = ReadProcessFacts(process).path;
  return tessel::Narrow(path.substr(path.rfind(L'\\') + 1));
}

std::string SimilarTitles(const std::string& title) {
  std::vector<std::string> titles;
  for (const ListedWindow& listed : VisibleWindows()) titles.push_back(listed.title);
  std::string text;
  for (const std::string& similar : Nearest(title, titles, kMostSimilarTitles)) {
    text += (text.empty() ? "; similar titles: " : ", ") + tessel::Quoted(similar);
  }
  return text;
}
