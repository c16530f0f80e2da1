#include "tools/inspector/TargetWindow.h"

#include <vector>

#include "tools/shared/ConsoleText.h"

namespace {

struct TitleSearch {
  std::wstring title;
  std::vector<HWND> found;
};

BOOL CALLBACK CollectIfTitled(HWND window, LPARAM parameter) {
  auto& search = *reinterpret_cast<TitleSearch*>(parameter);
  if (TitleOf(window) == search.title) search.found.push_back(window);
  return TRUE;
}

HWND FindByTitle(const std::string& title) {
  TitleSearch search = {tools::Wide(title), {}};
  ::EnumWindows(&CollectIfTitled, reinterpret_cast<LPARAM>(&search));
  if (search.found.empty()) {
    throw WindowError("no top-level window has the title " + tools::Quoted(title) +
                      "; write it exactly, or give the handle, 0x...");
  }
  if (search.found.size() > 1) {
    std::string handles;
    for (HWND window : search.found) handles += ' ' + tools::HandleText(window);
    throw WindowError(std::to_string(search.found.size()) + " windows have the title " +
                      tools::Quoted(title) + "; give one of their handles:" + handles);
  }
  return search.found.front();
}

}  // namespace

HWND FindTargetWindow(const std::string& text) {
  HWND window = tools::HandleFromText(text);
  if (window == nullptr) return FindByTitle(text);
  if (!::IsWindow(window)) {
    throw WindowError("there is no window " + text +
                      "; take the handle that the broker prints, or give the title");
  }
  return window;
}

std::wstring TitleOf(HWND window) {
  std::wstring title(static_cast<std::size_t>(::GetWindowTextLengthW(window)) + 1, L'\0');
  title.resize(static_cast<std::size_t>(
      ::GetWindowTextW(window, title.data(), static_cast<int>(title.size()))));
  return title;
}
