// Tests the additional windows, with real windows, message loops and threads. The suite scenebroker
// tests them between two processes.
#include <gmock/gmock.h>

#include <thread>
#include <vector>

#include "TesselHost.h"
#include "support/LogCapture.h"

namespace {

using testing::ElementsAre;
// A message that a window received, and the id of the thread that received it.
using Received = std::tuple<HWND, UINT, WPARAM, LPARAM, DWORD>;

const LogCapture capture;
std::vector<Received> received;
LONG_PTR callbackResult = 0;

LONG_PTR __stdcall Receive(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  received.emplace_back(window, message, wparam, lparam, ::GetCurrentThreadId());
  return callbackResult;
}

// Returns an address as the log prints it.
template <class T>
std::string Address(T* pointer) {
  char text[32];
  ::_snprintf(text, sizeof(text), "0X%016llX", reinterpret_cast<unsigned long long>(pointer));
  return text;
}

TEST(AdditionalWindow, PassesItsMessagesToItsCallbackOnItsThread) {
  const HWND window = AdditionalWindow_Create(4);
  EXPECT_EQ(::GetWindowLongW(window, GWL_STYLE) & (WS_POPUP | WS_CHILD | WS_VISIBLE), WS_POPUP);
  RECT rect = {};
  ::GetWindowRect(window, &rect);
  EXPECT_THAT(rect, testing::FieldsAre(0, 0, 10, 10));
  EXPECT_TRUE(AdditionalWindow_RegisterCallback(4, &Receive));
  std::thread([] { AdditionalWindow_PostMessage(4, WM_APP + 5, 7, -8); }).join();
  LogCapture::Reset();
  for (MSG message; ::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
    ::DispatchMessageW(&message);
  }
  EXPECT_THAT(received, ElementsAre(Received(window, WM_APP + 5, 7, -8, ::GetCurrentThreadId())));
  const std::string callback = Address(&Receive);
  EXPECT_THAT(
      LogCapture::Messages(),
      ElementsAre("ERROR Additional_WndProc called with " + Address(window) + ", 8005, 7, -8",
                  "ERROR Prepare to call callback " + callback + " (additional window #4)",
                  "ERROR Callback " + callback + " returned 0"));

  // If the low 32 bits of the callback's result are not 0, the message is handled, and the answer
  // to its sender is 0. Otherwise the system answers, which gives 1 for this message.
  for (const auto& [result, answer] : {std::pair(-1ll, 0), {1ll << 32, 1}, {0ll, 1}}) {
    callbackResult = result;
    EXPECT_EQ(::SendMessageW(window, WM_QUERYOPEN, 0, 0), answer) << result;
  }
  EXPECT_TRUE(AdditionalWindow_RegisterCallback(4, nullptr));
  ::SendMessageW(window, WM_QUERYOPEN, 0, 0);
  EXPECT_EQ(received.size(), 4u);
}

TEST(AdditionalWindow, KeepsItsIndexUntilTheModuleDestroysIt) {
  const HWND gone = AdditionalWindow_Create(3);
  AdditionalWindow_RegisterCallback(3, &Receive);
  ::DestroyWindow(gone);  // the module does not notice the destruction
  LogCapture::Reset();
  EXPECT_EQ(AdditionalWindow_Create(3), nullptr);
  EXPECT_FALSE(AdditionalWindow_PostMessage(3, WM_APP, 0, 0));
  EXPECT_THAT(LogCapture::Messages(),
              ElementsAre("ERROR Window #3 allready registered with " + Address(gone) +
                          " and callback " + Address(&Receive)));
  EXPECT_TRUE(AdditionalWindow_Destroy(3));
  const HWND window = AdditionalWindow_Create(3);
  AdditionalWindow_RegisterCallback(3, &Receive);
  // Only the thread that created a window can destroy it. So this call leaves the window alive, and
  // only removes it from the module's table.
  std::thread([] { EXPECT_TRUE(AdditionalWindow_Destroy(3)); }).join();
  received.clear();
  const HWND next = AdditionalWindow_Create(3);
  // The new window must not have the callback of the old window.
  ::SendMessageW(next, WM_APP, 1, 0);
  AdditionalWindow_RegisterCallback(3, &Receive);
  ::SendMessageW(window, WM_APP, 2, 0);
  ::SendMessageW(next, WM_APP, 3, 0);
  EXPECT_THAT(received, ElementsAre(Received(next, WM_APP, 3, 0, ::GetCurrentThreadId())));
}

TEST(AdditionalWindow, IsOneOfTen) {
  LogCapture::Reset();
  EXPECT_EQ(AdditionalWindow_Create(10), nullptr);
  EXPECT_FALSE(AdditionalWindow_RegisterCallback(10, &Receive));
  EXPECT_FALSE(AdditionalWindow_PostMessage(9, WM_APP, 0, 0));
  EXPECT_THAT(LogCapture::Messages(),
              ElementsAre("ERROR Too much windows added", "ERROR Index out of bounds",
                          "ERROR Window #9 not registered"));
}

}  // namespace
