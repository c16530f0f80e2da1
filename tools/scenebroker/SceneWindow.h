// Part of SceneBroker. The window of the served scene: a real window with a title. It has a thread
// and a message loop of its own. The loop also serves the module's additional windows, which
// receive a notice after each change.
#pragma once

#include <windows.h>

#include <functional>
#include <future>
#include <string>
#include <thread>

#include "tools/scenebroker/NoticeWindows.h"

class SceneWindow {
 public:
  // Returns when the scene's window and the notice windows exist. Throws std::runtime_error if a
  // window cannot be created. When the user closes the scene's window, the window is only hidden,
  // so that its handle stays valid until the destructor runs. `onClosed` is then called on the
  // window's thread. It is called once more when this thread ends.
  SceneWindow(const std::wstring& title, NoticeWindows& notices, std::function<void()> onClosed);
  ~SceneWindow();
  SceneWindow(const SceneWindow&) = delete;
  SceneWindow& operator=(const SceneWindow&) = delete;

  HWND Handle() const { return window_; }

 private:
  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  HWND Open(const std::wstring& title);
  void Run(const std::wstring& title, std::promise<HWND>& opened);

  NoticeWindows& notices_;
  const std::function<void()> onClosed_;
  HWND window_ = nullptr;
  std::thread thread_;
};
