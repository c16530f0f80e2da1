#include "tools/scenebroker/SceneWindow.h"

#include <exception>
#include <stdexcept>
#include <utility>

namespace {

constexpr wchar_t kClassName[] = L"TesselSceneWindow";
constexpr UINT kEnd = WM_APP;  // the destructor posts this message to destroy the window

void RunMessageLoop() {
  MSG message;
  while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
  }
}

}  // namespace

SceneWindow::SceneWindow(const std::wstring& title, NoticeWindows& notices,
                         std::function<void()> onClosed)
    : notices_(notices), onClosed_(std::move(onClosed)) {
  std::promise<HWND> opened;
  thread_ = std::thread([&] { Run(title, opened); });
  try {
    window_ = opened.get_future().get();
  } catch (...) {
    thread_.join();
    throw;
  }
}

SceneWindow::~SceneWindow() {
  ::PostMessageW(window_, kEnd, 0, 0);
  thread_.join();
}

LRESULT CALLBACK SceneWindow::OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CLOSE:
      ::ShowWindow(window, SW_HIDE);
      reinterpret_cast<SceneWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA))->onClosed_();
      return 0;
    case kEnd:
      ::DestroyWindow(window);
      return 0;
    case WM_DESTROY:
      ::PostQuitMessage(0);
      return 0;
    default:
      return ::DefWindowProcW(window, message, wParam, lParam);
  }
}

HWND SceneWindow::Open(const std::wstring& title) {
  WNDCLASSEXW windowClass = {};
  windowClass.cbSize = sizeof(windowClass);
  windowClass.lpfnWndProc = &OnMessage;
  windowClass.hInstance = ::GetModuleHandleW(nullptr);
  windowClass.hCursor = ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32512) /*arrow*/);
  windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
  windowClass.lpszClassName = kClassName;
  ::RegisterClassExW(&windowClass);
  HWND window =
      ::CreateWindowExW(0 /*extended style*/, kClassName, title.c_str(), WS_OVERLAPPEDWINDOW,
                        CW_USEDEFAULT, CW_USEDEFAULT, 640 /*width*/, 480 /*height*/,
                        nullptr /*owner*/, nullptr /*menu*/, windowClass.hInstance, nullptr);
  if (window == nullptr) {
    throw std::runtime_error(
        "cannot create the window; run the broker in a session with a desktop");
  }
  ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  notices_.Open();
  ::ShowWindow(window, SW_SHOWNOACTIVATE);
  return window;
}

void SceneWindow::Run(const std::wstring& title, std::promise<HWND>& opened) {
  try {
    // After set_value, the constructor may return, which ends the life of `title` and `opened`. Do
    // not use these two variables after set_value.
    opened.set_value(Open(title));
  } catch (...) {
    opened.set_exception(std::current_exception());
    return;
  }
  RunMessageLoop();
  notices_.Close();
  onClosed_();
}
