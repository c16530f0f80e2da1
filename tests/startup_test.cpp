// Tests how the module starts the launcher and the injector, and how long it waits for them.
#include <gmock/gmock.h>

#include <future>

#include "TesselSLB/BrokerInjection.h"
#include "TesselSLB/BrokerStartup.h"
#include "TesselSLB/NudgeWindow.h"
#include "TesselSilverlight.h"
#include "internal/SafeObject.h"
#include "support/LogCapture.h"
#include "support/RawClient.h"
#include "support/StandIn.h"
#include "support/TestWindow.h"
#include "tessel/Text.h"

namespace {

using testing::_;
using testing::ElementsAre;
using Outcome = std::pair<int, Texts>;  // the result and the log lines

const LogCapture capture;
constexpr wchar_t kMutex[] = L"SLINJECT{EAE422D8-9B4C-4395-B672-8EDDCDBA226E}";
const std::wstring kProcess = std::to_wstring(::GetCurrentProcessId());

const std::string kFolder = tessel::Narrow(TestFolder());

// Makes a call and returns its outcome. Expects that it takes at least `least` milliseconds.
template <class Call>
Outcome Timed(std::uint64_t least, Call call) {
  const std::uint64_t begin = ::GetTickCount64();
  const int result = call();
  EXPECT_GE(::GetTickCount64() - begin, least);
  return {result, LogCapture::Messages("INFO", ::GetCurrentThreadId())};
}

TEST(Injection, TakesOverAnAbandonedMutexAndReleasesIt) {
  const TestWindow window;
  const SafeHandle mutex(::CreateMutexW(nullptr, FALSE /*owned*/, kMutex));
  std::thread([&] { EXPECT_EQ(::WaitForSingleObject(mutex.Get(), 0), WAIT_OBJECT_0); }).join();
  LogCapture::Reset();
  EXPECT_EQ(InjectBroker(nullptr), -5);
  EXPECT_EQ(InjectBroker(window.Child()), -10) << "there is no injector";
  EXPECT_FALSE(::ReleaseMutex(mutex.Get())) << "the call has released the mutex";
  EXPECT_THAT(LogCapture::Messages(),
              ElementsAre("ERROR Invalid window",
                          "ERROR CreateProcess failed, cmdLine=slinject.exe --pid=" +
                              tessel::Narrow(kProcess)));
}

HANDLE server = nullptr;

// Checks the log lines that explain to a user why a call failed. `server` is the pipe of a broker
// that disconnects its client just before the client writes.
TEST(FailedCalls, AreExplainedInTheLog) {
  const StandIn launcher(L"sllauncher");
  std::ofstream(launcher.Program(), std::ios::trunc);  // an empty file cannot be started
  const std::string origin =
      "http://log" + tessel::Narrow(kProcess) + "/TailoredBroker/SLBroker.xap";
  const Texts noLaunch = {"ERROR CreateProcess failed, slLauncher=" + launcher.Program().string() +
                          " cmdLine=sllauncher.exe /overwrite /emulate:\"" + kFolder +
                          "SLBroker.xap\" /origin:\"" + origin + '"'};
  const Texts noAccess = {
      "INFO SL_NO_URI scheme", "INFO Prepare to send message for SL_TAILORED_URI scheme",
      "INFO SendMessageToBroker for SL_TAILORED_URI scheme",
      "ERROR Cannot open server pipe: E_ACCESSDENIED", "ERROR Cannot connect to SL server pipe"};
  const std::tuple<DWORD, DWORD, int, Texts> kRows[] = {
      // Each row has the scheme, the access mode of the broker's pipe or 0 for no pipe, the result,
      // and the log lines.
      {9, 0, -9, {"INFO SendMessageToBroker for UNKNOWN SCHEME scheme"}},
      {SL_TAILORED_URI, 0, -9, noLaunch},
      {SL_NO_URI, PIPE_ACCESS_INBOUND, -7, noAccess},
      {SL_TAILORED_URI, PIPE_ACCESS_DUPLEX, -7, {"ERROR Cannot write to SL server pipe"}}};
  for (const auto& [scheme, access, result, lines] : kRows) {
    const SafeFile pipe(::CreateNamedPipeW((kTailoredPipe + L"http___log" + kProcess).c_str(),
                                           access, PIPE_TYPE_MESSAGE, 1, 0, 0, 0, nullptr));
    server = pipe.Get();
    LogCapture::pause = [](const char* line) {
      if (std::strstr(line, "] Start writing") != nullptr) ::DisconnectNamedPipe(server);
    };
    SLElemData window, found;
    window.hwnd = ::GetDesktopWindow();
    window.uriScheme = scheme;
    window.sourceUri = (L"http://log" + kProcess).c_str();
    LogCapture::Reset();
    EXPECT_EQ(TesselSilverlight::GetElemFromPoint(window, POINT(), 0, found), result);
    EXPECT_THAT(LogCapture::Messages("INFO"), testing::IsSupersetOf(lines));
  }
  LogCapture::pause = nullptr;
}

// Runs these waits at the same time, because each takes 10 to 30 s: launchers that start no broker
// or start it too late, an injector that is too slow, and an injection that waits for a mutex,
// which this thread owns.
TEST(Waits, EndAfterTheTimeOut) {
  const StandIn launcher(L"sllauncher"), injector(L"slinject");
  const SafeHandle mutex(::CreateMutexW(nullptr, TRUE /*owned*/, kMutex));
  const TestWindow window;
  StandIn::Prepare(12000, 0);
  const auto inject = [&] { return RunInjector(window.Child(), static_cast<DWORD>(-15)); };
  auto slow = std::async(std::launch::async, [&] { return Timed(10000, inject); });
  auto held = std::async(std::launch::async,
                         [&] { return Timed(30000, [&] { return InjectBroker(window.Top()); }); });
  const std::wstring host = L"serve-late-" + kProcess, address = L"https://" + host + L"%41";
  const auto launch = [&](DWORD scheme, const std::wstring& id, const std::wstring& origin) {
    const Outcome outcome = Timed(15000, [&] { return LaunchBroker(scheme, address); });
    const std::string line = "sllauncher.exe /overwrite /emulate:\"" + kFolder +
                             "SLBroker.xap\" /origin:\"" + tessel::Narrow(origin) + '"';
    const Texts record = launcher.Record(id);
    EXPECT_THAT(record, ElementsAre(line, kFolder.substr(0, kFolder.size() - 1), "1 0", _));
    EXPECT_EQ(outcome, Outcome(0, {"INFO sllauncher.exe=" + launcher.Program().string(),
                                   "INFO cmdLine=" + line,
                                   "INFO Created sllauncher process with pid " + record.at(3),
                                   "INFO Cannot connect to SLBroker pipe"}));
  };
  std::vector<std::jthread> launches;
  launches.emplace_back(launch, SL_TAILORED_URI, host + L"_41",
                        L"https://" + host + L"_41/TailoredBroker/SLBroker.xap");
  launches.emplace_back(launch, SL_HTTP_URI, L"http",
                        L"http://slbroker.tessel.example/SLBroker.xap");
  launches.emplace_back(launch, SL_HTTPS_URI, L"https",
                        L"https://slbroker.tessel.example/SLBroker.xap");
  launches.emplace_back(launch, SL_FILE_URI, L"file", L"file://" + TestFolder() + L"SLBroker.xap");
  launches.clear();
  EXPECT_EQ(slow.get(),
            Outcome(-11, {"INFO slinject.exe=" + injector.Program().string(),
                          "INFO cmdLine=slinject.exe --pid=-15",
                          "INFO Created slinject process with pid " + injector.Record(L"-15").at(3),
                          "ERROR Silverlight injector timedout"}));
  EXPECT_THAT(window.TakeMessages(), testing::Contains(testing::Pair(WM_MOUSEMOVE, _)).Times(10));
  const std::string waited = "ERROR Cannot acquire mutex, WaitForSingleObject returned 102";
  EXPECT_EQ(held.get(), Outcome(-3, {waited}));
  const std::string directory = std::filesystem::current_path().string();
  EXPECT_THAT(injector.Record(L"-15"),
              ElementsAre("slinject.exe --pid=-15", directory, "1 0", _, "end"));
}

TEST(NudgeWindow, MovesTheMouseAndResizesTheTopLevelWindow) {
  const TestWindow window;
  RECT client = {}, full = {}, normal = {};
  ::GetClientRect(window.Top(), &client);
  window.TakeMessages();
  NudgeWindow(window.Child(), true);
  EXPECT_THAT(window.TakeMessages(),
              testing::UnorderedElementsAre(
                  std::pair(WM_SIZE, MAKELPARAM(client.right - 1, client.bottom - 1)),
                  std::pair(WM_SIZE, MAKELPARAM(client.right, client.bottom)),
                  std::pair(WM_MOUSEMOVE, MAKELPARAM(200, 150))));
  ::ShowWindow(window.Top(), SW_MINIMIZE);
  NudgeWindow(window.Child(), false);
  EXPECT_FALSE(::IsIconic(window.Top()));

  ::ShowWindow(window.Top(), SW_MAXIMIZE);
  ::GetWindowRect(window.Top(), &full);
  window.TakeMessages();
  NudgeWindow(window.Child(), false);
  EXPECT_EQ(window.TakeMessages().size(), 3u) << "a maximized window is resized and moved too";
  NudgeWindow(window.Child(), true);
  EXPECT_TRUE(::IsZoomed(window.Top()));
  ::ShowWindow(window.Top(), SW_SHOWNORMAL);
  ::GetWindowRect(window.Top(), &normal);
  EXPECT_THAT(normal,
              testing::FieldsAre(full.left + 8, full.top + 8, full.right - 8, full.bottom - 8));
}

}  // namespace
