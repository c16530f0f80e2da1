// A top-level window with a child window, on a thread of its own that dispatches messages.
#pragma once

#include <windows.h>

#include <future>
#include <thread>
#include <utility>
#include <vector>

class TestWindow {
 public:
  // The pair (message, lParam) for each WM_MOUSEMOVE to the child window, and for each WM_SIZE to
  // the top-level window.
  using Messages = std::vector<std::pair<UINT, LPARAM>>;

  TestWindow() {
    std::promise<void> ready;
    thread_ = std::jthread([&] { Run(ready); });
    ready.get_future().get();
  }
  ~TestWindow() { ::PostMessageW(top_, WM_CLOSE, 0, 0); }

  HWND Top() const { return top_; }
  HWND Child() const { return child_; }

  // Returns the messages since the last call, including everything that was posted before this
  // call.
  Messages TakeMessages() const {
    std::promise<Messages> taken;
    ::PostMessageW(top_, kTake, 0, reinterpret_cast<LPARAM>(&taken));
    return taken.get_future().get();
  }

 private:
  static constexpr UINT kTake = WM_APP + 1;

  void Run(std::promise<void>& ready) {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = &OnMessage;
    windowClass.lpszClassName = L"TesselTestWindow";
    ::RegisterClassW(&windowClass);
    top_ = ::CreateWindowW(L"TesselTestWindow", L"test", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 100, 80,
                           400, 300, nullptr, nullptr, nullptr, nullptr);
    child_ = ::CreateWindowW(L"TesselTestWindow", L"", WS_CHILD | WS_VISIBLE, 0, 0, 50, 50, top_,
                             nullptr, nullptr, nullptr);
    ready.set_value();
    MSG message = {};
    while (::IsWindow(top_) && ::GetMessageW(&message, nullptr, 0, 0)) ::DispatchMessageW(&message);
  }

  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    static thread_local Messages messages;
    if (message == kTake) {
      reinterpret_cast<std::promise<Messages>*>(lParam)->set_value(std::exchange(messages, {}));
    } else if (message == (::GetParent(window) != nullptr ? WM_MOUSEMOVE : WM_SIZE)) {
      messages.emplace_back(message, lParam);
    }
    return ::DefWindowProcW(window, message, wParam, lParam);
  }

  HWND top_ = nullptr;
  HWND child_ = nullptr;
  std::jthread thread_;
};
