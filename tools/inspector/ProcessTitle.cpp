#include "tools/inspector/ProcessTitle.h"

namespace {

struct Search {
  DWORD process;
  std::wstring title;
};

bool IsVisibleWindowOf(DWORD process, HWND window) {
  DWORD owner = 0;
  ::GetWindowThreadProcessId(window, &owner);
  return owner == process && ::IsWindowVisible(window);
}

std::wstring TitleOf(HWND window) {
  std::wstring title(static_cast<std::size_t>(::GetWindowTextLengthW(window)) + 1, L'\0');
  const int length = ::GetWindowTextW(window, title.data(), static_cast<int>(title.size()));
  title.resize(static_cast<std::size_t>(length));
  return title;
}

// Returns FALSE to end the search.
BOOL CALLBACK Look(HWND window, LPARAM parameter) {
  auto& search = *reinterpret_cast<Search*>(parameter);
  if (IsVisibleWindowOf(search.process, window)) search.title = TitleOf(window);
  return search.title.empty();
}

}  // namespace

std::wstring TitleOfProcess(DWORD process) {
  Search search = {process, L""};
  ::EnumWindows(&Look, reinterpret_cast<LPARAM>(&search));
  return search.title;
}
