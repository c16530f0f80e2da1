#include "tools/scenebroker/SceneWindow.h"

#include <future>
#include <stdexcept>
#include <utility>

namespace {

constexpr wchar_t kClassName[] = L"TesselSceneWindow";

LRESULT CALLBACK SceneWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_DESTROY) ::PostQuitMessage(0);
  return ::DefWindowProcW(window, message, wParam, lParam);
}

HWND CreateSceneWindow(const std::wstring& title) {
  WNDCLASSEXW windowClass = {};
  windowClass.cbSize = sizeof(windowClass);
  windowClass.lpfnWndProc = &SceneWindowProc;
  windowClass.hInstance = ::GetModuleHandleW(nullptr);
  windowClass.hCursor = ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32512) /*arrow*/);
  windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
  windowClass.lpszClassName = kClassName;
  ::RegisterClassExW(&windowClass);
  HWND window =
      ::CreateWindowExW(0 /*extended style*/, kClassName, title.c_str(), WS_OVERLAPPEDWINDOW,
                        CW_USEDEFAULT, CW_USEDEFAULT, 640 /*width*/, 480 /*height*/,
                        nullptr /*owner*/, nullptr /*menu*/, windowClass.hInstance, nullptr);
  if (window != nullptr) ::ShowWindow(window, SW_SHOWNOACTIVATE);
  return window;
}

void RunMessageLoop() {
  MSG message;
  while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
  }
}

}  // namespace

SceneWindow::SceneWindow(const std::wstring& title, std::function<void()> onClosed) {
  std::promise<HWND> created;
  std::future<HWND> window = created.get_future();
  thread_ = std::thread([&created, &title, onClosed = std::move(onClosed)] {
    HWND mine = CreateSceneWindow(title);
    created.set_value(mine);  // what was taken by reference is gone after this
    if (mine == nullptr) return;
    RunMessageLoop();
    onClosed();
  });
  window_ = window.get();
  if (window_ == nullptr) {
    thread_.join();
    throw std::runtime_error(
        "cannot create the window; run the broker in a session with a desktop");
  }
}

SceneWindow::~SceneWindow() {
  ::PostMessageW(window_, WM_CLOSE, 0, 0);
  thread_.join();
}
