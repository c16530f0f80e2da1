// The log: levels from the registry, the text of a line, and both sinks. No trace session exists
// under Wine, so event tracing meets functions of this suite's own.
#include <gmock/gmock.h>
#include <windows.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

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
constexpr ULONG kMessageOnly = 2;
constexpr GUID kProvider = {0x204DE76A, 0x126E, 0x4673, {179, 73, 90, 93, 17, 209, 128, 215}};
constexpr GUID kEventClass = {0x7FE69228, 0x633E, 0x4F06, {128, 193, 82, 127, 234, 35, 227, 167}};

struct Event {
  EVENT_TRACE_HEADER header;
  std::vector<std::string> fields;
};

// The system's side of event tracing.
struct Tracing : testing::Environment {
  std::mutex mutex;
  WMIDPREQUEST control = nullptr;
  void* context = nullptr;
  TRACEHANDLE session = kSession;
  UCHAR level = 0;
  ULONG flags = 0;
  std::vector<Event> events;

  void SetUp() override;
  ULONG Control(WMIDPREQUESTCODE request) {
    ULONG reserved = 0;
    return control(request, context, &reserved, this);
  }
  ULONG Enable(UCHAR newLevel, ULONG newFlags = 0) {
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
  Event& event = tracing.events.emplace_back(*header);
  const auto* const end = reinterpret_cast<char*>(header) + header->Size;
  for (auto* field = reinterpret_cast<MOF_FIELD*>(header + 1); reinterpret_cast<char*>(field) < end;
       ++field)
    event.fields.emplace_back(reinterpret_cast<char*>(field->DataPtr), field->Length);
  ::SetLastError(ERROR_GEN_FAILURE);
  return ERROR_SUCCESS;
}
void Tracing::SetUp() {
  logging::traceFunctions = {&RegisterGuids,  &UnregisterGuids, &GetLoggerHandle,
                             &GetEnableLevel, &GetEnableFlags,  &WriteEvent};
}

// Null deletes the value.
void SetLevel(HKEY root, const char* text, DWORD type = REG_SZ) {
  const char* const key = root == HKEY_CURRENT_USER
                              ? "Environment"
                              : R"(System\CurrentControlSet\Control\Session Manager\Environment)";
  ::RegDeleteKeyValueA(root, key, "TESSEL_LOG_LEVEL");
  if (text) ::RegSetKeyValueA(root, key, "TESSEL_LOG_LEVEL", type, text, std::strlen(text) + 1);
}

// Sets the user's level and asks until the log has seen it; the ticks around the call that has.
std::pair<ULONGLONG, ULONGLONG> AwaitLevel(const char* text, int level, ULONGLONG latest = ~0ull) {
  SetLevel(HKEY_CURRENT_USER, text);
  for (;; ::Sleep(20)) {
    const ULONGLONG before = ::GetTickCount64();
    ::SetLastError(4321);
    const int seen = logging::GetConfiguredLogLevel();
    EXPECT_EQ(::GetLastError(), 4321u);
    if (seen == level) return {before, ::GetTickCount64()};
    if (before >= latest) throw std::runtime_error("level not read in time");
  }
}

class Log : public testing::Test {
 protected:
  Log() {
    AwaitLevel("VERBOSE", logging::kVerbose);
    logging::IsLogged(logging::kInfo);  // registers the provider
    tracing.events.clear();
  }

  // The message that a call writes, without the line break and the zero that follow it.
  template <class Character, class... Arguments>
  static std::string Logged(const Character* format, Arguments... arguments) {
    constexpr logging::LogSite site("C:\\src/JArchive.cpp", 73, logging::kInfo);
    tracing.events.clear();
    tracing.Enable(5, kMessageOnly);
    if constexpr (sizeof(Character) == 1) logging::WriteLog(site, format, arguments...);
    if constexpr (sizeof(Character) == 2) logging::WriteLogW(site, format, arguments...);
    tracing.Disable();
    const std::string text = tracing.events.at(0).fields.at(0);
    EXPECT_TRUE(text.ends_with("\n\0"s));
    return text.substr(0, text.size() - 2);
  }

  LogCapture capture_{LogCapture::Level::kAsItStands};
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
    const char* user;
    DWORD type;
    const char *machine, *output;
  } rows[] = {{nullptr, 0, nullptr, "1 of 1, FATAL 1;"},
              {"vErBoSe", REG_SZ, nullptr, "5 of 5, VERBOSE;"},
              {"eRROR", REG_SZ, nullptr, "2 of 2, ERROR 1;"},
              {nullptr, 0, "iNFO", "4 of 4, INFO 1;"},
              {"WARNING", REG_SZ, "VERBOSE", "3 of 3, WARNING;"},
              {"DEBUG", REG_SZ, "INFO", "1 of 1, FATAL 1;"},
              {"", REG_SZ, "INFO", "1 of 1, FATAL 1;"},
              {"VERBOSE  ", REG_SZ, "INFO", "1 of 1, FATAL 1;"},  // the longest that is read
              {"VERBOSE   ", REG_SZ, "INFO", "4 of 4, INFO 1;"},  // too long: as if not set
              {"VERBOSE", REG_EXPAND_SZ, "ERROR", "2 of 2, ERROR 1;"}};
  ::SetEnvironmentVariableA("TESSEL_LOG_LEVEL", "VERBOSE");  // not consulted
  for (const auto& row : rows) {
    SetLevel(HKEY_CURRENT_USER, row.user, row.type);
    SetLevel(HKEY_LOCAL_MACHINE, row.machine);
    ChildProcess child(L"\"" + TestFolder() + L"log_test.exe\" --gtest_also_run_disabled_tests " +
                       L"--gtest_filter=LogChild.*");
    EXPECT_THAT(child.ReadToEnd(), AllOf(HasSubstr(row.output), HasSubstr("unregistered 4711")))
        << (row.user ? row.user : "unset") << " of type " << row.type;
    EXPECT_EQ(child.Wait(), 0u);
  }
  SetLevel(HKEY_LOCAL_MACHINE, nullptr);
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
    const std::string line = LogCapture::RawLines().back();
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
  std::vector<std::size_t> sizes;
  for (const int padding : {0, 1, 2}) {
    const std::wstring euros(5000, L'\u20ac');
    EXPECT_EQ(Logged(L"%.*s%s", padding, L"aa", euros.c_str()).size(), 3 * 4095 - 2 * padding);
    EXPECT_TRUE(LogCapture::RawLines().back().ends_with("\u20ac"));
    sizes.push_back(LogCapture::RawLines().back().size());
  }
  EXPECT_THAT(sizes, testing::UnorderedElementsAre(8189, 8190, 8191));
}

TEST_F(Log, FatalCarriesTheCallStack) {
  using GetBlock = BYTE*(WINAPI*)();
  const auto getBlock = reinterpret_cast<GetBlock>(
      reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll"), "RtlGetCurrentPeb")));
  BYTE& beingDebugged = getBlock()[2];
  LOG_FATAL("broken");
  const std::string dump = LogCapture::RawLines().back();
  EXPECT_TRUE(std::regex_search(
      dump, std::regex(R"(\] broken\nBacktrace.*\n(.*\n)+.*\[0x[0-9A-F]{16}(\+\d+)?\]\n$)")))
      << dump;
  beingDebugged = 1;
  LOG_FATAL("watched");
  beingDebugged = 0;
  EXPECT_TRUE(LogCapture::RawLines().back().ends_with("] watched\n"));
}

TEST_F(Log, SessionLevelDecidesWhatIsTraced) {
  const struct {
    UCHAR session;
    int traceLevel;
    std::vector<int> events;
  } rows[] = {{0, 3, {}}, {1, 3, {1}}, {3, 1, {3, 2, 1}}, {7, -3, {5, 4, 3, 2, 1}}};
  const auto eventLevels = [] {
    tracing.events.clear();
    EXPECT_EQ(LogEachLevel(), 5);
    std::vector<int> levels;
    for (const Event& event : tracing.events) levels.push_back(event.header.Class.Level);
    return levels;
  };
  logging::SetTraceLevel(2);
  for (const auto& row : rows) {
    EXPECT_EQ(tracing.Enable(row.session), 0u);
    EXPECT_EQ(logging::GetTraceLevel(), row.traceLevel) << +row.session;
    EXPECT_EQ(eventLevels(), row.events) << +row.session;
  }
  EXPECT_EQ(tracing.Disable(), 0u);
  EXPECT_EQ(logging::GetTraceLevel(), 2);
  logging::SetTraceLevel(logging::kFatal);
  tracing.session = static_cast<TRACEHANDLE>(-1);
  EXPECT_EQ(tracing.Enable(5), ULONG{ERROR_INVALID_HANDLE});
  tracing.session = kSession;
  EXPECT_EQ(tracing.Control(WMI_GET_ALL_DATA), ULONG{ERROR_INVALID_PARAMETER});
  EXPECT_THAT(eventLevels(), ElementsAre());
}

TEST_F(Log, SessionAloneEnablesLines) {
  AwaitLevel("none", logging::kFatal);
  constexpr logging::LogSite site(__FILE__, __LINE__, logging::kError);
  logging::WriteLog(site, "%s", reinterpret_cast<const char*>(1));  // not looked at
  tracing.Enable(3);
  EXPECT_EQ(LogEachLevel(), 3);
  tracing.Disable();
  EXPECT_EQ(LogEachLevel(), 1);
  EXPECT_EQ(LogCapture::Lines().size(), 2u);  // the fatal ones
}

TEST_F(Log, EventsHaveTheirFields) {
  constexpr logging::LogSite site("C:\\build\\JArchive.cpp", 0x01020304, logging::kWarning);
  const std::string message = "\u20ac\n\0"s, place = "(v1_0_0_0) JArchive.cpp\0"s;
  for (const ULONG flags : {1ul, 3ul}) {
    tracing.events.clear();
    tracing.Enable(5, flags);
    logging::WriteLog(site, "%ls", L"\u20ac");
    tracing.Disable();
    const auto& [header, fields] = tracing.events.at(0);
    EXPECT_EQ(header.Flags, ULONG{WNODE_FLAG_TRACED_GUID | WNODE_FLAG_USE_MOF_PTR});
    EXPECT_TRUE(header.Guid == kEventClass && header.Class.Level == 3);
    EXPECT_EQ(header.Class.Type, flags & kMessageOnly ? 10 : 12) << flags;
    std::vector<std::string> expected = {"\0\0\0\0"s, "", "\4\3\2\1", place, message};
    if (flags & kMessageOnly) expected = {message};
    EXPECT_EQ(fields, expected) << flags;
  }
}

TEST_F(Log, ThreadsWriteWholeLines) {
  std::vector<std::string> expected;
  std::vector<std::thread> threads;
  tracing.Enable(5, kMessageOnly);
  for (char letter = 'a'; letter < 'i'; ++letter) {
    const std::string text(300, letter);
    for (int n = 0; n < 100; ++n) expected.push_back("INFO " + std::to_string(n) + text + "\u00e9");
    threads.emplace_back([text] {
      for (int n = 0; n < 100; ++n) LOG_INFO("%d%s%ls", n, text.c_str(), L"\u00e9");
    });
  }
  for (std::thread& thread : threads) thread.join();
  tracing.Disable();
  EXPECT_THAT(LogCapture::Messages("VERBOSE1"), testing::UnorderedElementsAreArray(expected));
  EXPECT_EQ(tracing.events.size(), expected.size());
}

}  // namespace
