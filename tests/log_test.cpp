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
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
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

constexpr TRACEHANDLE kRegistration = 4711, kSession = 0x1122334455667788;
constexpr ULONG kMessageOnly = 2;

struct Event {
  TRACEHANDLE session;
  EVENT_TRACE_HEADER header;
  std::vector<std::string> fields;
};

// The system's side of event tracing.
struct Tracing {
  std::mutex mutex;
  int registrations = 0;
  GUID provider = {}, eventClass = {};
  WMIDPREQUEST control = nullptr;
  void* context = nullptr;
  TRACEHANDLE session = kSession;
  UCHAR level = 0;
  ULONG flags = 0;
  std::vector<Event> events;

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
} tracing;

ULONG WINAPI RegisterGuids(WMIDPREQUEST control, void* context, LPCGUID provider, ULONG count,
                           PTRACE_GUID_REGISTRATION classes, LPCWSTR, LPCWSTR, PTRACEHANDLE out) {
  tracing.registrations += count;
  tracing.control = control;
  tracing.context = context;
  tracing.provider = *provider;
  tracing.eventClass = *classes->Guid;
  *out = kRegistration;
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
  Event event = {session, *header, {}};
  auto* fields = reinterpret_cast<MOF_FIELD*>(header + 1);
  for (std::size_t left = header->Size - sizeof(*header); left > 0; left -= sizeof(*fields)) {
    event.fields.emplace_back(reinterpret_cast<char*>(fields->DataPtr), fields->Length);
    ++fields;
  }
  const std::lock_guard lock(tracing.mutex);
  tracing.events.push_back(event);
  ::SetLastError(ERROR_GEN_FAILURE);
  return ERROR_SUCCESS;
}

struct TracingInPlace : testing::Environment {
  void SetUp() override {
    logging::traceFunctions = {&RegisterGuids,  &UnregisterGuids, &GetLoggerHandle,
                               &GetEnableLevel, &GetEnableFlags,  &WriteEvent};
  }
};
const auto* const tracingInPlace = testing::AddGlobalTestEnvironment(new TracingInPlace);

// Null deletes the value.
void SetLevel(HKEY root, const char* text, DWORD type = REG_SZ) {
  const char* const key = root == HKEY_CURRENT_USER
                              ? "Environment"
                              : R"(System\CurrentControlSet\Control\Session Manager\Environment)";
  ::RegDeleteKeyValueA(root, key, "TESSEL_LOG_LEVEL");
  if (text == nullptr) return;
  const auto size = static_cast<DWORD>(std::strlen(text) + 1);
  ASSERT_EQ(::RegSetKeyValueA(root, key, "TESSEL_LOG_LEVEL", type, text, size), ERROR_SUCCESS);
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
    if constexpr (std::is_same_v<Character, char>) {
      logging::WriteLog(site, format, arguments...);
    } else {
      logging::WriteLogW(site, format, arguments...);
    }
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
  LOG_VERBOSE("%d", ++evaluated);
  LOG_INFO("%d", ++evaluated);
  LOG_WARNING("%d", ++evaluated);
  LOG_ERROR("%d", ++evaluated);
  LOG_FATAL("%d", ++evaluated);
  return evaluated;
}

// A process whose first log calls these are.
TEST(LogChild, DISABLED_LogsEachLevel) {
  const LogCapture capture(LogCapture::Level::kAsItStands);
  ::SetLastError(1234);
  const int evaluated = LogEachLevel();
  const DWORD error = ::GetLastError();
  LogEachLevel();
  const std::vector<std::string> messages = LogCapture::Messages("VERBOSE1");
  std::printf("error %lu, evaluated %d, lines %d from %s;\n", error, evaluated,
              static_cast<int>(messages.size()), messages.at(0).substr(0, 7).c_str());
}

TEST(LogLevel, ComesFromTheRegistry) {
  const struct {
    const char* user;
    DWORD type;
    const char* machine;
    int level;
  } rows[] = {
      {nullptr, 0, nullptr, 3},
      {"vErBoSe", REG_SZ, nullptr, -1},
      {"Info", REG_SZ, nullptr, 0},
      {"warning", REG_SZ, nullptr, 1},
      {"eRROR", REG_SZ, nullptr, 2},
      {nullptr, 0, "iNFO", 0},
      {"WARNING", REG_SZ, "VERBOSE", 1},  // the user's before the machine's
      {"DEBUG", REG_SZ, "INFO", 3},       // even when it names no level
      {"", REG_SZ, "INFO", 3},
      {"VERBOSEX", REG_SZ, "INFO", 3},
      {"VERBOSE  ", REG_SZ, "INFO", 3},   // the longest that is read
      {"VERBOSE   ", REG_SZ, "INFO", 0},  // too long: as if not set
      {"VERBOSE", REG_EXPAND_SZ, "ERROR", 2},
      {"VERBOSE", REG_BINARY, nullptr, 3},
  };
  static constexpr const char* kFirst[] = {"VERBOSE", "INFO 1", "WARNING", "ERROR 1", "FATAL 1"};
  ::SetEnvironmentVariableA("TESSEL_LOG_LEVEL", "VERBOSE");  // not consulted
  for (const auto& row : rows) {
    SetLevel(HKEY_CURRENT_USER, row.user, row.type);
    SetLevel(HKEY_LOCAL_MACHINE, row.machine);
    ChildProcess child(L"\"" + TestFolder() + L"log_test.exe\" --gtest_also_run_disabled_tests " +
                       L"--gtest_filter=LogChild.*");
    const std::string output = child.ReadToEnd(), lines = std::to_string(4 - row.level),
                      twice = std::to_string(2 * (4 - row.level));
    EXPECT_THAT(output, HasSubstr("error 1234, evaluated " + lines + ", lines " + twice + " from " +
                                  kFirst[row.level + 1] + ";"))
        << (row.user ? row.user : "unset") << " of type " << row.type;
    EXPECT_THAT(output, HasSubstr("unregistered 4711")) << "at the end of the process";
    EXPECT_EQ(child.Wait(), 0u);
  }
  SetLevel(HKEY_CURRENT_USER, nullptr);
  SetLevel(HKEY_LOCAL_MACHINE, nullptr);
}

TEST_F(Log, LevelIsReadAnewAfterThreeSeconds) {
  const auto [before, after] = AwaitLevel("ERROR", logging::kError);
  EXPECT_GE(AwaitLevel("VERBOSE", logging::kVerbose, after + 3000).second, before + 3000);
}

TEST_F(Log, DebuggerLineHasItsForm) {
  constexpr struct {
    logging::LogSite site;
    const char* tail;
  } rows[] = {
      {{"D:\\build\\JArchive.cpp", 73, 2}, R"(ERROR:\(v1_0_0_0\) JArchive\.cpp\(73\)\] text\n)"},
      {{"/build/a.b/Log.cpp", 1, -1}, R"(VERBOSE1:\(v1_0_0_0\) Log\.cpp\(1\)\] text\n)"},
      {{__FILE__, 0, 1}, R"(WARNING:\(v1_0_0_0\) log_test\.cpp\(0\)\] text\n)"},
      {{"Bare", -2, 4}, R"(UNKNOWN:\(v1_0_0_0\) Bare\(-2\)\] text\n)"}};
  const std::string head = "\\{" + std::to_string(::GetCurrentThreadId()) +
                           R"(\} \[(0\d|1[0-2])[0-3]\d/[0-2]\d[0-5]\d[0-5]\d\.\d{3}:)";
  for (const auto& row : rows) {
    LogCapture::Reset();
    logging::WriteLog(row.site, "%s", "text");
    const std::string line = LogCapture::RawLines().at(0);
    EXPECT_TRUE(std::regex_match(line, std::regex(head + row.tail))) << line;
  }
}

TEST_F(Log, DTraceWritesTheClientsLine) {
  for (const int level : {-1, 0, 1, 2, 3, 7, -2}) DTrace(level, L"\u00e9%d");
  DTrace(0, nullptr);
  EXPECT_THAT(LogCapture::Messages("VERBOSE1"),
              ElementsAre("VERBOSE1 SL: \u00e9%d", "INFO SL: \u00e9%d", "WARNING SL: \u00e9%d",
                          "ERROR SL: \u00e9%d", "VERBOSE1 SL: \u00e9%d", "VERBOSE1 SL: \u00e9%d",
                          "VERBOSE1 SL: \u00e9%d", "ERROR ERR: str is NULL in DTrace"));
  for (const auto& line : LogCapture::Lines()) EXPECT_THAT(line, HasSubstr(") TesselSLB.cpp("));
}

TEST_F(Log, ConversionsMeanWhatMicrosoftsRuntimeMeans) {
  const auto check = [](const auto* format, const std::string& expected, auto... arguments) {
    EXPECT_EQ(Logged(format, arguments...), expected) << format << setlocale(LC_ALL, nullptr);
  };
  const auto pointer = reinterpret_cast<void*>(0x1234AB);
  const wchar_t* const noWide = nullptr;
  const char* const noNarrow = nullptr;
  for (const char* locale : {"German_Germany.1252", "Japanese_Japan.932", "C"}) {
    ASSERT_NE(setlocale(LC_ALL, locale), nullptr) << locale;
    check("%d|%i|%u|%x", "-5|-6|4294967295|beef", -5, -6, -1, 0xBEEF);
    check("%Ii %zu", "-12345678901 12345678901", -12345678901, 12345678901);
    check("%lld %I64x %ld %hhu %hd", "-12345678901 2dfdc1c35 -1 255 -1", -12345678901, 12345678901,
          -1L, 0x1FF, 0x1FFFF);
    check("\\u%04X", "\\u00EF", 0xEF);
    check("%#p %p", "0X00000000001234AB 00000000001234AB", pointer, pointer);
    check("[%5s|%-5ls|%.1s|%.*ls|%*d|%-*d|%05d]", "[   ab|cd   |e|gh|   7|8   |-0009]", "ab", L"cd",
          "ef", 2, L"ghi", 4, 7, -4, 8, -9);
    check("100%% %c%c", "100% xy", 'x', 'y');
    check("%600d", std::string(599, ' ') + "1", 1);
    check("%.0f %g %+.1s", "3 1000 a", 3.2, 1000.0, "ab");
    check("%s %ls %S", "(null) (null) (null)", noNarrow, noWide, noWide);
    check("%s", "\u65e5\u00e9", "\u65e5\u00e9");
    check("%ls|%S|%ws", "\u65e5|\u00e9|\U0001F600", L"\u65e5", L"\u00e9", L"\U0001F600");
    check("%hs %lc%C%hc", "narrow \u20ac\u00e9h", "narrow", L'\u20ac', L'\u00e9', 'h');
    check("%ls", "\uFFFDx\uFFFD", L"\xD83Dx\xDE00");
    check(L"%s|%ls|%S|%hs", "\u65e5\U0001F600|\u00e9|ab|cd", L"\u65e5\U0001F600", L"\u00e9", "ab",
          "cd");
    check(L"%s %#p %Ii %d", "\uFFFD 0X00000000001234AB -1 2", L"\xDE00", pointer, -1ll, 2);
    check(L"\u20ac %s", "\u20ac (null)", noWide);
  }
  // A pair on the seam of what is converted at a time.
  for (int before = 250; before < 260; ++before) {
    check("%ls", std::string(before, 'a') + "\U0001F600",
          (std::wstring(before, L'a') + L"\U0001F600").c_str());
  }
}

TEST_F(Log, LongTextsAreCutBetweenCharacters) {
  const struct {
    std::size_t count;
    const wchar_t* tail;
    std::size_t narrow, wide;  // bytes kept by either call
  } rows[] = {{4095, L"", 4095, 4095},
              {4096, L"", 4095, 4095},
              {4093, L"\u00e9z", 4095, 4096},
              {4094, L"\u00e9z", 4094, 4096},
              {4092, L"\u20acz", 4095, 4096},
              {4093, L"\u20acz", 4093, 4097},
              {4094, L"\u20acz", 4094, 4097},
              {4091, L"\U0001F600z", 4095, 4096},
              {4092, L"\U0001F600z", 4092, 4097},
              {4093, L"\U0001F600z", 4093, 4097},
              {4094, L"\U0001F600z", 4094, 4094} /*half a pair is left out*/};
  for (const auto& row : rows) {
    const std::wstring text = std::wstring(row.count, L'a') + row.tail;
    EXPECT_EQ(Logged("%ls", text.c_str()).size(), row.narrow) << row.count;
    EXPECT_EQ(Logged(L"%s", text.c_str()).size(), row.wide) << row.count;
  }
  std::string euros;
  for (int i = 0; i < 4095; ++i) euros += "\u20ac";
  EXPECT_EQ(Logged(L"%s", std::wstring(5000, L'\u20ac').c_str()), euros);

  LogCapture::Reset();
  std::set<std::size_t> sizes;
  for (const int padding : {0, 1, 2}) {
    Logged(L"%.*s%s", padding, L"aa", std::wstring(5000, L'\u20ac').c_str());
    const std::string line = LogCapture::RawLines().back();
    EXPECT_TRUE(line.ends_with("\u20ac"));
    sizes.insert(line.size());
  }
  EXPECT_THAT(sizes, ElementsAre(8189, 8190, 8191));
}

TEST_F(Log, FatalCarriesTheCallStack) {
  using GetBlock = BYTE*(WINAPI*)();
  const auto getBlock = reinterpret_cast<GetBlock>(
      reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll"), "RtlGetCurrentPeb")));
  BYTE& beingDebugged = getBlock()[2];
  LOG_FATAL("broken");
  beingDebugged = 1;
  LOG_FATAL("watched");
  beingDebugged = 0;
  const std::vector<std::string> lines = LogCapture::RawLines();
  ASSERT_EQ(lines.size(), 2u);
  const std::string dump = lines[0].substr(lines[0].find("broken"));
  EXPECT_TRUE(dump.starts_with("broken\nBacktrace")) << dump;
  EXPECT_TRUE(std::regex_search(dump, std::regex(R"(\[0x[0-9A-F]{16}(\+\d+)?\]\n$)"))) << dump;
  EXPECT_GT(std::count(dump.begin(), dump.end(), '\n'), 3);
  EXPECT_TRUE(lines[1].ends_with("] watched\n")) << lines[1];
}

TEST_F(Log, SessionLevelDecidesWhatIsTraced) {
  const struct {
    UCHAR session;
    int traceLevel;
    std::vector<int> events;
  } rows[] = {{5, -1, {5, 4, 3, 2, 1}}, {0, 3, {}},        {1, 3, {1}},
              {2, 2, {2, 1}},           {3, 1, {3, 2, 1}}, {4, 0, {4, 3, 2, 1}},
              {7, -3, {5, 4, 3, 2, 1}}};
  const auto eventLevels = [] {
    tracing.events.clear();
    ::SetLastError(1234);
    EXPECT_EQ(LogEachLevel(), 5);
    EXPECT_EQ(::GetLastError(), 1234u);
    std::vector<int> levels;
    for (const Event& event : tracing.events) levels.push_back(event.header.Class.Level);
    return levels;
  };
  for (const int before : {3, 1}) {
    logging::SetTraceLevel(before);
    for (const auto& row : rows) {
      EXPECT_EQ(tracing.Enable(row.session), 0u);
      EXPECT_EQ(logging::GetTraceLevel(), row.traceLevel) << +row.session;
      EXPECT_EQ(eventLevels(), row.events) << +row.session;
    }
    EXPECT_EQ(tracing.Disable(), 0u);
    EXPECT_EQ(logging::GetTraceLevel(), before);
    EXPECT_THAT(eventLevels(), ElementsAre());
  }
  logging::SetTraceLevel(logging::kFatal);

  tracing.session = static_cast<TRACEHANDLE>(-1);
  EXPECT_EQ(tracing.Enable(5), ULONG{ERROR_INVALID_HANDLE});
  tracing.session = kSession;
  EXPECT_EQ(tracing.Control(WMI_GET_ALL_DATA), ULONG{ERROR_INVALID_PARAMETER});
  EXPECT_THAT(eventLevels(), ElementsAre());
}

TEST_F(Log, SessionAloneEnablesLines) {
  AwaitLevel("none", logging::kFatal);
  EXPECT_EQ(LogEachLevel(), 1);
  constexpr logging::LogSite site(__FILE__, __LINE__, logging::kError);
  logging::WriteLog(site, "%s", reinterpret_cast<const char*>(1));  // not looked at
  tracing.Enable(3);
  EXPECT_EQ(LogEachLevel(), 3);
  tracing.Disable();
  EXPECT_EQ(LogEachLevel(), 1);
  EXPECT_EQ(LogCapture::Lines().size(), 3u);  // the fatal ones
}

TEST_F(Log, EventsHaveTheirFields) {
  const GUID provider = {0x204DE76A, 0x126E, 0x4673, {179, 73, 90, 93, 17, 209, 128, 215}};
  const GUID eventClass = {0x7FE69228, 0x633E, 0x4F06, {128, 193, 82, 127, 234, 35, 227, 167}};
  EXPECT_EQ(tracing.registrations, 1);
  EXPECT_TRUE(IsEqualGUID(tracing.provider, provider));
  EXPECT_TRUE(IsEqualGUID(tracing.eventClass, eventClass));
  constexpr logging::LogSite site("C:\\build\\JArchive.cpp", 0x01020304, logging::kWarning);
  for (const ULONG flags : {0ul, 1ul, kMessageOnly, 3ul}) {
    tracing.events.clear();
    tracing.Enable(5, flags);
    logging::WriteLog(site, "%ls", L"\u20ac");
    tracing.Disable();
    ASSERT_EQ(tracing.events.size(), 1u) << flags;
    const auto& [session, header, fields] = tracing.events[0];
    const bool messageOnly = (flags & kMessageOnly) != 0;
    EXPECT_EQ(session, kSession);
    EXPECT_EQ(header.Size, 48 + 16 * (messageOnly ? 1 : 5)) << flags;
    EXPECT_EQ(header.Flags, ULONG{WNODE_FLAG_TRACED_GUID | WNODE_FLAG_USE_MOF_PTR});
    EXPECT_TRUE(IsEqualGUID(header.Guid, eventClass));
    EXPECT_EQ(header.Class.Type, messageOnly ? 10 : 12) << flags;
    EXPECT_EQ(header.Class.Level, 3);
    const std::string message = "\u20ac\n\0"s;
    const std::vector<std::string> all = {"\0\0\0\0"s, "", "\4\3\2\1", "(v1_0_0_0) JArchive.cpp\0"s,
                                          message};
    EXPECT_EQ(fields, messageOnly ? std::vector{message} : all) << flags;
  }
}

TEST_F(Log, ThreadsWriteWholeLines) {
  std::multiset<std::string> expected;
  std::vector<std::thread> threads;
  tracing.Enable(5, kMessageOnly);
  for (char letter = 'a'; letter < 'i'; ++letter) {
    const std::string text(300, letter);
    for (int n = 0; n < 100; ++n) expected.insert("INFO " + std::to_string(n) + text + "\u00e9");
    threads.emplace_back([text] {
      for (int n = 0; n < 100; ++n) LOG_INFO("%d%s%ls", n, text.c_str(), L"\u00e9");
    });
  }
  for (std::thread& thread : threads) thread.join();
  tracing.Disable();
  const std::vector<std::string> messages = LogCapture::Messages("VERBOSE1");
  EXPECT_EQ(std::multiset(messages.begin(), messages.end()), expected);
  EXPECT_EQ(tracing.events.size(), expected.size());
}

}  // namespace
