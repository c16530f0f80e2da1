// The additional windows: real windows, message loops, threads and processes.
#include <gmock/gmock.h>

#include <thread>
#include <vector>

#include "TesselHost.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Texts = std::vector<std::string>;

const LogCapture capture;

struct Received {
  HWND window;
  UINT message;
  WPARAM wparam;
  LPARAM lparam;
  DWORD thread;
  bool operator==(const Received&) const = default;
};
std::vector<Received> received;
LONG_PTR callbackResult = 1;

LONG_PTR __stdcall Receive(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  received.push_back({window, message, wparam, lparam, ::GetCurrentThreadId()});
  return callbackResult;
}

// As the log prints an address.
template <class T>
std::string Address(T* pointer) {
  char text[32];
  ::_snprintf(text, sizeof(text), "0X%016llX", reinterpret_cast<unsigned long long>(pointer));
  return text;
}

std::wstring ClassOf(HWND window) {
  wchar_t name[100] = {};
  ::GetClassNameW(window, name, 100);
  return name;
}

void Dispatch() {
  for (MSG message; ::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
    ::DispatchMessageW(&message);
  }
}

class AdditionalWindow : public testing::Test {
 protected:
  void SetUp() override {
    received.clear();
    callbackResult = 1;
    LogCapture::Reset();
  }
  void TearDown() override {
    for (unsigned long index = 0; index < 10; ++index) AdditionalWindow_Destroy(index);
  }
};

TEST_F(AdditionalWindow, IsAHiddenPopupOfTheCallingThread) {
  for (const unsigned long index : {0ul, 9ul}) {
    const HWND window = AdditionalWindow_Create(index);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(ClassOf(window),
              L"SL_Additional_Wnd_Class_pid" + std::to_wstring(::GetCurrentProcessId()) + L"_");
    EXPECT_EQ(::GetWindowThreadProcessId(window, nullptr), ::GetCurrentThreadId());
    EXPECT_EQ(::GetWindowLongPtrW(window, GWLP_USERDATA), static_cast<LONG_PTR>(index) + 1);
    const LONG style = ::GetWindowLongW(window, GWL_STYLE);
    EXPECT_EQ(style & (WS_POPUP | WS_CHILD | WS_VISIBLE), static_cast<LONG>(WS_POPUP));
    EXPECT_EQ(::GetWindowTextLengthW(window), 0);
    EXPECT_EQ(::GetParent(window), nullptr);
    RECT rect = {};
    ::GetWindowRect(window, &rect);
    EXPECT_THAT((std::vector{rect.left, rect.top, rect.right, rect.bottom}),
                ElementsAre(0, 0, 10, 10));
  }
}

TEST_F(AdditionalWindow, RefusesWhatIsNotThere) {
  const struct {
    bool result;
    std::string info, error;
  } kCases[] = {
      {AdditionalWindow_Create(10) != nullptr, "INFO Create additional window #10",
       "ERROR Too much windows added"},
      {AdditionalWindow_Destroy(10) != FALSE, "INFO Destroy additional window #10",
       "ERROR Index out of bounds"},
      {AdditionalWindow_Destroy(9) != FALSE, "INFO Destroy additional window #9",
       "ERROR Window #9 not registered"},
      {AdditionalWindow_PostMessage(10, 0x8005, 1, 2) != FALSE,
       "INFO Prepare to post message 32773 (WM_APP+5) to additional window #10",
       "ERROR Index out of bounds"},
      {AdditionalWindow_PostMessage(0, 1, 1, 2) != FALSE,
       "INFO Prepare to post message 1 (WM_APP+4294934529) to additional window #0",
       "ERROR Window #0 not registered"},
      {AdditionalWindow_RegisterCallback(0xFFFFFFFF, &Receive) != FALSE,
       "INFO Prepare to register callback " + Address(&Receive) +
           " for additional window #4294967295",
       "ERROR Index out of bounds"},
      {AdditionalWindow_RegisterCallback(3, nullptr) != FALSE,
       "INFO Prepare to register callback 0000000000000000 for additional window #3",
       "ERROR Window #3 not registered"},
  };
  Texts expected;
  for (const auto& row : kCases) {
    EXPECT_FALSE(row.result) << row.info;
    expected.insert(expected.end(), {row.info, row.error});
  }
  EXPECT_EQ(LogCapture::Messages("INFO"), expected);
}

TEST_F(AdditionalWindow, HandsItsMessagesToItsCallback) {
  const HWND window = AdditionalWindow_Create(4);
  AdditionalWindow_Create(5);
  EXPECT_TRUE(AdditionalWindow_PostMessage(4, WM_APP, 1, 2)) << "no callback yet";
  Dispatch();
  EXPECT_TRUE(AdditionalWindow_RegisterCallback(4, &Receive));
  std::thread([] { AdditionalWindow_PostMessage(4, WM_APP + 5, 7, -8); }).join();
  EXPECT_THAT(received, testing::IsEmpty()) << "nothing runs outside the owner's loop";
  LogCapture::Reset();
  Dispatch();
  EXPECT_THAT(received, ElementsAre(Received{window, WM_APP + 5, 7, -8, ::GetCurrentThreadId()}));
  const std::string callback = Address(&Receive);
  EXPECT_THAT(
      LogCapture::Messages(),
      ElementsAre("ERROR Additional_WndProc called with " + Address(window) + ", 8005, 7, -8",
                  "ERROR Prepare to call callback " + callback + " (additional window #4)",
                  "ERROR Callback " + callback + " returned 1"));

  // The system's own answer to this message is 1.
  const std::pair<LONG_PTR, LRESULT> kResults[] = {{1, 0}, {-1, 0}, {0, 1}, {1ll << 32, 1}};
  for (const auto& [result, answer] : kResults) {
    callbackResult = result;
    EXPECT_EQ(::SendMessageW(window, WM_QUERYOPEN, 0, 0), answer) << result;
  }
  callbackResult = 1;
  EXPECT_TRUE(AdditionalWindow_RegisterCallback(4, nullptr));
  EXPECT_EQ(::SendMessageW(window, WM_QUERYOPEN, 0, 0), 1);
  EXPECT_EQ(received.size(), 5u);
}

TEST_F(AdditionalWindow, KeepsItsPlaceUntilItIsDestroyedThroughTheModule) {
  const HWND window = AdditionalWindow_Create(3);
  AdditionalWindow_RegisterCallback(3, &Receive);
  LogCapture::Reset();
  EXPECT_EQ(AdditionalWindow_Create(3), nullptr);
  const Texts kTaken = {"ERROR Window #3 allready registered with " + Address(window) +
                        " and callback " + Address(&Receive)};
  EXPECT_EQ(LogCapture::Messages(), kTaken);
  callbackResult = 0;
  ::DestroyWindow(window);  // behind the table's back
  LogCapture::Reset();
  EXPECT_EQ(AdditionalWindow_Create(3), nullptr);
  EXPECT_FALSE(AdditionalWindow_PostMessage(3, WM_APP, 0, 0));
  EXPECT_EQ(LogCapture::Messages(), kTaken);
  EXPECT_TRUE(AdditionalWindow_Destroy(3));
  EXPECT_FALSE(AdditionalWindow_Destroy(3));
  EXPECT_NE(AdditionalWindow_Create(3), nullptr);
  received.clear();
  EXPECT_TRUE(AdditionalWindow_PostMessage(3, WM_APP, 0, 0));
  Dispatch();
  EXPECT_THAT(received, testing::IsEmpty()) << "the callback went with the window";
}

// The table forgets the window, which lives on and no longer reaches a callback.
TEST_F(AdditionalWindow, IsNotDestroyedOnAnotherThread) {
  const HWND window = AdditionalWindow_Create(1);
  AdditionalWindow_RegisterCallback(1, &Receive);
  std::thread([] { EXPECT_TRUE(AdditionalWindow_Destroy(1)); }).join();
  EXPECT_TRUE(::IsWindow(window));
  const HWND next = AdditionalWindow_Create(1);
  AdditionalWindow_RegisterCallback(1, &Receive);
  ::SendMessageW(window, WM_APP, 0, 0);
  EXPECT_THAT(received, testing::IsEmpty());
  ::SendMessageW(next, WM_APP, 0, 0);
  EXPECT_EQ(received.size(), 1u);
  ::DestroyWindow(window);
}

TEST_F(AdditionalWindow, OfTwoProcessesNeverClash) {
  ChildProcess other(TestFolder() + L"test_parts.exe window");
  const auto window = reinterpret_cast<HWND>(std::stoull(other.ReadLine()));
  ASSERT_NE(AdditionalWindow_Create(0), nullptr) << "the same index";
  EXPECT_EQ(ClassOf(window), L"SL_Additional_Wnd_Class_pid" + std::to_wstring(other.Id()) + L"_");
  ::PostMessageW(window, WM_APP, 5, -6);
  EXPECT_EQ(other.ReadLine(), "5 -6");
  EXPECT_TRUE(AdditionalWindow_PostMessage(0, WM_APP, 0, 0));
  Dispatch();
  ::PostMessageW(window, WM_APP, 0, 1);
  EXPECT_EQ(other.ReadLine(), "0 1") << "the post before stayed in this process";
  EXPECT_EQ(other.Wait(), 0u);
}

}  // namespace
