#include "tools/inspector/ProcessTitle.h"

#include "tessel/WindowSearch.h"

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

// Returns FALSE to end the search.
BOOL CALLBACK Look(HWND window, LPARAM parameter) {
  auto& search = *reinterpret_cast<Search*>(parameter);
  if (IsVisibleWindowOf(search.process, window)) search.title = tessel::WindowTitle(window);
  return search.title.empty();
}

}  // namespace

std::wstring TitleOfProcess(DWORD process) {
  Search search = {process, L""};
  ::EnumWindows(&Look, reinterpret_cast<LPARAM>(&search));
  return search.title;
}
