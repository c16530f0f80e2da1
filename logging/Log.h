// Both processes. The one log of the module: lines with a level, which go to the debugger output
// and to event tracing. Use the macros below: when a line is not logged, they cost one look at a
// cached level and do not evaluate the arguments. Callable from any thread; keeps the thread's last
// error.
#pragma once

#include "logging/LogLevel.h"

namespace logging {

constexpr const char* BareFileName(const char* path) {
  const char* name = path;
  for (; *path != '\0'; ++path) {
    if (*path == '/' || *path == '\\') name = path + 1;
  }
  return name;
}

// The place and the level of a log call. Compilers record paths with either kind of separator;
// every line shows the bare file name.
struct LogSite {
  constexpr LogSite(const char* path, int lineNumber, int levelNumber)
      : file(BareFileName(path)), line(lineNumber), level(levelNumber) {}

  const char* file;
  int line;
  int level;
};

// `format` follows Microsoft's printf rules. Wide text in a narrow format ("%ls", "%S") comes out
// as UTF-8. A message is cut at 4095 bytes.
void WriteLog(const LogSite& site, const char* format, ...);

// The same for wide formats, in which "%s" and "%ls" take wide text. A message is cut at 4095
// UTF-16 units, before it becomes UTF-8.
void WriteLogW(const LogSite& site, const wchar_t* format, ...);

}  // namespace logging

#define TESSEL_LOG_TO(writer, logLevel, ...)                                \
  do {                                                                      \
    if (::logging::IsLogged(logLevel)) {                                    \
      constexpr ::logging::LogSite logSite(__FILE__, __LINE__, (logLevel)); \
      ::logging::writer(logSite, __VA_ARGS__);                              \
    }                                                                       \
  } while (false)

#define LOG_VERBOSE(...) TESSEL_LOG_TO(WriteLog, ::logging::kVerbose, __VA_ARGS__)
#define LOG_INFO(...) TESSEL_LOG_TO(WriteLog, ::logging::kInfo, __VA_ARGS__)
#define LOG_WARNING(...) TESSEL_LOG_TO(WriteLog, ::logging::kWarning, __VA_ARGS__)
#define LOG_ERROR(...) TESSEL_LOG_TO(WriteLog, ::logging::kError, __VA_ARGS__)
#define LOG_FATAL(...) TESSEL_LOG_TO(WriteLog, ::logging::kFatal, __VA_ARGS__)
#define LOG_INFO_W(...) TESSEL_LOG_TO(WriteLogW, ::logging::kInfo, __VA_ARGS__)
