// SceneBroker. The window that shows a scene's content: real and titled, with a thread and a
// message loop of its own, which serves the notice windows too.
#pragma once

#include <windows.h>

#include <functional>
#include <future>
#include <string>
#include <thread>

#include "tools/scenebroker/NoticeWindows.h"

class SceneWindow {
 public:
  // Returns when the windows are there; throws std::runtime_error when they cannot be. `onClosed`
  // is called on the window's thread when the user closes the window. It is hidden then, and its
  // handle stays good until the destructor.
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
