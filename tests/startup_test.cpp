#include <gmock/gmock.h>

#include <algorithm>
#include <future>

#include "TesselSLB/BrokerInjection.h"
#include "TesselSLB/BrokerStartup.h"
#include "TesselSLB/NudgeWindow.h"
#include "TesselSilverlight.h"
#include "support/LogCapture.h"
#include "support/StandIn.h"
#include "support/TestWindow.h"

namespace {

using testing::ElementsAre;
using testing::FieldsAre;
using Texts = std::vector<std::string>;
using Outcome = std::pair<int, Texts>;  // result and log lines

const LogCapture capture;
const std::wstring kMutex = L"SLINJECT{EAE422D8-9B4C-4395-B672-8EDDCDBA226E}";
const std::wstring kProcess = std::to_wstring(::GetCurrentProcessId());
const std::wstring kHost = L"http://serve-" + kProcess;

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
Outcome Failure(int result, const std::string& line) { return {result, {"ERROR " + line}}; }

std::string LauncherLine(const std::wstring& origin) {
  return "sllauncher.exe /overwrite /emulate:\"" + kFolder + "SLBroker.xap\" /origin:\"" +
         Narrow(origin) + '"';
}

TEST(Startup, NeedsAPipeOrALauncherThatStarts) {
  const auto probe = [](DWORD scheme) {
    return Observe([&] { return BrokerPipeExists(scheme, kHost, 0); }, "INFO");
  };
  EXPECT_EQ(probe(SL_TAILORED_URI), (Outcome{0, {"INFO Cannot connect to SLBroker pipe"}}));
  EXPECT_EQ(probe(SL_NO_URI),
            (Outcome{0, {"ERROR Invalid URI scheme", "ERROR Cannot get pipe name"}}));
  EXPECT_EQ(Launch(SL_TAILORED_URI, kHost),
            (Outcome{0, {"ERROR Cannot find sllauncher.exe", "ERROR Cannot sllauncher.exe"}}));
  const StandIn launcher(L"sllauncher");
  EXPECT_EQ(Launch(5, kHost),
            (Outcome{0, {"ERROR Unknown URI scheme 5", "ERROR Cannot get URI scheme as string"}}));
  std::ofstream(launcher.Program()) << "no program";
  EXPECT_EQ(Launch(SL_TAILORED_URI, kHost),
            Failure(0, "CreateProcess failed, slLauncher=" + launcher.Program().string() +
                           " cmdLine=" + LauncherLine(kHost + L"/TailoredBroker/SLBroker.xap")));
}

TEST(Startup, LaunchesATailoredBrokerWithoutWaitingForTheLauncher) {
  const StandIn launcher(L"sllauncher");
  const Outcome launch = Launch(SL_TAILORED_URI, kHost + L"%41", "INFO");
  const Texts record = launcher.Record(L"serve-" + kProcess + L"_41");
  ASSERT_EQ(record.size(), 4u);
  const std::string line = LauncherLine(kHost + L"_41/TailoredBroker/SLBroker.xap");
  EXPECT_THAT(record, ElementsAre(line, kFolder.substr(0, kFolder.size() - 1), "1 0", record[3]));
  const Texts expected = {"INFO sllauncher.exe=" + launcher.Program().string(),
                          "INFO cmdLine=" + line,
                          "INFO Created sllauncher process with pid " + record[3]};
  EXPECT_EQ(launch, Outcome(1, expected));
}

TEST(Injection, RefusesWhatIsNoWindow) {
  const TestWindow window;
  const HWND dead = TestWindow().Top();
  const auto run = [](HWND handle, DWORD process) {
    return Observe([&] { return RunInjector(handle, process); });
  };
  EXPECT_EQ(run(window.Top(), 0), Failure(-5, "Invalid arguments"));
  for (HWND none : {static_cast<HWND>(nullptr), dead}) {
    EXPECT_EQ(run(none, 1), Failure(-5, "Invalid arguments"));
    EXPECT_EQ(Inject(none), Failure(-5, "Invalid window"));
  }
}

TEST(Injection, TakesTheInjectorsWord) {
  const TestWindow window;
  const std::string line = "slinject.exe --pid=" + Narrow(kProcess);
  Texts expected = {"INFO Mutex acquired", "INFO slinject.exe=" + kFolder + "slinject.exe",
                    "INFO cmdLine=" + line, "ERROR CreateProcess failed, cmdLine=" + line};
  EXPECT_EQ(Inject(window.Child(), "INFO"), Outcome(-10, expected));

  const StandIn injector(L"slinject");
  const std::tuple<int, int, std::string> kCases[] = {
      {0, 0, "ERROR Silverlight injector succeeded"},
      {3, -11, "ERROR Silverlight injector failed, exit code =3"},
      {-2, -11, "ERROR Silverlight injector failed, exit code =-2"}};
  for (const auto& [exitCode, result, message] : kCases) {
    injector.Prepare(::GetCurrentProcessId(), 0, exitCode);
    const Outcome outcome = Inject(window.Child(), "INFO");
    const Texts record = injector.Record(kProcess);
    ASSERT_GE(record.size(), 5u);
    const std::string pid = record.end()[-2];
    EXPECT_THAT(Texts(record.end() - 5, record.end()),
                ElementsAre(line, std::filesystem::current_path().string(), "1 0", pid, "end"));
    expected.resize(3);
    expected.insert(expected.end(), {"INFO Created slinject process with pid " + pid, message});
    EXPECT_EQ(outcome, Outcome(result, expected));
  }
}

TEST(Injection, IsDoneByOneAtATime) {
  const TestWindow window;
  const StandIn injector(L"slinject");
  injector.Prepare(::GetCurrentProcessId(), 500, 0);
  auto other = std::async(std::launch::async, [&] { return InjectBroker(window.Child()); });
  EXPECT_EQ(InjectBroker(window.Top()), 0);
  EXPECT_EQ(other.get(), 0);
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
  EXPECT_EQ(Inject(window.Top()), Failure(-3, "Cannot create mutex"));
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
  const auto start = [](auto call) {
    return std::async(std::launch::async, [call] {
      const std::uint64_t begin = ::GetTickCount64();
      const Outcome outcome = call();
      return std::pair(outcome, ::GetTickCount64() - begin);
    });
  };
  const auto inject = [&](const TestWindow& window, DWORD process) {
    return start(
        [&, process] { return Observe([&] { return RunInjector(window.Child(), process); }); });
  };
  const std::wstring tailored = L"https://serve-late-" + kProcess;
  const std::tuple<DWORD, std::wstring, std::wstring> kLaunches[] = {
      {SL_TAILORED_URI, L"serve-late-" + kProcess, tailored + L"/TailoredBroker/SLBroker.xap"},
      {SL_HTTP_URI, L"http", L"http://slbroker.tessel.example/SLBroker.xap"},
      {SL_HTTPS_URI, L"https", L"https://slbroker.tessel.example/SLBroker.xap"},
      {SL_FILE_URI, L"file", L"file://" + TestFolder() + L"SLBroker.xap"}};
  std::vector<std::future<std::pair<Outcome, std::uint64_t>>> launched;
  for (const auto& launch : kLaunches) {
    launched.push_back(start([&] { return Launch(std::get<0>(launch), tailored, "INFO"); }));
  }
  auto slow = inject(slowWindow, kSlow), late = inject(lateWindow, kLate);
  auto held = start([&] { return Inject(heldWindow.Top()); });
  for (std::size_t i = 0; i < 4; ++i) {
    const auto& [scheme, id, origin] = kLaunches[i];
    const auto [outcome, took] = launched[i].get();
    EXPECT_EQ(outcome.first, 0) << scheme;
    EXPECT_EQ(outcome.second.back(), "INFO Cannot connect to SLBroker pipe") << scheme;
    EXPECT_GE(took, 15000u) << scheme;
    EXPECT_EQ(launcher.Record(id).at(0), LauncherLine(origin));
  }
  EXPECT_THAT(slow.get(),
              FieldsAre(Failure(-11, "Silverlight injector timedout"), testing::Ge(10000u)));
  EXPECT_EQ(
      std::ranges::count(slowWindow.TakeMessages(), WM_MOUSEMOVE, &TestWindow::Message::first), 10);
  EXPECT_EQ(late.get().first, Failure(0, "Silverlight injector succeeded"));
  EXPECT_EQ(injector.Record(L"-15").at(0), "slinject.exe --pid=-15") << "signed";
  EXPECT_THAT(held.get(),
              FieldsAre(Failure(-3, "Cannot acquire mutex, WaitForSingleObject returned 102"),
                        testing::Ge(30000u)));
  EXPECT_EQ(injector.Record(std::to_wstring(kSlow)).back(), "end") << "it was left running";
}

RECT Outside(const TestWindow& window) {
  RECT rectangle = {};
  ::GetWindowRect(window.Top(), &rectangle);
  return rectangle;
}

TEST(NudgeWindow, MovesTheMouseAndResizesTheTopLevelAlsoOutOfAnIcon) {
  TestWindow window;
  const RECT before = Outside(window);
  RECT client = {};
  ::GetClientRect(window.Top(), &client);
  window.TakeMessages();
  NudgeWindow(window.Child(), true);
  EXPECT_THAT(window.TakeMessages(),
              testing::UnorderedElementsAre(
                  std::pair(WM_SIZE, MAKELPARAM(client.right - 1, client.bottom - 1)),
                  std::pair(WM_SIZE, MAKELPARAM(client.right, client.bottom)),
                  std::pair(WM_MOUSEMOVE, MAKELPARAM(200, 150))));
  ::ShowWindow(window.Top(), SW_MINIMIZE);
  ASSERT_TRUE(::IsIconic(window.Top()));
  NudgeWindow(window.Child(), false);
  const RECT after = Outside(window);
  EXPECT_TRUE(::EqualRect(&after, &before) && !::IsIconic(window.Top()));
}

TEST(NudgeWindow, LeavesAMaximisedWindowMaximised) {
  TestWindow window;
  ::ShowWindow(window.Top(), SW_MAXIMIZE);
  const RECT before = Outside(window);
  NudgeWindow(window.Child(), true);
  EXPECT_TRUE(::IsZoomed(window.Top()));
  WINDOWPLACEMENT placement = {};
  placement.length = sizeof(placement);
  ::GetWindowPlacement(window.Top(), &placement);
  EXPECT_THAT(placement.rcNormalPosition,
              FieldsAre(before.left + 8, before.top + 8, before.right - 8, before.bottom - 8));
  window.TakeMessages();
  NudgeWindow(window.Child(), false);
  EXPECT_EQ(window.TakeMessages().size(), 3u) << "resized and moved, as any other";
}

}  // namespace
