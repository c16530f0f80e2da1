// The inspector as its users meet it.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "support/Tools.h"

namespace {

using testing::HasSubstr;
using tools::Narrow;
using tools::Wide;

TEST(InspectorTest, ShowsScenesAndReleasesWhatItGot) {
  SceneBroker login(TESSEL_SCENES "/login.json");
  SceneBroker orders(TESSEL_SCENES "/orders.json", L" --scheme https");
  const std::string page = "element: page\nwindow: " + login.Fact("window") +
                           "\nprocess: " + login.Fact("process") + "\nscheme: tailored\n";
  login.Inspect("focus --parent 2", 0, page);
  login.Inspect("items --at 320,250", 0,
                "element: branch\nitems: 4\n  München\n  São Paulo\n  東京\n  Łódź\n");
  login.Inspect("at -1,5", 1, "cannot find the element at -1,5: there is none");
  login.Inspect("parent --at 0,0", 1, "cannot find the parent of element \"page\": it has none");
  login.Inspect("get Größe --focus", 4, "cannot read the attribute \"Größe\" of element \"user\"");
  login.Inspect("get checked --at 320,340", 0, "element: remember\nchecked: true\n");
  login.Inspect("at 1,1 --scheme file", 3, "-9 (SL_BROKER_NOT_STARTED)");
  login.Inspect("at 1,2147483648", 2, "is no point");
  login.Inspect("rect", 2, "Exactly 1 option from [--at,--focus] is required");
  orders.Inspect("get \"tool tip\" --at -200,0 --scheme https", 0,
                 "element: 𝄞 detail\ntool tip: first line\\nsecond line\n");
  orders.Inspect("focus", 3, "cannot find the focused element\n  address: https://orders");
  EXPECT_EQ(login.CloseAndReadSummary(),
            "handed out: 7\nundelivered: 0\nreleased: 7\nstill held: 0\n");
  EXPECT_EQ(orders.CloseAndReadSummary(),
            "handed out: 1\nundelivered: 0\nreleased: 1\nstill held: 0\n");
}

TEST(InspectorTest, FindsTheWindow) {
  // An address without a scheme of its own: the search ends with the tailored one.
  const SceneFile file(R"({"version":1,"address":"desk","title":"Ü",
                           "elements":[{"id":"desk","rect":[-800,-40,0,0]}]})");
  const SceneBroker broker(Narrow(file.path.wstring()));
  const std::wstring title = L"tools test " + std::to_wstring(::GetCurrentProcessId());
  HWND windows[2];
  for (HWND& window : windows) {
    window = ::CreateWindowW(L"STATIC", title.c_str(), 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, 0);
  }
  const std::string own = tools::HandleText(windows[0]), rect = "rect --at -800,-40";
  broker.Inspect(rect, 0, "element: desk\nleft: -800\ntop: -40\nright: 0\nbottom: 0\n", "Ü");
  broker.Inspect(rect, 2, "no top-level window has the title \"ü\"; write it exactly", "ü");
  broker.Inspect(rect, 2, "there is no window 0x7ffffff1; take the handle", "0x7ffffff1");
  broker.Inspect(rect, 2, "2 windows have the title", Narrow(title));
  // A window of another process than the broker's: refused, or searched for and then injected.
  broker.Inspect(rect + " --scheme tailored", 4, "-8 (SL_NOT_SERVED)", own);
  broker.Inspect(rect, 3, "-10 (SL_INJECTOR_NOT_STARTED)", own);
  for (HWND window : windows) ::DestroyWindow(window);
}

// A broker of the test's own: it answers when the inspector has told what it waits for.
TEST(InspectorTest, TellsWhatItWaitsFor) {
  const std::wstring id = std::to_wstring(::GetCurrentProcessId());
  const std::wstring name = kTailoredPipe + L"http___tools_" + id;
  HANDLE pipe = ::CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE,
                                   1 /*instances*/, 4096, 4096, 0 /*default time-out*/, nullptr);
  ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
  ChildProcess tessel(TestFolder() + L"tessel.exe at 1,2 --address http://tools-" + id +
                      L" --scheme tailored --window" +
                      Quoted(tools::HandleText(::GetDesktopWindow())));
  ::ConnectNamedPipe(pipe, nullptr);
  EXPECT_EQ(tessel.ReadLine(),
            "tessel: waiting for the broker to find the element at 1,2 (at most 70 s)");
  DWORD bytes = 0;
  ::WriteFile(pipe, L"[0,7]", 5 * sizeof(wchar_t), &bytes, nullptr);
  EXPECT_THAT(tessel.ReadToEnd(), HasSubstr("-12 (SL_ARCHIVE_FAILURE)"));
  EXPECT_EQ(tessel.Wait(), 5u);
  ::CloseHandle(pipe);
}

}  // namespace
