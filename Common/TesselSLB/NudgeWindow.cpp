#include "TesselSLB/NudgeWindow.h"

#include <optional>

namespace {

bool IsListedByDesktop(HWND window) {
  struct Search {
    HWND window;
    bool found;
  } search = {window, false};
  ::EnumWindows(
      [](HWND listed, LPARAM parameter) -> BOOL {
        auto& state = *reinterpret_cast<Search*>(parameter);
        state.found = listed == state.window;
        return !state.found;
      },
      reinterpret_cast<LPARAM>(&search));
  return search.found;
}

bool IsTopLevel(HWND window) {
  if (!::IsWindow(window)) return false;
  const HWND parent = ::GetParent(window);
  const bool isChild = (::GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD) != 0;
  if (isChild && parent != nullptr && parent != ::GetDesktopWindow()) return false;
  if (parent != nullptr || ::GetWindow(window, GW_OWNER) == nullptr) return true;
  return IsListedByDesktop(window);
}

HWND TopLevelOf(HWND window) {
  while (!IsTopLevel(window)) {
    const HWND parent = ::GetParent(window);
    if (parent == nullptr || !::IsWindow(parent)) break;
    window = parent;
  }
  return window;
}

std::optional<RECT> WindowRectangle(HWND window) {
  RECT rectangle;
  if (!::GetWindowRect(window, &rectangle)) return std::nullopt;
  return rectangle;
}

void Restore(HWND window, const std::optional<RECT>& rectangle) {
  if (rectangle) {
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof(placement);
    ::GetWindowPlacement(window, &placement);
    placement.flags = WPF_RESTORETOMAXIMIZED;
    placement.showCmd = SW_SHOW;
    placement.rcNormalPosition = {rectangle->left + 8, rectangle->top + 8, rectangle->right - 8,
                                  rectangle->bottom - 8};
    ::SetWindowPlacement(window, &placement);
  }
  ::ShowWindow(window, SW_SHOWNORMAL);
}

void ShrinkAndGrow(HWND window, const RECT& rectangle) {
  const int width = rectangle.right - rectangle.left;
  const int height = rectangle.bottom - rectangle.top;
  ::MoveWindow(window, rectangle.left, rectangle.top, width - 1, height - 1, TRUE /*repaint*/);
  ::MoveWindow(window, rectangle.left, rectangle.top, width, height, TRUE /*repaint*/);
}

}  // namespace

void NudgeWindow(HWND window, bool handleMaximised) {
  const HWND top = TopLevelOf(window);
  if (::IsIconic(top)) ::ShowWindow(top, SW_SHOWNORMAL);
  const std::optional<RECT> rectangle = WindowRectangle(top);
  const bool restored = handleMaximised && ::IsZoomed(top);
  if (restored) Restore(top, rectangle);

  const RECT area = rectangle.value_or(RECT{50, 50, 50, 50});
  const int x = (area.left + area.right) / 2 - area.left;
  const int y = (area.top + area.bottom) / 2 - area.top;
  ::PostMessageW(window, WM_MOUSEMOVE, 0 /*no button*/, MAKELPARAM(x, y));

  if (restored) {
    ::ShowWindow(top, SW_MAXIMIZE);
  } else if (rectangle) {
    ShrinkAndGrow(top, *rectangle);
  }
}
