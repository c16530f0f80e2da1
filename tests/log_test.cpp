// Tests the log: levels from the registry, the text of a line, the debugger output and event
// tracing. Wine has no trace sessions, so this suite replaces the system's event tracing functions.
#include <gmock/gmock.h>
#include <windows.h>
// dbghelp.h needs windows.h before it
#include <dbghelp.h>

#include <clocale>
#include <regex>

#include "Common/include/TesselTrace.h"
#include "logging/EtwTraceProvider.h"
#include "logging/Log.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"

namespace {

using namespace std::string_literals;
using testing::HasSubstr;

constexpr GUID kProvider = {0x204DE76A, 0x126E, 0x4673, {179, 73, 90, 93, 17, 209, 128, 215}};
constexpr GUID kEventClass = {0x7FE69228, 0x633E, 0x4F06, {128, 193, 82, 127, 234, 35, 227, 167}};

// Takes the place of a trace session. Stores the callback that the module registers, and the events
// that the module writes.
struct {
  ULONG Control(WMIDPREQUESTCODE request) { return control(request, provider, nullptr, nullptr); }

  WMIDPREQUEST control = nullptr;
  void* provider = nullptr;
  UCHAR level = 0;
  ULONG flags = 0;
  std::vector<std::string> events;  // each event as "type level|field|field..."
} session;

ULONG WINAPI RegisterGuids(WMIDPREQUEST control, void* provider, LPCGUID guid, ULONG,
                           PTRACE_GUID_REGISTRATION classes, LPCWSTR, LPCWSTR, PTRACEHANDLE out) {
  EXPECT_TRUE(*guid == kProvider && *classes->Guid == kEventClass);
  session.control = control;
  session.provider = provider;
  *out = 4711;
  return ERROR_SUCCESS;
}
ULONG WINAPI UnregisterGuids(TRACEHANDLE) { return std::puts("unregistered") < 0; }
TRACEHANDLE WINAPI GetLoggerHandle(void*) { return 77; }
UCHAR WINAPI GetEnableLevel(TRACEHANDLE) { return session.level; }
ULONG WINAPI GetEnableFlags(TRACEHANDLE) { return session.flags; }
ULONG WINAPI WriteEvent(TRACEHANDLE handle, EVENT_TRACE_HEADER* header) {
  EXPECT_TRUE(handle == 77 && header->Guid == kEventClass && header->Flags == 0x120000);
  auto text = std::to_string(header->Class.Type) + ' ' + std::to_string(header->Class.Level);
  const auto* field = reinterpret_cast<MOF_FIELD*>(header + 1);
  for (auto size = header->Size - sizeof(*header); size > 0; size -= sizeof(*field), ++field)
    text += '|' + std::string(reinterpret_cast<char*>(field->DataPtr), field->Length);
  session.events.push_back(text);
  return ERROR_SUCCESS;
}

// Sets the user's level and waits, for at most 3 seconds, until the log uses it. Returns the tick
// count just before the query that found the new level.
ULONGLONG AwaitLevel(const char* text, int level) {
  LogCapture::SetLevel(text);
  for (const ULONGLONG set = ::GetTickCount64();; ::Sleep(20)) {
    const ULONGLONG asked = ::GetTickCount64();
    if (logging::GetConfiguredLogLevel() == level) return asked;
    if (asked >= set + 3000) throw std::runtime_error("level not read in time");
  }
}

struct Log : testing::Test {
  Log() {
    logging::traceFunctions = {&RegisterGuids,  &UnregisterGuids, &GetLoggerHandle,
                               &GetEnableLevel, &GetEnableFlags,  &WriteEvent};
  }
  const LogCapture capture{false /*verbose*/};
};
struct VerboseLog : Log {
  VerboseLog() { AwaitLevel("VERBOSE", logging::kVerbose); }
};

// Runs in a child process, so that its log calls are the first ones in the process. Prints how many
// calls evaluated their argument, and how many lines were logged.
TEST_F(Log, DISABLED_Child) {
  int evaluated = 0;
  ::SetLastError(1234);
  LOG_VERBOSE("%d", ++evaluated);
  LOG_INFO("%d", ++evaluated);
  LOG_WARNING("%d", ++evaluated);
  LOG_ERROR("%d", ++evaluated);
  LOG_FATAL("%d", ++evaluated);
  EXPECT_EQ(::GetLastError(), 1234u);
  std::printf("%d of %d,", evaluated, static_cast<int>(LogCapture::Lines().size()));
}

TEST_F(Log, LevelComesFromTheRegistry) {
  // The user's level, the type of its registry value, the machine's level, and the child's output.
  const std::tuple<const char*, DWORD, const char*, const char*> rows[] = {
      {nullptr, REG_SZ, nullptr, "1 of 1,"},
      {"vErBoSe", REG_SZ, "WARNING", "5 of 5,"},
      {"VERBOSE  ", REG_SZ, "INFO", "1 of 1,"},   // 9 characters: read, but no level
      {"VERBOSE   ", REG_SZ, "INFO", "4 of 4,"},  // 10 characters: too long, so not read
      {"VERBOSE", REG_EXPAND_SZ, "eRROR", "2 of 2,"}};
  constexpr char kMachine[] = R"(System\CurrentControlSet\Control\Session Manager\Environment)";
  for (const auto& [user, type, machine, output] : rows) {
    LogCapture::SetLevel(user, HKEY_CURRENT_USER, "Environment", type);
    LogCapture::SetLevel(machine, HKEY_LOCAL_MACHINE, kMachine);
    ChildProcess child(L"\"" + TestFolder() + L"log_test.exe\" --gtest_also_run_disabled_tests " +
                       L"--gtest_filter=Log.DISABLED_Child");
    EXPECT_THAT(child.ReadToEnd(), AllOf(HasSubstr(output), HasSubstr("unregistered")));
    EXPECT_EQ(child.Wait(), 0u) << output;
  }
  LogCapture::SetLevel(nullptr, HKEY_LOCAL_MACHINE, kMachine);
}

TEST_F(VerboseLog, FatalLineHasItsFormAndTheCallStack) {
  ::SymInitialize(::GetCurrentProcess(), nullptr, FALSE);
  logging::WriteLog({"/build/a.b/Log.cpp", -2, logging::kFatal}, "%s", "text");
  const auto line = LogCapture::Lines().at(0), thread = std::to_string(::GetCurrentThreadId());
  const std::regex form("\\{" + thread + R"(\} \[\d{4}/\d{6}\.\d{3}:FATAL:\(v1_0_0_0\) Log\.cpp)" +
                        R"(\(-2\)\] text\nBacktrace.*\n(.*\n)+.*\[0x[0-9A-F]{16}(\+\d+)?\]\n)");
  EXPECT_TRUE(std::regex_match(line, form)) << line;
  EXPECT_TRUE(::SymCleanup(::GetCurrentProcess())) << "the log leaves the host's symbols alone";
}

TEST_F(VerboseLog, DTraceWritesTheClientsLine) {
  DTrace(logging::kFatal, L"\u00e9%d");
  DTrace(0, nullptr);
  EXPECT_THAT(LogCapture::Messages("VERBOSE1"),
              testing::ElementsAre("VERBOSE1 SL: \u00e9%d", "ERROR ERR: str is NULL in DTrace"));
}

// Writes a message and returns it as it arrives in the debugger output.
template <class Character, class... Arguments>
std::string Logged(const Character* format, Arguments... arguments) {
  constexpr logging::LogSite site("JArchive.cpp", 73, logging::kInfo);
  LogCapture::Reset();
  if constexpr (sizeof(Character) == 1) logging::WriteLog(site, format, arguments...);
  if constexpr (sizeof(Character) == 2) logging::WriteLogW(site, format, arguments...);
  return LogCapture::Messages("INFO").at(0).substr(std::strlen("INFO "));
}

TEST_F(VerboseLog, ConversionsFollowMicrosoftsRuntime) {
  ASSERT_NE(setlocale(LC_ALL, "German_Germany.1252"), nullptr);
  const auto pointer = reinterpret_cast<void*>(0x1234AB);
  const wchar_t* const none = nullptr;
  EXPECT_EQ(
      Logged("%d %u \\u%04X %Ii %zu %I64x", -5, -1, 0xEF, -12345678901, 12345678901, 1ll << 33),
      "-5 4294967295 \\u00EF -12345678901 12345678901 200000000");
  EXPECT_EQ(Logged("%ld %hhu %hd %#p %c %.0f %%", -1L, 0x1FF, 0x1FFFF, pointer, 'x', 3.2),
            "-1 255 -1 0X00000000001234AB x 3 %");
  EXPECT_EQ(
      Logged("%5s|%-5ls|%.1s|%.*ls|%*d|%-*d|%05d|", "ab", L"cd", "ef", 2, L"ghi", 4, 7, -4, 8, -9),
      "   ab|cd   |e|gh|   7|8   |-0009|");
  EXPECT_EQ(Logged("%s %ls %hs %lc%C %S%ws", "\u65e5", none, "narrow", L'\u20ac', L'\u00e9',
                   L"\u00e9", L"\U0001F600"),
            "\u65e5 (null) narrow \u20ac\u00e9 \u00e9\U0001F600");
  EXPECT_EQ(Logged(L"\u20ac%s %ls %S %hs %#p %Ii %600d", L"\u65e5\U0001F600", L"\xD83Dx\xDE00",
                   "ab", "cd", pointer, -1ll, 2),
            "\u20ac\u65e5\U0001F600 \uFFFDx\uFFFD ab cd 0X00000000001234AB -1 " +
                std::string(599, ' ') + "2");
}

TEST_F(VerboseLog, LongTextsAreCutBetweenCharacters) {
  const std::tuple<std::size_t, const wchar_t*, std::size_t, std::size_t> rows[] = {
      // Each row has the number of letters "a", the text after them, and the bytes that WriteLog
      // and WriteLogW log. Text is converted in groups of 256 units. The end of the first group
      // falls between the two units of the first row's surrogate pair.
      {255, L"\U0001F600", 259, 259},
      {4093, L"\u00e9z", 4095, 4096},
      {4093, L"\u20acz", 4093, 4097},
      {4094, L"\U0001F600z", 4094, 4094}};  // only half of the pair fits, so none of it is logged
  for (const auto& [count, tail, narrow, wide] : rows) {
    const std::wstring text = std::wstring(count, L'a') + tail;
    EXPECT_EQ(Logged("%ls", text.c_str()).size(), narrow) << count;
    EXPECT_EQ(Logged(L"%s", text.c_str()).size(), wide) << count;
  }
  Logged(L"%s", std::wstring(5000, L'\u20ac').c_str());
  const std::string line = LogCapture::Lines().back();
  EXPECT_TRUE(line.size() > 8188 && line.size() < 8192 && line.ends_with("\u20ac")) << line.size();
}

TEST_F(VerboseLog, SessionDecidesWhatIsTraced) {
  const ULONGLONG asked = AwaitLevel("ERROR", logging::kError);
  AwaitLevel("none", logging::kFatal);
  EXPECT_GE(::GetTickCount64(), asked + 3000) << "the level is read at most every 3 s";
  logging::SetTraceLevel(2);
  const std::pair<UCHAR, std::size_t> rows[] = {{0, 0}, {1, 1}, {3, 3}, {7, 5}, {255, 5}};
  for (const auto& [level, events] : rows) {
    session.events.clear();
    session.level = level;
    EXPECT_EQ(session.Control(WMI_ENABLE_EVENTS), 0u);
    for (int line = -1; line < 4; ++line) logging::WriteLog({"Log.cpp", 1, line}, "text");
    EXPECT_EQ(session.events.size(), events) << +level;
  }
  EXPECT_EQ(LogCapture::Lines().size(), 5u) << "only fatal lines reach the debugger";
  session.events.clear();
  for (const ULONG flags : {1, 2}) {
    session.flags = flags;
    session.Control(WMI_ENABLE_EVENTS);
    logging::WriteLog({"C:\\build\\JArchive.cpp", 0x01020304, logging::kWarning}, "%ls", L"\u20ac");
  }
  const auto whole = "12 3|\0\0\0\0||\4\3\2\1|(v1_0_0_0) JArchive.cpp\0|\u20ac\n\0"s;
  EXPECT_THAT(session.events, testing::ElementsAre(whole, "10 3|\u20ac\n\0"s));
  EXPECT_EQ(session.Control(WMI_GET_ALL_DATA), ULONG{ERROR_INVALID_PARAMETER});
  EXPECT_EQ(session.Control(WMI_DISABLE_EVENTS), 0u);
  EXPECT_EQ(logging::GetTraceLevel(), 2) << "the level from before the session is back";
  logging::SetTraceLevel(logging::kFatal);
}

}  // namespace
