// The log: levels from the registry, the text of a line, and both sinks. No trace session exists
// under Wine, so event tracing meets functions of this suite's own.
#include <gmock/gmock.h>
#include <windows.h>

#include <clocale>
#include <regex>
#include <thread>

#include "Common/include/TesselTrace.h"
#include "logging/EtwTraceProvider.h"
#include "logging/Log.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr TRACEHANDLE kSession = 0x1122334455667788;
constexpr GUID kProvider = {0x204DE76A, 0x126E, 0x4673, {179, 73, 90, 93, 17, 209, 128, 215}};
constexpr GUID kEventClass = {0x7FE69228, 0x633E, 0x4F06, {128, 193, 82, 127, 234, 35, 227, 167}};

// The system's side of event tracing.
struct Tracing : testing::Environment {
  std::mutex mutex;
  WMIDPREQUEST control = nullptr;
  void* context = nullptr;
  TRACEHANDLE session = kSession;
  UCHAR level = 0;
  ULONG flags = 0;
  std::vector<std::pair<EVENT_TRACE_HEADER, std::vector<std::string>>> events;

  void SetUp() override;
  ULONG Control(WMIDPREQUESTCODE request) {
    ULONG reserved = 0;
    return control(request, context, &reserved, this);
  }
  ULONG Enable(UCHAR newLevel, ULONG newFlags = 0) {
    events.clear();
    level = newLevel;
    flags = newFlags;
    return Control(WMI_ENABLE_EVENTS);
  }
  ULONG Disable() { return Control(WMI_DISABLE_EVENTS); }
};
auto& tracing = static_cast<Tracing&>(*testing::AddGlobalTestEnvironment(new Tracing));

ULONG WINAPI RegisterGuids(WMIDPREQUEST control, void* context, LPCGUID provider, ULONG count,
                           PTRACE_GUID_REGISTRATION classes, LPCWSTR, LPCWSTR, PTRACEHANDLE out) {
  EXPECT_TRUE(count == 1 && *provider == kProvider && *classes->Guid == kEventClass);
  EXPECT_EQ(tracing.control, nullptr) << "registered twice";
  tracing.control = control;
  tracing.context = context;
  *out = 4711;
  ::SetLastError(ERROR_GEN_FAILURE);
  return ERROR_SUCCESS;
}
ULONG WINAPI UnregisterGuids(TRACEHANDLE registration) {
  std::printf("unregistered %d\n", static_cast<int>(registration));
  return ERROR_SUCCESS;
}
TRACEHANDLE WINAPI GetLoggerHandle(void* buffer) {
  ::SetLastError(ERROR_INVALID_HANDLE);
  return static_cast<Tracing*>(buffer)->session;
}
UCHAR WINAPI GetEnableLevel(TRACEHANDLE session) { return session == kSession ? tracing.level : 0; }
ULONG WINAPI GetEnableFlags(TRACEHANDLE session) { return session == kSession ? tracing.flags : 0; }
ULONG WINAPI WriteEvent(TRACEHANDLE session, EVENT_TRACE_HEADER* header) {
  EXPECT_EQ(session, kSession);
  const std::lock_guard lock(tracing.mutex);
  auto& fields = tracing.events.emplace_back(*header, std::vector<std::string>()).second;
  const auto* field = reinterpret_cast<MOF_FIELD*>(header + 1);
  for (auto size = header->Size - sizeof(*header); size >= sizeof(*field); size -= sizeof(*field)) {
    fields.emplace_back(reinterpret_cast<char*>(field->DataPtr), field->Length);
    ++field;
  }
  ::SetLastError(ERROR_GEN_FAILURE);
  return ERROR_SUCCESS;
}
void Tracing::SetUp() {
  logging::traceFunctions = {&RegisterGuids,  &UnregisterGuids, &GetLoggerHandle,
                             &GetEnableLevel, &GetEnableFlags,  &WriteEvent};
}

// Sets the user's level and asks until the log has seen it; the ticks around the call that has.
std::pair<ULONGLONG, ULONGLONG> AwaitLevel(const char* text, int level, ULONGLONG latest = ~0ull) {
  LogCapture::SetLevel(text);
  for (;; ::Sleep(20)) {
    const ULONGLONG before = ::GetTickCount64();
    ::SetLastError(4321);
    const int seen = logging::GetConfiguredLogLevel();
    EXPECT_EQ(::GetLastError(), 4321u);
    if (seen == level) return {before, ::GetTickCount64()};
    if (before >= latest) throw std::runtime_error("level not read in time");
  }
}

struct Log : testing::Test {
  Log() {
    AwaitLevel("VERBOSE", logging::kVerbose);
    logging::IsLogged(logging::kInfo);  // registers the provider
  }

  // The message that a call writes, without the line break and the zero that follow it.
  template <class Character, class... Arguments>
  static std::string Logged(const Character* format, Arguments... arguments) {
    constexpr logging::LogSite site("C:\\src/JArchive.cpp", 73, logging::kInfo);
    tracing.Enable(5, 2 /*message only*/);
    if constexpr (sizeof(Character) == 1) logging::WriteLog(site, format, arguments...);
    if constexpr (sizeof(Character) == 2) logging::WriteLogW(site, format, arguments...);
    tracing.Disable();
    const std::string text = tracing.events.at(0).second.at(0);
    EXPECT_TRUE(text.ends_with("\n\0"s));
    return text.substr(0, text.size() - 2);
  }

  const LogCapture capture{LogCapture::Level::kAsItStands};
};

// One line of each level; the number of lines whose argument was evaluated.
int LogEachLevel() {
  int evaluated = 0;
  ::SetLastError(1234);
  LOG_VERBOSE("%d", ++evaluated);
  LOG_INFO("%d", ++evaluated);
  LOG_WARNING("%d", ++evaluated);
  LOG_ERROR("%d", ++evaluated);
  LOG_FATAL("%d", ++evaluated);
  EXPECT_EQ(::GetLastError(), 1234u);
  return evaluated;
}

// A process whose first log calls these are.
TEST(LogChild, DISABLED_LogsEachLevel) {
  const LogCapture capture(LogCapture::Level::kAsItStands);
  const int evaluated = LogEachLevel();
  const auto messages = LogCapture::Messages("VERBOSE1");
  std::printf("%d of %d, %.7s;\n", evaluated, int(messages.size()), messages.at(0).c_str());
}

TEST(LogLevel, ComesFromTheRegistry) {
  const struct {
    const char *user, *machine, *output;
    DWORD type = REG_SZ;
  } rows[] = {{nullptr, nullptr, "1 of 1, FATAL 1;"},
              {"vErBoSe", nullptr, "5 of 5, VERBOSE;"},
              {"eRROR", nullptr, "2 of 2, ERROR 1;"},
              {nullptr, "iNFO", "4 of 4, INFO 1;"},
              {"WARNING", "VERBOSE", "3 of 3, WARNING;"},
              {"DEBUG", "INFO", "1 of 1, FATAL 1;"},
              {"VERBOSE  ", "INFO", "1 of 1, FATAL 1;"},  // the longest that is read
              {"VERBOSE   ", "INFO", "4 of 4, INFO 1;"},  // too long: as if not set
              {"VERBOSE", "ERROR", "2 of 2, ERROR 1;", REG_EXPAND_SZ}};
  constexpr char kMachine[] = R"(System\CurrentControlSet\Control\Session Manager\Environment)";
  ::SetEnvironmentVariableA("TESSEL_LOG_LEVEL", "VERBOSE");  // not consulted
  for (const auto& [user, machine, output, type] : rows) {
    LogCapture::SetLevel(user, HKEY_CURRENT_USER, "Environment", type);
    LogCapture::SetLevel(machine, HKEY_LOCAL_MACHINE, kMachine);
    ChildProcess child(L"\"" + TestFolder() + L"log_test.exe\" --gtest_also_run_disabled_tests " +
                       L"--gtest_filter=LogChild.*");
    EXPECT_THAT(child.ReadToEnd(), AllOf(HasSubstr(output), HasSubstr("unregistered 4711")))
        << (user ? user : "unset") << " of type " << type;
    EXPECT_EQ(child.Wait(), 0u);
  }
  LogCapture::SetLevel(nullptr, HKEY_LOCAL_MACHINE, kMachine);
}

TEST_F(Log, LevelIsReadAnewAfterThreeSeconds) {
  const auto [before, after] = AwaitLevel("ERROR", logging::kError);
  EXPECT_GE(AwaitLevel("VERBOSE", logging::kVerbose, after + 3000).second, before + 3000);
}

TEST_F(Log, DebuggerLineHasItsForm) {
  const std::pair<logging::LogSite, const char*> rows[] = {
      {{"D:\\build\\JArchive.cpp", 73, 2}, R"(ERROR:\(v1_0_0_0\) JArchive\.cpp\(73\)\] text\n)"},
      {{"/build/a.b/Log.cpp", 1, -1}, R"(VERBOSE1:\(v1_0_0_0\) Log\.cpp\(1\)\] text\n)"},
      {{"Bare", -2, 4}, R"(UNKNOWN:\(v1_0_0_0\) Bare\(-2\)\] text\n)"}};
  const std::string head = "\\{" + std::to_string(::GetCurrentThreadId()) +
                           R"(\} \[(0\d|1[0-2])[0-3]\d/[0-2]\d[0-5]\d[0-5]\d\.\d{3}:)";
  for (const auto& [site, tail] : rows) {
    logging::WriteLog(site, "%s", "text");
    const std::string line = LogCapture::Lines().back();
    EXPECT_TRUE(std::regex_match(line, std::regex(head + tail))) << line;
  }
}

TEST_F(Log, DTraceWritesTheClientsLine) {
  for (const int level : {-1, 0, 1, 2, 3, -2}) DTrace(level, L"\u00e9%d");
  DTrace(0, nullptr);
  EXPECT_THAT(LogCapture::Messages("VERBOSE1"),
              ElementsAre("VERBOSE1 SL: \u00e9%d", "INFO SL: \u00e9%d", "WARNING SL: \u00e9%d",
                          "ERROR SL: \u00e9%d", "VERBOSE1 SL: \u00e9%d", "VERBOSE1 SL: \u00e9%d",
                          "ERROR ERR: str is NULL in DTrace"));
  EXPECT_THAT(LogCapture::Lines(), Each(HasSubstr(") TesselSLB.cpp(")));
}

TEST_F(Log, ConversionsMeanWhatMicrosoftsRuntimeMeans) {
  const auto check = [](const auto* format, const std::string& expected, auto... arguments) {
    EXPECT_EQ(Logged(format, arguments...), expected) << format << setlocale(LC_ALL, nullptr);
  };
  const auto pointer = reinterpret_cast<void*>(0x1234AB);
  const wchar_t* const none = nullptr;
  for (const char* locale : {"German_Germany.1252", "Japanese_Japan.932", "C"}) {
    ASSERT_NE(setlocale(LC_ALL, locale), nullptr) << locale;
    check("%d|%u|\\u%04X|%Ii %zu", "-5|4294967295|\\u00EF|-12345678901 12345678901", -5, -1, 0xEF,
          -12345678901, 12345678901);
    check("%I64x %ld %hhu %hd %#p", "2dfdc1c35 -1 255 -1 0X00000000001234AB", 12345678901, -1L,
          0x1FF, 0x1FFFF, pointer);
    check("[%5s|%-5ls|%.1s|%.*ls|%*d|%-*d|%05d]", "[   ab|cd   |e|gh|   7|8   |-0009]", "ab", L"cd",
          "ef", 2, L"ghi", 4, 7, -4, 8, -9);
    check("100%% %c %.0f %g %600d", "100% x 3 1000 " + std::string(599, ' ') + "1", 'x', 3.2, 1e3,
          1);
    check("%s %ls %S", "(null) (null) (null)", none, none, none);
    check("%s %hs %lc%C%hc", "\u65e5\u00e9 narrow \u20ac\u00e9h", "\u65e5\u00e9", "narrow",
          L'\u20ac', L'\u00e9', 'h');
    check("%ls|%S|%ws", "\uFFFDx\uFFFD|\u00e9|\U0001F600", L"\xD83Dx\xDE00", L"\u00e9",
          L"\U0001F600");
    check(L"\u20ac%s|%ls|%S|%hs", "\u20ac\u65e5\U0001F600|\u00e9|ab|cd", L"\u65e5\U0001F600",
          L"\u00e9", "ab", "cd");
    check(L"%s %#p %Ii %d %s", "\uFFFD 0X00000000001234AB -1 2 (null)", L"\xDE00", pointer, -1ll, 2,
          none);
  }
  // A pair on the seam of what is converted at a time.
  for (int before = 250; before < 260; ++before)
    check("%ls", std::string(before, 'a') + "\U0001F600",
          (std::wstring(before, L'a') + L"\U0001F600").c_str());
}

TEST_F(Log, LongTextsAreCutBetweenCharacters) {
  const struct {
    std::size_t count;
    const wchar_t* tail;
    std::size_t narrow, wide;  // bytes kept by either call
  } rows[] = {{4096, L"", 4095, 4095},
              {4093, L"\u00e9z", 4095, 4096},
              {4094, L"\u00e9z", 4094, 4096},
              {4092, L"\u20acz", 4095, 4096},
              {4093, L"\u20acz", 4093, 4097},
              {4091, L"\U0001F600z", 4095, 4096},
              {4092, L"\U0001F600z", 4092, 4097},
              {4094, L"\U0001F600z", 4094, 4094} /*half a pair is left out*/};
  for (const auto& row : rows) {
    const std::wstring text = std::wstring(row.count, L'a') + row.tail;
    EXPECT_EQ(Logged("%ls", text.c_str()).size(), row.narrow) << row.count;
    EXPECT_EQ(Logged(L"%s", text.c_str()).size(), row.wide) << row.count;
  }
  std::vector<std::size_t> sizes;  // of the debugger's line, by turns whatever its header's size
  for (const int padding : {0, 1, 2}) {
    const std::wstring euros(5000, L'\u20ac');
    EXPECT_EQ(Logged(L"%.*s%s", padding, L"aa", euros.c_str()).size(), 3 * 4095 - 2 * padding);
    EXPECT_TRUE(LogCapture::Lines().back().ends_with("\u20ac"));
    sizes.push_back(LogCapture::Lines().back().size());
  }
  EXPECT_THAT(sizes, testing::UnorderedElementsAre(8189, 8190, 8191));
}

TEST_F(Log, FatalCarriesTheCallStack) {
  LOG_FATAL("broken");
  const auto getBlock = reinterpret_cast<BYTE* (*)()>(
      reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll"), "RtlGetCurrentPeb")));
  BYTE& beingDebugged = getBlock()[2];
  beingDebugged = 1;
  LOG_FATAL("watched");
  beingDebugged = 0;
  const std::string dump = LogCapture::Lines().at(0);
  EXPECT_TRUE(std::regex_search(
      dump, std::regex(R"(\] broken\nBacktrace.*\n(.*\n)+.*\[0x[0-9A-F]{16}(\+\d+)?\]\n$)")))
      << dump;
  EXPECT_TRUE(LogCapture::Lines().at(1).ends_with("] watched\n"));
}

TEST_F(Log, SessionLevelDecidesWhatIsTraced) {
  AwaitLevel("none", logging::kFatal);
  constexpr logging::LogSite site(__FILE__, __LINE__, logging::kError);
  logging::WriteLog(site, "%s", reinterpret_cast<const char*>(1));  // not looked at
  const auto eventLevels = [](int evaluated) {
    tracing.events.clear();
    LogCapture::Reset();
    EXPECT_EQ(LogEachLevel(), evaluated);
    EXPECT_EQ(LogCapture::Lines().size(), 1u) << "the fatal one";
    std::vector<int> levels;
    for (const auto& [header, fields] : tracing.events) levels.push_back(header.Class.Level);
    return levels;
  };
  const struct {
    UCHAR session;
    int traceLevel, evaluated;
    std::vector<int> events;
  } rows[] = {{0, 3, 1, {}}, {1, 3, 1, {1}}, {3, 1, 3, {3, 2, 1}}, {7, -3, 5, {5, 4, 3, 2, 1}}};
  logging::SetTraceLevel(2);
  for (const auto& [session, traceLevel, evaluated, events] : rows) {
    EXPECT_EQ(tracing.Enable(session), 0u);
    EXPECT_EQ(logging::GetTraceLevel(), traceLevel) << +session;
    EXPECT_EQ(eventLevels(evaluated), events) << +session;
  }
  EXPECT_EQ(tracing.Disable(), 0u);
  EXPECT_EQ(logging::GetTraceLevel(), 2);
  logging::SetTraceLevel(logging::kFatal);
  tracing.session = static_cast<TRACEHANDLE>(-1);
  EXPECT_EQ(tracing.Enable(5), ULONG{ERROR_INVALID_HANDLE});
  tracing.session = kSession;
  EXPECT_EQ(tracing.Control(WMI_GET_ALL_DATA), ULONG{ERROR_INVALID_PARAMETER});
  EXPECT_THAT(eventLevels(1), ElementsAre());
}

TEST_F(Log, EventsHaveTheirFields) {
  constexpr logging::LogSite site("C:\\build\\JArchive.cpp", 0x01020304, logging::kWarning);
  const std::string message = "\u20ac\n\0"s, place = "(v1_0_0_0) JArchive.cpp\0"s;
  const std::vector<std::string> kFields[] = {{"\0\0\0\0"s, "", "\4\3\2\1", place, message},
                                              {message}};
  for (const bool messageOnly : {false, true}) {
    tracing.Enable(5, messageOnly ? 3 : 1);
    logging::WriteLog(site, "%ls", L"\u20ac");
    tracing.Disable();
    const auto& [header, fields] = tracing.events.at(0);
    EXPECT_EQ(header.Flags, ULONG{WNODE_FLAG_TRACED_GUID | WNODE_FLAG_USE_MOF_PTR});
    EXPECT_TRUE(header.Guid == kEventClass && header.Class.Level == 3);
    EXPECT_EQ(header.Class.Type, messageOnly ? 10 : 12);
    EXPECT_EQ(fields, kFields[messageOnly]);
  }
}

TEST_F(Log, ThreadsWriteWholeLines) {
  std::vector<std::string> expected;
  std::vector<std::jthread> threads;
  tracing.Enable(5);
  for (char letter = 'a'; letter < 'i'; ++letter) {
    const std::string text(300, letter);
    for (int n = 0; n < 100; ++n) expected.push_back("INFO " + std::to_string(n) + text + "\u00e9");
    threads.emplace_back([text] {
      for (int n = 0; n < 100; ++n) LOG_INFO("%d%s%ls", n, text.c_str(), L"\u00e9");
    });
  }
  threads.clear();
  tracing.Disable();
  EXPECT_THAT(LogCapture::Messages("VERBOSE1"), testing::UnorderedElementsAreArray(expected));
  EXPECT_EQ(tracing.events.size(), expected.size());
}

}  // namespace
