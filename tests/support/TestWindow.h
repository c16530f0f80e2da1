// A real top-level window with a child, on a thread of its own that dispatches messages.
#pragma once

#include <windows.h>

#include <future>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

class TestWindow {
 public:
  // (message, lParam) of each WM_MOUSEMOVE and WM_SIZE; the first goes to the child.
  using Message = std::pair<UINT, LPARAM>;

  explicit TestWindow(DWORD style = WS_OVERLAPPEDWINDOW | WS_VISIBLE) {
    std::promise<void> ready;
    thread_ = std::thread([&, style] { Run(style, ready); });
    ready.get_future().get();
  }
  ~TestWindow() {
    ::PostMessageW(top_, kQuit, 0, 0);
    thread_.join();
  }

  HWND Top() const { return top_; }
  HWND Child() const { return child_; }

  // What has arrived; everything posted before the call is in it.
  std::vector<Message> TakeMessages() {
    std::promise<void> reached;
    ::PostMessageW(top_, kReport, 0, reinterpret_cast<LPARAM>(&reached));
    reached.get_future().get();
    const std::lock_guard lock(mutex_);
    return std::exchange(messages_, {});
  }

 private:
  static constexpr UINT kReport = WM_APP + 1;
  static constexpr UINT kQuit = WM_APP + 2;

  void Run(DWORD style, std::promise<void>& ready) {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = &OnMessage;
    windowClass.lpszClassName = L"TesselTestWindow";
    ::RegisterClassW(&windowClass);
    top_ = ::CreateWindowExW(0, L"TesselTestWindow", L"test", style, 100, 80, 400, 300, nullptr,
                             nullptr, nullptr, nullptr);
    child_ = ::CreateWindowExW(0, L"TesselTestWindow", L"", WS_CHILD | WS_VISIBLE, 0, 0, 50, 50,
                               top_, nullptr, nullptr, nullptr);
    for (HWND window : {top_, child_}) {
      ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    ready.set_value();
    for (MSG message; ::GetMessageW(&message, nullptr, 0, 0) > 0;) ::DispatchMessageW(&message);
    ::DestroyWindow(top_);
  }

  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* self = reinterpret_cast<TestWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == kQuit) ::PostQuitMessage(0);
    if (self != nullptr && message == kReport) {
      reinterpret_cast<std::promise<void>*>(lParam)->set_value();
    } else if (self != nullptr && message == (window == self->child_ ? WM_MOUSEMOVE : WM_SIZE)) {
      const std::lock_guard lock(self->mutex_);
      self->messages_.emplace_back(message, lParam);
    }
    return ::DefWindowProcW(window, message, wParam, lParam);
  }

  HWND top_ = nullptr;
  HWND child_ = nullptr;
  std::mutex mutex_;
  std::vector<Message> messages_;
  std::thread thread_;
};
