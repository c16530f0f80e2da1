#include "tools/inspector/WindowList.h"

#include <memory>

#include "tessel/Text.h"
#include "tessel/WindowSearch.h"
#include "tools/inspector/Nearest.h"

namespace {

constexpr std::size_t kMostSimilarTitles = 5;

ListedWindow Listed(HWND window) {
  DWORD process = 0;
  ::GetWindowThreadProcessId(window, &process);
  return {window, process, tessel::Narrow(tessel::WindowTitle(window))};
}

}  // namespace

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

std::string ImageNameOf(DWORD process) {
  const std::unique_ptr<void, decltype(&::CloseHandle)> handle(
      ::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE /*inherit*/, process), &::CloseHandle);
  wchar_t path[MAX_PATH] = {};
  DWORD size = MAX_PATH;
  if (!handle || !::QueryFullProcessImageNameW(handle.get(), 0 /*Win32 path*/, path, &size)) {
    return {};
  }
  const std::wstring_view whole(path, size);
  return tessel::Narrow(whole.substr(whole.rfind(L'\\') + 1));
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
