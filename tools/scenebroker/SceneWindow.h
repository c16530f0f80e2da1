// SceneBroker. The window that shows a scene's content: real and titled, with a thread and a
// message loop of its own.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <thread>

class SceneWindow {
 public:
  // Returns when the window is there; throws std::runtime_error when it cannot be. `onClosed` is
  // called on the window's thread when the window goes.
  SceneWindow(const std::wstring& title, std::function<void()> onClosed);
  ~SceneWindow();
  SceneWindow(const SceneWindow&) = delete;
  SceneWindow& operator=(const SceneWindow&) = delete;

  HWND Handle() const { return window_; }

 private:
  HWND window_ = nullptr;
  std::thread thread_;
};
