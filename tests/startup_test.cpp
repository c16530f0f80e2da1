#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <thread>

#include "TesselSLB/BrokerInjection.h"
#include "TesselSLB/BrokerStartup.h"
#include "TesselSLB/NudgeWindow.h"
#include "TesselSilverlight.h"
#include "support/LogCapture.h"
#include "support/StandIn.h"
#include "support/TestWindow.h"

namespace {

using testing::ElementsAre;
using Texts = std::vector<std::string>;
using Outcome = std::pair<int, Texts>;  // result and log lines

const LogCapture capture;
const std::wstring kMutex = L"SLINJECT{EAE422D8-9B4C-4395-B672-8EDDCDBA226E}";
const std::wstring kProcess = std::to_wstring(::GetCurrentProcessId());

std::string Narrow(const std::wstring& ascii) { return {ascii.begin(), ascii.end()}; }
const std::string kFolder = Narrow(TestFolder());

// What a call gives and what its thread logs meanwhile.
template <class Call>
Outcome Observe(Call call, const char* lowest = "ERROR") {
  const auto lines = [&] { return LogCapture::Messages(lowest, ::GetCurrentThreadId()); };
  const auto before = static_cast<std::ptrdiff_t>(lines().size());
  const int result = call();
  const Texts all = lines();
  return {result, {all.begin() + before, all.end()}};
}

Outcome Launch(DWORD scheme, const std::wstring& address, const char* lowest = "ERROR") {
  return Observe([&] { return LaunchBroker(scheme, address); }, lowest);
}
Outcome Inject(HWND window, const char* lowest = "ERROR") {
  return Observe([&] { return InjectBroker(window); }, lowest);
}

std::string LauncherLine(const std::wstring& origin) {
  return "sllauncher.exe /overwrite /emulate:\"" + kFolder + "SLBroker.xap\" /origin:\"" +
         Narrow(origin) + '"';
}

TEST(Startup, FindsNoPipeWhereNobodyServes) {
  const auto probe = [](DWORD scheme) {
    return Observe([&] { return BrokerPipeExists(scheme, L"http://x", 0); }, "INFO");
  };
  EXPECT_EQ(probe(SL_TAILORED_URI), (Outcome{0, {"INFO Cannot connect to SLBroker pipe"}}));
  EXPECT_EQ(probe(SL_NO_URI),
            (Outcome{0, {"ERROR Invalid URI scheme", "ERROR Cannot get pipe name"}}));
}

TEST(Startup, NeedsALauncherThatStarts) {
  EXPECT_EQ(Launch(SL_TAILORED_URI, L"http://x"),
            (Outcome{0, {"ERROR Cannot find sllauncher.exe", "ERROR Cannot sllauncher.exe"}}));
  const StandIn launcher(L"sllauncher");
  EXPECT_EQ(Launch(5, L"http://x"),
            (Outcome{0, {"ERROR Unknown URI scheme 5", "ERROR Cannot get URI scheme as string"}}));
  std::ofstream(launcher.Program()) << "no program";
  EXPECT_EQ(Launch(SL_TAILORED_URI, L"http://x"),
            (Outcome{0,
                     {"ERROR CreateProcess failed, slLauncher=" + launcher.Program().string() +
                      " cmdLine=" + LauncherLine(L"http://x/TailoredBroker/SLBroker.xap")}}));
}

TEST(Startup, LaunchesATailoredBrokerWithoutWaitingForTheLauncher) {
  const StandIn launcher(L"sllauncher");
  const std::wstring id = L"serve-" + kProcess + L"_41";
  const Outcome launch = Launch(SL_TAILORED_URI, L"http://serve-" + kProcess + L"%41", "INFO");
  const Texts record = launcher.Record(id);
  ASSERT_EQ(record.size(), 4u);
  const std::string line = LauncherLine(L"http://" + id + L"/TailoredBroker/SLBroker.xap");
  EXPECT_THAT(record, ElementsAre(line, kFolder.substr(0, kFolder.size() - 1), "1 0", record[3]));
  EXPECT_EQ(launch,
            (Outcome{1,
                     {"INFO sllauncher.exe=" + launcher.Program().string(), "INFO cmdLine=" + line,
                      "INFO Created sllauncher process with pid " + record[3]}}));
}

TEST(Injection, RefusesWhatIsNoWindow) {
  const HWND dead = TestWindow().Top();
  for (HWND window : {static_cast<HWND>(nullptr), dead}) {
    EXPECT_EQ(Inject(window), (Outcome{-5, {"ERROR Invalid window"}}));
  }
  const TestWindow window;
  const std::pair<HWND, DWORD> kArguments[] = {{window.Top(), 0}, {nullptr, 1}, {dead, 1}};
  for (const auto& [handle, process] : kArguments) {
    EXPECT_EQ(Observe([&] { return RunInjector(handle, process); }),
              (Outcome{-5, {"ERROR Invalid arguments"}}));
  }
}

TEST(Injection, TakesTheInjectorsWord) {
  const TestWindow window;
  const std::string line = "slinject.exe --pid=" + Narrow(kProcess);
  Texts expected = {"INFO Mutex acquired", "INFO slinject.exe=" + kFolder + "slinject.exe",
                    "INFO cmdLine=" + line, "ERROR CreateProcess failed, cmdLine=" + line};
  EXPECT_EQ(Inject(window.Child(), "INFO"), (Outcome{-10, expected}));

  const StandIn injector(L"slinject");
  const std::tuple<int, int, std::string> kCases[] = {
      {0, 0, "ERROR Silverlight injector succeeded"},
      {3, -11, "ERROR Silverlight injector failed, exit code =3"},
      {-2, -11, "ERROR Silverlight injector failed, exit code =-2"},
  };
  for (const auto& [exitCode, result, message] : kCases) {
    injector.Prepare(::GetCurrentProcessId(), 0, exitCode);
    const Outcome outcome = Inject(window.Child(), "INFO");
    const Texts record = injector.Record(kProcess);
    ASSERT_GE(record.size(), 5u);
    const std::string pid = record.end()[-2];
    EXPECT_THAT(Texts(record.end() - 5, record.end()),
                ElementsAre(line, std::filesystem::current_path().string(), "1 0", pid, "end"));
    expected.resize(3);
    expected.push_back("INFO Created slinject process with pid " + pid);
    expected.push_back(message);
    EXPECT_EQ(outcome, (Outcome{result, expected}));
  }
}

TEST(Injection, IsDoneByOneAtATime) {
  const TestWindow window;
  const StandIn injector(L"slinject");
  injector.Prepare(::GetCurrentProcessId(), 500, 0);
  std::array results = {1, 1};
  {
    std::jthread first([&] { results[0] = InjectBroker(window.Child()); });
    std::jthread second([&] { results[1] = InjectBroker(window.Top()); });
  }
  EXPECT_THAT(results, ElementsAre(0, 0));
  const Texts record = injector.Record(kProcess);
  ASSERT_EQ(record.size(), 10u);
  EXPECT_EQ(record[4], "end") << "the second began when the first had ended";
}

TEST(Injection, TakesOverAnAbandonedMutexAndReleasesIt) {
  const TestWindow window;
  const StandIn injector(L"slinject");
  const HANDLE mutex = ::CreateMutexW(nullptr, FALSE, kMutex.c_str());
  ChildProcess holder(TestFolder() + L"test_parts.exe hold " + kMutex + L" 0");
  ASSERT_EQ(holder.ReadLine(), "held");
  ASSERT_EQ(holder.Wait(), 0u);
  EXPECT_EQ(InjectBroker(window.Top()), 0);
  EXPECT_FALSE(::ReleaseMutex(mutex)) << "this thread has given it back";
  EXPECT_EQ(::WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
  ::CloseHandle(mutex);

  const HANDLE otherKind = ::CreateEventW(nullptr, FALSE, FALSE, kMutex.c_str());
  EXPECT_EQ(Inject(window.Top()), (Outcome{-3, {"ERROR Cannot create mutex"}}));
  ::CloseHandle(otherKind);
}

// The long ones side by side: launchers that bring no broker or bring it too late, injectors that
// take their time, an injection that another process holds up for too long.
TEST(Waits, EndWhenTheirTimeIsOver) {
  const StandIn launcher(L"sllauncher"), injector(L"slinject");
  ChildProcess holder(TestFolder() + L"test_parts.exe hold " + kMutex + L" 45000");
  ASSERT_EQ(holder.ReadLine(), "held");
  TestWindow slowWindow, lateWindow, heldWindow;
  constexpr DWORD kSlow = 0x7FFFFFF1, kLate = 0xFFFFFFF1;  // no processes: ids for the stand-in
  injector.Prepare(kSlow, 12000, 0);
  injector.Prepare(static_cast<int>(kLate), 6000, 0);
  const std::wstring tailored = L"https://serve-late-" + kProcess;
  const std::tuple<DWORD, std::wstring, std::wstring> kLaunches[] = {
      {SL_TAILORED_URI, L"serve-late-" + kProcess, tailored + L"/TailoredBroker/SLBroker.xap"},
      {SL_HTTP_URI, L"http", L"http://slbroker.tessel.example/SLBroker.xap"},
      {SL_HTTPS_URI, L"https", L"https://slbroker.tessel.example/SLBroker.xap"},
      {SL_FILE_URI, L"file", L"file://" + TestFolder() + L"SLBroker.xap"},
  };
  Outcome launched[4], slow, late, held;
  std::array<std::uint64_t, 6> took = {};
  {
    std::vector<std::jthread> threads;
    const auto start = [&](std::size_t index, Outcome& outcome, auto call) {
      threads.emplace_back([&took, &outcome, index, call] {
        const std::uint64_t begin = ::GetTickCount64();
        outcome = call();
        took[index] = ::GetTickCount64() - begin;
      });
    };
    for (std::size_t i = 0; i < 4; ++i) {
      start(i, launched[i], [&, i] { return Launch(std::get<0>(kLaunches[i]), tailored, "INFO"); });
    }
    start(4, slow, [&] { return Observe([&] { return RunInjector(slowWindow.Child(), kSlow); }); });
    start(5, held, [&] { return Inject(heldWindow.Top()); });
    late = Observe([&] { return RunInjector(lateWindow.Child(), kLate); });
  }
  for (std::size_t i = 0; i < 4; ++i) {
    const auto& [scheme, id, origin] = kLaunches[i];
    EXPECT_EQ(launched[i].first, 0) << scheme;
    EXPECT_EQ(launched[i].second.back(), "INFO Cannot connect to SLBroker pipe") << scheme;
    EXPECT_GE(took[i], 15000u) << scheme;
    EXPECT_EQ(launcher.Record(id).at(0), LauncherLine(origin));
  }
  EXPECT_EQ(slow, (Outcome{-11, {"ERROR Silverlight injector timedout"}}));
  EXPECT_GE(took[4], 10000u);
  const Texts record = injector.Record(std::to_wstring(kSlow));
  EXPECT_EQ(record.back(), "end") << "it was left running";
  EXPECT_EQ(
      std::ranges::count(slowWindow.TakeMessages(), WM_MOUSEMOVE, &TestWindow::Message::first), 10);
  EXPECT_EQ(late, (Outcome{0, {"ERROR Silverlight injector succeeded"}}));
  EXPECT_EQ(injector.Record(L"-15").at(0), "slinject.exe --pid=-15") << "signed";
  EXPECT_EQ(held, (Outcome{-3, {"ERROR Cannot acquire mutex, WaitForSingleObject returned 102"}}));
  EXPECT_GE(took[5], 30000u);
}

std::array<LONG, 4> Sides(const RECT& r) { return {r.left, r.top, r.right, r.bottom}; }
std::array<LONG, 4> Outside(HWND window) {
  RECT rectangle = {};
  ::GetWindowRect(window, &rectangle);
  return Sides(rectangle);
}

TEST(NudgeWindow, MovesTheMouseAndResizesTheTopLevel) {
  TestWindow window;
  const auto before = Outside(window.Top());
  RECT client = {};
  ::GetClientRect(window.Top(), &client);
  window.TakeMessages();
  NudgeWindow(window.Child(), true);
  EXPECT_THAT(window.TakeMessages(),
              testing::UnorderedElementsAre(
                  std::pair(WM_SIZE, MAKELPARAM(client.right - 1, client.bottom - 1)),
                  std::pair(WM_SIZE, MAKELPARAM(client.right, client.bottom)),
                  std::pair(WM_MOUSEMOVE, MAKELPARAM(200, 150))));
  EXPECT_EQ(Outside(window.Top()), before);
}

TEST(NudgeWindow, RestoresAMinimisedWindow) {
  TestWindow window;
  ::ShowWindow(window.Top(), SW_MINIMIZE);
  ASSERT_TRUE(::IsIconic(window.Top()));
  NudgeWindow(window.Child(), false);
  EXPECT_FALSE(::IsIconic(window.Top()));
}

TEST(NudgeWindow, LeavesAMaximisedWindowMaximised) {
  TestWindow window;
  ::ShowWindow(window.Top(), SW_MAXIMIZE);
  const auto [left, top, right, bottom] = Outside(window.Top());
  NudgeWindow(window.Child(), true);
  EXPECT_TRUE(::IsZoomed(window.Top()));
  WINDOWPLACEMENT placement = {};
  placement.length = sizeof(placement);
  ::GetWindowPlacement(window.Top(), &placement);
  EXPECT_THAT(Sides(placement.rcNormalPosition),
              ElementsAre(left + 8, top + 8, right - 8, bottom - 8));
  window.TakeMessages();
  NudgeWindow(window.Child(), false);
  EXPECT_EQ(window.TakeMessages().size(), 3u) << "resized and moved, as any other";
}

}  // namespace
