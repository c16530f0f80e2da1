#include "logging/Log.h"

#include <windows.h>

#include <cstdarg>

#include "ProductVersion.h"
#include "logging/LastErrorGuard.h"
#include "logging/LogEventProvider.h"
#include "logging/LogFormat.h"
#include "logging/StackDump.h"

namespace logging {
namespace {

// Enough for the longest message, with 3 bytes of UTF-8 for each unit, and a stack dump.
constexpr std::size_t kLineCapacity = std::size_t{24} * 1024;
constexpr std::size_t kDebuggerCapacity = 8192;  // longer lines are cut in the debugger output

#define WIDEN_LITERAL(text) L##text
#define WIDEN(text) WIDEN_LITERAL(text)

// The product version in the form that log lines show: "1, 0, 0, 0" becomes "1_0_0_0".
struct VersionText {
  constexpr VersionText() {
    std::size_t length = 0;
    for (const wchar_t* from = WIDEN(TESSEL_PRODUCT_VERSION); *from != L'\0'; ++from) {
      if (*from != L',') text[length++] = *from == L' ' ? L'_' : *from;
    }
  }
  wchar_t text[sizeof(TESSEL_PRODUCT_VERSION)] = {};
};
constexpr VersionText kVersion;

void AppendLevelName(TextBuffer& out, int level) {
  static constexpr const char* kNames[] = {"INFO", "WARNING", "ERROR", "FATAL"};
  if (level < 0) {
    out.AppendFormat("VERBOSE%d", -level);
  } else {
    out.AppendFormat("%s", level <= kFatal ? kNames[level] : "UNKNOWN");
  }
}

void AppendHeader(TextBuffer& out, const LogSite& site, const char* prefix) {
  SYSTEMTIME now;
  ::GetLocalTime(&now);
  out.AppendFormat("[%02u%02u/%02u%02u%02u.%03u:", now.wMonth, now.wDay, now.wHour, now.wMinute,
                   now.wSecond, now.wMilliseconds);
  AppendLevelName(out, site.level);
  out.AppendFormat(":%s(%d)] ", prefix, site.line);
}

void SendToDebugger(std::string_view line) {
  char storage[kDebuggerCapacity];
  TextBuffer out(storage, sizeof(storage));
  out.AppendFormat("{%u} ", ::GetCurrentThreadId());
  out.Append(line);
  ::OutputDebugStringA(storage);
}

void HandleLine(const LogLine& line) {
  if (line.level >= GetTraceLevel()) {
    if (const LogEventProvider* provider = GetEventProvider()) provider->WriteLine(line);
  }
  if (line.level >= GetConfiguredLogLevel()) SendToDebugger(line.text);
}

template <class Character>
void WriteFormatted(const LogSite& site, const Character* format, std::va_list arguments) {
  const LastErrorGuard keepLastError;
  // The log macros have checked the level already. Callers that make their own LogSite have not
  // checked it.
  if (!IsLogged(site.level)) return;

  char prefixStorage[MAX_PATH];
  TextBuffer prefix(prefixStorage, sizeof(prefixStorage));
  prefix.AppendFormat("(v%S) %s", kVersion.text, site.file);

  char lineStorage[kLineCapacity];
  TextBuffer line(lineStorage, sizeof(lineStorage));
  AppendHeader(line, site, prefixStorage);
  const std::size_t messageStart = line.View().size();
  line.AppendMessage(format, arguments);
  if (site.level == kFatal && !::IsDebuggerPresent()) AppendStackDump(line);
  line.Append("\n");

  HandleLine({site.level, prefixStorage, site.line, messageStart, line.View()});
}

}  // namespace

void WriteLog(const LogSite& site, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  WriteFormatted(site, format, arguments);
  va_end(arguments);
}

void WriteLogW(const LogSite& site, const wchar_t* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  WriteFormatted(site, format, arguments);
  va_end(arguments);
}

}  // namespace logging
